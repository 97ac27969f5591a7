// LED bits (segment 7899): byte 0 fault, byte 1 master, byte 2 coupling.
#include "shm/access.h"

using namespace syscommon;
using namespace syscommon::shm;

namespace {

constexpr std::size_t kFault = 0;
constexpr std::size_t kMaster = 1;
constexpr std::size_t kCoupling = 2;

int change_bits(std::size_t byte, uint8_t bits, bool on) {
  update_field<uint8_t>(kLed, byte, [=](uint8_t v) { return static_cast<uint8_t>(on ? (v | bits) : (v & ~bits)); });
  return 0;
}

}  // namespace

extern "C" {

SYSCOMMON_API int shm_ledGetAllLedBits(uint8_t *fault, uint8_t *master, uint8_t *coupling) {
  CriticalSection cs(kLed);
  *fault = cs.load<uint8_t>(kFault);
  *master = cs.load<uint8_t>(kMaster);
  *coupling = cs.load<uint8_t>(kCoupling);
  return 0;
}

SYSCOMMON_API int shm_ledSetMaster(uint8_t bits) { return change_bits(kMaster, bits, true); }
SYSCOMMON_API int shm_ledClearMaster(uint8_t bits) { return change_bits(kMaster, bits, false); }
SYSCOMMON_API int shm_ledSetCoupling(uint8_t bits) { return change_bits(kCoupling, bits, true); }
SYSCOMMON_API int shm_ledClearCoupling(uint8_t bits) { return change_bits(kCoupling, bits, false); }

SYSCOMMON_API void Ssc_setMasterLed(int bits) { shm_ledSetMaster(static_cast<uint8_t>(bits)); }
SYSCOMMON_API void Ssc_clearMasterLed(int bits) { shm_ledClearMaster(static_cast<uint8_t>(bits)); }
SYSCOMMON_API void Ssc_setCouplingLed(int bits) { shm_ledSetCoupling(static_cast<uint8_t>(bits)); }
SYSCOMMON_API void Ssc_clearCouplingLed(int bits) { shm_ledClearCoupling(static_cast<uint8_t>(bits)); }

// The fault LED belongs to the hardware monitor; this library never writes its byte.
SYSCOMMON_API void Ssc_setFaultLed(int /*bits*/) {}
SYSCOMMON_API void Ssc_clearFaultLed(int /*bits*/) {}

}  // extern "C"
