// The OpenVPN instances' files, the variables script and client configuration byte for byte,
// log trimming at its thresholds, the small commands, and the IPsec proposal names.
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <tuple>

#include "support/test_support.h"
#include "syscommon/vpn.h"

namespace {

using syscommon::testing::read_file;
using syscommon::testing::sim_path;
using syscommon::testing::stdout_of;
using syscommon::testing::write_file;

class OpenvpnTest : public ::testing::Test {
 protected:
  void SetUp() override { SYSCOMMON_REQUIRE_ISOLATION(); }
};

TEST_F(OpenvpnTest, VariablesScriptForAnAuthorityAndForAServer) {
  OpenvpnCertParam p;
  std::memset(&p, 0x5a, sizeof p);
  EXPECT_EQ(openvpn_initCertParam(&p), 0);
  EXPECT_EQ(std::tuple(std::string(p.key_dir), p.key_size, p.days, std::string(p.country), std::string(p.common_name)),
            std::tuple(std::string("/mnt/log1/openvpn/server_keys"), 1024u, 3650u, std::string("US"), std::string()));
  std::strcpy(p.key_dir, "/elsewhere");  // never written: the server's directory always is
  std::strcpy(p.common_name, "gw1");
  const std::string head =
      "export KEY_DIR=\"/mnt/log1/openvpn/server_keys\";\nexport KEY_SIZE=\"1024\";\nexport KEY_COUNTRY=\"US\";\n"
      "export KEY_PROVINCE=\"NY\"; \nexport KEY_CITY=\"New York\"; \nexport KEY_ORG=\"OpenVPN\"; \n"
      "export KEY_OU=\"changeme\"; \nexport KEY_EMAIL=\"root@example.org\"; \n";
  const std::string path = sim_path("/tmp/vars");
  for (const auto &[kind, tail] :
       {std::pair{1, "export CA_EXPIRE=\"3650\";\nexport KEY_CN=\"OpenVPNCA\"; \nexport KEY_NAME=\"OpenVPNCA\"; \n"},
        {0, "export KEY_EXPIRE=\"3650\";\nexport KEY_CN=\"gw1\"; \nexport KEY_NAME=\"gw1\"; \n"}}) {
    EXPECT_EQ(openvpn_setRsaVarsFile(kind, path.c_str(), &p), 0);
    EXPECT_EQ(read_file(path), head + tail);
  }
  const std::string printed = stdout_of([&] { EXPECT_EQ(openvpn_setRsaVarsFile(1, "/no/such/dir/vars", &p), -1); });
  EXPECT_EQ(printed.rfind("openvpn_setRsaVarsFile() ", 0), 0u);
  EXPECT_NE(printed.find(" file /no/such/dir/vars open fail\n"), std::string::npos);
}

TEST_F(OpenvpnTest, ClientConfigurationCarriesTheSettingsAndTheWholeCaCertificate) {
  std::string ca;
  for (int i = 0; ca.size() < 20000; ++i) ca += "line " + std::to_string(i) + " of a long CA file\n";
  write_file(sim_path("/mnt/log1/openvpn/server_keys/ca.crt"), ca);
  OpenvpnServerSettings s{1, 0, 0, 2, 0, 1};
  const std::string path = sim_path("/tmp/client.ovpn");
  EXPECT_EQ(openvpn_genClientConfigByServer(path.c_str(), &s, 0, "203.0.113.9"), 0);
  EXPECT_EQ(s.port, 1194u);
  const std::string settings =
      "client\ndev tun\nproto udp\nremote 203.0.113.9 1194\nresolv-retry infinite\nnobind\nkeepalive 10 60\n"
      "cipher AES-256-CBC\nauth SHA1\n";
  EXPECT_EQ(read_file(path), settings + "comp-lzo\nverb 3\nauth-user-pass\n<ca>\n" + ca + "</ca>\n");

  // No compression, no CA file: no "comp-lzo" line and no block.
  ::unlink(sim_path("/mnt/log1/openvpn/server_keys/ca.crt").c_str());
  s = {1, 0, 1195, 2, 0, 0};
  const std::string printed = stdout_of([&] { openvpn_genClientConfigByServer(path.c_str(), &s, 0, "203.0.113.9"); });
  EXPECT_NE(printed.find("/mnt/log1/openvpn/server_keys/ca.crt open fail\n"), std::string::npos) << printed;
  std::string without = settings + "verb 3\nauth-user-pass\n";
  without.replace(without.find("1194"), 4, "1195");
  EXPECT_EQ(read_file(path), without);
  stdout_of([&] { EXPECT_EQ(openvpn_genClientConfigByServer("/no/such/dir/x", &s, 0, "a"), -1); });
}

TEST_F(OpenvpnTest, PidAndStateFiles) {
  write_file(sim_path("/var/run/ovpnserver1.pid"), "4321\n");
  write_file(sim_path("/var/run/ovpnserver2.pid"), "99\n");
  write_file(sim_path("/var/run/ovpnclient2.state"), "1\n");
  EXPECT_EQ(stdout_of([] { EXPECT_EQ(openvpnserver_getStatus(1), 4321); }), "PID: 4321\n");
  EXPECT_EQ(stdout_of([] { EXPECT_EQ(openvpnserver_getStatus(2), -1); }), "");  // no file is read
  EXPECT_EQ(stdout_of([] { EXPECT_EQ(openvpn_getPid(sim_path("/var/run/none.pid").c_str(), 1), -1); }),
            "Failed to read process id\n");
  EXPECT_EQ(openvpnclient_getState(2), 1);
  EXPECT_EQ(openvpnclient_getState(1), 0);
  EXPECT_STREQ(GovpnClientStateStr[openvpnclient_getState(2)], "Connected");
}

// A log of `size` bytes made of numbered 20-byte lines (the last one may be short).
std::string log_of(std::size_t size) {
  std::string text;
  for (int i = 1; text.size() < size; ++i) {
    char line[32];
    std::snprintf(line, sizeof line, "log line number %03d\n", i % 1000);
    text += line;
  }
  return text.substr(0, size);
}

std::string without_lines(const std::string &text, int lines) {
  std::size_t at = 0;
  for (int i = 0; i < lines; ++i) at = text.find('\n', at) + 1;
  return text.substr(at);
}

TEST_F(OpenvpnTest, RunningInstancesLogsAreTrimmedPastTheirLimit) {
  const std::string logs = sim_path("/mnt/ramdisk/openvpn/");
  const std::tuple<const char *, std::size_t, bool, int> cases[] = {
      {"ovpnclient1", 8196, true, 0},     // at the limit: left alone
      {"ovpnclient2", 8197, true, 39},    // a small excess drops 39 lines
      {"ovpnserver1", 20000, true, 199},  // a large one 199
  };
  for (const auto &[name, size, running, dropped] : cases) {
    write_file(logs + name + ".log", log_of(size));
    if (running) write_file(sim_path(std::string("/var/run/") + name + ".pid"), "1\n");
  }
  stdout_of([] { openvpn_checkLogUsage(); });
  for (const auto &[name, size, running, dropped] : cases)
    EXPECT_EQ(read_file(logs + name + ".log"), without_lines(log_of(size), dropped)) << name;
  // Not running: never trimmed.
  ::unlink(sim_path("/var/run/ovpnserver1.pid").c_str());
  write_file(logs + "ovpnserver1.log", log_of(30000));
  stdout_of([] { openvpn_checkLogUsage(); });
  EXPECT_EQ(read_file(logs + "ovpnserver1.log").size(), 30000u);
}

TEST_F(OpenvpnTest, CommandsReachTheirFilesAndPrograms) {
  syscommon::testing::clear_trace();
  openvpn_setDevTapProc(7);
  EXPECT_EQ(read_file(sim_path("/proc/tarnarm11/openvpn_tap")), "1\n");
  openvpn_setDevTapProc(0);
  EXPECT_EQ(read_file(sim_path("/proc/tarnarm11/openvpn_tap")), "0\n");
  openvpn_setClientCertPasswd2File(2, "pa ss");
  EXPECT_EQ(read_file(sim_path("/mnt/log1/openvpn/client_keys/ovpnclient2.secret")), "pa ss\n");
  write_file(sim_path("/tmp/certs/a.crt"), "x");
  openvpn_clean_all_certs(sim_path("/tmp/certs").c_str());
  EXPECT_EQ(read_file(sim_path("/tmp/certs/a.crt")), "");
  openvpn_build_dh_params(2048);
  const std::string rsa = sim_path("/etc/openvpn/rsa");
  const auto trace = syscommon::testing::trace_lines();
  ASSERT_EQ(trace.size(), 5u);
  EXPECT_EQ(trace[3], "rm -f " + sim_path("/tmp/certs") + "/*");
  EXPECT_EQ(trace[4], "cd " + rsa + "; source ./vars_kvr810; nohup ./build-dh 2048 > /dev/null &");
  std::string args;
  for (int i = 0; i < 200 && args.empty(); ++i, usleep(10000)) args = read_file(rsa + "/build-dh.args");
  EXPECT_EQ(args.substr(0, 5), "2048 ");

  // A signal reaches the first process of that name; here only this namespace's own.
  const pid_t child = fork();
  if (child == 0) {
    execlp("sleep", "sleep", "30", nullptr);
    _exit(127);
  }
  usleep(100000);
  send_signal("sleep", SIGTERM);
  EXPECT_EQ(syscommon::testing::wait_for(child, std::chrono::seconds(5)), 128);
  EXPECT_EQ(stdout_of([] { send_signal("no-such-program", SIGTERM); }), "NOT FOUND.\n");
  syscommon::testing::clear_trace();
  send_signal("-x", SIGTERM);
  EXPECT_TRUE(syscommon::testing::trace_lines().empty());
}

TEST_F(OpenvpnTest, NamesAndProposals) {
  for (const auto &[name, valid] : {std::pair{"ca-1.crt", 1}, {"a b", 0}, {"../x", 0}, {"x;y", 0}, {"", 0}})
    EXPECT_EQ(is_filename_valid(name), valid) << name;
  EXPECT_EQ(is_filename_valid(nullptr), 0);
  // Words: IKE enc, ESP enc, IKE key length, ESP key length, IKE hash, ESP hash, DH group.
  const std::tuple<IpsecAlgWords, int, const char *> cases[] = {
      {{5, 3, 0, 0, 2, 2, 2}, 0, "3DES-SHA1-MODP1024"},
      {{7, 3, 128, 0, 2, 2, 14}, 0, "AES_128-SHA1-MODP2048"},
      {{1, 12, 0, 256, 1, 5, 1}, 1, "AES_256-SHA2_256"},
      {{1, 2, 0, 0, 6, 1, 5}, 0, "DES-SHA2_512-MODP1536"},
      {{1, 2, 0, 0, 6, 1, 5}, 1, "DES-MD5"},
      {{6, 4, 192, 128, 4, 2, 99}, 0, "AES_192-SHA2_256-MODP2048"},
  };
  for (const auto &[words, esp, want] : cases) EXPECT_STREQ(ipsec_alg_combin(&words, esp), want) << want;
  EXPECT_STREQ(ipsec_alg_convert(1, 0, 0xffffffffu), "AES");
}

}  // namespace
