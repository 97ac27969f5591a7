// Validation of user text against the device's patterns and character classes.
#include <arpa/inet.h>
#include <regex.h>

#include <cstdio>
#include <cstring>
#include <string_view>

#include "syscommon/util.h"

namespace {

// General text: letters, digits, space, _ @ ! # $ % ^ & * ( ) . / - and backslash (inside
// the brackets every backslash is an ordinary character).
constexpr const char *kGeneralPattern = R"(^[0-9a-zA-Z_@!#$%^&*()\.\/\ \-]+$)";
// Banner text: the same set plus carriage return and line feed.
constexpr const char *kBannerPattern = "^[0-9a-zA-Z_@!#$%^&*()\r\n\\.\\/\\ \\-]+$";
constexpr const char *kHostnamePattern = "^[a-zA-Z]([a-zA-Z0-9-]{1,31})$";
// RE_BACKSLASH_ESCAPE_IN_LISTS | RE_BK_PLUS_QM | RE_CHAR_CLASSES | RE_HAT_LISTS_NOT_NEWLINE |
// RE_INTERVALS | RE_NEWLINE_ALT | RE_NO_BK_BRACES | RE_NO_BK_PARENS | RE_NO_BK_VBAR
constexpr reg_syntax_t kHostnameSyntax = 47879;

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kUpper = "ABCDEFGHIJKLMNOPQRSTUVWXYZ";
constexpr std::string_view kLower = "abcdefghijklmnopqrstuvwxyz";
constexpr std::string_view kSpecial = "~!@#$%^&*-_|;:,.<>[]{}()";
static_assert(kSpecial.size() == 24);

// A compiled POSIX pattern, released on every path.
class Regex {
 public:
  Regex(const char *pattern, int cflags) : rc_(regcomp(&re_, pattern, cflags)) {}
  ~Regex() {
    if (rc_ == 0) regfree(&re_);
  }
  Regex(const Regex &) = delete;
  Regex &operator=(const Regex &) = delete;

  [[nodiscard]] int compile_result() const { return rc_; }
  [[nodiscard]] int exec(const char *text) const { return regexec(&re_, text, 0, nullptr, 0); }

 private:
  regex_t re_{};
  int rc_;
};

// The fixed patterns are compiled once, on first use, and kept for the process: the C
// library's matching locks the compiled pattern, so threads may share it.
int whole_text_check(const char *text, const Regex &re) {
  if (text == nullptr) return -1;
  if (re.compile_result() != 0) return -1;
  return re.exec(text) == 0 ? 1 : -1;
}

int contains_any(const char *text, std::string_view set) {
  if (text == nullptr) return -1;
  return std::string_view(text).find_first_of(set) != std::string_view::npos ? 1 : -1;
}

// A pattern compiled through the GNU interface, released on every path.
class GnuRegex {
 public:
  GnuRegex(const char *pattern, reg_syntax_t syntax) {
    reg_syntax_t previous = re_set_syntax(syntax);
    error_ = re_compile_pattern(pattern, std::strlen(pattern), &buf_);
    re_set_syntax(previous);
  }
  ~GnuRegex() { regfree(&buf_); }
  GnuRegex(const GnuRegex &) = delete;
  GnuRegex &operator=(const GnuRegex &) = delete;

  [[nodiscard]] bool ok() const { return error_ == nullptr; }
  // Characters matched from the start of text, -1 on no match, -2 on an internal error.
  [[nodiscard]] int match(const char *text) {
    auto len = static_cast<regoff_t>(std::strlen(text));
    return static_cast<int>(re_match(&buf_, text, len, 0, nullptr));
  }

 private:
  re_pattern_buffer buf_{};
  const char *error_ = nullptr;
};

}  // namespace

extern "C" {

SYSCOMMON_API int Ssys_CheckString(const char *text) {
  static const Regex general(kGeneralPattern, REG_EXTENDED | REG_ICASE);
  return whole_text_check(text, general);
}

SYSCOMMON_API int Ssys_CheckString_banner(const char *text) {
  static const Regex banner(kBannerPattern, REG_EXTENDED | REG_ICASE);
  return whole_text_check(text, banner);
}

SYSCOMMON_API int Ssys_CheckStringHostname(const char *text) {
  if (text == nullptr) return -1;
  static GnuRegex hostname(kHostnamePattern, kHostnameSyntax);
  if (!hostname.ok()) return -1;
  return hostname.match(text);
}

SYSCOMMON_API int Ssys_CheckStringRegex(const char *text, const char *pattern, const int *options) {
  if (text == nullptr || pattern == nullptr) {
    std::fprintf(stderr, "%s|%s:%d Invalid parameter\n", "common", __func__, 8275);
    return -1;
  }
  Regex re(pattern, options != nullptr ? *options : REG_EXTENDED);
  if (re.compile_result() != 0) {
    std::fprintf(stderr, "%s|%s:%d regcomp(%s) failed\n", "common", __func__, 8282, pattern);
    return re.compile_result();
  }
  return re.exec(text);
}

SYSCOMMON_API int Ssys_CheckStringDigit(const char *text) { return contains_any(text, kDigits); }
SYSCOMMON_API int Ssys_CheckStringUppercase(const char *text) { return contains_any(text, kUpper); }
SYSCOMMON_API int Ssys_CheckStringLowercase(const char *text) { return contains_any(text, kLower); }
SYSCOMMON_API int Ssys_CheckStringSpecialchar(const char *text) { return contains_any(text, kSpecial); }

SYSCOMMON_API int isValidIpAddress(const char *text) {
  if (text == nullptr) return 0;
  in_addr addr{};
  return inet_pton(AF_INET, text, &addr) == 1 ? 1 : 0;
}

SYSCOMMON_API int isNumber(const char *text) {
  if (text == nullptr || *text == '\0') return 0;
  return std::string_view(text).find_first_not_of(kDigits) == std::string_view::npos ? 1 : 0;
}

SYSCOMMON_API int isZeroArray(const void *bytes, int length) {
  const auto *p = static_cast<const unsigned char *>(bytes);
  if (p == nullptr) return 0;
  for (int i = 0; i < length; ++i)
    if (p[i] != 0) return 1;
  return 0;
}

SYSCOMMON_API int Lsyscommon_isValidCharacter(int c) {
  unsigned low = static_cast<unsigned>(c) & 0xffu;
  return low >= 32 && low <= 126 ? 1 : 0;
}

}  // extern "C"
