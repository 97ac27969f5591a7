// Log entries to text entries, and the newest-first sort of text entries.
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <span>
#include <utility>

#include "log/lookup.h"
#include "log/render.h"
#include "platform/number.h"
#include "util/format.h"
#include "syscommon/log.h"

namespace {

void convert(const SlogLogEntry &e, int log_type, SlogTextEntry &t, syscommon::log::NameCache &names) {
  t = SlogTextEntry{};
  t.sec = e.sec;
  t.min = e.min;
  t.hour = e.hour;
  t.day = e.day;
  t.month = syscommon::wrapping_add(e.mon, 1);
  t.year = syscommon::wrapping_add(e.year, 1900);
  t.level = e.level;
  t.log_type = log_type;
  switch (log_type) {
    case SLOG_TYPE_FIREWALL:
      syscommon::log::append_firewall_text(e, t.text, &names);
      break;
    case SLOG_TYPE_VPN:
      syscommon::format_into(t.text, "[%s] %s", e.body.vpn.text, syscommon::log::vpn_description(e.body.vpn.code));
      break;
    case SLOG_TYPE_SYSTEM:
      t.log_type = e.log_type;
      syscommon::log::render_system_record(e.body.system, t.text, 1, sizeof t.text, &names);
      break;
    default:
      break;
  }
}

// Sort key of text entry i.
double key(const SlogTextEntry *texts, int i) { return convertDateTime2Sec(&texts[i]); }

}  // namespace

extern "C" {

SYSCOMMON_API int cpLog2TarnLog(SlogTextEntry *texts, SlogLogEntry *entries, int log_type, int count, int min_level,
                                int max_level) {
  if (texts == nullptr || entries == nullptr) return 0;
  syscommon::log::NameCache names;  // the store is asked once per name, not once per entry
  int written = 0;
  for (int i = 0; i < count; ++i) {
    const SlogLogEntry &e = entries[i];
    if (e.level < min_level || e.level > max_level) continue;
    convert(e, log_type, texts[written++], names);
  }
  return written;
}

SYSCOMMON_API int Read_tarnlogfile(SlogTextEntry *texts, int log_type, int min_level, int max_level) {
  if (texts == nullptr) return 0;
  auto entries = std::make_unique<SlogLogEntry[]>(SLOG_MAX_ENTRIES);
  const int count = Read_logfile(entries.get(), log_type);
  return cpLog2TarnLog(texts, entries.get(), log_type, count, min_level, max_level);
}

SYSCOMMON_API double convertDateTime2Sec(const SlogTextEntry *t) {
  if (t == nullptr) return 0;
  // 32-bit arithmetic that wraps (years of the 2000s do): the key only has to order
  // entries close in time, and months count as 30 days on purpose.
  auto u = [](int32_t v) { return static_cast<uint32_t>(v); };
  uint32_t k = u(t->year) * 12u + u(t->month);
  k = k * 30u + u(t->day);
  k = k * 24u + u(t->hour);
  k = k * 60u + u(t->min);
  k = k * 60u + u(t->sec);
  return static_cast<double>(static_cast<int32_t>(k));
}

SYSCOMMON_API void swapData(SlogTextEntry *texts, int i, int j) {
  if (texts == nullptr) return;
  std::swap(texts[i], texts[j]);
}

// Partition around the first entry's key; keys equal to the pivot may end on either
// side, so the order of equal keys is not defined.
SYSCOMMON_API void quickSort(SlogTextEntry *texts, int lo, int hi) {
  if (texts == nullptr || lo >= hi) return;
  const double pivot = key(texts, lo);
  int i = lo + 1;
  int j = hi;
  for (;;) {
    while (i <= hi && key(texts, i) >= pivot) ++i;
    while (j > lo && key(texts, j) <= pivot) --j;
    if (i > j) break;
    swapData(texts, i, j);
  }
  swapData(texts, lo, j);
  quickSort(texts, lo, j - 1);
  quickSort(texts, j + 1, hi);
}

}  // extern "C"
