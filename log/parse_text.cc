// Parsers of log lines in syslog-text form ("YYYY-MM-DD hh:mm:ss severity [host] category:
// ...") and the small text helpers they and the log pages use. Lines are cut up in place
// with strsep; every step first checks that something alphanumeric is left.
#include <arpa/inet.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/number.h"
#include "syscommon/log.h"
#include "syscommon/shm.h"

namespace {

constexpr const char *kDelims = " []:";

// Severity words, compared by prefix ("information" is info, "errors" is err).
int severity(const char *word) {
  static constexpr std::string_view kWords[] = {"emerg", "alert", "crit", "err", "warning", "notice", "info"};
  for (int level = 0; level < 7; ++level)
    if (std::strncmp(word, kWords[level].data(), kWords[level].size()) == 0) return level;
  return 7;
}

bool starts_with(const char *text, std::string_view prefix) {
  return std::strncmp(text, prefix.data(), prefix.size()) == 0;
}

// The date and time that open both forms into year, month, day, hour, min, sec; a
// firewall line has the priority glued to the date ("<134>2014-03-05").
// Read as sscanf's "<%*[^:>]>%d-%d-%d" (priority) or "%d-%d-%d", then "%d:%d:%d" would,
// with the device's 32-bit conversions.
void scan_three(const char *text, char sep, int *v) {
  uint32_t got[3] = {};
  const int n = syscommon::scan_numbers(text, sep, 3, 10, got);
  for (int i = 0; i < n; ++i) v[i] = static_cast<int>(got[i]);
}

void scan_date_time(char *&p, bool priority, int (&v)[6]) {
  const char *date = strsep(&p, kDelims);
  if (date != nullptr && priority) {
    const std::size_t tag = date[0] == '<' ? std::strcspn(date + 1, ":>") : 0;
    date = tag > 0 && date[1 + tag] == '>' ? date + 2 + tag : nullptr;
  }
  if (date != nullptr) scan_three(date, '-', v);
  const char *time = strsep(&p, " []");
  if (time != nullptr) scan_three(time, ':', v + 3);
}

// A firewall line in syslog-text form, read step by step; each step prints its message
// and fails when nothing alphanumeric is left.
class FirewallLine {
 public:
  explicit FirewallLine(char *line) : p_(line) {}

  // The next token split on `delims`, or null after printing `missing`.
  char *next(const char *delims, const char *missing) {
    p_ = getNextChar(p_);
    if (p_ == nullptr) {
      std::puts(missing);
      return nullptr;
    }
    return strsep(&p_, delims);
  }
  // The value of the next "KEY=value" token (split on ", \n"), or null after a message.
  const char *field(std::string_view key, const char *missing, const char *not_found) {
    const char *tok = next(", \n", missing);
    if (tok == nullptr) return nullptr;
    if (!starts_with(tok, key)) {
      std::puts(not_found);
      return nullptr;
    }
    return tok + key.size();
  }
  [[nodiscard]] const char *rest() const { return p_; }
  char *&cursor() { return p_; }

 private:
  char *p_;
};

// A MAC address as the renderer writes it; bytes not read stay 0.
void scan_mac(const char *text, uint8_t (&mac)[6]) {
  std::sscanf(text, "%02hhx:%02hhx:%02hhx:%02hhx:%02hhx:%02hhx", &mac[0], &mac[1], &mac[2], &mac[3], &mac[4], &mac[5]);
}

uint32_t scan_ip(const char *text) {
  in_addr a{};
  return inet_pton(AF_INET, text, &a) == 1 ? a.s_addr : 0;
}

// Interface name to VLAN id: the user interfaces first, then the bridges.
uint32_t vid_of(const char *name) {
  int vid = 0;
  if (shm_getVidByUsrIfaceName(name, &vid) < 0) shm_getVidByBridgeIfName(name, &vid);
  return static_cast<uint32_t>(vid);
}

// PROTO= value: a firewall_proto_table name (256 + its position) or "0x%X". UDPLITE is
// tested before UDP, its prefix.
uint32_t scan_proto(const char *text) {
  static constexpr std::pair<std::string_view, uint32_t> kNames[] = {
      {"ICMP", 260}, {"TCP", 257}, {"UDPLITE", 259}, {"UDP", 258}, {"AH", 261}, {"ESP", 262}};
  for (const auto &[name, value] : kNames)
    if (starts_with(text, name)) return value;
  return starts_with(text, "0x") ? syscommon::device_strtoul(text + 2, nullptr, 16) : 0;
}

bool has_ports(uint32_t proto) { return proto == 257 || proto == 258 || proto == 259; }

int parse_firewall(char *line, SlogLogEntry &e) {
  FirewallLine in(line);
  int v[6] = {};
  scan_date_time(in.cursor(), true, v);
  e.year = syscommon::wrapping_add(v[0], -1900);  // a log entry keeps broken-down time
  e.mon = syscommon::wrapping_add(v[1], -1);
  e.day = v[2];
  e.hour = v[3];
  e.min = v[4];
  e.sec = v[5];
  SlogFirewallRecord &fw = e.body.firewall;

  const char *tok = in.next(kDelims, "error: can't get severity level.");
  if (tok == nullptr) return 0;
  e.level = severity(tok);
  if (in.next("]", "error: can't get hostname.") == nullptr) return 0;
  if ((tok = in.next(kDelims, "error: can't get category.")) == nullptr) return 0;
  e.log_type = std::strcmp(tok, "tarn_firewall") == 0 ? 2 : std::strcmp(tok, "tarn_vpn") == 0    ? 1
                                                          : std::strcmp(tok, "tarn_system") == 0 ? 3
                                                                                                 : 4;
  if ((tok = in.next(kDelims, "error: can't get ID.")) == nullptr) return 0;
  fw.id = static_cast<uint32_t>(syscommon::device_atoi(tok));

  const char *rest = in.rest();
  if (rest != nullptr && (std::strstr(rest, "mflash") != nullptr || std::strstr(rest, "msyslog") != nullptr ||
                          std::strstr(rest, "mtrap") != nullptr)) {
    if ((tok = in.next(kDelims, "error: can't get flag.")) == nullptr) return 0;
    e.flash = std::strstr(tok, "mflash") != nullptr ? 1 : 0;
    e.syslog = std::strstr(tok, "msyslog") != nullptr ? 1 : 0;
    e.trap = std::strstr(tok, "mtrap") != nullptr ? 1 : 0;
  }
  if ((tok = in.next("[]:", "error: can't get index.")) == nullptr) return 0;
  if (fw.id == SLOG_FW_POLICY_HIT || fw.id == SLOG_FW_SESSION_FULL) {
    char *stop = nullptr;
    const int rule = tok[0] == 'R' ? syscommon::device_strtol(tok + 1, &stop, 10) : 0;
    if (tok[0] != 'R' || stop == tok + 1) return 0;  // no rule: fails without a message
    fw.rule_index = static_cast<uint32_t>(rule);
  }
  if ((tok = in.next(" ", "error: can't get target.")) == nullptr) return 0;
  fw.target = fw.id == SLOG_FW_SESSION_FULL || starts_with(tok, "DROP") ? 2 : 1;

  const char *val = in.field("SRC_MAC=", "error: can't get source mac.", "error: Fail to find SRC_MAC.");
  if (val == nullptr) return 0;
  scan_mac(val, fw.src_mac);
  if ((val = in.field("DST_MAC=", "error: can't get destination mac.", "error: Fail to find DST_MAC.")) == nullptr)
    return 0;
  scan_mac(val, fw.dst_mac);
  if ((val = in.field("PROTO=", "error: can't get protocol.", "error: Fail to find protocol.")) == nullptr) return 0;
  fw.proto = scan_proto(val);

  if (fw.id != SLOG_FW_ARP_FLOOD) {  // ARP-Flood carries no address fields
    if ((val = in.field("SRC_IP=", "error: Fail to find SRC_IP.", "error: Fail to find SRC_IP.")) == nullptr) return 0;
    fw.src_ip = scan_ip(val);
    if (has_ports(fw.proto)) {
      if ((val = in.field("SRC_PORT=", "error: can't get source port.", "error: Fail to find SRC_PORT.")) == nullptr)
        return 0;
      fw.src_port = static_cast<uint32_t>(syscommon::device_atoi(val));
    }
    if ((val = in.field("IN=", "error: can't get input interface.", "error: Fail to find INPUT interface.")) == nullptr)
      return 0;
    fw.in_vid = vid_of(val);
    if ((val = in.field("DST_IP=", "error: can't get destination ip.", "error: Fail to find DST_IP.")) == nullptr)
      return 0;
    fw.dst_ip = scan_ip(val);
    if (has_ports(fw.proto)) {
      if ((val = in.field("DST_PORT=", "error: can't get destination port.", "error: Fail to find DST_PORT.")) ==
          nullptr)
        return 0;
      fw.dst_port = static_cast<uint32_t>(syscommon::device_atoi(val));
    }
    if ((val = in.field("OUT=", "error: can't get output interface.", "error: Fail to find OUTPUT interface.")) ==
        nullptr)
      return 0;
    fw.out_vid = vid_of(val);
  }
  rest = in.rest();
  if (rest != nullptr && std::strstr(rest, "happened") != nullptr && std::strstr(rest, "once") != nullptr)
    fw.repeat = 1;
  return 1;
}

}  // namespace

extern "C" {

SYSCOMMON_API char *getNextChar(char *text) {
  if (text == nullptr) return nullptr;
  for (; *text != '\0'; ++text)
    if (std::isalnum(static_cast<unsigned char>(*text)) != 0) return text;
  return nullptr;
}

SYSCOMMON_API int paserTarnlog(char *line, SlogTextEntry *entry) {
  if (line == nullptr || entry == nullptr) return 0;
  char *p = line;
  int v[6] = {};
  scan_date_time(p, false, v);
  entry->year = v[0];  // a text entry keeps the date as written
  entry->month = v[1];
  entry->day = v[2];
  entry->hour = v[3];
  entry->min = v[4];
  entry->sec = v[5];
  if ((p = getNextChar(p)) == nullptr) return 0;
  entry->level = severity(strsep(&p, kDelims));
  if ((p = getNextChar(p)) == nullptr) return 0;
  strsep(&p, "]");  // the host
  if ((p = getNextChar(p)) == nullptr) return 0;
  const char *category = strsep(&p, kDelims);
  entry->log_type = std::strcmp(category, "tarn_system") == 0   ? SLOG_TYPE_SYSTEM
                    : std::strcmp(category, "tarn_kernel") == 0 ? SLOG_TYPE_KERNEL
                    : std::strcmp(category, "tarn_vpn") == 0    ? SLOG_TYPE_VPN
                                                                : SLOG_TYPE_FIREWALL;
  if ((p = getNextChar(p)) == nullptr) return 0;
  strsep(&p, kDelims);  // the program
  if ((p = getNextChar(p)) == nullptr) return 0;
  const std::size_t len = std::strcspn(p, "\n");
  const std::size_t n = len < sizeof entry->text - 1 ? len : sizeof entry->text - 1;
  std::memcpy(entry->text, p, n);
  entry->text[n] = '\0';
  return 1;
}

SYSCOMMON_API int paserTarnFirewalllog(char *line, SlogLogEntry *entry) {
  if (line == nullptr || entry == nullptr) return 0;
  *entry = SlogLogEntry{};
  return parse_firewall(line, *entry);
}

SYSCOMMON_API int paserTarnlogIdx(char *text, int *a, int *b) {
  char *rest = text;
  const char *first = strsep(&rest, ",");
  const int va = first != nullptr ? syscommon::device_atoi(first) : 0;
  const int vb = rest != nullptr ? syscommon::device_atoi(rest) : 0;
  if (a != nullptr) *a = va;
  if (b != nullptr) *b = vb;
  return vb;
}

SYSCOMMON_API int getVariableFromString(const char *key, const char *haystack, char *out, int size) {
  if (key == nullptr || haystack == nullptr || out == nullptr) return -1;
  const char *found = *key == '\0' ? haystack : std::strstr(haystack, key);
  if (found == nullptr) {
    std::printf("error: %s can't fine keyword \"%s\"\n", "getVariableFromString", key);
    return -1;
  }
  if (size > 0) std::memset(out, 0, static_cast<std::size_t>(size));
  const char *value = found + std::strlen(key);
  const std::size_t len = std::strlen(value);
  if (len == 0 || size <= 0 || len >= static_cast<std::size_t>(size)) return 0;
  std::memcpy(out, value, len + 1);  // with its terminator
  return static_cast<int>(len);
}

}  // extern "C"
