// Multicast table (segment 7895): 256 entries and a high-water count that never shrinks.
#include <algorithm>
#include <iterator>
#include <cstring>

#include "shm/access.h"

using namespace syscommon;
using namespace syscommon::shm;

namespace {

constexpr std::size_t entry_offset(int i) { return offsetof(McastSegment, entry) + sizeof(ShmMcastEntry) * i; }

bool same_mac(const ShmMcastEntry &a, const ShmMcastEntry &b) { return std::memcmp(a.mac, b.mac, 6) == 0; }

bool is_free(const ShmMcastEntry &e) {
  return std::all_of(std::begin(e.mac), std::end(e.mac), [](uint8_t b) { return b == 0; });
}

int walk_limit(const CriticalSection &cs) {
  return std::min(kMcastEntries, cs.load<int32_t>(offsetof(McastSegment, count)));
}

// The first entry, in table order, that `match` accepts; -1 if none.
template <class Match>
int find_entry(const CriticalSection &cs, const ShmMcastEntry &want, Match match) {
  for (int i = 0, n = walk_limit(cs); i < n; ++i)
    if (match(want, cs.load<ShmMcastEntry>(entry_offset(i)))) return i;
  return -1;
}

}  // namespace

extern "C" {

SYSCOMMON_API int shm_mcast_set(const void *entry) {
  ShmMcastEntry want;
  std::memcpy(&want, entry, sizeof want);
  CriticalSection cs(kMcast);
  int result = -1;
  int first_free = kMcastEntries;
  for (int i = 0, n = walk_limit(cs); i < n; ++i) {
    ShmMcastEntry cur = cs.load<ShmMcastEntry>(entry_offset(i));
    if (first_free == kMcastEntries && is_free(cur)) first_free = i;
    if (want.vid != 0 && want.vid != cur.vid) continue;
    if (same_mac(want, cur)) {  // every matching entry is overwritten
      cs.store(entry_offset(i), want);
      result = 0;
    }
  }
  if (result == 0) return 0;
  int32_t count = cs.load<int32_t>(offsetof(McastSegment, count));
  if (first_free < kMcastEntries) {
    cs.store(entry_offset(first_free), want);
    result = 0;
  } else if (count < kMcastEntries) {
    cs.store(entry_offset(count), want);
    cs.store<int32_t>(offsetof(McastSegment, count), count + 1);
    result = 0;
  }
  return result;
}

SYSCOMMON_API int shm_mcast_get(void *entry) {
  ShmMcastEntry want;
  std::memcpy(&want, entry, sizeof want);
  CriticalSection cs(kMcast);
  int i = find_entry(cs, want, [](const ShmMcastEntry &w, const ShmMcastEntry &cur) {
    return same_mac(w, cur) && (w.vid == 0 || cur.vid == 0 || w.vid == cur.vid);
  });
  if (i < 0) return -1;
  cs.copy_out(entry_offset(i), entry, sizeof(ShmMcastEntry));
  return 0;
}

SYSCOMMON_API int shm_mcast_remove(const void *entry) {
  ShmMcastEntry want;
  std::memcpy(&want, entry, sizeof want);
  CriticalSection cs(kMcast);
  // Unlike get, an entry stored for any VLAN (0) is not removed by a VLAN-specific request.
  int i = find_entry(cs, want, [](const ShmMcastEntry &w, const ShmMcastEntry &cur) {
    return same_mac(w, cur) && (w.vid == 0 || w.vid == cur.vid);
  });
  if (i < 0) return -1;
  cs.fill(entry_offset(i), 0, sizeof(ShmMcastEntry));
  return 0;
}

}  // extern "C"
