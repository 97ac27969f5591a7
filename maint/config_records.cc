// Fixed-size configuration record tables: compacting, deleting by key and counting the
// entries in use; and the boot loader's version text read from flash.
#include <fcntl.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "platform/mtd.h"
#include "platform/number.h"
#include "syscommon/maint.h"
#include "syscommon/util.h"
#include "util/buffer.h"

namespace {

constexpr std::size_t kBootScan = std::size_t{1} << 20;
constexpr std::size_t kMaxKeys = 16;
constexpr uint32_t kFieldText = 2;

struct Table {
  unsigned char *base;
  std::size_t record_size;
  std::size_t key_offset;

  unsigned char *record(int i) const { return base + static_cast<std::size_t>(i) * record_size; }
  uint32_t key(int i) const {
    uint32_t k;
    std::memcpy(&k, record(i) + key_offset, sizeof k);
    return k;
  }
};

// Scans buf as NUL-terminated strings for `needle`: the position of the first match, or npos.
std::size_t find_in_strings(std::string_view buf, std::string_view needle) {
  for (std::size_t at = 0; at < buf.size();) {
    std::size_t end = buf.find('\0', at);
    if (end == std::string_view::npos) end = buf.size();
    const std::size_t hit = buf.substr(at, end - at).find(needle);
    if (hit != std::string_view::npos) return at + hit;
    at = end + 1;
  }
  return std::string_view::npos;
}

// The NUL-terminated string at `at` (bounded by the buffer).
std::string_view string_at(std::string_view buf, std::size_t at) {
  const std::string_view rest = buf.substr(at);
  return rest.substr(0, rest.find('\0'));
}

uint32_t packed_build_date(std::string_view text) {
  // "Build date:" then month name, day, year, (ignored), time.
  const std::string s(text.substr(std::min<std::size_t>(11, text.size())));
  char month[16] = {}, day[16] = {}, year[16] = {}, skipped[16] = {}, time[16] = {};
  std::sscanf(s.c_str(), "%15s %15s %15s %15s %15s", month, day, year, skipped, time);
  time[2] = '\0';
  const uint32_t y = std::strlen(year) > 2 ? static_cast<uint32_t>(syscommon::device_atoi(year + 2)) : 0;
  return (y << 24) + (static_cast<uint32_t>(month_str_to_int(month)) << 16) +
         (static_cast<uint32_t>(syscommon::device_atoi(day)) << 8) + static_cast<uint32_t>(syscommon::device_atoi(time));
}

}  // namespace

extern "C" {

SYSCOMMON_API void readjust_config_sequence(void *table, int record_size, int count, int key_offset) {
  if (table == nullptr || record_size <= 0 || count <= 0 || key_offset < 0) return;
  const Table t{static_cast<unsigned char *>(table), static_cast<std::size_t>(record_size),
                static_cast<std::size_t>(key_offset)};
  for (int i = 0; i < count; ++i) {
    if (t.key(i) != 0) continue;
    for (int j = i + 1; j < count; ++j) {
      if (t.key(j) == 0) continue;
      std::memcpy(t.record(i), t.record(j), t.record_size);
      std::memset(t.record(j), 0, t.record_size);
      break;
    }
  }
}

SYSCOMMON_API int Delete_And_Fill_CFG_Data_For_VLan_Change(void *table, int record_size, int count, int key_offset,
                                                          const uint32_t *keys) {
  if (table == nullptr || keys == nullptr || record_size <= 0 || count <= 0 || key_offset < 0) return 0;
  const Table t{static_cast<unsigned char *>(table), static_cast<std::size_t>(record_size),
                static_cast<std::size_t>(key_offset)};
  int cleared = 0;
  for (std::size_t k = 0; k < kMaxKeys && keys[k] != 0; ++k)
    for (int i = 0; i < count; ++i)
      if (t.key(i) == keys[k]) {
        std::memset(t.record(i), 0, t.record_size);
        cleared = 1;
      }
  readjust_config_sequence(table, record_size, count, key_offset);
  return cleared;
}

SYSCOMMON_API int count_valid_data(const CfgFieldDesc *descs, int field, const void *table, int count,
                                   int entry_size) {
  if (field == CFG_FIELD_INDEX_NONE) return count;
  const CfgFieldDesc &d = descs[field];
  const auto *entries = static_cast<const unsigned char *>(table);
  int n = 0;
  for (; n < count; ++n) {
    const unsigned char *f = entries + static_cast<std::ptrdiff_t>(n) * entry_size + d.offset;
    bool empty = true;
    if (d.type == kFieldText) {
      empty = f[0] == 0;
    } else {
      for (uint32_t b = 0; b < d.size && empty; ++b) empty = f[b] == 0;
    }
    if (empty) break;
  }
  return n;
}

SYSCOMMON_API int Scf_getMMVer_Time_String(char *text, uint32_t *packed_date) {
  *packed_date = 0;
  syscommon::ByteBuffer buffer;  // zero-filled: a short read leaves empty strings behind
  {
    const syscommon::MtdDevice mtd(0, O_RDONLY);
    if (!mtd) {
      std::printf("%s open error err=%d\n", "/dev/mtd0", errno);
      std::printf("%s line %d\n", __func__, __LINE__);
      return 0;
    }
    buffer = syscommon::try_buffer(kBootScan);
    if (!buffer) {
      std::printf("cannot alloc memory for Scf_getMMVer_Time_String ");
      return 0;
    }
    syscommon::mtd_read(mtd.fd(), buffer.get(), kBootScan);
  }
  const std::string_view buf(reinterpret_cast<const char *>(buffer.get()), kBootScan);
  const std::size_t version = find_in_strings(buf, "MM-Test Ver");
  if (version == std::string_view::npos) return 0;
  const std::string_view match = string_at(buf, version);
  std::printf("paser = %.*s\n", static_cast<int>(match.size()), match.data());
  std::size_t p = std::min<std::size_t>(12, match.size());
  while (p < match.size() && match[p] == ' ') ++p;
  const std::string_view word = match.substr(p, match.find_first_of(" \n", p) - p);
  text[0] = 'V';
  std::memcpy(text + 1, word.data(), word.size());  // no terminator: the caller's is zeroed
  const std::size_t date = find_in_strings(buf, "Build date:");
  if (date != std::string_view::npos) *packed_date = packed_build_date(string_at(buf, date));
  return 1;
}

}  // extern "C"
