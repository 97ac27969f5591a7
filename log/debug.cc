// Debug appenders (lines appended to files on the RAM disk through the shell) and two
// small text conversions used by the agents: SNMP object identifiers and the hexadecimal
// addresses of the kernel's /proc tables.
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "log/files.h"
#include "platform/host.h"
#include "util/format.h"
#include "syscommon/log.h"
#include "syscommon/util.h"

extern "C" {
SYSCOMMON_API const char *rdfile = "rdfile";
}

namespace {
constexpr std::size_t kMessageSize = 256;  // debug messages are cut to 255 characters
// The path ramdisk_debug appends to; one buffer shared by every thread of the process.
char g_rdfile_path[512];
}  // namespace

extern "C" {

SYSCOMMON_API int ramdisk_debug(const char *text) {
  std::snprintf(g_rdfile_path, sizeof g_rdfile_path, "%s/%s", syscommon::rooted(syscommon::log::kRamdisk).c_str(),
                rdfile != nullptr ? rdfile : "");
  return syscommon::run_command(std::string("echo ") + (text != nullptr ? text : "") + " >> " + g_rdfile_path);
}

SYSCOMMON_API int tarn_vdebug_message(const char *format, va_list args) {
  if (format == nullptr) return -1;
  const std::string message = syscommon::vformat_text(kMessageSize, format, args);
  return syscommon::run_command("echo \"[" + std::to_string(static_cast<unsigned>(get_uptime())) + "] " + message +
                                "\" >> " + syscommon::rooted("/mnt/ramdisk/tarn_debug_msg"));
}

SYSCOMMON_API int tarn_debug_message(const char *format, ...) {
  va_list args;
  va_start(args, format);
  const int rc = tarn_vdebug_message(format, args);
  va_end(args);
  return rc;
}

SYSCOMMON_API int Get_Oid_to_Str(const long *oid, char *out, int count) {
  if (out == nullptr) return 0;
  out[0] = '\0';
  if (oid == nullptr || count < 1) return 0;
  int len = 0;
  for (int i = 0; i < count; ++i) len += std::sprintf(out + len, "%ld.", oid[i]);
  out[--len] = '\0';  // the last point
  return len;
}

SYSCOMMON_API int ip_hex_to_dquad(const char *hex, char *out, size_t size, int order) {
  unsigned b[4] = {};
  if (hex == nullptr || out == nullptr || std::sscanf(hex, "%2x%2x%2x%2x", &b[0], &b[1], &b[2], &b[3]) != 4) return -1;
  if (order == 0)
    std::snprintf(out, size, "%u.%u.%u.%u", b[0], b[1], b[2], b[3]);
  else
    std::snprintf(out, size, "%u.%u.%u.%u", b[3], b[2], b[1], b[0]);
  return 0;
}

}  // extern "C"
