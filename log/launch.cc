// The outgoing side of the event log: starting the log agent (SendSyslog) for an event,
// the flush of the connection-tracking table with its "Session Log" event, and the
// security-notification datagram.
#include <chrono>
#include <cstdint>
#include <cstring>
#include <string>
#include <thread>

#include "log/lookup.h"
#include "platform/host.h"
#include "util/format.h"
#include "syscommon/log.h"
#include "syscommon/net.h"

namespace {

using syscommon::format_text;
using syscommon::run_command;

constexpr std::size_t kCutCommand = 256;  // commands cut to 255 characters

constexpr int kEventLogOverThreshold = 30;
constexpr int kThresholdArgument = 6;
constexpr int kEventSessionLog = 42;
constexpr int kReasonAllSessionsEnded = 116;
constexpr int kSessionLogArgument = 5;

// Login results that stand for the account kinds.
constexpr int kResultUser = 16;
constexpr int kResultAdmin = 17;
constexpr int kReasonAdmin = 35;
constexpr int kReasonUser = 36;

}  // namespace

extern "C" {

SYSCOMMON_API int call_SendSyslog_to_log(int event, int reason, int arg) {
  return run_command("SendSyslog " + std::to_string(event) + " " + std::to_string(reason) + " " +
                     std::to_string(arg) + " &");
}

SYSCOMMON_API int call_SendSyslog_with_msg_to_log(int event, int reason, int arg, const char *text) {
  if (text == nullptr) return run_command(format_text(kCutCommand, "SendSyslog %d %d %d &", event, reason, arg));
  return run_command(format_text(kCutCommand, "SendSyslog %d %d %d '%s' &", event, reason, arg, text));
}

SYSCOMMON_API int send_log_over_threshold(int log_reason) {
  return call_SendSyslog_to_log(kEventLogOverThreshold, log_reason, kThresholdArgument);
}

SYSCOMMON_API int Lsyscommon_SendLoginResult_with_UserName(int event, int result, int arg, const char *user) {
  const int reason = result == kResultUser                          ? kReasonUser
                     : result == kResultAdmin || result == 0 ? kReasonAdmin
                                                                    : result;
  // A lone quote would open a quoted word the shell never closes.
  if (user == nullptr || std::strcmp(user, "'") == 0 || std::strcmp(user, "\"") == 0) user = "unknown_user";
  return run_command("SendSyslog " + std::to_string(event) + " " + std::to_string(reason) + " " +
                     std::to_string(arg) + " " + user + " > /dev/null 2>&1 &");
}

SYSCOMMON_API int flush_conntrack_and_log(int reason) {
  if (const SlogDescEntry *found = syscommon::log::find_reason(static_cast<uint32_t>(reason))) {
    run_command(format_text(kCutCommand, "%s %d %d %d %s > /dev/null 2>&1 &",
                            syscommon::rooted("/sbin/SendSyslog").c_str(), kEventSessionLog, kReasonAllSessionsEnded,
                            kSessionLogArgument, found->text));
  }
  // Give the agent time to log before the sessions vanish.
  std::this_thread::sleep_for(std::chrono::seconds(1));
  return run_command("conntrack -F");
}

SYSCOMMON_API int Send_Security_Notification(const SlogLogEntry *entry) {
  if (entry == nullptr) return -1;
  SlogSecurityNotification msg{};
  msg.log_type = static_cast<uint32_t>(entry->log_type);
  if (entry->log_type == SLOG_TYPE_FIREWALL) {
    const SlogFirewallRecord &fw = entry->body.firewall;
    if (fw.id == SLOG_FW_POLICY_HIT && fw.target == 1) return -1;  // an accepted packet is no threat
    msg.event_id = fw.id;
  } else if (entry->log_type == SLOG_TYPE_SYSTEM) {
    msg.event_id = entry->body.system.event_id;
  } else {
    return -1;
  }
  return send_agent(sock_path("NET_SECURITY_NOTIFICATION_SENDLOG.SOCKET"), 0, 0, &msg, sizeof msg, 1, 1);
}

}  // extern "C"
