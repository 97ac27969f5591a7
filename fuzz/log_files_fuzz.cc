// The system, VPN and firewall log file readers over one file's lines: every entry they
// fill stays within the 1000 entries callers provide, and texts stay terminated.
#include <cstring>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "log/records.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static std::vector<SlogLogEntry> entries(SLOG_MAX_ENTRIES);
  static std::vector<SlogVpnRecord> vpn(SLOG_MAX_ENTRIES);
  const syscommon::fuzz::MemoryFile file(data, size);
  if (file.get() == nullptr) return 0;
  using namespace syscommon::log;

  int n = read_system_lines(file.get(), entries.data(), 0, 0);
  if (n < 0 || n > SLOG_MAX_ENTRIES) __builtin_trap();
  for (int i = 0; i < n; ++i)
    if (strnlen(entries[i].body.system.text, sizeof entries[i].body.system.text) == sizeof entries[i].body.system.text)
      __builtin_trap();
  // The older generation's lines past the newer one's count, appended.
  file.rewind();
  if (read_system_lines(file.get(), entries.data(), n, n) > SLOG_MAX_ENTRIES) __builtin_trap();

  file.rewind();
  n = read_vpn_lines(file.get(), vpn.data());
  if (n < 0 || n > SLOG_MAX_ENTRIES) __builtin_trap();
  for (int i = 0; i < n; ++i)
    if (strnlen(vpn[i].text, sizeof vpn[i].text) == sizeof vpn[i].text) __builtin_trap();

  file.rewind();
  n = read_firewall_lines(file.get(), entries.data());
  if (n < 0 || n > SLOG_MAX_ENTRIES) __builtin_trap();
  return 0;
}
