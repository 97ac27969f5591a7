// Comparison of a running and a new configuration table, so that only what changed is
// applied: the generic record comparison and the change lists of the VLAN interface,
// bridge and WAN address client settings.
#include <errno.h>

#include <cstdio>
#include <cstdlib>
#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>
#include <type_traits>

#include "syscommon/netstat.h"
#include "syscommon/shm.h"

namespace {

// A key width other than 1, 2 or 4 is a programming error of the caller: stop the process as
// a failed assertion does, naming this source ("common") and the function, in any build.
[[noreturn]] void stop_on_key_width(int line, const char *function) {
  std::fprintf(stderr, "%s: common:%d: %s: Assertion `key_width == 1 || key_width == 2 || key_width == 4' failed.\n",
               program_invocation_short_name, line, function);
  std::abort();
}

const uint8_t *record(const void *table, int i, uint32_t size) {
  return static_cast<const uint8_t *>(table) + static_cast<std::size_t>(i) * size;
}

uint32_t key_of(const uint8_t *rec, const ConfCmpParams &p) {
  uint8_t b = 0;
  uint16_t h = 0;
  uint32_t w = 0;
  switch (p.key_width) {
    case 1:
      std::memcpy(&b, rec + p.key_offset, 1);
      return b;
    case 2:
      std::memcpy(&h, rec + p.key_offset, 2);
      return h;
    default:
      std::memcpy(&w, rec + p.key_offset, 4);
      return w;
  }
}

bool same_subnet(uint32_t ip1, uint32_t mask1, uint32_t ip2, uint32_t mask2) {
  return (ip1 & mask1) == (ip2 & mask2);
}

uint32_t bit_if(bool condition, uint32_t bit) { return condition ? bit : 0; }

std::string_view name_of(const char (&name)[32]) { return {name, ::strnlen(name, sizeof name)}; }

}  // namespace

int two_conf_cmp(const void *old_table, const void *new_table, int count, uint8_t *flags,
                 const ConfCmpParams *params) {
  const ConfCmpParams &p = *params;
  if (p.key_width != 1 && p.key_width != 2 && p.key_width != 4) stop_on_key_width(__LINE__, __func__);
  if (count > 0) std::memset(flags, 0, static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    const uint8_t *old_rec = record(old_table, i, p.record_size);
    if (key_of(old_rec, p) == 0) break;  // an unused record ends the old table too
    bool found = false;
    for (int j = 0; j < count && !found; ++j) {
      const uint8_t *new_rec = record(new_table, j, p.record_size);
      if (key_of(new_rec, p) == 0) break;  // an unused record ends the new table
      if (std::memcmp(old_rec, new_rec, p.compare_size) == 0) {
        flags[j] |= 1;
        found = true;
      }
    }
    if (!found) flags[i] |= 2;
  }
  return 0;
}

namespace {

// Where a change entry keeps the old and the new record's bytes.
std::span<uint8_t> old_part(ConfChangeEntry &e) { return e.old_settings; }
std::span<uint8_t> new_part(ConfChangeEntry &e) { return e.new_settings; }
std::span<uint8_t> old_part(ConfBrgChangeEntry &e) { return e.old_record; }
std::span<uint8_t> new_part(ConfBrgChangeEntry &e) { return e.new_record; }

template <class Record>
void copy_part(std::span<uint8_t> part, const Record &r) {
  static_assert(std::is_trivially_copyable_v<Record>);
  std::memcpy(part.data(), &r, std::min(part.size(), sizeof r));
}

// One entry per old record with a name, in table order: matched by name in the new table
// (presence 1, `changes` of the pair, both records' bytes) or gone (presence 2, change
// 128, the old bytes). Records only in the new table give nothing.
template <class Record, class List, class Changes>
int name_matched_changes(const Record *old_table, const Record *new_table, int count, List *list, Changes changes) {
  constexpr uint32_t kMax = std::extent_v<decltype(List::entry)>;
  uint32_t n = 0;
  for (int i = 0; i < count && n < kMax; ++i) {
    const Record &o = old_table[i];
    if (o.usr_name[0] == '\0') continue;
    auto &e = list->entry[n++];
    e = {};
    std::memcpy(e.name, o.usr_name, sizeof e.name);
    copy_part(old_part(e), o);
    e.presence = CONF_PRESENT_OLD_ONLY;
    e.changes = CONF_CHANGE_GONE;
    for (int j = 0; j < count; ++j) {
      const Record &c = new_table[j];
      if (name_of(c.usr_name) != name_of(o.usr_name)) continue;
      e.presence = CONF_PRESENT_BOTH;
      e.changes = bit_if(!same_subnet(o.ip, o.mask, c.ip, c.mask), CONF_CHANGE_SUBNET) | changes(o, c);
      copy_part(new_part(e), c);
      break;
    }
  }
  list->count = n;
  return static_cast<int>(n);
}

}  // namespace

int two_conf_cmpVconfig(const ShmVlanIfConfig *old_table, const ShmVlanIfConfig *new_table, int count,
                        ConfChangeList *list) {
  return name_matched_changes(old_table, new_table, count, list, [](const ShmVlanIfConfig &o, const ShmVlanIfConfig &c) {
    return bit_if(o.attribute != c.attribute, CONF_CHANGE_SETTING2) | bit_if(o.vid != c.vid, CONF_CHANGE_SETTING1);
  });
}

int two_conf_cmpBrg(const ShmBridgeConfig *old_table, const ShmBridgeConfig *new_table, int count,
                    ConfBrgChangeList *list) {
  return name_matched_changes(old_table, new_table, count, list, [](const ShmBridgeConfig &o, const ShmBridgeConfig &c) {
    return bit_if(o.enable != c.enable, CONF_CHANGE_SETTING2);
  });
}

namespace {

constexpr uint32_t kIgnoredFlag = 1u << 16;

// The settings part of the address client's change entry: flags (bit 16 cleared), a word
// left 0, setting2, setting1, address and mask.
void client_settings(uint8_t (&out)[32], const WanClientConfig &c) {
  const uint32_t words[6] = {c.flags & ~kIgnoredFlag, 0, c.setting2, c.setting1, c.ip, c.mask};
  std::memcpy(out, words, sizeof words);
}

}  // namespace

int two_conf_cmpIpclient(const WanClientConfig *old_rec, const WanClientConfig *new_rec, ConfChangeList *list) {
  *list = ConfChangeList{};
  ConfChangeEntry &e = list->entry[0];
  std::strcpy(e.name, "WAN");
  client_settings(e.old_settings, *old_rec);
  if (new_rec->setting1 == 0) {
    e.changes = CONF_CHANGE_GONE;
  } else {
    const WanClientConfig &o = *old_rec, &c = *new_rec;
    e.changes = bit_if(!same_subnet(o.ip, o.mask, c.ip, c.mask), CONF_CHANGE_SUBNET) |
                bit_if(o.setting2 != c.setting2, CONF_CHANGE_SETTING2) |
                bit_if(o.setting1 != c.setting1, CONF_CHANGE_SETTING1) |
                bit_if(((o.flags ^ c.flags) & ~kIgnoredFlag) != 0, CONF_CHANGE_FLAGS);
    client_settings(e.new_settings, c);
  }
  list->count = 1;
  return 1;
}

int cmpWANInfo(void * /*ignored*/, uint32_t saved[3]) {
  char ifname[SHM_IFNAME_SIZE + 1] = {};
  const int vid = get_shm_wan_interface_vid();
  get_shm_interface_name_by_vid(vid, ifname);
  uint32_t now[3] = {static_cast<uint32_t>(vid), 0, 0};
  commGetIfaceIpMask(ifname, &now[1], &now[2], 0);
  if (std::memcmp(now, saved, sizeof now) == 0) return 0;
  std::memcpy(saved, now, sizeof now);
  return 1;
}
