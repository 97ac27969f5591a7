// Default platform services for a development host. The loading process replaces any of
// them by defining the same symbol; calls from inside the library go through the dynamic
// symbol table, so the replacement is the one used.

#include <ctime>

#include "syscommon/platform.h"

namespace {
timespec monotonic_now() {
  timespec ts{};
  clock_gettime(CLOCK_MONOTONIC, &ts);
  return ts;
}
}  // namespace

extern "C" {

SYSCOMMON_API uint32_t Ssys_current_msecs(void) {
  timespec ts = monotonic_now();
  return static_cast<uint32_t>(static_cast<uint64_t>(ts.tv_sec) * 1000u +
                               static_cast<uint64_t>(ts.tv_nsec) / 1000000u);
}

SYSCOMMON_API uint32_t Ssys_current_secs(void) {
  // Shifted by one so that the clock never reads 0, even right after boot.
  return static_cast<uint32_t>(monotonic_now().tv_sec) + 1u;
}

SYSCOMMON_API uint32_t Ssc_getPortLinkState(void) { return 0; }

SYSCOMMON_API int Ssc_getPortStatsCounter(int /*port*/, uint32_t counters[24]) {
  for (int i = 0; i < 24; ++i) counters[i] = 0;
  return 0;
}

SYSCOMMON_API int Ssys_UI_port2MdlPort(int index, int *module, int *port) {
  *module = 0;
  *port = index;
  return index >= 0 && index <= 9 ? 1 : 0;
}

}  // extern "C"
