// Hardware access against the simulated root's kernel entries, the stand-ins for
// "ethsw_diag" and "rl2ctrl", and a real interface in the private network namespace.
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "support/test_support.h"
#include "syscommon/hw.h"
#include "syscommon/maint.h"
#include "syscommon/netstat.h"

namespace {

using namespace syscommon::testing;
using Lines = std::vector<std::string>;

class Hardware : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    clear_trace();
  }
  static std::string gpio(const char *file) { return sim_path(std::string("/proc/tarn/gpio_") + file); }
};

TEST_F(Hardware, EepromFieldsAndCaches) {
  const std::string eeprom = sim_path("/proc/tarn/eeprom"), image = read_file(eeprom);
  std::rename(eeprom.c_str(), (eeprom + ".away").c_str());
  testing::internal::CaptureStdout();
  EXPECT_EQ(Get_serno(), 0u);
  EXPECT_EQ(Get_sernofull(), nullptr);
  EXPECT_EQ(Get_EOT_Flag(), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "eeprom fopen error\neeprom fopen error\neeprom fopen error\n");
  std::rename((eeprom + ".away").c_str(), eeprom.c_str());
  EXPECT_EQ(Get_serno(), 1234567u);  // a failed read did not fill the cache
  EXPECT_STREQ(Get_sernofull(), "KV9A2611042");
  EXPECT_EQ(Get_EOT_Flag(), 1);
  uint8_t burn[4] = {};
  EXPECT_EQ(Scf_getBurnHour(burn), 0);
  EXPECT_EQ(std::vector<uint8_t>(burn, burn + 4), (std::vector<uint8_t>{0x40, 0x0B, 0, 0}));
  write_file(eeprom, image.substr(0, 70));  // shorter than the offsets read
  EXPECT_EQ(Get_serno(), 1234567u);          // cached
  EXPECT_STREQ(Get_sernofull(), "KV9A2611042");
  EXPECT_EQ(Get_EOT_Flag(), 255);  // past the end reads as an erased cell
  write_file(eeprom, image);
}

TEST_F(Hardware, VersionFiles) {
  const std::string hw = sim_path("/proc/tarn/hw_version"), cpu = sim_path("/proc/tarnarm11/cpu_freq");
  for (auto [text, version] : std::vector<std::tuple<std::string, int>>{{"0\n", 1}, {"1\n", 2}, {"", 2}}) {
    write_file(hw, text);
    EXPECT_EQ(Get_HW_version(), version) << text;
  }
  std::remove(hw.c_str());
  EXPECT_EQ(stdout_of([] { EXPECT_EQ(Get_HW_version(), 2); }), "eeprom fopen error\n");
  EXPECT_EQ(Ssys_getCpuFreq(), 500);
  std::remove(cpu.c_str());
  EXPECT_EQ(Ssys_getCpuFreq(), 0);
}

TEST_F(Hardware, GpioInputsAndEvents) {
  // gpio_get text, adjusted word, DI0, DI1, event bits
  for (auto [text, word, di0, di1, events] : std::vector<std::tuple<std::string, uint32_t, int, int, uint32_t>>{
           {"0\n", 48, 1, 1, 0x400C},
           {"48", 0, 1, 1, 0x4003},
           {"16384", 16432, 0, 1, 0x800C},
           {"32800\n", 32784, 1, 0, 0x4009}}) {
    write_file(gpio("get"), text);
    EXPECT_EQ(std::make_tuple(Get_gpio_state(), GetGpio_DI(0), GetGpio_DI(1), Get_hw_event_flag()),
              std::make_tuple(word, di0, di1, events))
        << text;
  }
  write_file(gpio("get"), "16384");
  EXPECT_EQ(GetGpio_DI(256), 0);  // n modulo 256
  EXPECT_EQ(GetGpio_DI(40), 1);   // no such bit: reads as clear
  std::remove(gpio("get").c_str());
  EXPECT_EQ(stdout_of([] { EXPECT_EQ(Get_gpio_state(), 0u); }), "Get_gpio_state() octeon_gpio_get fopen error\n");
}

TEST_F(Hardware, OutputCommandsLedsAndWatchdog) {
  const std::string set = "echo %d > " + gpio("set"), clr = "echo %d > " + gpio("clr");
  auto cmd = [](const std::string &f, int v) { return f.substr(0, 5) + std::to_string(v) + f.substr(7); };
  WriteToGpio_DO(1, 2);
  WriteToGpio_DO(0, 0);
  WriteToGpio_FAULT(1);
  WriteToGpio_FAULT(0);
  WriteToGpio_STATUS_LED(64);
  WriteToGpio_STATUS_LED(128);
  WriteToGpio_STATUS_LED(5);
  set_default_led_status();
  EXPECT_EQ(trace_lines(), (Lines{cmd(clr, 131072), cmd(set, 32768), cmd(clr, 256), cmd(set, 256), cmd(set, 64),
                                  cmd(clr, 128), cmd(set, 128), cmd(clr, 64), cmd(set, 64), cmd(set, 128),
                                  cmd(set, 64), cmd(clr, 128)}));
  EXPECT_EQ(read_file(gpio("clr")), "128\n");  // the real shell wrote the entry

  clear_trace();
  write_file(sim_path("/proc/tarn/hw_version"), "0\n");
  EXPECT_EQ(led_setVPNTunnelLED(1), 0);  // hardware version 1: nothing
  EXPECT_TRUE(trace_lines().empty());
  write_file(sim_path("/proc/tarn/hw_version"), "1\n");
  testing::internal::CaptureStdout();
  int printed = led_setVPNTunnelLED(1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "msg = " + cmd(clr, 131072) + "\n");
  EXPECT_EQ(printed, static_cast<int>(cmd(clr, 131072).size()) + 7);
  EXPECT_EQ(stdout_of([] { EXPECT_EQ(WriteToI2c_LED(0x111), -1); }), " fopen error\n");

  clear_trace();
  EXPECT_EQ(Kernel_reboot(), 0);
  EXPECT_EQ(read_file(sim_path("/proc/tarn/wd_reboot")), "1\n");
  EXPECT_EQ(WD_reboot(), 0);
  EXPECT_EQ(trace_lines(), (Lines{"echo 1 > " + sim_path("/proc/tarn/wd_reboot"),
                                  "echo 8192 >" + sim_path("/sys/devices/platform/octeon-gpio/octeon_gpio_clr")}));
}

TEST_F(Hardware, SwitchDiagnosticsAndRingMaster) {
  EXPECT_EQ(tarn_ethsw_diag_get(1, 16), 0);
  EXPECT_EQ(tarn_ethsw_diag_set(1, 16, 4660), 0);
  EXPECT_EQ(tarn_ethsw_diag_get(1, 16), 0x1234);
  EXPECT_EQ(trace_lines(), (Lines{"(echo \"1\"; echo \"16\") | ethsw_diag -r 0",
                                  "(echo \"1\"; echo \"16\"; echo \"4660\") | ethsw_diag -w 0 > /dev/null", "",
                                  "(echo \"1\"; echo \"16\") | ethsw_diag -r 0"}));

  uint8_t out[20];
  for (auto [n, mac] : std::vector<std::tuple<int, std::vector<uint8_t>>>{
           {1, {0x00, 0x90, 0xe8, 0x4a, 0x10, 0x01}}, {3, {0x00, 0x90, 0xe8, 0x4a, 0x10, 0x03}}}) {
    std::memset(out, 0xEE, sizeof out);
    EXPECT_EQ(SsysGetDesignatedMasterAddr(n, out, sizeof out), 0);
    EXPECT_EQ(std::vector<uint8_t>(out, out + 6), mac) << n;
  }
  std::memset(out, 0xEE, sizeof out);
  EXPECT_EQ(SsysGetDesignatedMasterAddr(4, out, sizeof out), 0);  // no fourth master
  EXPECT_EQ(SsysGetDesignatedMasterAddr(1, out, 17), 0);          // too small to copy into
  EXPECT_EQ(std::count(out, out + sizeof out, 0xEE), 20);
  write_file(sim_path("/var/sim/rl2ctrl.r"), "");
  write_file(sim_path("/var/sim/rl2ctrl.cpl"), "");
  EXPECT_EQ(SsysGetDesignatedMasterAddr(1, out, sizeof out), -1);
  std::string status = sim_path("/var/db/rl2status");
  EXPECT_EQ(trace_lines().back(), "rl2ctrl -w cpl >> " + status);
}

TEST_F(Hardware, CaptureStringOnly) {
  // text, start characters, delimiters, result, text afterwards
  for (auto [in, start, delim, rc, after] :
       std::vector<std::tuple<std::string, const char *, const char *, int, std::string>>{
           {"abc\ndef", nullptr, nullptr, 1, "abc"},
           {"key: 0x1f,rest\nnext", "0", ",", 1, "0x1f"},
           {"key: value", "#", nullptr, 0, ""},
           {"a=b;c", "=", ";", 1, "=b"},
           {";x", nullptr, ";", 0, ""},
           {"", nullptr, nullptr, 1, ""}}) {
    char text[32];
    std::strcpy(text, in.c_str());
    EXPECT_EQ(capture_string_only(text, sizeof text, start, delim), rc) << in;
    EXPECT_EQ(std::string(text), after) << in;
  }
  char text[] = "abcdef";
  EXPECT_EQ(capture_string_only(text, 4, nullptr, nullptr), 1);  // size - 1 characters kept
  EXPECT_STREQ(text, "abc");
  EXPECT_EQ(capture_string_only(nullptr, 4, nullptr, nullptr), 0);
}

TEST_F(Hardware, PortsModulesAndIdentityHelpers) {
  char media[16];
  memset(media, 'x', sizeof media);
  EXPECT_EQ(get_port_media_type(3, media), media);
  EXPECT_EQ(std::string(media, 11), std::string("100M, RJ45\0", 11));
  EXPECT_EQ(Ssys_MGBIC_checkVenderData("TarnnetOptics"), 0);
  EXPECT_EQ(Ssys_MGBIC_checkVenderData("tarnnet"), -1);

  shm_init();
  uint8_t ddm[128] = {};
  ddm[96] = 255;
  shm_set_sfp_Eeprom_ddm(1, ddm);
  ddm[96] = 0x68;
  shm_set_sfp_Eeprom_ddm(0, ddm);
  EXPECT_EQ(std::make_tuple(Sddm_isSupportddm(0), Sddm_isSupportddm(1)), std::make_tuple(1, 0));

  char *emu = Ssys_getFwEMU(), *again = Ssys_getFwEMU();
  ASSERT_NE(emu, nullptr);
  EXPECT_EQ(std::strlen(emu), 24u);
  EXPECT_STREQ(emu, again);
  std::free(emu);
  std::free(again);
}

TEST_F(Hardware, MacAddressThroughTheInterfaceQuery) {
  uint8_t mac[6];
  std::memset(mac, 0xEE, sizeof mac);
  EXPECT_EQ(Get_Mac(mac), -1);  // no eth0 yet
  EXPECT_EQ(std::count(mac, mac + 6, 0), 6);
  ASSERT_EQ(std::system("ip link add veth0 type veth peer name eth0 && ip link set eth0 address 02:11:22:33:44:55"), 0);
  EXPECT_EQ(Get_Mac(mac), 1);
  EXPECT_EQ(std::vector<uint8_t>(mac, mac + 6), (std::vector<uint8_t>{2, 0x11, 0x22, 0x33, 0x44, 0x55}));
  std::system("ip link del veth0");
}

}  // namespace
