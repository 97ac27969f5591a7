// firewallLog_to_str: a firewall log entry to its one-line text.
#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>

#include "log/lookup.h"
#include "log/render.h"
#include "syscommon/log.h"
#include "syscommon/shm.h"

namespace {

using syscommon::log::find_by_id;

constexpr std::size_t kPieceSize = 256;    // each piece is formatted into this scratch
constexpr std::size_t kMaxAppended = 255;  // what the caller's buffer has room for

struct AttackName {
  uint32_t id;
  const char *text;
};
constexpr AttackName kAttackNames[] = {
    {SLOG_FW_MALFORMED, "Malformed"},
    {SLOG_FW_NULL_SCAN, "Null Scan"},
    {SLOG_FW_XMAS_SCAN, "Xmas Scan"},
    {SLOG_FW_NMAP_XMAS_SCAN, "NMAP-Xmas Scan"},
    {SLOG_FW_SYN_FIN_SCAN, "SYN/FIN Scan"},
    {SLOG_FW_FIN_SCAN, "FIN Scan"},
    {SLOG_FW_NMAP_ID_SCAN, "NMAP-ID Scan"},
    {SLOG_FW_SYN_RST_SCAN, "SYN/RST Scan"},
    {SLOG_FW_TCP_WITHOUT_SYN_SCAN, "TCP-Without-SYN Scan"},
    {SLOG_FW_ICMP_DEATH, "ICMP-Death"},
    {SLOG_FW_SYN_FLOOD, "SYN-Flood"},
    {SLOG_FW_ARP_FLOOD, "ARP-Flood"},
    {SLOG_FW_TRUSTED_ACCESS, "TrustedAccess"},
};

// Builds the text piece by piece, never beyond kMaxAppended characters.
class Appender {
 public:
  [[gnu::format(printf, 2, 3)]] void add(const char *fmt, ...) {
    char piece[kPieceSize];
    va_list args;
    va_start(args, fmt);
    const int n = std::vsnprintf(piece, sizeof piece, fmt, args);  // NOLINT(clang-analyzer-valist.Uninitialized)
    va_end(args);
    if (n <= 0) return;
    const std::size_t take = std::min({static_cast<std::size_t>(n), sizeof piece - 1, kMaxAppended - len_});
    std::memcpy(text_ + len_, piece, take);
    len_ += take;
    text_[len_] = '\0';
  }
  [[nodiscard]] const char *text() const { return text_; }

 private:
  char text_[kMaxAppended + 1] = {};
  std::size_t len_ = 0;
};

std::string dotted(uint32_t addr) {
  unsigned char b[4];
  std::memcpy(b, &addr, 4);  // the bytes in memory are the address in network order
  char buf[16];
  std::snprintf(buf, sizeof buf, "%u.%u.%u.%u", b[0], b[1], b[2], b[3]);
  return buf;
}

// Interface name of a VLAN id, in the device's own (kept) order: "BRG" survives only when
// bridge record 0 and zone-bridge record 0 both have the id; otherwise the user-interface
// lookup has the last word.
std::string interface_name(uint32_t vid, syscommon::log::NameCache *cache) {
  if (cache != nullptr)
    if (auto it = cache->interfaces.find(vid); it != cache->interfaces.end()) return it->second;
  char name[64] = {};  // the lookups write at most 32 bytes, so the name stays terminated
  const int id = static_cast<int>(vid);
  const bool bridge = get_shm_brg_interface_name_by_vid(id, name) != 0;
  if (!bridge || get_shm_zone_brg_interface_name_by_vid(id, name) == 0) get_shm_usr_interface_name_by_vid(id, name);
  if (cache != nullptr) cache->interfaces.emplace(vid, name);
  return name;
}

const char *short_text(std::span<const SlogShortEntry> table, uint32_t id) {
  const SlogShortEntry *e = find_by_id(table, id);
  return e != nullptr ? e->text : "";
}

}  // namespace

namespace syscommon::log {

void append_firewall_text(const SlogLogEntry &entry, char *out, NameCache *cache) {
  const SlogFirewallRecord &fw = entry.body.firewall;
  Appender a;
  if (fw.id == SLOG_FW_POLICY_HIT) {
    a.add("[R%d] ", static_cast<int>(fw.rule_index));
  } else if (fw.id == SLOG_FW_SESSION_FULL) {
    a.add("[R%d Session full] ", static_cast<int>(fw.rule_index));
  } else {
    for (const AttackName &n : kAttackNames)
      if (n.id == fw.id) a.add("[%s] ", n.text);
  }
  a.add("%s ", short_text(firewall_target_table, fw.target));
  const uint8_t *s = fw.src_mac;
  const uint8_t *d = fw.dst_mac;
  a.add("SRC_MAC=%02x:%02x:%02x:%02x:%02x:%02x, ", s[0], s[1], s[2], s[3], s[4], s[5]);
  a.add("DST_MAC=%02x:%02x:%02x:%02x:%02x:%02x, ", d[0], d[1], d[2], d[3], d[4], d[5]);
  if (fw.id == SLOG_FW_ARP_FLOOD) {
    a.add("PROTO=0x%X", fw.proto);  // the Ethernet type; an ARP record has no IP fields
  } else {
    if (fw.proto >= SLOG_FIREWALL_PROTO_BASE)
      a.add("PROTO=%s, ", short_text(firewall_proto_table, fw.proto - SLOG_FIREWALL_PROTO_BASE));
    else
      a.add("PROTO=0x%X, ", fw.proto);
    a.add("SRC_IP=%s, ", dotted(fw.src_ip).c_str());
    if (fw.src_port != 0) a.add("SRC_PORT=%d, ", static_cast<int>(fw.src_port));
    a.add("IN=%s, ", interface_name(fw.in_vid, cache).c_str());
    a.add("DST_IP=%s, ", dotted(fw.dst_ip).c_str());
    if (fw.dst_port != 0) a.add("DST_PORT=%d, ", static_cast<int>(fw.dst_port));
    a.add("OUT=%s", interface_name(fw.out_vid, cache).c_str());
  }
  if (fw.repeat != 0) a.add(" This event has happened more than once.");
  std::strcat(out, a.text());
}

}  // namespace syscommon::log

SYSCOMMON_API void firewallLog_to_str(const SlogLogEntry *entry, char *out) {
  if (entry == nullptr || out == nullptr) return;
  syscommon::log::append_firewall_text(*entry, out, nullptr);
}
