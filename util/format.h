// printf-style formatting bounded by a size, shared by the text builders of the library.
#ifndef SYSCOMMON_UTIL_FORMAT_H
#define SYSCOMMON_UTIL_FORMAT_H

#include <cstdarg>
#include <cstddef>
#include <span>
#include <string>

namespace syscommon {

// snprintf into `dst` (cut to dst.size() - 1 characters, always terminated when non-empty);
// returns what snprintf returns.
[[gnu::format(printf, 2, 3)]] int format_into(std::span<char> dst, const char *fmt, ...);

// The same text as a string, cut to `limit` - 1 characters like snprintf into a buffer of
// `limit` bytes.
[[gnu::format(printf, 2, 3)]] std::string format_text(std::size_t limit, const char *fmt, ...);
[[gnu::format(printf, 2, 0)]] std::string vformat_text(std::size_t limit, const char *fmt, va_list args);

}  // namespace syscommon

#endif
