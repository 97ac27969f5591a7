// System records rendered to the device's message texts.
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "support/test_support.h"
#include "syscommon/hw.h"
#include "syscommon/log.h"
#include "syscommon/shm.h"

namespace {

SlogSystemRecord record(unsigned event, unsigned reason, std::string_view arg = {}, unsigned bootup = 0,
                        unsigned uptime = 0) {
  SlogSystemRecord rec{};
  rec.event_id = event;
  rec.reason_id = static_cast<uint8_t>(reason);
  rec.bootup = bootup;
  rec.uptime = uptime;
  arg.copy(rec.text, sizeof rec.text - 1);
  return rec;
}

std::string render(const SlogSystemRecord &rec, int show_msg_id = 0, size_t size = 256) {
  char out[512];
  std::memset(out, '#', sizeof out);
  out[sizeof out - 1] = '\0';
  if (Eventlog_to_Str(rec, out, show_msg_id, size) != 1) return "<none>";
  return out;
}

const std::string kTail = ", Bootup:0, Startup:0d0h0m0s";

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

TEST_F(RenderEventTest, RemapsAndDetailsByReason) {
  struct Case {
    unsigned event, reason;
    const char *arg, *text;  // the text before kTail
  };
  const Case cases[] = {
      // Power and DI inputs fold into "Power" / "DI" with their number, from any reason.
      {3, 31, "", "[Power Transition (Off -> On)] Power 2"},
      {3, 48, "", "[Power Transition (Off -> On)] Power 19"},
      {2, 29, "", "[Power Transition (On -> Off)] Power"},  // number 0: the form without a number
      {3, 31, "PWR2", "[Power Transition (Off -> On)] PWR2 2"},  // an argument replaces the reason text
      {4, 32, "", "[DI Transition (Off -> On)] DI 1"},
      {5, 33, "", "[DI Transition (On -> Off)] DI 2"},
      // Link events fold reasons 12..21 into ports 1..10, named from the port-name list.
      {9, 14, "", "[Link On] Port port-3"},
      {9, 12, "", "[Link On] Port port-1"},
      {10, 21, "", "[Link Off] Port port-10"},
      {10, 15, "", "[Link Off] Port Sixteen-Char-Nam"},
      {9, 13, "1/2", "[Link On] 1/2 port-2"},
      {9, 11, "", "[Link On] WAN1"},  // outside 12..21 the reason stays, with no number
      {10, 22, "", "[Link Off] Filter"},
      {6, 14, "text", "[Configuration Change] (null)"},  // other events do not fold; 14 names nothing
      {6, 12, "", "[Configuration Change] Port port-0"},
      // Traffic overload: the load with the stray "%," kept.
      {37, 15, "85", "[Traffic overload] Loading:85%, Port Sixteen-Char-Nam"},
      {37, 12, "x", "[Traffic overload] Loading:0%, Port port-1"},
      {37, 22, "", "[Traffic overload] Filter"},
      // Accounts: the name when the text starts printable, else the privilege.
      {13, 36, "admin", "[Auth Ok, Login Success] Account {admin}"},
      {13, 36, "", "[Auth Ok, Login Success] Privilege {User}"},
      {12, 35, " root", "[Auth Fail] Privilege {Admin}"},
      // Fibre check only with its own event; the MAC table change is the argument itself.
      {34, 105, "0309", "[Fiber Check Warning] Port G2 low Rx power warning!"},
      {34, 105, "0100", "[Fiber Check Warning] "},
      {6, 105, "0309", "[Configuration Change] 0309"},
      {36, 106, "00:11:22:33:44:55 1/3 -> 1/4", "[MAC Table Change] 00:11:22:33:44:55 1/3 -> 1/4"},
      {36, 106, "", "[MAC Table Change] "},
      // Session and rule events take the rule number off the text (116 keeps it whole).
      {42, 107, "3", "[Session Log] Session Idle Tiemtout {R3}"},
      {42, 108, "12 extra", "[Session Log] Force Session Termination {R12}"},
      {42, 114, "5 192.168.1.10:5000 -> 10.0.0.1:80", "[Session Log] Session Start {R5} 192.168.1.10:5000 -> 10.0.0.1:80"},
      {42, 115, "  7 TCP", "[Session Log] Session End {R7} TCP"},
      {42, 115, "7", "[Session Log] Session End {R7} "},
      {42, 116, "7 VLAN", "[Session Log] All Sessions Ended by Change of 7 VLAN"},
      {38, 22, "12 blocked by filter", "[Firewall rule terminated] blocked by filter"},
      {38, 22, "999", "[Firewall rule terminated] Filter"},  // no range check on the rule
      {38, 108, "-4", "[Firewall rule terminated] Force Session Termination {R-4}"},
      {6, 107, "3", "[Configuration Change] Session Idle Tiemtout {R0}"},
      // Ingress rate needs a printable argument, else the detail stays empty.
      {37, 110, "1/3", "[Traffic overload] Ingress Limit {1/3}"},
      {37, 111, "1/3", "[Traffic overload] Ingress Resume {1/3}"},
      {37, 111, " 1/3", "[Traffic overload] "},
  };
  for (const Case &c : cases) EXPECT_EQ(render(record(c.event, c.reason, c.arg)), c.text + kTail) << c.event << "/" << c.reason;
}

TEST_F(RenderEventTest, MessageNumberBootupAndStartup) {
  EXPECT_EQ(render(record(3, 31, "", 7, 90061), 1),
            "[100004] [Power Transition (Off -> On)] Power 2, Bootup:7, Startup:1d1h1m1s");
  EXPECT_EQ(render(record(9, 14, "", 2, 3600), 1), "[100010] [Link On] Port port-3, Bootup:2, Startup:0d1h0m0s");
}

TEST_F(RenderEventTest, ReasonZeroIsTheEventTextAloneUnknownEventsNothing) {
  EXPECT_EQ(render(record(6, 0, "ignored", 9, 100), 1), "Configuration Change");
  EXPECT_EQ(render(record(30, 0), 1, 4), "Event log capacity is over threshold.");
  // Unknown events write nothing, with or without a reason.
  char out[32] = "untouched";
  for (unsigned ev : {22u, 29u, 43u, 0xffffu}) {
    EXPECT_EQ(Eventlog_to_Str(record(ev, 1, "x"), out, 1, sizeof out), 0) << ev;
    EXPECT_EQ(Eventlog_to_Str(record(ev, 0), out, 1, sizeof out), 0) << ev;
  }
  EXPECT_STREQ(out, "untouched");
}

TEST_F(RenderEventTest, OutputAndDetailAreBounded) {
  const SlogSystemRecord rec = record(3, 31);
  const std::string full = render(rec, 1);
  for (size_t size : {1u, 10u, 30u}) EXPECT_EQ(render(rec, 1, size), full.substr(0, size - 1)) << size;
  char untouched[4] = "abc";
  EXPECT_EQ(Eventlog_to_Str(rec, untouched, 1, 0), 1);
  EXPECT_STREQ(untouched, "abc");

  // The detail keeps 127 characters of the argument, also of one without a terminator.
  SlogSystemRecord full_text = record(6, 1);
  std::memset(full_text.text, 'z', sizeof full_text.text);
  EXPECT_EQ(render(full_text, 0, 512), "[Configuration Change] " + std::string(127, 'z') + kTail);
}

TEST_F(RenderEventTest, PrintArgRendersFromTheTwoIds) {
  char out[128];
  std::memset(out, 'x', sizeof out);
  const std::string want = "[100010] [Link On] Port port-3" + kTail;
  EXPECT_EQ(Slog_printArg(out, sizeof out, 9, 14), static_cast<int>(want.size()));
  EXPECT_EQ(std::string(out), want);
  const std::string power = "[100004] [Power Transition (Off -> On)] Power 131" + kTail;
  EXPECT_EQ(Slog_printArg(out, sizeof out, 3, 256 + 160), static_cast<int>(power.size()));  // reason: low byte
  EXPECT_EQ(std::string(out), power);
  std::memset(out, 'x', sizeof out);
  EXPECT_EQ(Slog_printArg(out, sizeof out, 22, 1), 0);
  EXPECT_EQ(out[127], '\0');  // the whole buffer was cleared
  EXPECT_EQ(Slog_printArg(out, 12, 9, 14), 11);
  EXPECT_STREQ(out, "[100010] [L");
  EXPECT_EQ(Slog_printArg(out, 0, 9, 14), 0);
}

}  // namespace
