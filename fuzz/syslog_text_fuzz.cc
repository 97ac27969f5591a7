// The syslog-text line parsers: "date time severity [host] category: program: text" into a
// text entry, and the firewall event form back into a log entry.
#include <cstring>

#include "fuzz/fuzz_input.h"
#include "syscommon/log.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::string line = syscommon::fuzz::text_of(data, size);
  SlogTextEntry text{};
  paserTarnlog(line.data(), &text);
  if (strnlen(text.text, sizeof text.text) == sizeof text.text) __builtin_trap();  // unterminated

  line = syscommon::fuzz::text_of(data, size);
  SlogLogEntry entry{};
  paserTarnFirewalllog(line.data(), &entry);

  line = syscommon::fuzz::text_of(data, size);
  int a = 0, b = 0;
  if (paserTarnlogIdx(line.data(), &a, &b) != b) __builtin_trap();
  return 0;
}
