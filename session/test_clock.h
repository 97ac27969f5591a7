// Test clocks: a test binary that includes this header (from one file) replaces the
// library's millisecond and second clocks with values the test sets.
#ifndef SYSCOMMON_SESSION_TEST_CLOCK_H
#define SYSCOMMON_SESSION_TEST_CLOCK_H

#include <cstdint>

#include "syscommon/platform.h"

namespace syscommon::testing {
inline uint32_t g_msecs = 1000;
inline uint32_t g_secs = 1000;
inline int g_msecs_reads = 0;
}  // namespace syscommon::testing

extern "C" uint32_t Ssys_current_msecs(void) {
  ++syscommon::testing::g_msecs_reads;
  return syscommon::testing::g_msecs;
}
extern "C" uint32_t Ssys_current_secs(void) { return syscommon::testing::g_secs; }

#endif
