// Configuration export and import with the real tar and gzip on the simulated root: the
// round trip, the exact commands, every tampering the import check must refuse, the
// parser's imports, the password file and the boot loader's version text in flash.
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "support/test_support.h"
#include "syscommon/maint.h"

namespace {

using namespace syscommon::testing;

ProgramRun sh(const std::string &command) { return run_program("/bin/sh", {"-c", command}); }

// The stored CFG_SUM value of a file under 256 bytes: its big-endian word sum (the last
// group zero-padded) plus 1.
std::string expected_sum(const std::string &bytes) {
  uint32_t sum = 0;
  for (std::size_t i = 0; i < bytes.size(); i += 4) {
    uint32_t w = 0;
    for (std::size_t k = 0; k < 4; ++k)
      w = w << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0);
    sum += w;
  }
  char hex[16];
  std::snprintf(hex, sizeof hex, "%x", sum + 1);
  return hex;
}

class ConfigArchive : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    write_file(sim_path("/mnt/cfg2/system.cfg"), "hostname=router\nvlan=1\n");
    write_file(sim_path("/mnt/cfg2/vlan.cfg"), std::string(3000, 'v'));
    write_file(sim_path("/mnt/cfg2/certs.gzip"), std::string(203, '\x5a'));
    write_file(sim_path("/mnt/log1/boot.log"), "booted\n");
    clear_trace();
  }
  const std::string staging_ = sim_path("/mnt/ramdisk/cfg_tmp");
  const std::string archive_ = sim_path("/mnt/ramdisk/TARN_CFG.ini");

  // config_Upgrade from a fresh staging directory: the flag and the event reported.
  std::pair<int, std::string> import() {
    sh("rm -rf " + staging_);
    clear_trace();
    int error = 0;
    testing::internal::CaptureStdout();
    config_Upgrade(&error);
    last_out_ = testing::internal::GetCapturedStdout();
    return {error, trace_lines().back()};
  }
  // Unpacks the archive into a scratch tree, applies `change` there and packs it again.
  void tamper(const std::string &change) {
    const std::string t = sim_path("/tmp/tamper");
    const std::string inside = t + staging_;
    ASSERT_EQ(sh("rm -rf " + t + " && mkdir -p " + t + " && tar -xzf " + archive_ + " -C " + t + " && cd " + inside +
                 " && " + change + " && tar -czf " + archive_ + " -C " + t + " .")
                  .status,
              0)
        << change;
  }
  std::string last_out_;
};

TEST_F(ConfigArchive, ExportImportRoundTrip) {
  ASSERT_EQ(make_configuration_file(), 1);
  const std::string r = sim_root(), s = staging_;
  const std::vector<std::string> export_commands = {
      "rm " + archive_ + " 2> /dev/null",
      "rm -r " + s + " 2> /dev/null",
      "cp -rf " + r + "/mnt/cfg2 " + s + " 2> /dev/null",
      "rm " + s + "/CFG_SUM 2> /dev/null",
      "ls " + s + " > " + r + "/mnt/ramdisk/CFG_FILE_NAME",
      "echo " + s + "/certs.gzip " + expected_sum(read_file(s + "/certs.gzip")) + " >> " + s + "/CFG_SUM",
      "",  // the echo command ends in a line feed of its own
      "tar -zcf " + s + "/system.cfg.gzip " + s + "/system.cfg > /dev/null 2>&1"};
  std::vector<std::string> trace = trace_lines();
  ASSERT_GE(trace.size(), export_commands.size() + 7);
  EXPECT_EQ(std::vector<std::string>(trace.begin(), trace.begin() + 8), export_commands);
  EXPECT_EQ(trace[trace.size() - 2], "cp -rf " + r + "/mnt/log1 " + s + " 2> /dev/null");
  EXPECT_EQ(trace.back(), "tar -zcf " + archive_ + " " + s + " > /dev/null 2>&1");

  // One packed member per file, the .gzip file kept as it is, every sum as stored.
  const std::string sums = read_file(s + "/CFG_SUM");
  EXPECT_EQ(sums, s + "/certs.gzip " + expected_sum(std::string(203, '\x5a')) + "\n" + s + "/system.cfg.gzip " +
                      expected_sum(read_file(s + "/system.cfg.gzip")) + "\n" + s + "/vlan.cfg.gzip " +
                      expected_sum(read_file(s + "/vlan.cfg.gzip")) + "\n");
  const std::string inner = r.substr(1) + "/mnt/ramdisk/cfg_tmp/";
  EXPECT_EQ(sh("tar -tzf " + archive_ + " | grep -v openvpn | sort").out,
            inner + "\n" + inner + "CFG_SUM\n" + inner + "certs.gzip\n" + inner + "log1/\n" + inner +
                "log1/boot.log\n" + inner + "system.cfg.gzip\n" + inner + "vlan.cfg.gzip\n");
  EXPECT_EQ(sh("tar -xzOf " + s + "/system.cfg.gzip").out, "hostname=router\nvlan=1\n");

  const auto [error, event] = import();
  EXPECT_EQ(error, 0) << last_out_;
  EXPECT_EQ(event, "SendSyslog 21 0 4 &");
  EXPECT_EQ(trace_lines().front(), "tar -zxf " + archive_ + " > /dev/null 2>&1");
  EXPECT_EQ(read_file(s + "/log1/boot.log"), "booted\n");
  EXPECT_EQ(sh("tar -xzOf " + s + "/vlan.cfg.gzip").out, std::string(3000, 'v'));
  char cwd[256];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  EXPECT_STREQ(cwd, "/");
}

TEST_F(ConfigArchive, ImportCheckRefusals) {
  ASSERT_EQ(make_configuration_file(), 1);
  const std::string pristine = read_file(archive_);
  const struct Case {
    const char *what;
    std::string change;
    int error;
    std::string out;  // start of the printed diagnostic
  } cases[] = {
      {"one byte of a packed file changed", "printf 'X' | dd of=vlan.cfg.gzip bs=1 seek=40 conv=notrunc 2>/dev/null", 1,
       ""},
      {"a listed member missing", "rm system.cfg.gzip", 1, staging_ + "/system.cfg.gzip fopen error\n"},
      {"garbage checksum list", "echo 'not a list' > CFG_SUM", 1, ""},
      {"paths without their sums", "sed -i 's/ .*//' CFG_SUM", 1, ""},
      {"no checksum list", "rm CFG_SUM", 1, "check_upconfig_checksum fopen error"},
      // Zeros sum to 0 (stored as 1), but a device is never read: it would not end.
      {"a device listed", "echo '/dev/zero 1' >> CFG_SUM", 1, ""},
      {"sums stored without their offset of 1",
       "while read p v; do printf '%s %x\\n' $p $((0x$v - 1)); done < CFG_SUM > S && mv S CFG_SUM", 1, ""},
      // Only listed files are checked, and an empty list checks nothing: both pass.
      {"an extra, unlisted member", "echo evil > extra.cfg", 0, ""},
      {"an empty checksum list", ": > CFG_SUM", 0, ""},
  };
  for (const Case &c : cases) {
    write_file(archive_, pristine);
    tamper(c.change);
    const auto [error, event] = import();
    EXPECT_EQ(error, c.error) << c.what;
    EXPECT_EQ(event, c.error != 0 ? "SendSyslog 19 0 4 &" : "SendSyslog 21 0 4 &") << c.what;
    EXPECT_EQ(last_out_.substr(0, c.out.size()), c.out) << c.what;
  }
  write_file(archive_, "this is not gzip");
  const auto [error, event] = import();
  EXPECT_EQ(error, 1);
  EXPECT_EQ(event, "SendSyslog 19 0 4 &");
}

// An export stops at the first file whose packed form cannot be opened (the packer failed)
// and when the RAM disk has no room for the listing: -1, and no archive.
TEST_F(ConfigArchive, ExportFailures) {
  write_stub("tar", "exit 2\n");
  testing::internal::CaptureStdout();
  EXPECT_EQ(make_configuration_file(), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "/mnt/ramdisk/cfg_tmp/system.cfg.gzip fopen error\n");
  EXPECT_NE(trace_lines().back().find("system.cfg.gzip"), std::string::npos) << "nothing run after it";
  EXPECT_FALSE(std::filesystem::exists(archive_));
  std::filesystem::remove(sim_path("/bin/tar"));

  const std::string ramdisk = sim_path("/mnt/ramdisk");
  std::filesystem::rename(ramdisk, ramdisk + ".away");
  testing::internal::CaptureStdout();
  EXPECT_EQ(make_configuration_file(), -1);
  const std::string out = testing::internal::GetCapturedStdout();
  std::filesystem::rename(ramdisk + ".away", ramdisk);
  EXPECT_EQ(out, "/mnt/ramdisk/CFG_FILE_NAME fopen error\n");
}

TEST_F(ConfigArchive, ParserImports) {
  const std::string parser = sim_path("/lumenP/cli/tarn_parser"), args = sim_path("/tmp/tarn_parser.args");
  const std::string status = sim_path("/var/sim/tarn_parser.status");
  for (const int exit_code : {0, 3}) {
    write_file(status, std::to_string(exit_code));
    clear_trace();
    int error = 0;
    EXPECT_EQ(configCli_Upgrade(&error), exit_code);
    EXPECT_EQ(error, exit_code != 0 ? 1 : 0);
    EXPECT_EQ(trace_lines(), (std::vector<std::string>{
                                 "rm " + sim_path("/mnt/ramdisk/CLI_IMPORT_ERROR") + " > /dev/null 2>&1",
                                 parser + " -i -c " + archive_ + " > /dev/null"}));
  }
  for (const int exit_code : {0, 1}) {
    write_file(status, std::to_string(exit_code));
    write_file(args, "");
    clear_trace();
    EXPECT_EQ(configPartialCli_Upgrade(), exit_code == 0 ? 0 : -1);
    const std::string outcome = exit_code == 0 ? "5" : "-1";
    EXPECT_EQ(trace_lines(), (std::vector<std::string>{parser + " -z -c " + archive_ + " >/dev/null",
                                                       parser + " -z -s " + outcome + " & > /dev/null"}));
    // The follow-up run is in the background: wait (bounded) for its record.
    const std::string want = "-z -c " + archive_ + "\n-z -s " + outcome + "\n";
    for (int i = 0; i < 200 && read_file(args) != want; ++i) usleep(10000);
    EXPECT_EQ(read_file(args), want);
  }
}

TEST_F(ConfigArchive, PasswordAndLogFile) {
  const std::string file = sim_path("/mnt/ramdisk/cfg/password.CFG");
  std::filesystem::create_directories(sim_path("/mnt/ramdisk/cfg"));
  const struct {
    std::string content;
    int length;
    std::string password;
  } cases[] = {{"pass=abc123", 7, "=abc123"}, {"pwd=abc123\n", 6, "abc123"}, {"pwd=ab c12", 2, "ab"},
               {"abcdef", 2, "ef"},           {"ab", 0, ""},                {"", 0, ""},
               {"pwd=" + std::string(200, 'x'), 123, std::string(123, 'x')}};  // cut at the 128-byte token
  for (const auto &c : cases) {
    write_file(file, c.content);
    char text[128] = "stale";
    EXPECT_EQ(Get_PW(text, 0), c.length) << c.content;
    EXPECT_EQ(std::string(text), c.password) << c.content;
  }
  unlink(file.c_str());
  char text[128];
  testing::internal::CaptureStdout();
  EXPECT_EQ(Get_PW(text, 0), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "fopen /mnt/ramdisk/fwUpload error\n");
  EXPECT_STREQ(text, "NULL");

  const std::string log = sim_path("/mnt/ramdisk/TARN_LOG.ini");
  write_file(log, "old export");
  clear_trace();
  EXPECT_EQ(make_log_file(), 0);
  EXPECT_EQ(read_file(log), "");
  EXPECT_EQ(trace_lines(), std::vector<std::string>{log});
  ASSERT_EQ(unlink(log.c_str()), 0);
  ASSERT_EQ(mkdir(log.c_str(), 0755), 0);  // a directory in the file's place
  testing::internal::CaptureStdout();
  EXPECT_EQ(make_log_file(), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "/mnt/ramdisk/TARN_LOG.ini fopen error\n");
  rmdir(log.c_str());
}

TEST(RecordTables, CompactDeleteAndCount) {
  struct Rec {
    uint16_t tag;
    uint16_t pad;
    uint32_t key;
  };
  auto keys_of = [](const std::vector<Rec> &t) {
    std::vector<uint32_t> k;
    for (const Rec &r : t) k.push_back(r.key);
    return k;
  };
  std::vector<Rec> t = {{1, 0, 5}, {2, 0, 0}, {3, 0, 0}, {4, 0, 7}, {5, 0, 9}};
  readjust_config_sequence(t.data(), sizeof(Rec), 5, 4);
  EXPECT_EQ(keys_of(t), (std::vector<uint32_t>{5, 7, 9, 0, 0}));
  EXPECT_EQ(t[1].tag, 4);  // whole records move, and freed ones are zeroed
  EXPECT_EQ(t[4].tag, 0);
  const uint32_t absent[16] = {42, 0};
  EXPECT_EQ(Delete_And_Fill_CFG_Data_For_VLan_Change(t.data(), sizeof(Rec), 5, 4, absent), 0);
  const uint32_t some[16] = {5, 9, 0, 7};  // stops at the first 0: 7 stays
  EXPECT_EQ(Delete_And_Fill_CFG_Data_For_VLan_Change(t.data(), sizeof(Rec), 5, 4, some), 1);
  EXPECT_EQ(keys_of(t), (std::vector<uint32_t>{7, 0, 0, 0, 0}));
  EXPECT_EQ(t[0].tag, 4);

  CfgFieldDesc d[2] = {};
  d[0].type = 2, d[0].size = 4, d[0].offset = 2;
  d[1].type = 1, d[1].size = 2, d[1].offset = 0;
  uint8_t entries[4][6] = {{0, 1, 'a', 0}, {1, 0, 'b'}, {0, 0, 0, 'c'}, {1, 0, 'd'}};
  EXPECT_EQ(count_valid_data(d, 0, entries, 4, 6), 2);  // text: only its first byte counts
  EXPECT_EQ(count_valid_data(d, 1, entries, 4, 6), 2);  // integer: all its bytes
  EXPECT_EQ(count_valid_data(d, CFG_FIELD_INDEX_NONE, entries, 3, 6), 3);
}

TEST(BootLoaderVersion, ReadFromPartitionZero) {
  SYSCOMMON_REQUIRE_ISOLATION();
  reset_flash();
  std::string image(1 << 20, '\0');
  const std::string version = "U-Boot MM-Test Ver:  1.2.7 (Nov 23 2026)";
  const std::string built = "Build date: Nov 23 2026 - 14:05:33";
  image.replace(70000, version.size(), version);
  image.replace(900000, built.size(), built);
  write_file(sim_path("/dev/mtd0"), image);
  char text[32] = {};
  uint32_t date = 7;
  testing::internal::CaptureStdout();
  EXPECT_EQ(Scf_getMMVer_Time_String(text, &date), 1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "paser = MM-Test Ver:  1.2.7 (Nov 23 2026)\n");
  EXPECT_STREQ(text, "V1.2.7");
  EXPECT_EQ(date, (26u << 24) | (11u << 16) | (23u << 8) | 14u);

  write_file(sim_path("/dev/mtd0"), std::string(1 << 20, 'x'));  // no terminator anywhere
  EXPECT_EQ(Scf_getMMVer_Time_String(text, &date), 0);
  EXPECT_EQ(date, 0u);
  unlink(sim_path("/dev/mtd0").c_str());
  testing::internal::CaptureStdout();
  EXPECT_EQ(Scf_getMMVer_Time_String(text, &date), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout().substr(0, 30), "/dev/mtd0 open error err=2\nScf");
}

}  // namespace
