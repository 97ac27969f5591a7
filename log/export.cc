// The downloadable exports: fixed-width text tables with CR LF line ends under
// "/mnt/ramdisk", the archive of all of them, and the trimming of log files.
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>

#include "log/files.h"
#include "log/lookup.h"
#include "log/render.h"
#include "platform/host.h"
#include "platform/number.h"
#include "util/format.h"
#include "syscommon/log.h"
#include "syscommon/util.h"

namespace {

using syscommon::format_text;
using syscommon::rooted;
using syscommon::run_command;
namespace slog = syscommon::log;

constexpr const char *kSystemExport = "/TARN_LOG.ini";
constexpr const char *kVpnExport = "/TARN_IPSec_LOG.ini";
constexpr const char *kFirewallExport = "/TARN_Firewall_LOG.ini";
constexpr const char *kKernelExport = "/TARN_Kernel_LOG.ini";
constexpr const char *kArchiveDir = "tarn_log_all";
constexpr std::size_t kCommandSize = 1024;  // trimming commands are cut to 1023 characters

constexpr const char *kVpnHeader =
    "Index     Date           Time         Event\r\n"
    "-----     ----------     --------     -----------------------------------------------------------------------\r\n";

// The line after every record: 106 dashes. False when nothing could be written.
bool write_separator(std::FILE *file) {
  static const std::string kLine = std::string(106, '-') + "\r\n";
  return std::fputs(kLine.c_str(), file) >= 0;
}

struct DateTime {
  char date[32];
  char time[32];
};

// Date "%04d/%02d/%02d" of a full year and 1-based month, and the time.
DateTime padded(int year, int month, int day, int hour, int min, int sec) {
  DateTime d{};
  std::snprintf(d.date, sizeof d.date, "%04d/%02d/%02d", year, month, day);
  std::snprintf(d.time, sizeof d.time, "%02d:%02d:%02d", hour, min, sec);
  return d;
}

// Removes the export at `path` and opens it anew; null after "%s fopen error".
syscommon::File create_export(const std::string &path) {
  run_command("rm  " + path + " 2> /dev/null");
  auto file = syscommon::open_file(path, "w+");
  if (!file) std::printf("%s fopen error\n", path.c_str());
  return file;
}

std::string export_path(const char *name) { return rooted(slog::kRamdisk) + name; }

}  // namespace

extern "C" {

SYSCOMMON_API int Write_Log_File(FILE *file, int count, const SlogSystemRecord *records) {
  if (file == nullptr || (records == nullptr && count > 0)) return -1;
  slog::NameCache names;
  std::fputs("Index     Bootup     Date           Time         System Startup Time     Event\r\n", file);
  std::fputs(
      "-----     ------     ----------     --------     -------------------     ---------------------------------\r\n",
      file);
  for (int n = 0; n < count; ++n) {
    const SlogSystemRecord &r = records[n];
    const int year = syscommon::wrapping_add(r.year, 1900), month = syscommon::wrapping_add(r.mon, 1);
    DateTime d = padded(year, month, r.day, r.hour, r.min, r.sec);
    std::snprintf(d.date, sizeof d.date, "%d/%d/%d", year, month, r.day);  // not zero-filled here
    char uptime[16] = {};
    char event[128] = {};
    Uptime_to_str(r.uptime, uptime);
    slog::render_system_record(r, event, 1, sizeof event, &names);
    std::fprintf(file, "%-10d%-11d%-15s%-13s%-24s%-33s\r\n", n + 1, static_cast<int>(r.bootup), d.date, d.time,
                 uptime, event);
    if (!write_separator(file)) return -1;
  }
  return 0;
}

SYSCOMMON_API int Write_IPsec_Log_File(FILE *file, int count, const SlogVpnRecord *records) {
  if (file == nullptr || (records == nullptr && count > 0)) return -1;
  std::fputs(kVpnHeader, file);
  for (int n = 0; n < count; ++n) {
    const SlogVpnRecord &r = records[n];
    const DateTime d =
        padded(syscommon::wrapping_add(r.year, 1900), syscommon::wrapping_add(r.mon, 1), r.day, r.hour, r.min, r.sec);
    std::fprintf(file, "%-10d%-15s%-13s[%s] %s\r\n", n + 1, d.date, d.time, r.text, slog::vpn_description(r.code));
    if (!write_separator(file)) return -1;
  }
  return 0;
}

SYSCOMMON_API int Write_Firewall_Log_File(FILE *file, int count, SlogLogEntry *entries) {
  if (file == nullptr || (entries == nullptr && count > 0)) return -1;
  std::fputs(kVpnHeader, file);
  slog::NameCache names;
  for (int n = 0; n < count; ++n) {
    SlogLogEntry &e = entries[n];
    e.year = syscommon::wrapping_add(e.year, 1900);  // in the caller's array, as the device does
    e.mon = syscommon::wrapping_add(e.mon, 1);
    const DateTime d = padded(e.year, e.mon, e.day, e.hour, e.min, e.sec);
    char text[256] = {};
    slog::append_firewall_text(e, text, &names);
    std::fprintf(file, "%-10d%-15s%-13s[%d] %s\r\n", n + 1, d.date, d.time, e.level, text);
    if (!write_separator(file)) return -1;
  }
  return 0;
}

SYSCOMMON_API int SytemLogMake(void) {
  auto file = create_export(export_path(kSystemExport));
  if (!file) return -1;
  auto entries = std::make_unique<SlogLogEntry[]>(SLOG_MAX_ENTRIES);
  auto records = std::make_unique<SlogSystemRecord[]>(SLOG_MAX_ENTRIES);
  const int count = Read_logfile(entries.get(), SLOG_TYPE_SYSTEM);
  for (int i = 0; i < count; ++i) records[i] = entries[i].body.system;
  return Write_Log_File(file.get(), count, records.get());
}

SYSCOMMON_API int IPSecLogMake(void) {
  auto file = create_export(export_path(kVpnExport));
  if (!file) return -1;
  auto records = std::make_unique<SlogVpnRecord[]>(SLOG_MAX_ENTRIES);
  const int count = Read_ipseclogfile(records.get());
  return Write_IPsec_Log_File(file.get(), count, records.get());
}

SYSCOMMON_API int FirewallLogMake(void) {
  auto file = create_export(export_path(kFirewallExport));
  if (!file) return -1;
  auto entries = std::make_unique<SlogLogEntry[]>(SLOG_MAX_ENTRIES);
  int count = 0;
  {
    slog::SemaphoreHold hold(slog::kSemLogFiles);
    count = Read_firewalllogfile(entries.get());
  }
  return Write_Firewall_Log_File(file.get(), count, entries.get());
}

SYSCOMMON_API int KernelLogMake(void) {
  const std::string path = export_path(kKernelExport);
  run_command("rm  " + path + " 2> /dev/null");
  return run_command("cp -f " + rooted(slog::kKernelLog) + " " + path);
}

SYSCOMMON_API int AllLogMake(void) {
  const std::string ramdisk = rooted(slog::kRamdisk);
  const std::string dir = ramdisk + "/" + kArchiveDir;
  run_command("mkdir " + dir + " 2> /dev/null");
  for (const char *name : {kFirewallExport, kVpnExport, kSystemExport})
    run_command(std::string("cp -f ").append(ramdisk).append(name).append(" ").append(dir).append(" 2> /dev/null"));
  run_command("tar -zcf " + dir + "/m_rec " + rooted("/mnt/log2/mem_usage.rec") + " 2> /dev/null");
  // Relative names: the archive holds "tarn_log_all/..." and lands in the working
  // directory, which callers set to the RAM disk.
  run_command(std::string("tar -zvcf TARN_All_LOG.tar.gz ") + kArchiveDir + " 2> /dev/null");
  return run_command("rm -rf " + dir + " 2> /dev/null");
}

SYSCOMMON_API int doSedForLogFile(const char *path, const char *tmp_path, int line, int mode, const char *text) {
  if (path == nullptr) return -1;
  const char *tmp = tmp_path != nullptr ? tmp_path : "";
  if (mode == 1) {
    run_command(format_text(kCommandSize, "sed -i '1 i%s' %s", text != nullptr ? text : "", path));
  } else if (mode == 2) {
    run_command(format_text(kCommandSize, "sed \"%dd\" %s > %s", line, path, tmp));
    run_command(format_text(kCommandSize, "mv %s %s", tmp, path));
  }
  // Only one firewall log may stay on the partition.
  return run_command(format_text(kCommandSize, "find %s|grep %s|grep -v '^%s$'|xargs rm -f > /dev/null 2>&1",
                                 (rooted("/mnt/log2") + "/").c_str(), "firewall_log", path));
}

}  // extern "C"
