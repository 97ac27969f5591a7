// System uptime, its text form, and the boot counter kept on the log partition.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/host.h"
#include "platform/number.h"
#include "platform/process.h"
#include "syscommon/util.h"

extern "C" {

SYSCOMMON_API long get_uptime(void) {
  long seconds = 0;
  int rc = syscommon::system_uptime(seconds);
  if (rc != 0) std::printf("code error = %d\n", rc);
  return seconds;
}

SYSCOMMON_API int get_bootup(void) {
  auto file = syscommon::open_file(syscommon::rooted("/mnt/log2/KVR900_BOOTUP_LOG"), "r");
  if (!file) {
    std::puts("uptime fopen error");
    return 0;
  }
  std::array<char, 129> line{};
  if (std::fgets(line.data(), static_cast<int>(line.size()), file.get()) == nullptr) {
    std::printf("get_bootup get nothing");
    return 0;
  }
  return syscommon::device_atoi(line.data());
}

SYSCOMMON_API int Uptime_to_str(uint32_t seconds, char *text_out) {
  unsigned days = seconds / 86400u;
  unsigned hours = seconds % 86400u / 3600u;
  unsigned minutes = seconds % 3600u / 60u;
  unsigned secs = seconds % 60u;
  // At most "49710d23h59m59s": 15 characters.
  return std::snprintf(text_out, 16, "%ud%uh%um%us", days, hours, minutes, secs);
}

}  // extern "C"
