// Console session table and the telnet login markers.
#include <string>

#include "session/test_clock.h"
#include "support/test_support.h"
#include "syscommon/session.h"

using syscommon::testing::sim_path;

namespace {

ConSessionList table() {
  ConSessionList list{};
  shm_sysGet_con_multiSession_List(&list);
  return list;
}

class ConsoleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    Ssgl2_conmultisession_maxuser_set(2);
  }
};

TEST_F(ConsoleTest, SessionsAreLimitedByTheFirstFreeIndex) {
  syscommon::testing::g_msecs = 4242;
  const std::string long_name(45, 'n');
  EXPECT_EQ(Ssgl2_conmultisession_session_set(1, "console", 10), 0);
  EXPECT_EQ(Ssgl2_conmultisession_session_set(2, long_name.c_str(), 11), 0);
  EXPECT_EQ(Ssgl2_conmultisession_session_set(2, "ssh", 12), 13);
  EXPECT_EQ(Ssgl2_conmultisession_session_set(2, "ssh", 10), 16);
  EXPECT_EQ(shm_sysGet_con_usercount(), 2u);
  ConSessionList list = table();
  EXPECT_EQ(std::string(list.entry[1].name), long_name.substr(0, 40));
  EXPECT_EQ(list.entry[0].time, 4242u);
  EXPECT_EQ(list.entry[1].session_type, 2);

  // Disconnecting needs type, identifier and name to match; the count stays.
  EXPECT_EQ(Ssgl2_conmultisession_session_disconnect(1, "consol", 10), 0);
  EXPECT_EQ(Ssgl2_conmultisession_session_disconnect(2, "console", 10), 0);
  EXPECT_EQ(Ssgl2_conmultisession_session_disconnect(1, "console", 10), 1);
  EXPECT_EQ(shm_sysGet_con_usercount(), 2u);
  list = table();
  EXPECT_EQ(list.entry[0].session_type, -1);
  EXPECT_EQ(list.entry[0].in_use, 0u);
  EXPECT_EQ(Ssgl2_conmultisession_session_set(3, "telnet", 12), 0);  // takes the freed entry 0
  EXPECT_EQ(table().entry[0].session_id, 12u);
  EXPECT_EQ(shm_sysGet_con_usercount(), 3u);

  // Removal by type counts down once per entry freed; free entries carry type -1.
  EXPECT_EQ(Lsyscommon_Ssgl2_remove_session_record_by_session_type(2), 0);
  EXPECT_EQ(shm_sysGet_con_usercount(), 2u);
  EXPECT_EQ(table().entry[1].in_use, 0u);
  Lsyscommon_Ssgl2_remove_session_record_by_session_type(-1);  // entries 1..5 are free
  EXPECT_EQ(shm_sysGet_con_usercount(), uint32_t(2 - 5));
}

TEST_F(ConsoleTest, MaximumChangesEmptyTheTableButKeepTheCount) {
  uint32_t max = 0;
  EXPECT_EQ(Ssgl2_conmultisession_maxuser_get(&max), 2u);
  EXPECT_EQ(max, 2u);
  for (const int refused : {0, 6, -3, 2}) EXPECT_EQ(Ssgl2_conmultisession_maxuser_set(refused), refused);
  Ssgl2_conmultisession_session_set(1, "a", 1);
  EXPECT_EQ(Ssgl2_conmultisession_maxuser_set(5), 0);
  EXPECT_EQ(Ssgl2_conmultisession_maxuser_get(nullptr), 5u);
  const ConSessionList list = table();
  for (const ConSession &e : list.entry) EXPECT_EQ(e.session_type, -1);
  EXPECT_EQ(list.entry[0].in_use, 0u);
  EXPECT_EQ(shm_sysGet_con_usercount(), 1u);
  // A stored maximum beyond the table is held to its six entries.
  shm_sysSet_Con_multiSession_maxUser(1000);
  for (uint32_t id = 1; id <= 6; ++id) EXPECT_EQ(Ssgl2_conmultisession_session_set(0, nullptr, id), 0);
  EXPECT_EQ(Ssgl2_conmultisession_session_set(0, nullptr, 7), 13);
  EXPECT_EQ(Ssgl2_conmultisession_session_disconnect(0, nullptr, 6), 1);
}

TEST_F(ConsoleTest, TelnetMarkersAreFilesMadeThroughTheShell) {
  syscommon::testing::clear_trace();
  const std::string dir = sim_path("/mnt/ramdisk/telnet_login");
  EXPECT_EQ(get_telnetd_login_result(3, "tty1"), 0);
  EXPECT_EQ(create_prefix_of_telnetd_login_result(), 0);
  EXPECT_EQ(set_telnetd_login_result(3, "tty1"), 0);
  EXPECT_EQ(get_telnetd_login_result(3, "tty1"), 1);
  EXPECT_EQ(get_telnetd_login_result(4, "tty1"), 0);
  EXPECT_EQ(remove_telnetd_login_result(3, "tty1"), 0);
  EXPECT_EQ(get_telnetd_login_result(3, "tty1"), 0);
  EXPECT_EQ(delete_consol_connect(), 0);
  const std::vector<std::string> lines = syscommon::testing::trace_lines();
  ASSERT_EQ(lines.size(), 4u);
  EXPECT_EQ(lines[0], "mkdir -p " + dir);
  EXPECT_EQ(lines[1], "echo \"login\" > " + dir + "/3-tty1");
  EXPECT_EQ(lines[2], "rm " + dir + "/3-tty1 > /dev/null 2>&1");
  EXPECT_NE(lines[3].find("tarn_parser"), std::string::npos);
}

}  // namespace
