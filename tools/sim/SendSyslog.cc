// Stand-in for the device's log agent, for the simulated device only (tests and demo).
//
//   SendSyslog EVENT REASON ARG [TEXT...]
//
// Appends one system log record to "/mnt/log2/KVR900_LOG1" (under SYSCOMMON_ROOT) in the
// record format the library's readers read, written with the library's own formatter:
// event and reason as given, ARG as the level when it is 0..7 (else 6, Informational),
// the boot count of "/mnt/log2/KVR900_BOOTUP_LOG", the current local time, the uptime,
// and the words of TEXT joined by blanks. Every call's arguments are also appended as one
// line to "/tmp/SendSyslog.args" so tests can check what arrived.
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>

#include "log/files.h"
#include "log/records.h"
#include "platform/host.h"
#include "platform/number.h"
#include "syscommon/log.h"
#include "syscommon/util.h"

namespace {

void append_line(const std::string &path, const std::string &line) {
  auto file = syscommon::open_file(path, "a");
  if (file) std::fprintf(file.get(), "%s\n", line.c_str());
}

}  // namespace

int main(int argc, char **argv) {
  std::string args;
  for (int i = 1; i < argc; ++i) args += (i > 1 ? " " : "") + std::string(argv[i]);
  append_line(syscommon::rooted("/tmp/SendSyslog.args"), args);
  if (argc < 4) {
    std::fprintf(stderr, "usage: SendSyslog EVENT REASON ARG [TEXT...]\n");
    return 2;
  }

  SlogSystemRecord rec{};
  rec.event_id = syscommon::device_strtoul(argv[1], nullptr, 10);
  rec.reason_id = static_cast<uint8_t>(syscommon::device_strtoul(argv[2], nullptr, 10));
  const int32_t level = syscommon::device_strtol(argv[3], nullptr, 10);
  rec.level = static_cast<uint8_t>(level >= 0 && level <= 7 ? level : 6);
  rec.bootup = static_cast<uint32_t>(get_bootup());
  const std::time_t now = std::time(nullptr);
  std::tm tm{};
  localtime_r(&now, &tm);
  syscommon::log::put_tm(rec, tm);
  rec.uptime = static_cast<uint32_t>(get_uptime());
  std::string text;
  for (int i = 4; i < argc; ++i) text += (i > 4 ? " " : "") + std::string(argv[i]);
  std::snprintf(rec.text, sizeof rec.text, "%s", text.c_str());

  // The readers take the same semaphore around the system log.
  syscommon::log::SemaphoreHold hold(syscommon::log::kSemLogFiles);
  append_line(syscommon::rooted(syscommon::log::kSystemLog1), syscommon::log::format_system_line(rec));
  return 0;
}
