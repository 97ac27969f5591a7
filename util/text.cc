// In-place edits of text: trimming, case conversion, bounded appending, the guarded
// tokeniser and month abbreviations.
#include <cctype>
#include <cstring>
#include <mutex>
#include <string_view>

#include "syscommon/util.h"

namespace {

// Serialises lock_strtok between the threads of one process.
std::mutex MutexStrtok;

// Moves the part of text between the first and the last character not in `removable` to
// the start and terminates it; returns the length before trimming.
int strip(char *text, std::string_view removable) {
  if (text == nullptr) return 0;
  std::string_view all(text);
  auto first = all.find_first_not_of(removable);
  if (first == std::string_view::npos) {
    text[0] = '\0';
  } else {
    auto last = all.find_last_not_of(removable);
    std::size_t n = last - first + 1;
    std::memmove(text, text + first, n);
    text[n] = '\0';
  }
  return static_cast<int>(all.size());
}

char *convert_case(char *text, bool upper) {
  if (text == nullptr) return text;
  for (char *p = text; *p != '\0'; ++p) {
    int c = static_cast<unsigned char>(*p);
    *p = static_cast<char>(upper ? std::toupper(c) : std::tolower(c));
  }
  return text;
}

// Letter i (0-based) of text in upper case, or 0 past the end.
char letter(const char *text, int i) {
  for (int k = 0; k < i; ++k)
    if (text[k] == '\0') return 0;
  return static_cast<char>(std::toupper(static_cast<unsigned char>(text[i])));
}

}  // namespace

extern "C" {

SYSCOMMON_API int Ssys_stripspace(char *text) { return strip(text, " "); }

SYSCOMMON_API int Ssys_stripCR(char *text) { return strip(text, "\r\n"); }

SYSCOMMON_API char *toUpper(char *text) { return convert_case(text, true); }

SYSCOMMON_API char *toLower(char *text) { return convert_case(text, false); }

SYSCOMMON_API char *lock_strtok(char *text, const char *delimiters) {
  std::lock_guard<std::mutex> hold(MutexStrtok);
  return std::strtok(text, delimiters);  // NOLINT(concurrency-mt-unsafe): guarded above
}

SYSCOMMON_API char *append_str(char *destination, const char *text, int size) {
  if (destination == nullptr || text == nullptr || size <= 0) return destination;
  auto cap = static_cast<std::size_t>(size);
  std::size_t used = std::strlen(destination);
  if (used >= cap) return destination;
  std::size_t add = std::strlen(text);
  if (used + add >= cap)
    std::memcpy(destination + used, text, cap - used);  // fills the buffer, unterminated
  else
    std::memcpy(destination + used, text, add + 1);
  return destination;
}

SYSCOMMON_API int month_str_to_int(const char *text) {
  if (text == nullptr) return 0;
  switch (letter(text, 0)) {
    case 'A':
      return letter(text, 1) == 'P' ? 4 : 8;
    case 'D':
      return 12;
    case 'F':
      return 2;
    case 'J':
      if (letter(text, 1) == 'A') return 1;
      return letter(text, 2) == 'N' ? 6 : 7;
    case 'M':
      return letter(text, 2) == 'R' ? 3 : 5;
    case 'N':
      return 11;
    case 'O':
      return 10;
    case 'S':
      return 9;
    default:
      return 0;
  }
}

}  // extern "C"
