// Backup onto a simulated USB stick: a directory that the mount stand-in binds at the mount
// point inside the test's mount namespace, so the copies land for real; "eth0" is a veth
// interface with a chosen address.
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "support/test_support.h"
#include "syscommon/maint.h"

namespace {

using namespace syscommon::testing;

class UsbBackup : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    ASSERT_EQ(run_program("/bin/sh", {"-c", "ip link add veth0 type veth peer name eth0 && "
                                            "ip link set eth0 address 00:90:e8:01:02:03"})
                  .status,
              0);
    write_file(sim_path("/mnt/ramdisk/TARN_CFG.ini"), "archive bytes");
    ASSERT_EQ(chdir("/"), 0);
  }
  void TearDown() override { run_program("/bin/sh", {"-c", "ip link del veth0"}); }
  const std::string stick_ = sim_path("/var/sim/usb/sda1");
  const std::string point_ = sim_path("/mnt/ramdisk/usb_tarn");
};

TEST_F(UsbBackup, AttachCopyDetach) {
  std::filesystem::create_directories(stick_);
  write_file(stick_ + "/keep.txt", "the stick's own file");
  clear_trace();
  xbk02_run(0);
  const std::string scratch = sim_path("/mnt/ramdisk/usb_check");
  EXPECT_EQ(trace_lines(),
            (std::vector<std::string>{"ls " + sim_path("/proc/bus/usb/001") + "|wc -l > " + scratch,
                                      "fdisk -ul|grep /dev|grep -v Disk|awk '{print $1}' > " + scratch,
                                      "mount -o sync /dev/sda1 " + point_}));
  EXPECT_EQ(read_file(point_ + "/keep.txt"), "the stick's own file");  // mounted

  clear_trace();
  EXPECT_EQ(copy_configure_file_to_usb(), 0);
  const std::string dir = point_ + "/tarn";
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{
                               "cp " + sim_path("/mnt/ramdisk/TARN_CFG.ini") + " " + dir + "/Sys.ini > /dev/null",
                               "cp " + dir + "/Sys.ini " + dir + "/010203.ini > /dev/null", "SendSyslog 20 0 4 &"}));
  EXPECT_EQ(read_file(stick_ + "/tarn/Sys.ini"), "archive bytes");
  EXPECT_EQ(read_file(stick_ + "/tarn/010203.ini"), "archive bytes");

  const time_t before = std::time(nullptr);
  testing::internal::CaptureStdout();
  EXPECT_EQ(copy_configure_file_to_usb_date(), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "\ncopy_configure_file_to_usb_date()\n");
  std::vector<std::string> names;
  for (const time_t t : {before, std::time(nullptr)}) {
    char name[32];
    std::strftime(name, sizeof name, "%m%d%H%M.ini", std::gmtime(&t));  // no zone file: UTC
    names.push_back(name);
  }
  const bool dated = read_file(stick_ + "/tarn/His_ini/" + names[0]) == "archive bytes" ||
                     read_file(stick_ + "/tarn/His_ini/" + names[1]) == "archive bytes";
  EXPECT_TRUE(dated) << names[0];

  for (const char *f : {"TARN_LOG.ini", "TARN_Firewall_LOG.ini", "TARN_IPSec_LOG.ini"})
    write_file(sim_path("/mnt/ramdisk/") + f, std::string("export of ") + f);
  write_file(stick_ + "/tarn/VPN.log", "older");
  EXPECT_EQ(copy_log_file_to_usb(), 0);
  EXPECT_EQ(read_file(stick_ + "/tarn/Sys.log"), "export of TARN_LOG.ini");
  EXPECT_EQ(read_file(stick_ + "/tarn/Firewall.log"), "export of TARN_Firewall_LOG.ini");
  EXPECT_EQ(read_file(stick_ + "/tarn/VPN.log"), "export of TARN_IPSec_LOG.ini");
  EXPECT_EQ(access(sim_path("/mnt/ramdisk/TARN_LOG.ini").c_str(), F_OK), -1);
  char cwd[512];
  ASSERT_NE(getcwd(cwd, sizeof cwd), nullptr);
  EXPECT_EQ(std::string(cwd) + "/", sim_path("/lumenP/WebServer/"));

  clear_trace();
  xbk02_run(1);
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{"ls " + sim_path("/proc/bus/usb/001") + "|wc -l > " + scratch,
                                                     "umount " + point_, "rm  -r " + point_}));
  EXPECT_EQ(access(point_.c_str(), F_OK), -1);
  EXPECT_EQ(read_file(stick_ + "/tarn/Sys.ini"), "archive bytes");  // the stick keeps its files
}

TEST_F(UsbBackup, NoStickMountsNothing) {
  std::filesystem::remove_all(stick_);
  clear_trace();
  xbk02_run(0);
  EXPECT_EQ(trace_lines().size(), 2u);
  EXPECT_EQ(access(point_.c_str(), F_OK), -1);
}

// Without the RAM disk nothing can be detected, entered or created: the device is taken
// as absent (mount without a device) and each directory that cannot be made is reported.
TEST_F(UsbBackup, NoRamDisk) {
  const std::string ramdisk = sim_path("/mnt/ramdisk");
  std::filesystem::rename(ramdisk, ramdisk + ".away");
  clear_trace();
  testing::internal::CaptureStdout();
  xbk02_run(0);
  const std::string attach = testing::internal::GetCapturedStdout();
  const std::vector<std::string> trace = trace_lines();
  testing::internal::CaptureStdout();
  EXPECT_EQ(copy_configure_file_to_usb_date(), 0);
  const std::string dated = testing::internal::GetCapturedStdout();
  std::filesystem::rename(ramdisk + ".away", ramdisk);
  EXPECT_EQ(attach, "Can't Create'usb_tarn'Can't Create 'tarn'");
  ASSERT_EQ(trace.size(), 3u);
  EXPECT_EQ(trace[2], "mount -o sync  " + point_);
  EXPECT_EQ(dated, "\ncopy_configure_file_to_usb_date()\nCan't Create 'tarn'");
}

TEST(LocalTime, ZoneRulesReadAgain) {
  const std::string zone = "/usr/share/zoneinfo/Asia/Tokyo";
  if (access(zone.c_str(), R_OK) != 0) GTEST_SKIP() << "no zone file " << zone;
  const time_t t = 1700000000;  // 2023-11-14 22:13:20 UTC
  unlink(sim_path("/etc/localtime").c_str());
  EXPECT_EQ(tarn_macro_localtime(&t)->tm_hour, 22);
  write_file(sim_path("/etc/localtime"), read_file(zone));
  const std::tm *local = tarn_macro_localtime(&t);
  EXPECT_EQ(local->tm_hour, 7);
  EXPECT_EQ(local->tm_mday, 15);
}

}  // namespace
