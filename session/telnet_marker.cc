// Telnet login markers: the telnet login process reports a login result by an empty file
// "NUMBER-TEXT" under the RAM disk, which the console side tests and removes.
#include "platform/host.h"
#include "syscommon/session.h"
#include "syscommon/util.h"
#include "util/format.h"

using syscommon::format_text;
using syscommon::rooted;
using syscommon::run_command;

namespace {

// Large enough for any root and marker name a caller passes.
constexpr std::size_t kCommandSize = 4096;

std::string marker_dir() { return rooted("/mnt/ramdisk/telnet_login"); }

const char *or_empty(const char *text) { return text != nullptr ? text : ""; }

}  // namespace

extern "C" {

SYSCOMMON_API int create_prefix_of_telnetd_login_result(void) {
  return run_command(format_text(kCommandSize, "mkdir -p %s", marker_dir().c_str()));
}

SYSCOMMON_API int set_telnetd_login_result(int number, const char *text) {
  return run_command(
      format_text(kCommandSize, "echo \"login\" > %s/%d-%s", marker_dir().c_str(), number, or_empty(text)));
}

SYSCOMMON_API int get_telnetd_login_result(int number, const char *text) {
  long long size = 0;
  const std::string path = format_text(kCommandSize, "%s/%d-%s", marker_dir().c_str(), number, or_empty(text));
  return syscommon::file_size(path, size) == 0 ? 1 : 0;
}

SYSCOMMON_API int remove_telnetd_login_result(int number, const char *text) {
  return run_command(
      format_text(kCommandSize, "rm %s/%d-%s > /dev/null 2>&1", marker_dir().c_str(), number, or_empty(text)));
}

SYSCOMMON_API int delete_consol_connect(void) { return Ssys_taskKillByName("tarn_parser"); }

}  // extern "C"
