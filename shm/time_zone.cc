// Local time and GMT conversions by the stored time-zone index.
#include <ctime>

#include "shm/access.h"
#include "shm/tz_offsets.h"

using namespace syscommon;
using namespace syscommon::shm;

namespace {

// The index is not checked against the table (as the management processes expect).
int32_t stored_offset() { return kTimezoneOffsets.data()[shm_get_timezone()]; }

}  // namespace

extern "C" {

SYSCOMMON_API struct tm *tarn_localtime(time_t *t) {
  *t += stored_offset();
  return gmtime(t);
}

SYSCOMMON_API struct tm *tarn_Gmttime(time_t *t) {
  *t -= stored_offset();
  return gmtime(t);
}
}  // extern "C"
