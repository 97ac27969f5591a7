// Process and kernel controls: each composes one fixed shell command (or reads a kernel
// entry) and runs it in the caller's process.
#include <sys/wait.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/host.h"
#include "platform/number.h"
#include "platform/process.h"
#include "util/format.h"
#include "syscommon/util.h"

namespace {

using syscommon::format_text;
using syscommon::open_pipe;
using syscommon::rooted;
using syscommon::run_command;

// Large enough for any command below whose length the device does not bound.
constexpr std::size_t kUnbounded = 4096;

const char *text_or_empty(const char *s) { return s != nullptr ? s : ""; }

}  // namespace

extern "C" {

SYSCOMMON_API int Ssys_setTaskPriority(int pid, int priority) {
  int rv = syscommon::set_round_robin(pid, priority);
  if (rv != 0) {
    std::printf("%s() rv = %d, error\n", __func__, rv);
    return rv;
  }
  return 0;
}

SYSCOMMON_API int tftpTransfer(int direction, const char *server, const char *remote_file, const char *local_path) {
  if (Ssys_CheckString(remote_file) < 1) return 1;
  server = text_or_empty(server);
  local_path = text_or_empty(local_path);
  std::string cmd = direction == 0
                        ? format_text(512, "tftp %s -c get \"%s\" \"%s\" > /dev/null 2>&1", server, remote_file, local_path)
                        : format_text(512, "tftp %s -c put \"%s\" \"%s\" > /dev/null 2>&1", server, local_path, remote_file);
  int status = run_command(cmd);
  run_command(format_text(512, "echo %d >> %s", status, rooted("/mnt/ramdisk/tftp_test").c_str()));
  if (WIFSIGNALED(status)) return 1;
  return WEXITSTATUS(status);
}

SYSCOMMON_API int get_pid_by_name(const char *name, int *pids, int capacity) {
  auto pipe = open_pipe(format_text(kUnbounded, "pidof %s", text_or_empty(name)), "r");
  if (!pipe) return -1;
  int count = 0;
  while (count < capacity && std::fscanf(pipe.get(), "%d", &pids[count]) == 1) ++count;
  return count;
}

SYSCOMMON_API int find_ap_run_in_ps(const char *name) {
  auto pipe = open_pipe(format_text(256, "ps | grep %s | grep -v grep", text_or_empty(name)), "r");
  if (!pipe) return 0;
  std::array<char, 256> line{};
  return std::fgets(line.data(), static_cast<int>(line.size()), pipe.get()) != nullptr ? 1 : 0;
}

SYSCOMMON_API int terminate_porcess(const char *name) {
  return run_command(format_text(kUnbounded, "ps|grep %s|grep -v grep|sed -n '1p'|cut -c 1-5|xargs kill -15",
                            text_or_empty(name)));
}

SYSCOMMON_API int Ssys_taskKillByName(const char *name) {
  name = text_or_empty(name);
  // The IPsec status agent's name contains "ipsec" too: it must survive.
  if (std::string_view(name) == "ipsec")
    run_command(format_text(kUnbounded,
                       "ps|grep -i %s|grep -v grep|grep -v agent_%s|grep -v agent_parse_IpsecStatus|cut -c 1-5|xargs "
                       "kill -9",
                       name, name));
  else
    run_command(format_text(kUnbounded, "ps|grep -i %s|grep -v grep|grep -v agent_%s|cut -c 1-5|xargs kill -9", name, name));
  return 0;
}

SYSCOMMON_API int Ssys_rpfEnable(uint8_t value) {
  if (value == 1) return 0;  // deliberately left alone
  run_command(format_text(kUnbounded, "echo %d > %s", value, rooted("/proc/sys/net/ipv4/conf/all/rp_filter").c_str()));
  return 0;
}

SYSCOMMON_API int Ssys_netSetIgmpMaxMemberships(int count) {
  run_command(format_text(kUnbounded, "echo %d > %s", count, rooted("/proc/sys/net/ipv4/igmp_max_memberships").c_str()));
  return 0;
}

SYSCOMMON_API int thread_log(const char *file_name) {
  std::string dir = rooted("/mnt/ramdisk");
  return run_command(
      format_text(kUnbounded, "echo %d > %s/%s", syscommon::current_thread_id(), dir.c_str(), text_or_empty(file_name)));
}

SYSCOMMON_API int check_phy_init(void) {
  const char *path = "/proc/tarn/switch_init";
  auto file = syscommon::open_file(rooted(path), "r");
  if (!file) {
    std::printf("Error: Fail To Open %s\n", path);
    return 0;
  }
  std::array<char, 16> line{};
  if (std::fgets(line.data(), static_cast<int>(line.size()), file.get()) == nullptr) return 0;
  return syscommon::device_atoi(line.data());
}

}  // extern "C"
