// Comparison of a running and a new configuration table, so that only what changed is
// applied: the generic record comparison and the change lists of the VLAN interface,
// bridge and WAN address client settings.
#include <errno.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

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

int two_conf_cmpVconfig(const ShmVlanIfConfig *old_table, const ShmVlanIfConfig *new_table, int count,
                        ConfChangeList *list) {
  uint32_t n = 0;
  for (int i = 0; i < count && n < CONF_CHANGE_MAX; ++i) {
    const ShmVlanIfConfig &o = old_table[i];
    if (o.usr_name[0] == '\0') continue;
    ConfChangeEntry &e = list->entry[n++];
    e = ConfChangeEntry{};
    std::memcpy(e.name, o.usr_name, sizeof e.name);
    std::memcpy(e.old_settings, &o, sizeof e.old_settings);
    e.presence = CONF_PRESENT_OLD_ONLY;
    e.changes = CONF_CHANGE_GONE;
    for (int j = 0; j < count; ++j) {
      const ShmVlanIfConfig &c = new_table[j];
      if (name_of(c.usr_name) != name_of(o.usr_name)) continue;
      e.presence = CONF_PRESENT_BOTH;
      e.changes = (same_subnet(o.ip, o.mask, c.ip, c.mask) ? 0 : CONF_CHANGE_SUBNET) |
                  (o.attribute != c.attribute ? CONF_CHANGE_SETTING2 : 0) |
                  (o.vid != c.vid ? CONF_CHANGE_SETTING1 : 0);
      std::memcpy(e.new_settings, &c, sizeof e.new_settings);
      break;
    }
  }
  list->count = n;
  return static_cast<int>(n);
}

int two_conf_cmpBrg(const ShmBridgeConfig *old_table, const ShmBridgeConfig *new_table, int count,
                    ConfBrgChangeList *list) {
  uint32_t n = 0;
  for (int i = 0; i < count && n < CONF_BRG_CHANGE_MAX; ++i) {
    const ShmBridgeConfig &o = old_table[i];
    if (o.usr_name[0] == '\0') continue;
    ConfBrgChangeEntry &e = list->entry[n++];
    e = ConfBrgChangeEntry{};
    std::memcpy(e.name, o.usr_name, sizeof e.name);
    std::memcpy(e.old_record, &o, sizeof e.old_record);
    e.presence = CONF_PRESENT_OLD_ONLY;
    e.changes = CONF_CHANGE_GONE;
    for (int j = 0; j < count; ++j) {
      const ShmBridgeConfig &c = new_table[j];
      if (name_of(c.usr_name) != name_of(o.usr_name)) continue;
      e.presence = CONF_PRESENT_BOTH;
      e.changes = (same_subnet(o.ip, o.mask, c.ip, c.mask) ? 0 : CONF_CHANGE_SUBNET) |
                  (o.enable != c.enable ? CONF_CHANGE_SETTING2 : 0);
      std::memcpy(e.new_record, &c, sizeof e.new_record);
      break;
    }
  }
  list->count = n;
  return static_cast<int>(n);
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
    e.changes = (same_subnet(o.ip, o.mask, c.ip, c.mask) ? 0 : CONF_CHANGE_SUBNET) |
                (o.setting2 != c.setting2 ? CONF_CHANGE_SETTING2 : 0) |
                (o.setting1 != c.setting1 ? CONF_CHANGE_SETTING1 : 0) |
                (((o.flags ^ c.flags) & ~kIgnoredFlag) != 0 ? CONF_CHANGE_FLAGS : 0);
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
