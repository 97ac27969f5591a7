// The identity EEPROM, the hardware version and the board's MAC address.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <string_view>

#include "platform/host.h"
#include "syscommon/hw.h"
#include "syscommon/maint.h"
#include "syscommon/netstat.h"

namespace {

constexpr const char *kEeprom = "/proc/tarn/eeprom";
constexpr long kSernoOffset = 32;
constexpr long kBurnHourOffset = 64;
constexpr long kEotOffset = 80;
constexpr long kSernoTextOffset = 624;
constexpr int kSernoTextLen = 12;
constexpr int kEotFlagOn = 256;

// The two per-process caches; a failed read leaves them unloaded.
struct Cache {
  std::mutex lock;
  bool serno_loaded = false;
  uint32_t serno = 0;
  bool text_loaded = false;
  char text[kSernoTextLen + 1] = {};
};

Cache &cache() {
  static Cache c;
  return c;
}

}  // namespace

extern "C" {

SYSCOMMON_API int Read_EEPROM(long off, void *buf, int n) {
  auto file = syscommon::open_file(syscommon::rooted(kEeprom), "r");
  if (!file) {
    std::puts("eeprom fopen error");
    return -1;
  }
  std::fseek(file.get(), off, SEEK_SET);
  auto *out = static_cast<unsigned char *>(buf);
  // One byte at a time; past the end of the file a byte reads as 255 (EOF's low byte).
  for (int i = 0; i < n; ++i) out[i] = static_cast<unsigned char>(std::fgetc(file.get()));
  return std::fclose(file.release());
}

SYSCOMMON_API uint32_t Get_serno(void) {
  Cache &c = cache();
  std::lock_guard guard(c.lock);
  if (!c.serno_loaded) {
    unsigned char b[4];
    if (Read_EEPROM(kSernoOffset, b, 4) != -1) {
      c.serno = static_cast<uint32_t>(b[0]) | static_cast<uint32_t>(b[1]) << 8 | static_cast<uint32_t>(b[2]) << 16 |
                static_cast<uint32_t>(b[3]) << 24;
      c.serno_loaded = true;
    }
  }
  return c.serno_loaded ? c.serno : 0;
}

SYSCOMMON_API char *Get_sernofull(void) {
  Cache &c = cache();
  std::lock_guard guard(c.lock);
  if (!c.text_loaded) {
    char raw[kSernoTextLen];
    if (Read_EEPROM(kSernoTextOffset, raw, kSernoTextLen) == -1) return nullptr;
    std::size_t n = 0;
    while (n < sizeof raw && static_cast<unsigned char>(raw[n]) != 255) ++n;
    std::memcpy(c.text, raw, n);
    c.text[n] = '\0';
    c.text_loaded = true;
  }
  return c.text;
}

SYSCOMMON_API int Get_EOT_Flag(void) {
  unsigned char flag = 0;
  if (Read_EEPROM(kEotOffset, &flag, 1) == -1) return 0;
  return flag;
}

SYSCOMMON_API int Scf_getBurnHour(void *buf) {
  Read_EEPROM(kBurnHourOffset, buf, 4);
  return 0;
}

SYSCOMMON_API int Ssys_setEOTFlagAndBurnHour(int flag, uint32_t minutes) {
  // Eight marker characters (no terminator), the minutes, a 0 byte.
  char record[13] = {};
  const std::string_view marker = flag == kEotFlagOn ? "EOTSETON" : "EOTSETOF";
  std::copy(marker.begin(), marker.end(), record);
  std::memcpy(record + 8, &minutes, 4);
  std::printf("min = %d\n", static_cast<int>(minutes));
  return Write_Data_To_Flash_From_End(record, 48, 1, 12) != -1 ? 1 : -1;
}

SYSCOMMON_API int Get_HW_version(void) {
  auto file = syscommon::open_file(syscommon::rooted("/proc/tarn/hw_version"), "r");
  if (!file) {
    std::puts("eeprom fopen error");
    return 2;
  }
  return std::fgetc(file.get()) == '0' ? 1 : 2;
}

SYSCOMMON_API int Get_Thermal(void) { return -1; }

SYSCOMMON_API int Get_Mac(uint8_t *buf) { return Get_IF_MAC("eth0", buf); }

}  // extern "C"
