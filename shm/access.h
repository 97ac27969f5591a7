// Accessor forms that return the store's result code (0) after one whole-field or
// whole-record move; shared by the accessor files of the store.
#ifndef SYSCOMMON_SHM_ACCESS_H
#define SYSCOMMON_SHM_ACCESS_H

#include <cstddef>

#include "platform/segment.h"
#include "shm/layout.h"

namespace syscommon::shm {

template <class T>
int set(const SegmentKeys &keys, std::size_t off, T value) {
  write_field(keys, off, value);
  return 0;
}

inline int copy_in(const SegmentKeys &keys, std::size_t off, const void *src, std::size_t n) {
  write_bytes(keys, off, src, n);
  return 0;
}

inline int copy_out(const SegmentKeys &keys, std::size_t off, void *dst, std::size_t n) {
  read_bytes(keys, off, dst, n);
  return 0;
}

// Offset of element `index` of a table; the index is not checked.
inline std::size_t index_offset(std::size_t base, std::size_t stride, int index) {
  return base + stride * static_cast<std::size_t>(index);
}

}  // namespace syscommon::shm

#endif
