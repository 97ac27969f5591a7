#include "util/format.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

namespace syscommon {

int format_into(std::span<char> dst, const char *fmt, ...) {
  va_list args;
  va_start(args, fmt);
  int n = std::vsnprintf(dst.data(), dst.size(), fmt, args);  // NOLINT(clang-analyzer-valist.Uninitialized)
  va_end(args);
  return n;
}

std::string vformat_text(std::size_t limit, const char *fmt, va_list args) {
  std::string out(limit, '\0');
  int n = std::vsnprintf(out.data(), limit, fmt, args);  // NOLINT(clang-analyzer-valist.Uninitialized)
  out.resize(n < 0 || limit == 0 ? 0 : std::min(static_cast<std::size_t>(n), limit - 1));
  return out;
}

std::string format_text(std::size_t limit, const char *fmt, ...) {
  va_list args;
  va_start(args, fmt);
  std::string out = vformat_text(limit, fmt, args);
  va_end(args);
  return out;
}

}  // namespace syscommon
