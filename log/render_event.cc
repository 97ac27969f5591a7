// Eventlog_to_Str and Slog_printArg: system event records to the device's message texts.
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "log/lookup.h"
#include "log/render.h"
#include "platform/number.h"
#include "util/format.h"
#include "util/identity.h"
#include "syscommon/hw.h"
#include "syscommon/log.h"
#include "syscommon/shm.h"
#include "syscommon/util.h"

namespace {

using syscommon::format_into;

constexpr std::size_t kDetailSize = 128;

enum : uint32_t {
  kEventPowerOff = 2,
  kEventPowerOn = 3,
  kEventDiOn = 4,
  kEventDiOff = 5,
  kEventLinkOn = 9,
  kEventLinkOff = 10,
  kEventFiberCheck = 34,
  kEventTrafficOverload = 37,
  kEventRuleTerminated = 38,
  kEventSessionLog = 42,
};

enum : uint32_t {
  kReasonPort = 12,
  kReasonPower = 30,
  kReasonDi = 32,
  kReasonAdmin = 35,
  kReasonUser = 36,
  kReasonFiberCheck = 105,
  kReasonMacTable = 106,
  kReasonIdleTimeout = 107,
  kReasonForceEnd = 108,
  kReasonLimitIngress = 110,
  kReasonResumeIngress = 111,
  kReasonSessionStart = 114,
  kReasonSessionEnd = 115,
  kReasonAllSessionsEnded = 116,
};

// The reason used for rendering and the number folded into the record's reason (or, for
// rule and session events, carried as the argument's first word).
struct Remapped {
  uint32_t reason;
  int number = 0;
  std::string_view arg;  // the argument text left after a consumed number word
};

bool starts_printable(std::string_view s) { return !s.empty() && std::isgraph(static_cast<unsigned char>(s[0])) != 0; }

// A text read as a decimal number the way atoi reads it (0 when it starts with no digits).
int decimal(const std::string &text) { return syscommon::device_atoi(text.c_str()); }

Remapped remap(uint32_t event, uint32_t reason, std::string_view arg) {
  Remapped r{reason, 0, arg};
  switch (event) {
    case kEventPowerOff:
    case kEventPowerOn:
      r.number = static_cast<int>(reason) - 29;
      r.reason = kReasonPower;
      break;
    case kEventDiOn:
    case kEventDiOff:
      r.number = static_cast<int>(reason) - 31;
      r.reason = kReasonDi;
      break;
    case kEventLinkOn:
    case kEventLinkOff:
    case kEventTrafficOverload:
      // Reasons 12..21 carry ports 1..10; any other reason stays and has no number.
      if (reason >= 12 && reason <= 21) {
        r.number = static_cast<int>(reason) - 11;
        r.reason = kReasonPort;
      }
      break;
    case kEventRuleTerminated:
    case kEventSessionLog:
      if (reason != kReasonAllSessionsEnded) {
        // The first blank-separated word is the rule number; it is taken off the text.
        std::size_t start = arg.find_first_not_of(' ');
        if (start == std::string_view::npos) start = arg.size();
        std::size_t end = arg.find(' ', start);
        r.number = decimal(std::string(arg.substr(start, end - start)));
        r.arg = end == std::string_view::npos ? std::string_view{} : arg.substr(end + 1);
      }
      break;
    default:
      break;
  }
  return r;
}

// The detail text of step 5 (at most 127 characters).
void build_detail(uint32_t event, const Remapped &r, const SlogDescEntry &reason, std::span<char> detail) {
  const std::string arg(r.arg);
  switch (reason.id) {
    case kReasonAdmin:
    case kReasonUser:
      if (starts_printable(arg))
        format_into(detail, "Account {%s}", arg.c_str());
      else
        format_into(detail, "Privilege {%s}", reason.text);
      return;
    case kReasonMacTable:
      format_into(detail, "%s", arg.c_str());
      return;
    case kReasonIdleTimeout:
    case kReasonForceEnd:
      format_into(detail, "%s {R%d}", reason.text, r.number);
      return;
    case kReasonSessionStart:
    case kReasonSessionEnd:
      format_into(detail, "%s {R%d} %s", reason.text, r.number, arg.c_str());
      return;
    case kReasonAllSessionsEnded:  // never remapped, so the whole argument text
      format_into(detail, "%s %s", reason.text, arg.c_str());
      return;
    case kReasonLimitIngress:
    case kReasonResumeIngress:
      if (starts_printable(arg))
        format_into(detail, reason.id == kReasonLimitIngress ? "Ingress Limit {%s}" : "Ingress Resume {%s}", arg.c_str());
      return;
    default:
      break;
  }
  if (reason.id == kReasonFiberCheck && event == kEventFiberCheck) {
    get_ddm_msg(arg.c_str(), detail.data(), detail.size());
  } else if (reason.id == kReasonPort && event == kEventTrafficOverload) {
    // The device's format is "%s:%d%, %s"; its stray "%," prints as the two characters
    // "%," (e.g. "Loading:85%, Port"), which this format writes explicitly.
    format_into(detail, "%s:%d%%, %s", "Loading", decimal(arg), reason.text);
  } else {
    format_into(detail, "%s", arg.empty() ? reason.text : arg.c_str());
  }
}

// Name of port `number` in the device's port-name list ("" outside the list).
std::string port_name(int number, syscommon::log::NameCache *cache) {
  if (number < 0 || number >= SHM_PORT_NAME_COUNT) return {};
  if (cache == nullptr) return std::string(syscommon::identity_port_name(syscommon::identity_record(), number));
  if (!cache->identity) cache->identity = syscommon::identity_record();
  return std::string(syscommon::identity_port_name(*cache->identity, number));
}

}  // namespace

namespace syscommon::log {

int render_system_record(const SlogSystemRecord &record, char *out, int show_msg_id, std::size_t size,
                         NameCache *cache) {
  const SlogDescEntry *event = find_event(record.event_id);
  if (event == nullptr) return 0;
  if (record.reason_id == 0) {
    std::strcpy(out, event->text);  // unbounded by design: the caller's buffer holds any event text
    return 1;
  }
  const Remapped r =
      remap(record.event_id, record.reason_id, std::string_view(record.text, strnlen(record.text, sizeof record.text)));
  // cppcheck-suppress incorrectLogicOperator
  if ((record.event_id == kEventRuleTerminated || record.event_id == kEventSessionLog) && r.number < 1 &&
      r.number > 256)  // never true: the device renders every rule number, kept as it is
    return 0;

  char detail_buf[kDetailSize] = {};
  const char *detail = "(null)";  // an unknown reason prints as a null detail
  if (const SlogDescEntry *reason = find_reason(r.reason)) {
    build_detail(record.event_id, r, *reason, detail_buf);
    detail = detail_buf;
  }

  char uptime[64] = {};
  Uptime_to_str(record.uptime, uptime);
  char prefix[24] = {};
  if (show_msg_id != 0) std::snprintf(prefix, sizeof prefix, "[%d] ", static_cast<int>(event->msg_id));
  const int bootup = static_cast<int>(record.bootup);
  const std::span<char> dst(out, size);
  if (r.reason == kReasonPort)
    format_into(dst, "%s[%s] %s %s, Bootup:%d, Startup:%s", prefix, event->text, detail,
                port_name(r.number, cache).c_str(), bootup, uptime);
  else if (r.number == 0 || record.event_id == kEventRuleTerminated || record.event_id == kEventSessionLog)
    format_into(dst, "%s[%s] %s, Bootup:%d, Startup:%s", prefix, event->text, detail, bootup, uptime);
  else
    format_into(dst, "%s[%s] %s %d, Bootup:%d, Startup:%s", prefix, event->text, detail, r.number, bootup, uptime);
  return 1;
}

}  // namespace syscommon::log

SYSCOMMON_API int Eventlog_to_Str(SlogSystemRecord record, char *out, int show_msg_id, size_t size) {
  return syscommon::log::render_system_record(record, out, show_msg_id, size, nullptr);
}

SYSCOMMON_API int Slog_printArg(char *out, size_t size, int event_id, int reason_id) {
  std::memset(out, 0, size);
  SlogSystemRecord rec{};
  rec.event_id = static_cast<uint32_t>(event_id);
  rec.reason_id = static_cast<uint8_t>(reason_id & 0xFF);
  // With no room nothing was written, unless the unbounded reason-0 copy ran.
  if (Eventlog_to_Str(rec, out, 1, size) == 0 || (size == 0 && rec.reason_id != 0)) return 0;
  return static_cast<int>(std::strlen(out));
}
