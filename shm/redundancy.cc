// Redundancy segment (7891): protocol byte and the Rapid Loop v2 ring configuration.
#include "shm/access.h"

using namespace syscommon;
using namespace syscommon::shm;

extern "C" {

SYSCOMMON_API int shm_rdndntSetProtocol(int protocol) {
  return set(kRedundancy, offsetof(ShmRedundancy, protocol), static_cast<uint8_t>(protocol));
}

SYSCOMMON_API int shm_rdndntGetProtocol(void) {
  return read_field<uint8_t>(kRedundancy, offsetof(ShmRedundancy, protocol));
}

SYSCOMMON_API int shm_rdndntGetAll(void *buf) { return copy_out(kRedundancy, 0, buf, sizeof(ShmRedundancy)); }

SYSCOMMON_API int shm_rl2SetConfig(const void *cfg) {
  return copy_in(kRedundancy, offsetof(ShmRedundancy, rl2), cfg, sizeof(ShmRl2Config));
}

SYSCOMMON_API int shm_rdndntIsRl2RingPort(int port) {
  // Decide on a copy: the lock is not held while the rings are compared.
  auto cfg = read_field<ShmRl2Config>(kRedundancy, offsetof(ShmRedundancy, rl2));
  if (cfg.enabled == 0) return 0;
  for (int r = 0; r < 2; ++r) {
    const ShmRl2Ring &ring = cfg.ring[r];
    if (ring.enabled == 0) continue;
    if (ring.port1 == port + 1 || ring.port2 == port + 1) return r + 1;
  }
  return 0;
}

SYSCOMMON_API int Srdndnt_isRedundantPort(int port) { return shm_rdndntIsRl2RingPort(port - 1); }

}  // extern "C"
