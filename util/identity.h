// Reading the device-identity record (syscommon/hw.h) inside the library.
#ifndef SYSCOMMON_UTIL_IDENTITY_H
#define SYSCOMMON_UTIL_IDENTITY_H

#include <cstring>
#include <string_view>

#include "syscommon/hw.h"

namespace syscommon {

// Entry i (0..SHM_PORT_NAME_COUNT-1) of the record's port-name list, bounded to its 16
// characters (a full entry has no terminator); empty for an index outside the list.
inline std::string_view identity_port_name(const ShmEepromInfo &info, int i) {
  if (i < 0 || i >= SHM_PORT_NAME_COUNT) return {};
  const char *name = info.port_name[i];
  return {name, strnlen(name, SHM_PORT_NAME_LEN)};
}

// The record as the store holds it now.
inline ShmEepromInfo identity_record() {
  ShmEepromInfo info{};
  shm_sysGetEepromInfo(&info);
  return info;
}

}  // namespace syscommon

#endif
