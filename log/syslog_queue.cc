// The process's syslog queue: 64 fixed slots filled by syslog_send from any thread and
// sent by one background thread, at most two messages a second. Nothing locks: the write
// index is a plain shared word (read and written whole), and a burst of more than 64
// messages overwrites slots not yet sent.
#include <atomic>
#include <chrono>
#include <cstring>
#include <thread>

#include "platform/host.h"
#include "syscommon/log.h"

extern "C" {
SYSCOMMON_API char messages[SLOG_SYSLOG_SLOTS][SLOG_SYSLOG_TEXT];
SYSCOMMON_API int32_t priorities[SLOG_SYSLOG_SLOTS];
SYSCOMMON_API int32_t syslog_write_index;
SYSCOMMON_API int32_t ThreadSyslog;
SYSCOMMON_API pthread_t syslog_th;
SYSCOMMON_API pthread_attr_t syslog_attr;
SYSCOMMON_API int32_t syslog_pthred_arg;
}

namespace {

constexpr int kLastSlot = SLOG_SYSLOG_SLOTS - 1;
constexpr auto kPace = std::chrono::milliseconds(500);

// Where the terminator of a full last slot lands: the byte after the array is not ours.
char g_after_last_slot;

int32_t load_index() { return std::atomic_ref<int32_t>(syslog_write_index).load(std::memory_order_acquire); }

}  // namespace

extern "C" {

SYSCOMMON_API int syslog_send(const char *text, int priority, int flag) {
  const int32_t slot = load_index();
  if (slot < 0 || slot > kLastSlot) return 0;  // only this file writes the index
  char *dst = messages[slot];
  std::memset(dst, 0, SLOG_SYSLOG_TEXT);
  priorities[slot] = priority;
  std::size_t n = 0;
  if (text != nullptr)
    for (; n < SLOG_SYSLOG_TEXT && text[n] != '\0'; ++n) dst[n] = text[n];
  // A full slot's terminator lands on the first byte of the next slot, as on the device.
  if (n < SLOG_SYSLOG_TEXT)
    dst[n] = '\0';
  else
    *(slot < kLastSlot ? messages[slot + 1] : &g_after_last_slot) = '\0';
  ThreadSyslog = flag;
  std::atomic_ref<int32_t>(syslog_write_index).store(slot == kLastSlot ? 0 : slot + 1, std::memory_order_release);
  return 0;
}

SYSCOMMON_API void *Syslog_thread(void * /*arg*/) {
  int read_index = 0;
  for (;;) {
    const int32_t write_index = load_index();
    if (write_index <= kLastSlot && write_index != read_index) {
      // A full slot has no terminator of its own: send a bounded copy.
      char text[SLOG_SYSLOG_TEXT + 1];
      std::memcpy(text, messages[read_index], SLOG_SYSLOG_TEXT);
      text[SLOG_SYSLOG_TEXT] = '\0';
      syscommon::syslog_once(" ", priorities[read_index], text);
      read_index = read_index == kLastSlot ? 0 : read_index + 1;
    }
    std::this_thread::sleep_for(kPace);
  }
}

SYSCOMMON_API int startup_syslog_thread(void) {
  pthread_attr_init(&syslog_attr);
  return pthread_create(&syslog_th, &syslog_attr, Syslog_thread, &syslog_pthred_arg);
}

}  // extern "C"
