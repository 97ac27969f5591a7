// System records written the way the log agent writes them, read back and rendered to the
// device's full message texts.
#include <cstdio>
#include <cstring>
#include <string>

#include "log/records.h"
#include "support/test_support.h"
#include "syscommon/hw.h"
#include "syscommon/log.h"
#include "syscommon/shm.h"

namespace {

using syscommon::log::scan_system_line;

// One line of the system log as the agent writes it.
std::string agent_line(unsigned event, unsigned reason, const std::string &text = "", unsigned bootup = 0,
                       unsigned uptime = 0, unsigned level = 6) {
  char buf[512];
  std::snprintf(buf, sizeof buf, "%04x%02x%01x0%08x%02x%02x%02x%02x%02x%04x%08x%s\n", event, reason, level, bootup, 30u,
                15u, 9u, 3u, 4u, 125u, uptime, text.c_str());
  return buf;
}

SlogSystemRecord record_of(const std::string &line) {
  SlogSystemRecord rec{};
  EXPECT_TRUE(scan_system_line(line.c_str(), rec)) << line;
  return rec;
}

std::string render(const std::string &line, int show_msg_id = 1, size_t size = 256) {
  char out[512];
  std::memset(out, '#', sizeof out);
  out[sizeof out - 1] = '\0';
  if (Eventlog_to_Str(record_of(line), out, show_msg_id, size) != 1) return "<none>";
  return out;
}

class RenderEventTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    ShmEepromInfo info{};
    for (int n = 0; n < SHM_PORT_NAME_COUNT; ++n) std::snprintf(info.port_name[n], SHM_PORT_NAME_LEN, "port-%d", n);
    std::memcpy(info.port_name[4], "Sixteen-Char-Nam", 16);  // full entry, no terminator
    std::memcpy(info.port_name[5], "next", 5);
    shm_sysSetEepromInfo(&info);
  }
};

TEST_F(RenderEventTest, PowerAndDiTransitionsCarryTheirNumber) {
  EXPECT_EQ(render(agent_line(3, 31, "", 7, 90061)),
            "[100004] [Power Transition (Off -> On)] Power 2, Bootup:7, Startup:1d1h1m1s");
  EXPECT_EQ(render(agent_line(2, 30, "", 1, 5)), "[100003] [Power Transition (On -> Off)] Power 1, Bootup:1, Startup:0d0h0m5s");
  EXPECT_EQ(render(agent_line(4, 32)), "[100005] [DI Transition (Off -> On)] DI 1, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(5, 33)), "[100006] [DI Transition (On -> Off)] DI 2, Bootup:0, Startup:0d0h0m0s");
  // Reason 29 makes number 0 for a power event: the form without a number.
  EXPECT_EQ(render(agent_line(2, 29)), "[100003] [Power Transition (On -> Off)] Power, Bootup:0, Startup:0d0h0m0s");
  // Any reason folds: 48 is power input 19.
  EXPECT_EQ(render(agent_line(3, 48)), "[100004] [Power Transition (Off -> On)] Power 19, Bootup:0, Startup:0d0h0m0s");
  // An argument text replaces the reason text in the detail.
  EXPECT_EQ(render(agent_line(3, 31, "PWR2")), "[100004] [Power Transition (Off -> On)] PWR2 2, Bootup:0, Startup:0d0h0m0s");
}

TEST_F(RenderEventTest, LinkEventsFoldPortsTwelveToTwentyOne) {
  struct Case {
    unsigned event, reason;
    const char *text;
  };
  const Case cases[] = {
      {9, 14, "[100010] [Link On] Port port-3, Bootup:2, Startup:0d1h0m0s"},
      {9, 12, "[100010] [Link On] Port port-1, Bootup:2, Startup:0d1h0m0s"},
      {10, 21, "[100011] [Link Off] Port port-10, Bootup:2, Startup:0d1h0m0s"},
      {10, 15, "[100011] [Link Off] Port Sixteen-Char-Nam, Bootup:2, Startup:0d1h0m0s"},
      // Outside 12..21 the reason stays and there is no number.
      {9, 11, "[100010] [Link On] WAN1, Bootup:2, Startup:0d1h0m0s"},
      {10, 22, "[100011] [Link Off] Filter, Bootup:2, Startup:0d1h0m0s"},
      {9, 25, "[100010] [Link On] QoS Bandwith, Bootup:2, Startup:0d1h0m0s"},
      // Other events do not fold: reason 14 is no reason at all.
      {6, 14, "[100007] [Configuration Change] (null), Bootup:2, Startup:0d1h0m0s"},
      // Reason 12 itself names port-list entry 0 when nothing was folded.
      {6, 12, "[100007] [Configuration Change] Port port-0, Bootup:2, Startup:0d1h0m0s"},
  };
  for (const Case &c : cases) EXPECT_EQ(render(agent_line(c.event, c.reason, "", 2, 3600)), c.text) << c.reason;
  EXPECT_EQ(render(agent_line(9, 13, "1/2"), 0), "[Link On] 1/2 port-2, Bootup:0, Startup:0d0h0m0s");
}

TEST_F(RenderEventTest, TrafficOverloadKeepsTheStrayPercentComma) {
  EXPECT_EQ(render(agent_line(37, 15, "85")),
            "[100030] [Traffic overload] Loading:85%, Port Sixteen-Char-Nam, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(37, 12, "x")),
            "[100030] [Traffic overload] Loading:0%, Port port-1, Bootup:0, Startup:0d0h0m0s");
  // Reason 22 is outside the port range: no load, the reason text.
  EXPECT_EQ(render(agent_line(37, 22, "")), "[100030] [Traffic overload] Filter, Bootup:0, Startup:0d0h0m0s");
}

TEST_F(RenderEventTest, AdminAndUserShowTheAccountOrThePrivilege) {
  EXPECT_EQ(render(agent_line(13, 36, "admin", 3, 61)),
            "[100014] [Auth Ok, Login Success] Account {admin}, Bootup:3, Startup:0d0h1m1s");
  EXPECT_EQ(render(agent_line(13, 36, "")), "[100014] [Auth Ok, Login Success] Privilege {User}, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(12, 35, "root")), "[100013] [Auth Fail] Account {root}, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(12, 35, " root")), "[100013] [Auth Fail] Privilege {Admin}, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(12, 35, "\troot")), "[100013] [Auth Fail] Privilege {Admin}, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(31, 35, "ops"), 0), "[Auth Ok, Session Full] Account {ops}, Bootup:0, Startup:0d0h0m0s");
}

TEST_F(RenderEventTest, ReasonZeroIsTheEventTextAloneAndUnbounded) {
  EXPECT_EQ(render(agent_line(6, 0, "ignored", 9, 100)), "Configuration Change");
  EXPECT_EQ(render(agent_line(0, 0), 0), "Cold Start");
  EXPECT_EQ(render(agent_line(2, 0)), "Power Transition (On -> Off)");
  // The copy ignores the bound: the caller's buffer must hold any event text.
  EXPECT_EQ(render(agent_line(30, 0), 1, 4), "Event log capacity is over threshold.");
}

TEST_F(RenderEventTest, UnknownEventWritesNothing) {
  char out[32] = "untouched";
  for (unsigned ev : {22u, 29u, 43u, 0xffffu}) {
    EXPECT_EQ(Eventlog_to_Str(record_of(agent_line(ev, 1, "x")), out, 1, sizeof out), 0) << ev;
    EXPECT_EQ(Eventlog_to_Str(record_of(agent_line(ev, 0)), out, 1, sizeof out), 0) << ev;
  }
  EXPECT_STREQ(out, "untouched");
}

TEST_F(RenderEventTest, UnknownReasonIsANullDetail) {
  EXPECT_EQ(render(agent_line(6, 13, "text")), "[100007] [Configuration Change] (null), Bootup:0, Startup:0d0h0m0s");
  // 31 lies between "Power" and "DI" and names nothing.
  EXPECT_EQ(render(agent_line(6, 31)), "[100007] [Configuration Change] (null), Bootup:0, Startup:0d0h0m0s");
}

TEST_F(RenderEventTest, FiberCheckAndMacTable) {
  EXPECT_EQ(render(agent_line(34, 105, "0309")),
            "[100027] [Fiber Check Warning] Port G2 low Rx power warning!, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(34, 105, "0100")), "[100027] [Fiber Check Warning] , Bootup:0, Startup:0d0h0m0s");
  // Reason 105 with another event is an ordinary reason.
  EXPECT_EQ(render(agent_line(6, 105, "0309")), "[100007] [Configuration Change] 0309, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(6, 105, "")), "[100007] [Configuration Change] Fiber Check, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(36, 106, "00:11:22:33:44:55 1/3 -> 1/4")),
            "[100029] [MAC Table Change] 00:11:22:33:44:55 1/3 -> 1/4, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(36, 106, "")), "[100029] [MAC Table Change] , Bootup:0, Startup:0d0h0m0s");
}

TEST_F(RenderEventTest, SessionEventsTakeTheRuleNumberOffTheText) {
  struct Case {
    unsigned event, reason;
    const char *arg, *text;
  };
  const Case cases[] = {
      {42, 107, "3", "[100035] [Session Log] Session Idle Tiemtout {R3}, Bootup:0, Startup:0d0h0m0s"},
      {42, 108, "12 extra", "[100035] [Session Log] Force Session Termination {R12}, Bootup:0, Startup:0d0h0m0s"},
      {42, 114, "5 192.168.1.10:5000 -> 10.0.0.1:80",
       "[100035] [Session Log] Session Start {R5} 192.168.1.10:5000 -> 10.0.0.1:80, Bootup:0, Startup:0d0h0m0s"},
      {42, 115, "  7 TCP", "[100035] [Session Log] Session End {R7} TCP, Bootup:0, Startup:0d0h0m0s"},
      {42, 115, "7", "[100035] [Session Log] Session End {R7} , Bootup:0, Startup:0d0h0m0s"},
      // 116 keeps the whole text.
      {42, 116, "VLAN", "[100035] [Session Log] All Sessions Ended by Change of VLAN, Bootup:0, Startup:0d0h0m0s"},
      {42, 116, "7 VLAN", "[100035] [Session Log] All Sessions Ended by Change of 7 VLAN, Bootup:0, Startup:0d0h0m0s"},
      // Rule events: the rest of the text is the detail, else the reason text; never a number.
      {38, 22, "12 blocked by filter", "[100031] [Firewall rule terminated] blocked by filter, Bootup:0, Startup:0d0h0m0s"},
      {38, 22, "12", "[100031] [Firewall rule terminated] Filter, Bootup:0, Startup:0d0h0m0s"},
      {38, 22, "999", "[100031] [Firewall rule terminated] Filter, Bootup:0, Startup:0d0h0m0s"},
      {38, 108, "-4", "[100031] [Firewall rule terminated] Force Session Termination {R-4}, Bootup:0, Startup:0d0h0m0s"},
      // Outside rule and session events the session reasons have no number.
      {6, 107, "3", "[100007] [Configuration Change] Session Idle Tiemtout {R0}, Bootup:0, Startup:0d0h0m0s"},
  };
  for (const Case &c : cases) EXPECT_EQ(render(agent_line(c.event, c.reason, c.arg)), c.text) << c.arg;
}

TEST_F(RenderEventTest, IngressRateNeedsAPrintableArgument) {
  EXPECT_EQ(render(agent_line(37, 110, "1/3")), "[100030] [Traffic overload] Ingress Limit {1/3}, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(37, 111, "1/3")), "[100030] [Traffic overload] Ingress Resume {1/3}, Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(37, 110, "")), "[100030] [Traffic overload] , Bootup:0, Startup:0d0h0m0s");
  EXPECT_EQ(render(agent_line(37, 111, " 1/3")), "[100030] [Traffic overload] , Bootup:0, Startup:0d0h0m0s");
}

TEST_F(RenderEventTest, OutputAndDetailAreBounded) {
  const std::string line = agent_line(3, 31, "", 7, 90061);
  const std::string full = render(line);
  for (size_t size : {1u, 10u, 30u}) EXPECT_EQ(render(line, 1, size), full.substr(0, size - 1)) << size;
  char untouched[4] = "abc";
  EXPECT_EQ(Eventlog_to_Str(record_of(line), untouched, 1, 0), 1);
  EXPECT_STREQ(untouched, "abc");

  // The argument fills the record's 255 characters; the detail keeps 127 of them.
  const std::string arg(255, 'a');
  EXPECT_EQ(render(agent_line(6, 1, arg), 0, 512), "[Configuration Change] " + std::string(127, 'a') + ", Bootup:0, Startup:0d0h0m0s");
}

TEST_F(RenderEventTest, RecordFilledToTheLastByteStaysInside) {
  SlogSystemRecord rec = record_of(agent_line(6, 1));
  std::memset(rec.text, 'z', sizeof rec.text);  // no terminator at all
  char out[256];
  ASSERT_EQ(Eventlog_to_Str(rec, out, 0, sizeof out), 1);
  EXPECT_EQ(std::string(out), "[Configuration Change] " + std::string(127, 'z') + ", Bootup:0, Startup:0d0h0m0s");
}

TEST_F(RenderEventTest, PrintArgRendersFromTheTwoIds) {
  char out[128];
  std::memset(out, 'x', sizeof out);
  const std::string want = "[100010] [Link On] Port port-3, Bootup:0, Startup:0d0h0m0s";
  EXPECT_EQ(Slog_printArg(out, sizeof out, 9, 14), static_cast<int>(want.size()));
  EXPECT_EQ(std::string(out), want);
  // Only the reason's low byte counts.
  const char *power = "[100004] [Power Transition (Off -> On)] Power 2, Bootup:0, Startup:0d0h0m0s";
  EXPECT_EQ(Slog_printArg(out, sizeof out, 3, 256 + 31), static_cast<int>(std::strlen(power)));
  EXPECT_STREQ(out, power);
  EXPECT_EQ(Slog_printArg(out, sizeof out, 1, 0), 10);
  EXPECT_STREQ(out, "Warm Start");
  std::memset(out, 'x', sizeof out);
  EXPECT_EQ(Slog_printArg(out, sizeof out, 22, 1), 0);
  EXPECT_EQ(out[0], '\0');
  EXPECT_EQ(out[127], '\0');  // the whole buffer was cleared
  EXPECT_EQ(Slog_printArg(out, 12, 9, 14), 11);
  EXPECT_STREQ(out, "[100010] [L");
  EXPECT_EQ(Slog_printArg(out, 0, 9, 14), 0);
}

}  // namespace
