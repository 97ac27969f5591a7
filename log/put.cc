// Slog_put: reports one of a few fixed events through the log agent.
#include <array>
#include <cstdint>

#include "syscommon/log.h"

namespace {

struct PutPair {
  uint32_t event;
  uint32_t reason;
};

constexpr uint32_t kUnused = 0xFFFFFFFFu;
constexpr int kPutArgument = 4;

// Indexed by put code; codes 0, 3..5 and 10..14 are reserved.
constexpr std::array<PutPair, 16> kPutMap = {{
    {kUnused, 0},
    {0, 0},    // Cold Start
    {1, 0},    // Warm Start
    {kUnused, 0},
    {kUnused, 0},
    {kUnused, 0},
    {12, 35},  // Auth Fail, Admin
    {15, 67},  // Topology Change, Rapid Loop V2
    {17, 67},  // Coupling Topology Changed
    {16, 67},  // Master Mismatch
    {kUnused, 0},
    {kUnused, 0},
    {kUnused, 0},
    {kUnused, 0},
    {kUnused, 0},
    {15, 104},  // Topology Change, STP
}};

}  // namespace

// The put code indexes the map unchecked (callers pass 0..15); the shell's status is
// ignored and nothing is reported.
SYSCOMMON_API int Slog_put(int put_code, int /*ignored1*/, int /*ignored2*/) {
  const PutPair &p = kPutMap[static_cast<std::size_t>(put_code)];
  if (p.event == kUnused) return 0;
  call_SendSyslog_to_log(static_cast<int>(p.event), static_cast<int>(p.reason), kPutArgument);
  return 0;
}
