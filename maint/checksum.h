// The firmware checksum's word load, shared by the in-memory and the streamed sums.
#ifndef SYSCOMMON_MAINT_CHECKSUM_H
#define SYSCOMMON_MAINT_CHECKSUM_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace syscommon::maint {

inline uint32_t load_be32(const unsigned char *p) {
  uint32_t w;
  std::memcpy(&w, p, 4);
  if constexpr (std::endian::native == std::endian::little) w = __builtin_bswap32(w);
  return w;
}

// Sum of `words` big-endian words from p, modulo 2^32.
uint32_t sum_be_words(const unsigned char *p, std::size_t words);

}  // namespace syscommon::maint

#endif
