// Port media, SFP module checks, the switch diagnostic tool, the ring master's address and
// the firmware-emergency text.
#include <sys/stat.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/host.h"
#include "platform/number.h"
#include "syscommon/hw.h"
#include "syscommon/shm.h"
#include "util/buffer.h"
#include "util/format.h"

namespace {

using syscommon::format_text;

constexpr std::size_t kCommandLimit = 256;
constexpr char kSfpVendor[] = "Tarnnet";
constexpr int kSfpVendorSize = 7;
constexpr std::size_t kDdmSupportByte = 96;
constexpr const char *kMasterMarker = "masterId:'";
constexpr std::size_t kMasterMarkerLen = 10;
constexpr std::size_t kMacTextLen = 17;

// The emergency text: characters of a fixed alphabet picked through a fixed index table.
constexpr char kAlphabet[] = "0123456789abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ-_.@";
constexpr std::size_t kAlphabetLen = sizeof kAlphabet - 1;
static_assert(kAlphabetLen == 66);
constexpr std::array<unsigned char, 24> kEmuIndex = {29, 10, 37, 63, 5,  48, 14, 1,  60, 22, 41, 8,
                                                     55, 33, 64, 19, 2,  46, 27, 65, 12, 58, 39, 7};

}  // namespace

extern "C" {

SYSCOMMON_API char *get_port_media_type(int port, char *out) {
  // The port's media file is named but not read in this version.
  [[maybe_unused]] std::string file =
      format_text(kCommandLimit, "%s%d", "/sys/devices/platform/octeon-sfp100/octeon_sfp100_port", port);
  std::memcpy(out, "100M, RJ45", 11);
  return out;
}

SYSCOMMON_API int Ssys_MGBIC_checkVenderData(const void *buf) {
  return buf != nullptr && std::memcmp(buf, kSfpVendor, kSfpVendorSize) == 0 ? 0 : -1;
}

SYSCOMMON_API int Ssys_getSfpVendorDataSize(void) { return kSfpVendorSize; }

SYSCOMMON_API int Sddm_isSupportddm(int sfp) {
  std::array<unsigned char, SHM_SFP_EEPROM_SIZE> record{};
  shm_get_sfp_Eeprom_ddm(sfp, record.data());
  // The same byte tested three times, as the device does.
  for (int pass = 0; pass < 3; ++pass)
    if (record[kDdmSupportByte] == 255) return 0;
  return 1;
}

SYSCOMMON_API int capture_string_only(char *text, int size, const char *start_chars, const char *delimiters) {
  if (text == nullptr) return 0;
  std::size_t keep = size > 1 ? static_cast<std::size_t>(size) - 1 : 0;
  std::string line(text, strnlen(text, keep));
  line.resize(std::min(line.size(), line.find('\n')));
  auto nothing = [&] {
    text[0] = '\0';
    return 0;
  };
  if (start_chars != nullptr) {
    std::size_t at = line.find_first_of(start_chars);
    if (at == std::string::npos) return nothing();
    line.erase(0, at);
  }
  if (delimiters != nullptr) {
    line.resize(std::min(line.size(), line.find_first_of(delimiters)));
    if (line.empty()) return nothing();
  }
  // Never longer than what was read from `text`, so it fits where it came from.
  std::memcpy(text, line.c_str(), line.size() + 1);
  return 1;
}

SYSCOMMON_API int tarn_ethsw_diag_get(int a, int b) {
  auto pipe = syscommon::open_pipe(format_text(kCommandLimit, "(echo \"%d\"; echo \"%d\") | ethsw_diag -r 0", a, b), "r");
  if (!pipe) return 0;
  std::array<char, 256> line{}, last{};
  while (std::fgets(line.data(), static_cast<int>(line.size()), pipe.get()) != nullptr) last = line;
  pipe.close();
  // The value is the last line from its eighth character on, in hexadecimal.
  const char *value = strnlen(last.data(), last.size()) > 7 ? last.data() + 7 : "";
  return syscommon::device_strtol(value, nullptr, 16);
}

SYSCOMMON_API int tarn_ethsw_diag_set(int a, int b, int c) {
  return syscommon::run_command(
      format_text(kCommandLimit, "(echo \"%d\"; echo \"%d\"; echo \"%d\") | ethsw_diag -w 0 > /dev/null\n", a, b, c));
}

SYSCOMMON_API int SsysGetDesignatedMasterAddr(int n, uint8_t *out, int len) {
  std::string status = syscommon::rooted("/var/db/rl2status");
  syscommon::run_command(format_text(kCommandLimit, "rl2ctrl -w r > %s", status.c_str()));
  syscommon::run_command(format_text(kCommandLimit, "rl2ctrl -w cpl >> %s", status.c_str()));
  struct stat st {};
  if (stat(status.c_str(), &st) != 0 || st.st_size < 1) return -1;
  auto file = syscommon::open_file(status, "r");
  if (!file) return -1;
  syscommon::ByteBuffer buffer = syscommon::try_buffer(static_cast<std::size_t>(st.st_size) + 1);
  if (!buffer) return -1;
  auto *report = reinterpret_cast<char *>(buffer.get());
  [[maybe_unused]] std::size_t got = std::fread(report, 1, static_cast<std::size_t>(st.st_size), file.get());
  // The n-th marker (n from 1); each search after the first starts past the previous one.
  const char *match = nullptr;
  for (int i = 0; i < n; ++i) {
    match = std::strstr(match == nullptr ? report : match + kMasterMarkerLen, kMasterMarker);
    if (match == nullptr) break;
  }
  if (match != nullptr && len >= 18) {
    std::strncpy(reinterpret_cast<char *>(out), match + kMasterMarkerLen, kMacTextLen);
    out[len - 1] = 0;
    uint32_t b[6] = {};  // "%x:%x:%x:%x:%x:%x"
    syscommon::scan_numbers(reinterpret_cast<const char *>(out), ':', 6, 16, b);
    for (int i = 0; i < 6; ++i) out[i] = static_cast<uint8_t>(b[i]);
  }
  return 0;
}

SYSCOMMON_API char *Ssys_getFwEMU(void) {
  auto *text = static_cast<char *>(std::calloc(kEmuIndex.size() + 1, 1));
  if (text == nullptr) return nullptr;
  for (std::size_t i = 0; i < kEmuIndex.size(); ++i) {
    if (kEmuIndex[i] >= kAlphabetLen) {
      std::fprintf(stderr, "%s: Assertion `str[i] < hex_len' failed.\n", __func__);
      std::abort();
    }
    text[i] = kAlphabet[kEmuIndex[i]];
  }
  return text;
}

}  // extern "C"
