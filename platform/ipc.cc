// System V semaphores and shared-memory segments: the exported IPC primitives.
//
// Each segment has one semaphore used as a mutex between processes. Every semop on it carries
// SEM_UNDO so that a process killed inside a critical section gives the semaphore back.
// Identifiers are cached per thread by key; a removed object fails the next operation
// with EINVAL or EIDRM, which drops the cached id and looks the key up again.

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/shm.h>

#include <array>
#include <cerrno>
#include <cstdio>

#include "syscommon/platform.h"

namespace {

constexpr int kPermissions = 0666;
constexpr int kSystemSegmentSize = 7112;

// Small per-thread map from IPC key to identifier.
class IdCache {
 public:
  int find(int key) const {
    for (const auto &e : entries_)
      if (e.used && e.key == key) return e.id;
    return -1;
  }
  void put(int key, int id) {
    for (auto &e : entries_) {
      if (e.used && e.key == key) {
        e.id = id;
        return;
      }
    }
    auto &slot = entries_[next_++ % entries_.size()];
    slot = {true, key, id};
  }
  void drop(int key) {
    for (auto &e : entries_)
      if (e.used && e.key == key) e.used = false;
  }

 private:
  struct Entry {
    bool used = false;
    int key = 0;
    int id = -1;
  };
  std::array<Entry, 48> entries_{};
  unsigned next_ = 0;
};

thread_local IdCache sem_ids;
thread_local IdCache shm_ids;

void report(const char *what, int key) {
  std::fprintf(stderr, "syscommon: %s(key %d) failed: errno %d\n", what, key, errno);
}

// A key's semaphore set holds two semaphores: 0 is the mutex, 1 marks the set as set up. A
// new set has both at 0. Whoever first finds the mark clear sets the set up in one atomic
// operation: mutex free and mark made, only while the mark is still clear. Every process that
// looks a key up does this, not only the creator, so a creator killed between creating the
// set and setting it up never leaves the mutex closed, and a set that is already in use is
// never freed under its holder.
constexpr int kSetSize = 2;

void set_up(int id) {
  sembuf ops[3] = {{1, 0, IPC_NOWAIT}, {1, 1, 0}, {0, 1, 0}};
  // EAGAIN: already set up. EFBIG: a one-semaphore set made by someone else, used as it is.
  semop(id, ops, 3);
}

// Returns the semaphore set of `key`, created and set up (free) when absent.
int semaphore_id(int key) {
  int id = sem_ids.find(key);
  if (id >= 0) return id;
  id = semget(key, kSetSize, IPC_CREAT | kPermissions);
  if (id < 0 && errno == EINVAL) id = semget(key, 0, 0);  // exists with another size
  if (id < 0) {
    report("semget", key);
    return -1;
  }
  set_up(id);
  sem_ids.put(key, id);
  return id;
}

int semaphore_op(int key, short delta) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    int id = semaphore_id(key);
    if (id < 0) return -1;
    sembuf op{0, delta, SEM_UNDO};
    int rc;
    do {
      rc = semop(id, &op, 1);
    } while (rc < 0 && errno == EINTR);
    if (rc == 0) return 0;
    if (errno != EINVAL && errno != EIDRM) break;
    sem_ids.drop(key);
  }
  report("semop", key);
  return -1;
}

// Last resort when a segment cannot be attached: accessors must never see an unset
// pointer, so they get this scratch page (large enough for any record the library moves).
alignas(4096) unsigned char fallback_page[8192];

int segment_id(int key, int size) {
  int id = shm_ids.find(key);
  if (id >= 0) return id;
  id = shmget(key, static_cast<size_t>(size), IPC_CREAT | kPermissions);
  if (id < 0 && errno == EINVAL) id = shmget(key, 0, 0);  // exists with another size
  if (id >= 0) shm_ids.put(key, id);
  return id;
}

void *attach(int key, int size) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    int id = segment_id(key, size);
    if (id < 0) break;
    void *p = shmat(id, nullptr, 0);
    if (p != reinterpret_cast<void *>(-1)) return p;  // NOLINT(performance-no-int-to-ptr): shmat failure value
    if (errno != EINVAL && errno != EIDRM) break;
    shm_ids.drop(key);
  }
  report("shmat", key);
  return fallback_page;
}

void detach(void **ptr) {
  if (ptr == nullptr || *ptr == nullptr) return;
  if (*ptr != fallback_page) shmdt(*ptr);
}

}  // namespace

extern "C" {

SYSCOMMON_API int Semaphore_init(int semKey) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    int id = semaphore_id(semKey);
    if (id < 0) return -1;
    if (semctl(id, 0, SETVAL, 1) == 0) return 0;
    sem_ids.drop(semKey);
  }
  report("semctl", semKey);
  return -1;
}

SYSCOMMON_API int Semaphore_P(int semKey) { return semaphore_op(semKey, -1); }

SYSCOMMON_API int Semaphore_V(int semKey) { return semaphore_op(semKey, 1); }

SYSCOMMON_API int shm_enterCS(int semKey, int shmKey, void **ptr, int size) {
  int rc = semaphore_op(semKey, -1);
  *ptr = attach(shmKey, size);
  return rc;
}

SYSCOMMON_API int shm_leaveCS(int semKey, int /*shmKey*/, void **ptr) {
  detach(ptr);
  *ptr = nullptr;
  return semaphore_op(semKey, 1);
}

SYSCOMMON_API int CS_Start(int semKey, int shmKey, void **ptr) {
  return shm_enterCS(semKey, shmKey, ptr, kSystemSegmentSize);
}

SYSCOMMON_API int CS_End(int semKey, int shmKey, void **ptr) { return shm_leaveCS(semKey, shmKey, ptr); }

}  // extern "C"
