// The renderers of system and firewall records, with the names they look up in the shared
// store. Each lookup enters the store (lock, attach, copy, detach, unlock); a conversion of
// many records passes a NameCache so that each VLAN id and the port-name list are looked
// up once per batch instead of once per record.
#ifndef SYSCOMMON_LOG_RENDER_H
#define SYSCOMMON_LOG_RENDER_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "syscommon/hw.h"
#include "syscommon/log.h"

namespace syscommon::log {

struct NameCache {
  std::map<uint32_t, std::string> interfaces;  // VLAN id -> interface name
  std::optional<ShmEepromInfo> identity;       // holds the port-name list
};

// Eventlog_to_Str and firewallLog_to_str, with names taken from `cache` when it is given.
int render_system_record(const SlogSystemRecord &record, char *out, int show_msg_id, std::size_t size,
                         NameCache *cache);
void append_firewall_text(const SlogLogEntry &entry, char *out, NameCache *cache);

}  // namespace syscommon::log

#endif
