// The SSH server's configuration file and its restart.
#include <cstdio>

#include "platform/host.h"
#include "syscommon/maint.h"
#include "syscommon/session.h"
#include "syscommon/util.h"
#include "util/format.h"

namespace {

constexpr int kSshSessionType = 3;

}  // namespace

extern "C" {

SYSCOMMON_API int write_sshd_config(int idle_minutes) {
  auto file = syscommon::open_file(syscommon::rooted("/etc/sshd_config"), "w+");
  if (!file) {
    std::printf("fopen error\n");
    return 0;
  }
  std::FILE *f = file.get();
  std::fprintf(f, "Protocol 2\n");
  std::fprintf(f, "PermitEmptyPasswords yes\n");
  if (idle_minutes > 0) {
    // Minutes to seconds wraps like the device's int arithmetic for absurd limits.
    std::fprintf(f, "ClientAliveInterval %d\n", static_cast<int>(static_cast<unsigned>(idle_minutes) * 60U));
    std::fprintf(f, "ClientAliveCountMax 0\n");
  }
  std::fprintf(f, "Subsystem\tsftp\t/usr/libexec/sftp-server\n");
  std::fprintf(f, "Ciphers aes128-ctr,aes192-ctr,aes256-ctr\n");
  std::fprintf(f, "MACs hmac-sha2-256,hmac-sha2-512\n");
  std::fprintf(f, "PermitRootLogin yes\n");
  return 1;
}

SYSCOMMON_API int uiMgmt_setSSH(int enable, int port, int idle_minutes) {
  Ssys_taskKillByName("sshd");
  Lsyscommon_Ssgl2_remove_session_record_by_session_type(kSshSessionType);
  if (enable != 0 && write_sshd_config(idle_minutes) != 0)
    syscommon::run_command(syscommon::format_text(256, "%s -p %d\n", syscommon::rooted("/sbin/sshd").c_str(), port));
  return 0;
}

}  // extern "C"
