// The log agent launchers (their command lines from the trace), an event launched, stored
// by the stand-in agent, read back and rendered, the conntrack flush, the security
// datagram on a bound socket, and the debug appenders.
#include <chrono>
#include <cstring>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "net/test_peer.h"
#include "support/test_support.h"
#include "syscommon/log.h"
#include "syscommon/net.h"
#include "syscommon/shm.h"

namespace {

using syscommon::testing::clear_trace;
using syscommon::testing::read_file;
using syscommon::testing::sim_path;
using syscommon::testing::trace_lines;
using Clock = std::chrono::steady_clock;

// Lines of a file, waiting up to 5 s for at least `n` of them (agents run in the background).
std::vector<std::string> wait_lines(const std::string &path, std::size_t n) {
  std::vector<std::string> lines;
  for (auto end = Clock::now() + std::chrono::seconds(5); Clock::now() < end;) {
    lines.clear();
    std::istringstream in(read_file(path));
    for (std::string l; std::getline(in, l);) lines.push_back(l);
    if (lines.size() >= n) break;
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  return lines;
}

TEST(LogLaunch, CommandLines) {
  SYSCOMMON_REQUIRE_ISOLATION();
  const std::string agent = sim_path("/sbin/SendSyslog");
  const struct {
    int (*launch)();
    const char *command;
  } cases[] = {
      {[] { return call_SendSyslog_to_log(6, 13, 4); }, "SendSyslog 6 13 4 &"},
      {[] { return call_SendSyslog_with_msg_to_log(14, 43, 2, "a b"); }, "SendSyslog 14 43 2 'a b' &"},
      {[] { return call_SendSyslog_with_msg_to_log(14, 43, 2, nullptr); }, "SendSyslog 14 43 2 &"},
      {[] { return send_log_over_threshold(100); }, "SendSyslog 30 100 6 &"},
      {[] { return Lsyscommon_SendLoginResult_with_UserName(13, 16, 1, "bob"); },
       "SendSyslog 13 36 1 bob > /dev/null 2>&1 &"},
      {[] { return Lsyscommon_SendLoginResult_with_UserName(13, 0, 1, "bob"); },
       "SendSyslog 13 35 1 bob > /dev/null 2>&1 &"},
      {[] { return Lsyscommon_SendLoginResult_with_UserName(12, 17, 1, "'"); },
       "SendSyslog 12 35 1 unknown_user > /dev/null 2>&1 &"},
      {[] { return Lsyscommon_SendLoginResult_with_UserName(12, 42, 1, "\""); },
       "SendSyslog 12 42 1 unknown_user > /dev/null 2>&1 &"},
  };
  for (const auto &c : cases) {
    clear_trace();
    EXPECT_EQ(c.launch(), 0) << c.command;
    EXPECT_EQ(trace_lines(), std::vector<std::string>{c.command});
  }
  // The text form is cut to 255 characters (the closing quote and "&" may go with it).
  clear_trace();
  call_SendSyslog_with_msg_to_log(1, 2, 3, std::string(400, 'x').c_str());
  ASSERT_EQ(trace_lines().size(), 1u);
  EXPECT_EQ(trace_lines()[0], "SendSyslog 1 2 3 '" + std::string(255 - 18, 'x'));

  // The flush reports through the full path, pauses a second, then flushes.
  for (auto [reason, reported] : {std::pair{56, true}, {13, false}}) {
    clear_trace();
    const auto start = Clock::now();
    EXPECT_EQ(flush_conntrack_and_log(reason), 0);
    EXPECT_GE(Clock::now() - start, std::chrono::milliseconds(990));
    std::vector<std::string> want = {"conntrack -F"};
    if (reported) want.insert(want.begin(), agent + " 42 116 5 VLAN > /dev/null 2>&1 &");
    EXPECT_EQ(trace_lines(), want);
  }
  EXPECT_EQ(wait_lines(sim_path("/tmp/conntrack.args"), 2), (std::vector<std::string>{"-F", "-F"}));
}

TEST(LogLaunch, EventStoredByTheAgentReadsBackRendered) {
  SYSCOMMON_REQUIRE_ISOLATION();
  shm_init();
  std::remove(sim_path("/mnt/log2/KVR900_LOG1").c_str());
  syscommon::testing::write_file(sim_path("/mnt/log2/KVR900_BOOTUP_LOG"), "7\n");
  ASSERT_EQ(Lsyscommon_SendLoginResult_with_UserName(13, 17, 6, "admin"), 0);
  ASSERT_EQ(wait_lines(sim_path("/mnt/log2/KVR900_LOG1"), 1).size(), 1u);
  flush_conntrack_and_log(56);  // a reason text, through "/sbin/SendSyslog"
  ASSERT_EQ(wait_lines(sim_path("/mnt/log2/KVR900_LOG1"), 2).size(), 2u);

  auto texts = std::make_unique<SlogTextEntry[]>(SLOG_MAX_ENTRIES);
  ASSERT_EQ(Read_tarnlogfile(texts.get(), SLOG_TYPE_SYSTEM, 0, 7), 2);
  const std::regex login(R"(\[100014\] \[Auth Ok, Login Success\] Account \{admin\}, Bootup:7, Startup:\d+d\d+h\d+m\d+s)");
  EXPECT_TRUE(std::regex_match(texts[0].text, login)) << texts[0].text;
  EXPECT_EQ(texts[0].level, 6);
  EXPECT_GE(texts[0].year, 2024);
  EXPECT_NE(std::string(texts[1].text).find("[Session Log] All Sessions Ended by Change of VLAN, Bootup:7"),
            std::string::npos)
      << texts[1].text;
  EXPECT_EQ(texts[1].level, 5);
}

TEST(LogLaunch, SecurityNotificationDatagram) {
  SYSCOMMON_REQUIRE_ISOLATION();
  syscommon::net::testing::Peer agent(
      syscommon::net::testing::ram("socket/NET_SECURITY_NOTIFICATION_SENDLOG.SOCKET"));
  ASSERT_TRUE(agent.ok());
  // Type, id, firewall target; the id sent, 0 for nothing sent.
  using Row = std::tuple<int, uint32_t, uint32_t, uint32_t>;
  for (auto [type, id, target, sent] : std::initializer_list<Row>{{SLOG_TYPE_FIREWALL, SLOG_FW_POLICY_HIT, 2u, SLOG_FW_POLICY_HIT},
                                        {SLOG_TYPE_FIREWALL, SLOG_FW_POLICY_HIT, 1u, 0},
                                        {SLOG_TYPE_FIREWALL, SLOG_FW_SYN_FLOOD, 1u, SLOG_FW_SYN_FLOOD},
                                        {SLOG_TYPE_SYSTEM, 12, 0u, 12},
                                        {SLOG_TYPE_VPN, 9, 0u, 0}}) {
    SlogLogEntry e{};
    e.log_type = type;
    if (type == SLOG_TYPE_FIREWALL)
      e.body.firewall.id = id, e.body.firewall.target = target;
    else
      e.body.system.event_id = id;
    const int rc = Send_Security_Notification(&e);
    EXPECT_EQ(rc, sent == 0 ? -1 : 4108) << id;
    auto d = agent.receive(sent == 0 ? 50 : 3000);
    ASSERT_EQ(d.has_value(), sent != 0) << id;
    if (!d) continue;
    EXPECT_EQ(d->head(), syscommon::net::testing::head(0, 1, 0, 1, 0, 0, 72));
    const uint32_t words[2] = {static_cast<uint32_t>(type), sent};
    std::vector<uint8_t> record(72, 0);
    std::memcpy(record.data(), words, sizeof words);
    EXPECT_TRUE(d->carries(record)) << id;
  }
  EXPECT_EQ(Send_Security_Notification(nullptr), -1);
}

TEST(LogLaunch, DebugAppendersAndTextHelpers) {
  SYSCOMMON_REQUIRE_ISOLATION();
  EXPECT_EQ(ramdisk_debug("hello world"), 0);
  rdfile = "other";
  EXPECT_EQ(ramdisk_debug("second"), 0);
  rdfile = "rdfile";
  EXPECT_EQ(read_file(sim_path("/mnt/ramdisk/rdfile")), "hello world\n");
  EXPECT_EQ(read_file(sim_path("/mnt/ramdisk/other")), "second\n");
  EXPECT_EQ(tarn_debug_message("x=%d %s", 5, "y"), 0);
  EXPECT_EQ(tarn_debug_message("%s", std::string(300, 'm').c_str()), 0);
  const std::string debug = read_file(sim_path("/mnt/ramdisk/tarn_debug_msg"));
  EXPECT_TRUE(std::regex_match(debug, std::regex(R"(\[\d+\] x=5 y\n\[\d+\] m{255}\n)"))) << debug;

  char out[64];
  const long oid[] = {1, 3, 6, 1, 4, 1, -5};
  for (auto [count, want] : {std::pair{7, "1.3.6.1.4.1.-5"}, {1, "1"}, {0, ""}}) {
    EXPECT_EQ(Get_Oid_to_Str(oid, out, count), static_cast<int>(std::strlen(want)));
    EXPECT_STREQ(out, want);
  }
  for (auto [hex, order, size, rc, want] :
       {std::tuple{"0100A8C0", 1, 16, 0, "192.168.0.1"}, {"0100A8C0", 0, 16, 0, "1.0.168.192"},
        {"0100A8C0", 1, 8, 0, "192.168"}, {"0100A8", 1, 16, -1, ""}, {"zz00A8C0", 0, 16, -1, ""}}) {
    out[0] = '\0';
    EXPECT_EQ(ip_hex_to_dquad(hex, out, static_cast<size_t>(size), order), rc) << hex;
    EXPECT_STREQ(out, want) << hex;
  }
}

}  // namespace
