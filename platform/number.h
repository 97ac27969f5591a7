// Text-to-number conversions as the device's C library makes them, on any host. The device
// is a 32-bit system: its `long` has 32 bits, so strtol, strtoul and atoi saturate at the
// 32-bit limits (errno ERANGE), where a 64-bit host converts to 64 bits and the cast to
// int wraps. Every conversion of outside text in the library goes through these, so
// both builds give the same numbers.
#ifndef SYSCOMMON_PLATFORM_NUMBER_H
#define SYSCOMMON_PLATFORM_NUMBER_H

#include <cstdint>

namespace syscommon {

// strtol with a 32-bit long: leading blanks, a sign, digits of `base` (0: C prefixes).
// `end` (when not null) receives the first character not used, or `text` when no digits.
int32_t device_strtol(const char *text, char **end, int base);

// strtoul with a 32-bit unsigned long: a '-' negates modulo 2^32; a magnitude above
// 0xFFFFFFFF gives 0xFFFFFFFF.
uint32_t device_strtoul(const char *text, char **end, int base);

// atoi: device_strtol in base 10.
inline int device_atoi(const char *text) { return device_strtol(text, nullptr, 10); }

// sscanf's "%d" (`is_signed`) or "%x" run over `count` numbers with the one character `sep`
// between them, as a "%d-%d-%d" format reads: stops at the first number or separator
// missing and returns how many numbers were stored; the others keep their values.
int scan_numbers(const char *text, char sep, int count, int base, uint32_t *out);

// a + b in the device's 32-bit int, wrapping as its arithmetic does instead of
// overflowing (the year and month offsets of records whose fields came from outside).
inline int32_t wrapping_add(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

}  // namespace syscommon

#endif
