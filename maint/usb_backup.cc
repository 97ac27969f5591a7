// Backup onto the USB configuration-backup stick: detection and mounting, the copies of the
// configuration archive and the log exports, and local time with fresh zone rules.
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>

#include "maint/config_paths.h"
#include "platform/host.h"
#include "syscommon/log.h"
#include "syscommon/maint.h"
#include "syscommon/netstat.h"
#include "util/format.h"

namespace {

using syscommon::format_text;
using syscommon::maint::kConfigArchive;
using syscommon::maint::kConfigEventArgument;
using syscommon::maint::kRamdisk;
using syscommon::rooted;
using syscommon::run_command;

constexpr std::size_t kCommand = 512;
constexpr const char *kBackupDir = "/mnt/ramdisk/usb_tarn/tarn";
constexpr const char *kHistoryDir = "/mnt/ramdisk/usb_tarn/tarn/His_ini";
constexpr const char *kWebServerDir = "/lumenP/WebServer/";
constexpr int kEventExportSuccess = 20;

std::string mount_point() { return rooted(format_text(kCommand, "%s/%s", kRamdisk, "usb_tarn")); }
std::string scratch_file() { return rooted(format_text(kCommand, "%s/%s", kRamdisk, "usb_check")); }

// Enters `path`, creating it (permission bits 0) when it cannot be entered: false when
// both fail.
bool enter_or_create(const std::string &path) {
  return syscommon::change_directory(path) == 0 || syscommon::make_directory(path, 0) == 0;
}

int back_to_web_server() { return syscommon::change_directory(rooted(kWebServerDir)); }

}  // namespace

extern "C" {

SYSCOMMON_API void USB_Mount(int mode, const char *device) {
  const std::string point = mount_point();
  if (mode == 1) {
    run_command(format_text(kCommand, "umount %s", point.c_str()));
    run_command(format_text(kCommand, "rm  -r %s", point.c_str()));
    return;
  }
  if (!enter_or_create(point)) std::printf("Can't Create'usb_tarn'");
  run_command(format_text(kCommand, "mount -o sync %s %s", device != nullptr ? device : "", point.c_str()));
  if (!enter_or_create(rooted(kBackupDir))) std::printf("Can't Create 'tarn'");
}

SYSCOMMON_API void xbk02_run(int mode) {
  const std::string scratch = scratch_file();
  run_command(format_text(kCommand, "ls %s|wc -l > %s", rooted("/proc/bus/usb/001").c_str(), scratch.c_str()));
  if (mode == 0) {
    run_command(
        format_text(kCommand, "%s > %s", "fdisk -ul|grep /dev|grep -v Disk|awk '{print $1}'", scratch.c_str()));
    auto file = syscommon::open_file(scratch, "r");
    if (file) {
      char device[128] = {};
      if (std::fgets(device, sizeof device, file.get()) == nullptr) device[0] = '\0';
      const std::size_t n = std::strlen(device);
      if (n > 0 && device[n - 1] == '\n') device[n - 1] = '\0';
      if (device[0] != '\0') {
        USB_Mount(0, device);
        sleep(1);
      }
      return;
    }
  }
  USB_Mount(mode, nullptr);
}

SYSCOMMON_API int copy_configure_file_to_usb(void) {
  uint8_t mac[6];
  Get_IF_MAC("eth0", mac);
  const std::string dir = rooted(kBackupDir);
  const std::string old_sys = format_text(kCommand, "rm %s/Sys.ini > /dev/null", dir.c_str());
  const std::string old_named =
      format_text(kCommand, "rm  %s/%02x%02x%02x.ini > /dev/null", dir.c_str(), mac[3], mac[4], mac[5]);
  // The guard opens the command text instead of the file, so the removals never run and
  // the copies overwrite; kept as the device does it.
  if (syscommon::open_file(old_sys, "r")) run_command(old_sys);
  if (syscommon::open_file(old_named, "r")) run_command(old_named);
  run_command(format_text(kCommand, "cp %s %s/Sys.ini > /dev/null", rooted(kConfigArchive).c_str(),
                          dir.c_str()));
  run_command(format_text(kCommand, "cp %s/Sys.ini %s/%02x%02x%02x.ini > /dev/null", dir.c_str(), dir.c_str(), mac[3],
                          mac[4], mac[5]));
  back_to_web_server();
  return call_SendSyslog_to_log(kEventExportSuccess, 0, kConfigEventArgument);
}

SYSCOMMON_API int copy_configure_file_to_usb_date(void) {
  const time_t now = std::time(nullptr);
  const std::tm t = *tarn_macro_localtime(&now);
  std::printf("\n%s()\n", __func__);
  const std::string history = rooted(kHistoryDir);
  if (!enter_or_create(history)) std::printf("Can't Create 'tarn'");  // the wrong name, kept
  run_command(format_text(kCommand, "cp %s %s/%02d%02d%02d%02d.ini", rooted(kConfigArchive).c_str(),
                          history.c_str(), t.tm_mon + 1, t.tm_mday, t.tm_hour, t.tm_min));
  return back_to_web_server();
}

SYSCOMMON_API int copy_log_file_to_usb(void) {
  const std::string dir = rooted(kBackupDir);
  for (const char *name : {"Sys.log", "Firewall.log", "VPN.log"})
    run_command(format_text(kCommand, "rm %s/%s 2>/dev/null", dir.c_str(), name));
  const struct {
    const char *from, *to;
  } moves[] = {{"/mnt/ramdisk/TARN_LOG.ini", "Sys.log"},
               {"/mnt/ramdisk/TARN_Firewall_LOG.ini", "Firewall.log"},
               {"/mnt/ramdisk/TARN_IPSec_LOG.ini", "VPN.log"}};
  for (const auto &m : moves)
    run_command(format_text(kCommand, "mv %s %s/%s 2>/dev/null", rooted(m.from).c_str(), dir.c_str(), m.to));
  return back_to_web_server();
}

SYSCOMMON_API struct tm *tarn_macro_localtime(const time_t *value) {
  // A change of TZ makes the C library read the zone rules again.
  setenv("TZ", "NULL", 1);
  // cppcheck-suppress ignoredReturnValue
  localtime(value);  // only for the rules it reads again
  setenv("TZ", rooted("/etc/localtime").c_str(), 1);
  return localtime(value);
}

}  // extern "C"
