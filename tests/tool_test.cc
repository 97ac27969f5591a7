// The `syscommon` tool run as a program on the simulated device: each group's success paths
// with their decoded output, and bad arguments answered with one line and status 2 before
// anything is looked up or changed.
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "support/tool_run.h"

namespace {

using syscommon::testing::ProgramRun;
using syscommon::testing::read_file;
using syscommon::testing::sim_path;

using syscommon::testing::tool;
constexpr auto &ok = syscommon::testing::tool_ok;

class ToolTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    ok({"shm", "init"});
  }
};

TEST_F(ToolTest, BadArgumentsGetOneLineAndStatusTwoAndChangeNothing) {
  syscommon::testing::write_file(sim_path("/mnt/ramdisk/socket/keep"), "data");
  const std::vector<std::vector<std::string>> bad = {
      {"nosuch"},
      {"shm", "nosuch"},
      {"shm", "set", "nosuch", "1"},
      {"shm", "set", "timezone", "0x10"},  // decimal only, whole token
      {"shm", "set", "timezone", " 1"},
      {"shm", "set", "timezone", "63"},
      {"shm", "set", "timezone", "1\n2"},  // quoted back on one line
      {"shm\nx"},
      {"shm", "mcast-add", "1", "01:00:5e:00:00: 1"},
      {"shm", "mcast-add", "1", "0x1:00:5e:00:00:01"},
      {"shm", "mcast-add", "1", "01:00:5e:00:00:001"},
      {"ifs", "set-vlan", "1", "5", "a\nb", "10.0.0.1/24"},  // would split the kernel record
      {"ifs", "set-bridge", "0", "8001", "br\tx", "10.0.0.1/24", "on"},
      {"accounts", "add", "a\nb", "pw"},
      {"accounts", "add", "bob", "pw\n", "user"},
      {"accounts", "add", "bob", "pw", "root"},
      {"accounts", "set", "nobody", "colour", "red"},  // refused before the lookup
      {"tz", "find", "+99:99"},
      {"tz", "find", "+08:7"},
      {"tz", "find", ""},
      {"event", "render", "1x", "0"},
      {"net", "send", "socket/x", "--type", "1", "--type", "2", "--cmd", "1"},
      {"net", "send", "socket/x", "--type", "1"},
      {"net", "listen", "../x"},
      {"net", "listen", "/etc/x"},
      {"net", "listen", "socket/../../x"},
      {"ipsec", "proposal", "ike", "5", "7"},  // beyond the hash table
      {"ipsec", "proposal", "ike", "5", "2", "--dh", "7"},
      {"ipsec", "proposal", "ah", "5", "2"},
      {"vpn", "client-config", "/tmp/x", "--server", "a", "--dev", "tap0"},
      {"vpn", "client-config", "/tmp/x"},
      {"cert", "check", "a", "b"},
  };
  syscommon::testing::expect_usage_errors(SYSCOMMON_TOOL, bad);
  EXPECT_EQ(read_file(sim_path("/proc/tarn/ifsInfo")), "");
  EXPECT_NE(ok({"accounts", "list"}).find("0 of 10 accounts"), std::string::npos);
  EXPECT_NE(ok({"shm", "show"}).find("index                              0\n"), std::string::npos);
  // Listening never removes a file that is not a socket.
  EXPECT_EQ(tool({"net", "listen", "socket/keep"}).status, 1);
  EXPECT_EQ(read_file(sim_path("/mnt/ramdisk/socket/keep")), "data");
}

TEST_F(ToolTest, HelpOnlyInOptionPositionAndValuesTakenAsGiven) {
  for (const auto &args : std::vector<std::vector<std::string>>{
           {"--help"}, {"accounts", "help"}, {"accounts", "add", "--help"}, {"net", "send", "socket/x", "-h"}}) {
    const ProgramRun r = tool(args);
    EXPECT_EQ(r.status, 0) << ::testing::PrintToString(args);
    EXPECT_EQ(r.out.rfind("usage: syscommon", 0), 0u) << r.out;
  }
  // "help" as a password is a password; "010" is ten.
  EXPECT_EQ(ok({"accounts", "add", "bob", "help"}), "added 'bob' (user) in slot 0\n");
  EXPECT_NE(ok({"accounts", "list"}).find("0  bob "), std::string::npos);
  ok({"shm", "set", "timezone", "010"});
  const std::string shown = ok({"shm", "show"});
  EXPECT_NE(shown.find("index                              10\n  offset from GMT                    -05:00"),
            std::string::npos)
      << shown;
}

TEST_F(ToolTest, EachGroupShowsWhatItDidDecoded) {
  ok({"shm", "mcast-add", "7", "1:0:5e:0:0:a"});
  EXPECT_NE(ok({"shm", "show"}).find("[  0] 01:00:5e:00:00:0a  vlan 7"), std::string::npos);

  ok({"ifs", "set-vlan", "1", "5", "office", "192.168.5.1/24", "1/1-1/2"});
  const std::string ifs = ok({"ifs", "show"});
  EXPECT_NE(ifs.find("office"), std::string::npos);
  EXPECT_NE(ifs.find("192.168.5.1"), std::string::npos);
  EXPECT_NE(ifs.find("1/1-1/2"), std::string::npos) << ifs;
  EXPECT_NE(ok({"ifs", "lookup", "vid", "5"}).find("user interface name                      office"),
            std::string::npos);

  EXPECT_NE(ok({"tz", "find", "+08:00"}).find("49  UTC+08:00   28800  Taipei          <- chosen"), std::string::npos);
  EXPECT_EQ(ok({"tz", "find", "Taipei"}), "  49  UTC+08:00   28800  Taipei\n");
  EXPECT_EQ(tool({"tz", "find", "Atlantis"}).status, 1);

  EXPECT_EQ(ok({"event", "render", "1", "0"}), "Warm Start\n");
  EXPECT_NE(ok({"event", "tables"}).find("0  100001   \"Cold Start\""), std::string::npos);

  EXPECT_EQ(ok({"ipsec", "proposal", "ike", "7", "2", "--keylen", "128", "--dh", "14"}), "AES_128-SHA1-MODP2048\n");
  syscommon::testing::write_file(sim_path("/var/run/ovpnserver1.pid"), "4242\n");
  syscommon::testing::write_file(sim_path("/var/run/ovpnclient2.state"), "1\n");
  const std::string vpn = ok({"vpn", "status"});
  EXPECT_NE(vpn.find("server 1   pid 4242 "), std::string::npos) << vpn;
  EXPECT_NE(vpn.find("client 2   not running            Connected, no log"), std::string::npos) << vpn;
  const std::string conf = sim_path("/tmp/c.ovpn");
  EXPECT_NE(ok({"vpn", "client-config", conf, "--server", "192.0.2.1", "--proto", "tcp"}).find("port 1194"),
            std::string::npos);
  EXPECT_NE(read_file(conf).find("proto tcp\nremote 192.0.2.1 1194\n"), std::string::npos);

  // A datagram sent with the tool arrives at the tool's listener, decoded.
  ProgramRun listened;
  std::thread listener([&] { listened = tool({"net", "listen", "socket/me", "--count", "1"}); });
  const std::string sock = sim_path("/mnt/ramdisk/socket/me");
  struct stat st {};
  for (int i = 0; i < 500 && (stat(sock.c_str(), &st) != 0 || !S_ISSOCK(st.st_mode)); ++i) usleep(10000);
  EXPECT_EQ(ok({"net", "send", "socket/me", "--type", "2", "--cmd", "3", "--hex", "0a0b"}),
            "sent 4108 bytes to " + sock + "\n");
  listener.join();
  EXPECT_NE(listened.out.find("seq 1  type 2  command 3  count 1  more 0  tag 0  record size 2\n  0000: 0a 0b\n"),
            std::string::npos)
      << listened.out;
}

}  // namespace
