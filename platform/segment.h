// The accessor shape, written once: enter a segment's critical section (lock + attach),
// move bytes in or out, and leave it (detach + unlock) on every path.
#ifndef SYSCOMMON_PLATFORM_SEGMENT_H
#define SYSCOMMON_PLATFORM_SEGMENT_H

#include <cstddef>
#include <cstring>
#include <type_traits>

namespace syscommon {

// A shared segment: semaphore key, shared-memory key and size. The system segment is
// entered with CS_Start/CS_End, every other one with shm_enterCS/shm_leaveCS.
struct SegmentKeys {
  int sem;
  int shm;
  int size;
  bool system = false;
};

// RAII guard for one critical section. Fields are moved with memcpy: single whole-word
// loads and stores, without alignment or aliasing assumptions about the mapping.
class CriticalSection {
 public:
  explicit CriticalSection(const SegmentKeys &keys);
  ~CriticalSection();
  CriticalSection(const CriticalSection &) = delete;
  CriticalSection &operator=(const CriticalSection &) = delete;

  [[nodiscard]] std::byte *base() const { return static_cast<std::byte *>(ptr_); }

  template <class T>
  [[nodiscard]] T load(std::size_t offset) const {
    static_assert(std::is_trivially_copyable_v<T>);
    T value;
    std::memcpy(&value, base() + offset, sizeof value);
    return value;
  }
  template <class T>
  void store(std::size_t offset, const T &value) {
    static_assert(std::is_trivially_copyable_v<T>);
    std::memcpy(base() + offset, &value, sizeof value);
  }
  void copy_out(std::size_t offset, void *dst, std::size_t n) const { std::memcpy(dst, base() + offset, n); }
  void copy_in(std::size_t offset, const void *src, std::size_t n) { std::memcpy(base() + offset, src, n); }
  void fill(std::size_t offset, int byte, std::size_t n) { std::memset(base() + offset, byte, n); }

 private:
  SegmentKeys keys_;
  void *ptr_ = nullptr;
};

// One-call forms of the shape, for the accessors that touch a single field or record.
template <class T>
T read_field(const SegmentKeys &keys, std::size_t offset) {
  CriticalSection cs(keys);
  return cs.load<T>(offset);
}

template <class T>
void write_field(const SegmentKeys &keys, std::size_t offset, const T &value) {
  CriticalSection cs(keys);
  cs.store(offset, value);
}

inline void read_bytes(const SegmentKeys &keys, std::size_t offset, void *dst, std::size_t n) {
  CriticalSection cs(keys);
  cs.copy_out(offset, dst, n);
}

inline void write_bytes(const SegmentKeys &keys, std::size_t offset, const void *src, std::size_t n) {
  CriticalSection cs(keys);
  cs.copy_in(offset, src, n);
}

// Read-modify-write of one field inside one section.
template <class T, class F>
T update_field(const SegmentKeys &keys, std::size_t offset, F &&change) {
  CriticalSection cs(keys);
  T value = change(cs.load<T>(offset));
  cs.store(offset, value);
  return value;
}

// Zeroes the whole segment inside its critical section; returns shm_leaveCS's result.
int zero_segment(const SegmentKeys &keys);
// Creates the segment's semaphore free (Semaphore_init), then zeroes the segment.
int reset_segment(const SegmentKeys &keys);

}  // namespace syscommon

#endif
