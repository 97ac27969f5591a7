// Lookups in the event-log description tables. Every table is searched by its id column
// from the first position to the last; the first match wins and the position never stands
// for the id.
#ifndef SYSCOMMON_LOG_LOOKUP_H
#define SYSCOMMON_LOG_LOOKUP_H

#include <cstdint>
#include <span>

#include "syscommon/log.h"

namespace syscommon::log {

// The entry of `table` whose id is `id`, or nullptr.
template <typename Entry>
const Entry *find_by_id(std::span<const Entry> table, uint32_t id) {
  for (const Entry &e : table)
    if (e.id == id) return &e;
  return nullptr;
}

inline const SlogDescEntry *find_event(uint32_t id) { return find_by_id<SlogDescEntry>(event_desc_table, id); }
inline const SlogDescEntry *find_reason(uint32_t id) { return find_by_id<SlogDescEntry>(reason_desc_table, id); }

// The vpn_log_table text of a code read from a file; "" for a code beyond the table.
inline const char *vpn_description(uint32_t code) {
  return code < SLOG_VPN_LOG_COUNT ? vpn_log_table[code].text : "";
}

}  // namespace syscommon::log

#endif
