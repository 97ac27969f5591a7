// Conversions with the device's 32-bit long (see number.h).
#include "platform/number.h"

#include <cctype>
#include <cerrno>
#include <cstdlib>

namespace syscommon {

int32_t device_strtol(const char *text, char **end, int base) {
  const long long v = std::strtoll(text, end, base);
  if (v > INT32_MAX || v < INT32_MIN) {
    errno = ERANGE;
    return v > 0 ? INT32_MAX : INT32_MIN;
  }
  return static_cast<int32_t>(v);
}

uint32_t device_strtoul(const char *text, char **end, int base) {
  const char *p = text;
  while (std::isspace(static_cast<unsigned char>(*p)) != 0) ++p;
  const bool negative = *p == '-';
  if (*p == '-' || *p == '+') ++p;
  // The magnitude alone: one sign only, as strtoul takes it.
  char *stop = nullptr;
  unsigned long long magnitude = 0;
  const bool digits_follow = *p != '-' && *p != '+' && std::isspace(static_cast<unsigned char>(*p)) == 0;
  if (digits_follow) {
    errno = 0;
    magnitude = std::strtoull(p, &stop, base);
  }
  if (!digits_follow || stop == p) {
    if (end != nullptr) *end = const_cast<char *>(text);
    return 0;
  }
  if (end != nullptr) *end = stop;
  if (errno == ERANGE || magnitude > UINT32_MAX) {
    errno = ERANGE;
    return UINT32_MAX;
  }
  const auto value = static_cast<uint32_t>(magnitude);
  return negative ? 0U - value : value;
}

int scan_numbers(const char *text, char sep, int count, int base, uint32_t *out) {
  const char *p = text;
  for (int i = 0; i < count; ++i) {
    if (i > 0) {
      if (*p != sep) return i;
      ++p;
    }
    char *stop = nullptr;
    const uint32_t v = base == 10 ? static_cast<uint32_t>(device_strtol(p, &stop, 10)) : device_strtoul(p, &stop, base);
    if (stop == p) return i;
    out[i] = v;
    p = stop;
  }
  return count;
}

}  // namespace syscommon
