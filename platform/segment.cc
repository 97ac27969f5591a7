#include "platform/segment.h"

#include "syscommon/platform.h"

namespace syscommon {

CriticalSection::CriticalSection(const SegmentKeys &keys) : keys_(keys) {
  if (keys_.system)
    CS_Start(keys_.sem, keys_.shm, &ptr_);
  else
    shm_enterCS(keys_.sem, keys_.shm, &ptr_, keys_.size);
}

CriticalSection::~CriticalSection() {
  if (keys_.system)
    CS_End(keys_.sem, keys_.shm, &ptr_);
  else
    shm_leaveCS(keys_.sem, keys_.shm, &ptr_);
}

int zero_segment(const SegmentKeys &keys) {
  void *ptr = nullptr;
  shm_enterCS(keys.sem, keys.shm, &ptr, keys.size);
  std::memset(ptr, 0, static_cast<std::size_t>(keys.size));
  return shm_leaveCS(keys.sem, keys.shm, &ptr);
}

int reset_segment(const SegmentKeys &keys) {
  Semaphore_init(keys.sem);
  return zero_segment(keys);
}

}  // namespace syscommon
