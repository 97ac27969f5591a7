// The device's time-zone offsets in seconds, indexed by the time-zone index kept in the
// system segment. The one table shared by the store's conversions and the zone lookups.
#ifndef SYSCOMMON_SHM_TZ_OFFSETS_H
#define SYSCOMMON_SHM_TZ_OFFSETS_H

#include <array>
#include <cstdint>

namespace syscommon {

inline constexpr std::array<int32_t, 63> kTimezoneOffsets = {
    -43200, -39600, -36000, -32400, -28800, -25200, -25200, -21600, -21600, -21600, -18000,
    -18000, -18000, -14400, -14400, -14400, -12600, -10800, -10800, -7200,  -3600,  0,
    0,      3600,   3600,   3600,   3600,   7200,   7200,   7200,   7200,   7200,   7200,
    10800,  10800,  10800,  12600,  14400,  14400,  16200,  18000,  18000,  19800,  21600,
    21600,  25200,  28800,  28800,  28800,  28800,  32400,  32400,  32400,  34200,  34200,
    36000,  36000,  36000,  36000,  36000,  39600,  43200,  43200};

}  // namespace syscommon

#endif
