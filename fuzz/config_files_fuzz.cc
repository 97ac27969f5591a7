// The configuration import's checksum list and the stored password file, written from the
// input (list first, password file after the first NUL byte) where the readers look.
// The list names files by absolute path; the seeds name /dev/null and missing files.
#include <sys/stat.h>

#include <array>
#include <cstring>

#include "fuzz/fuzz_input.h"
#include "syscommon/maint.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static const bool made = [] {
    for (const char *dir : {"/mnt/ramdisk/cfg_tmp", "/mnt/ramdisk/cfg"})
      mkdir(syscommon::rooted(dir).c_str(), 0755);
    return true;
  }();
  (void)made;
  auto [list, password] = syscommon::fuzz::two_texts_of(data, size);
  syscommon::fuzz::put_device_file("/mnt/ramdisk/cfg_tmp/CFG_SUM", list);
  const int checked = check_upconfig_checksum();
  if (checked != 1 && checked != -1) __builtin_trap();

  syscommon::fuzz::put_device_file("/mnt/ramdisk/cfg/password.CFG", password);
  std::array<char, 124> text;  // the room Get_PW's callers give it
  const int n = Get_PW(text.data(), static_cast<int>(text.size()));
  if (n < 0 || static_cast<std::size_t>(n) != strnlen(text.data(), text.size())) __builtin_trap();
  return 0;
}
