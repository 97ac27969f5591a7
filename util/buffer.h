// Heap buffers for exported functions: an allocation failure becomes the function's own
// failure result instead of an exception leaving the library.
#ifndef SYSCOMMON_UTIL_BUFFER_H
#define SYSCOMMON_UTIL_BUFFER_H

#include <cstddef>
#include <cstring>
#include <memory>
#include <new>

namespace syscommon {

using ByteBuffer = std::unique_ptr<unsigned char[]>;

// `n` bytes set to `fill`, or null when they cannot be had.
inline ByteBuffer try_buffer(std::size_t n, unsigned char fill = 0) {
  ByteBuffer b(new (std::nothrow) unsigned char[n == 0 ? 1 : n]);
  if (b) std::memset(b.get(), fill, n);
  return b;
}

}  // namespace syscommon

#endif
