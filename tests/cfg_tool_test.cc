// The `syscommon cfg`, `ssh` and `usb` groups run as programs: an archive exported,
// checked member by member before unpacking (tampered and foreign members flagged),
// imported; a saved record's fields read and written through a descriptor file.
#include <string>
#include <vector>

#include "support/tool_run.h"

namespace {

using namespace syscommon::testing;

ProgramRun sh(const std::string &command) { return run_program("/bin/sh", {"-c", command}); }

class CfgTool : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    write_file(sim_path("/mnt/cfg2/system.cfg"), "hostname=router\n");
    write_file(sim_path("/mnt/cfg2/zone.cfg"), "zone=1\n");
    write_file(sim_path("/mnt/log1/boot.log"), "booted\n");
  }
  const std::string archive_ = sim_path("/mnt/ramdisk/TARN_CFG.ini");
};

TEST_F(CfgTool, ExportCheckImport) {
  std::string out = tool_ok({"cfg", "export"});
  EXPECT_NE(out.find(sim_path("/mnt/ramdisk/cfg_tmp/zone.cfg.gzip") + " "), std::string::npos) << out;
  out = tool_ok({"cfg", "check"});
  EXPECT_NE(out.find("import check: would pass (event 21); 0 members flagged"), std::string::npos) << out;

  // A changed member, an unlisted one whose name holds a quote and a member outside the
  // staging directory, packed beside the rest.
  const std::string staging = sim_path("/mnt/ramdisk/cfg_tmp");
  ASSERT_EQ(sh("cd / && printf X | dd of=" + staging + "/zone.cfg.gzip bs=1 seek=30 conv=notrunc 2>/dev/null && "
               "echo x > \"" + staging + "/it's\" && "
               "mkdir -p " + sim_path("/etc/cron") + " && echo evil > " + sim_path("/etc/cron/job") +
               " && tar -czf " + archive_ + " " + staging.substr(1) + " " + sim_path("/etc/cron/job").substr(1))
                .status,
            0);
  ProgramRun r = tool({"cfg", "check", archive_});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find(staging.substr(1) + "/zone.cfg.gzip"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("DIFFERS"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("OUTSIDE the staging directory: unpacking from / writes " + sim_path("/etc/cron/job")),
            std::string::npos)
      << r.out;
  EXPECT_NE(r.out.find("/it's "), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("not listed in CFG_SUM: unpacked unchecked"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("would FAIL (event 19); 3 members flagged"), std::string::npos) << r.out;

  r = tool({"cfg", "import"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find("checksum check FAILED; event 19 (Config. Import Fail "), std::string::npos) << r.out;
  write_file(sim_path("/tmp/plain"), "not an archive");
  r = tool({"cfg", "check", sim_path("/tmp/plain")});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find("not a gzip-compressed tar archive"), std::string::npos);
}

TEST_F(CfgTool, FieldGetSetAndSsh) {
  const std::string desc = sim_path("/tmp/vlan.desc"), rec = sim_path("/tmp/vlan.rec");
  write_file(desc,
             "# name type size offset [bit position [storage bits]]\n"
             "vid   1  2  0\n"
             "name  2  8  4\n"
             "ip    3  4  12\n"
             "mac   4  6  16\n"
             "prio  10 3  22 5 8\n"
             "ports 18 2  24\n");
  write_file(rec, std::string(32, '\0'));
  EXPECT_EQ(tool_ok({"cfg", "field", "set", desc, rec, "vid", "100"}), "vid = 100\n");
  EXPECT_EQ(tool_ok({"cfg", "field", "set", desc, rec, "name", "uplink-long"}), "name = uplink-\n");
  EXPECT_EQ(tool_ok({"cfg", "field", "set", desc, rec, "ip", "10.0.0.1"}), "ip = 10.0.0.1\n");
  EXPECT_EQ(tool_ok({"cfg", "field", "set", desc, rec, "prio", "6"}), "prio = 6\n");
  EXPECT_EQ(tool_ok({"cfg", "field", "set", desc, rec, "ports", "7", "--index", "3"}), "ports = 7\n");
  EXPECT_EQ(tool_ok({"cfg", "field", "get", desc, rec, "mac"}), "mac = 00:00:00:00:00:00\n");
  const std::string bytes = read_file(rec);
  EXPECT_EQ(bytes.substr(0, 2), std::string("\x64\x00", 2));
  EXPECT_EQ(bytes[22], '\x60');
  EXPECT_EQ(bytes.substr(30, 2), std::string("\x07\x00", 2));

  EXPECT_EQ(tool({"ssh", "set", "on", "2222", "10"}).status, 0);
  EXPECT_EQ(read_file(sim_path("/tmp/sshd.args")), "-p 2222\n");

  expect_usage_errors(SYSCOMMON_TOOL, {{"cfg", "field", "get", desc, rec, "nosuch"},
                                       {"cfg", "field", "get", desc, rec, "ports", "--index", "4"},
                                       {"cfg", "field", "set", desc, rec, "name"},
                                       {"cfg", "field", "put", desc, rec, "vid", "1"},
                                       {"cfg", "import", "--apply", "some"},
                                       {"ssh", "set", "on", "0", "5"},
                                       {"ssh", "set", "maybe", "22", "5"},
                                       {"usb", "attach", "now"}});
}

}  // namespace
