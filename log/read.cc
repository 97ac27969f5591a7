// Readers of the log files into fixed arrays of at most 1000 entries. Nothing here
// allocates per line: each reader scans its lines in one fixed buffer.
#include <array>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "log/files.h"
#include "log/records.h"
#include "platform/host.h"
#include "platform/number.h"
#include "syscommon/log.h"

namespace {

using syscommon::open_file;
using syscommon::rooted;
using syscommon::log::SemaphoreHold;

constexpr int kMax = SLOG_MAX_ENTRIES;
constexpr std::size_t kShortLine = 128;    // system and VPN lines: at most 127 characters
constexpr std::size_t kFirewallLine = 256;  // firewall lines: at most 255 characters

}  // namespace

namespace syscommon::log {

int read_system_lines(std::FILE *file, SlogLogEntry *entries, int count, int first_line) {
  std::array<char, kShortLine> line{};
  for (int n = 0; n < kMax && count < kMax && read_line(file, line); ++n) {
    if (n < first_line) continue;
    SlogLogEntry &e = entries[count];
    e = SlogLogEntry{};
    if (scan_system_line(line.data(), e.body.system)) ++count;
  }
  return count;
}

int read_vpn_lines(std::FILE *file, SlogVpnRecord *records) {
  std::array<char, kShortLine> line{};
  int count = 0;
  for (int n = 0; n < kMax && read_line(file, line); ++n)
    if (scan_vpn_line(line.data(), records[count])) ++count;
  return count;
}

int read_firewall_lines(std::FILE *file, SlogLogEntry *entries) {
  std::array<char, kFirewallLine> line{};
  int parsed = 0;
  // Each entry stays at the position of its line: a skipped line leaves an empty entry.
  for (int n = 0; n < kMax && read_line(file, line); ++n) {
    if (std::isspace(static_cast<unsigned char>(line[0])) != 0) {
      entries[n] = SlogLogEntry{};
      continue;
    }
    if (scan_firewall_line(line.data(), entries[n])) ++parsed;
  }
  return parsed;
}

}  // namespace syscommon::log

extern "C" {

SYSCOMMON_API int get_tarn_log_lines(const char *path) {
  if (path == nullptr) return 0;
  syscommon::Pipe wc = syscommon::open_pipe(std::string("wc -l ") + path, "r");
  if (!wc) return 0;
  std::array<char, 128> line{};
  if (std::fgets(line.data(), static_cast<int>(line.size()), wc.get()) == nullptr) return 0;
  return syscommon::device_atoi(line.data());
}

SYSCOMMON_API int Read_systemlogfile(SlogLogEntry *entries) {
  if (entries == nullptr) return 0;
  const bool two_generations = syscommon::path_exists(rooted(syscommon::log::kSystemLog2));
  auto first = open_file(rooted(syscommon::log::kSystemLog1), "r");
  if (!first) return 0;
  int count = syscommon::log::read_system_lines(first.get(), entries, 0, 0);
  if (!two_generations || count >= kMax) return count;
  // The older generation overlaps the newer one: only its lines past the newer one's
  // length are new.
  auto second = open_file(rooted(syscommon::log::kSystemLog2), "r");
  if (!second) return count;
  return syscommon::log::read_system_lines(second.get(), entries, count, count);
}

SYSCOMMON_API int Read_ipseclogfile(SlogVpnRecord *records) {
  if (records == nullptr) return 0;
  SemaphoreHold hold(syscommon::log::kSemVpnLog);
  auto file = open_file(rooted(syscommon::log::kVpnLog), "r");
  if (!file) return 0;
  return syscommon::log::read_vpn_lines(file.get(), records);
}

SYSCOMMON_API int Read_firewalllogfile(SlogLogEntry *entries) {
  if (entries == nullptr) return 0;
  const std::string path = rooted(syscommon::log::kFirewallLog);
  auto file = open_file(path, "r");
  if (!file) return 0;
  if (get_tarn_log_lines(path.c_str()) > kMax) return 0;  // shown again once trimmed
  return syscommon::log::read_firewall_lines(file.get(), entries);
}

SYSCOMMON_API int Read_logfile(SlogLogEntry *entries, int log_type) {
  if (entries == nullptr) return 0;
  switch (log_type) {
    case SLOG_TYPE_FIREWALL: {
      SemaphoreHold hold(syscommon::log::kSemLogFiles);
      return Read_firewalllogfile(entries);
    }
    case SLOG_TYPE_VPN: {
      auto bodies = std::make_unique<SlogVpnRecord[]>(kMax);
      const int count = Read_ipseclogfile(bodies.get());
      for (int i = 0; i < count; ++i) {
        SlogLogEntry &e = entries[i];
        e = SlogLogEntry{};
        e.body.vpn = bodies[i];
        syscommon::log::copy_time(e, bodies[i]);
        e.log_type = SLOG_TYPE_VPN;
        // Connection progress (200101 initiating, 200102 established) is informational.
        const char *text = bodies[i].text;
        e.level = std::strstr(text, "200101") != nullptr || std::strstr(text, "200102") != nullptr ? 6 : 5;
      }
      return count;
    }
    case SLOG_TYPE_SYSTEM: {
      int count = 0;
      {
        SemaphoreHold hold(syscommon::log::kSemLogFiles);
        count = Read_systemlogfile(entries);
      }
      for (int i = 0; i < count; ++i) {
        SlogLogEntry &e = entries[i];
        syscommon::log::copy_time(e, e.body.system);
        e.level = e.body.system.level & 15;
        e.log_type = SLOG_TYPE_SYSTEM;
      }
      return count;
    }
    default:
      return 0;
  }
}

}  // extern "C"
