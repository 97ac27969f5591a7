// shm_init: creates every semaphore and zeroes every segment, in the fixed start-up order.
#include <cstring>

#include "platform/segment.h"
#include "shm/layout.h"
#include "syscommon/platform.h"

using namespace syscommon;
using namespace syscommon::shm;

extern "C" {

SYSCOMMON_API int shm_vlanCpuInfoInit(void) { return reset_segment(kVlanCpu); }

SYSCOMMON_API int shm_ipMrouteInit(void) { return reset_segment(kMroute); }

SYSCOMMON_API int shm_init(void) {
  // The system segment first; CS_Start creates its semaphore, so no Semaphore_init here.
  void *ptr = nullptr;
  CS_Start(kSystem.sem, kSystem.shm, &ptr);
  std::memset(ptr, 0, static_cast<std::size_t>(kSystem.size));
  CS_End(kSystem.sem, kSystem.shm, &ptr);

  reset_segment(kLed);
  reset_segment(kRedundancy);
  reset_segment(kMcast);
  reset_segment(kIdentity);
  reset_segment(kLogConfig);
  Semaphore_init(kAccounts.sem);
  Semaphore_init(kSemReserved1523);
  zero_segment(kAccounts);
  reset_segment(kCertGen);
  reset_segment(kVpnMode);
  shm_vlanCpuInfoInit();
  reset_segment(kBackup);
  reset_segment(kSnmp);
  reset_segment(kSecurity);
  reset_segment(kBoot);
  reset_segment(kSession);
  reset_segment(kSfpDdm);
  Semaphore_init(kSemReserved1525);
  shm_ipMrouteInit();
  reset_segment(kPortUtil);
  reset_segment(kFwEm);
  reset_segment(kResource);
  return reset_segment(kSessionLogTime);
}

}  // extern "C"
