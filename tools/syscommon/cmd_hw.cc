// syscommon hw: the board's identity, inputs and flags, and its LEDs, outputs and relay.
#include <array>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <string>

#include "syscommon/hw.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

const char *yes_no(bool b, const char *yes, const char *no) { return b ? yes : no; }

bool on_off(const std::string &word) {
  if (word == "on") return true;
  if (word == "off") return false;
  throw UsageError{"expected on or off, not '" + word + "'"};
}

// Names of the alarm words of Get_alarm_flag.
std::string alarm_name(int word) {
  if (word < 2) return "power input " + std::to_string(word + 1) + " lost";
  if (word == 2) return "digital input 1 on";
  if (word == 3) return "digital input 1 off";
  if (word < 14) return "port 1/" + std::to_string(word - 3) + " link up";
  if (word < 24) return "port 1/" + std::to_string(word - 13) + " link down";
  return "port 1/" + std::to_string(word - 23) + " overload relay";
}

int cmd_show(const Args &args) {
  expect_args(args, 0, 0);
  std::printf("identity (EEPROM):\n");
  std::printf("  serial number    %" PRIu32 "\n", Get_serno());
  const char *text = Get_sernofull();
  std::printf("  serial text      %s\n", text != nullptr ? text : "(unreadable)");
  std::printf("  end of test      %s\n", yes_no(Get_EOT_Flag() == 1, "passed", "not passed"));
  uint8_t burn[4] = {};
  Scf_getBurnHour(burn);
  std::printf("  burn-in          %" PRIu32 " minutes\n",
              burn[0] | uint32_t{burn[1]} << 8 | uint32_t{burn[2]} << 16 | uint32_t{burn[3]} << 24);
  std::printf("  hardware version %d\n", Get_HW_version());
  uint8_t mac[6] = {};
  if (Get_Mac(mac) == 1)
    std::printf("  MAC (eth0)       %02x:%02x:%02x:%02x:%02x:%02x\n", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
  else
    std::printf("  MAC (eth0)       unavailable\n");

  const uint32_t gpio = Get_gpio_state();
  std::printf("inputs (GPIO word 0x%08" PRIx32 "):\n", gpio);
  for (int i = 0; i < 2; ++i)
    std::printf("  power input %d    %s\n", i + 1, yes_no((gpio & GPIO_PWR_FLAG[i]) != 0, "present", "lost"));
  for (int n = 0; n < 2; ++n) std::printf("  digital input %d  %s\n", n + 1, yes_no(GetGpio_DI(n) == 1, "on", "off"));
  const uint32_t events = Get_hw_event_flag();
  std::printf("hardware events 0x%04" PRIx32 ":", events);
  const char *event_names[] = {"power 1 lost", "power 2 lost", "power 1 on", "power 2 on"};
  for (unsigned b = 0; b < 4; ++b)
    if ((events >> b & 1u) != 0) std::printf("  %s", event_names[b]);
  std::printf("  %s\n", yes_no((events >> 14 & 1u) != 0, "DI 1 on", "DI 1 off"));

  std::array<uint32_t, 35> config{};
  config.fill(1);  // every alarm enabled
  std::array<uint32_t, 34> alarms{};
  Get_alarm_flag(config.data(), alarms.data());
  std::printf("alarms (every alarm enabled):");
  int active = 0;
  for (int w = 0; w < 34; ++w)
    if (alarms[static_cast<std::size_t>(w)] != 0) std::printf("%s%s", active++ % 4 == 0 ? "\n  " : ", ", alarm_name(w).c_str());
  std::printf("%s\n", active == 0 ? " none" : "");
  return 0;
}

int cmd_led(const Args &args) {
  expect_args(args, 2, 2);
  if (args[0] == "status") {
    const std::string &c = args[1];
    if (c != "first" && c != "second" && c != "off") throw UsageError{"status colour must be first, second or off"};
    WriteToGpio_STATUS_LED(c == "first" ? 64 : c == "second" ? 128 : 0);
    std::printf("status LED: %s\n", c == "off" ? "off" : (c + " colour").c_str());
    return 0;
  }
  if (args[0] == "vpn") {
    const bool on = on_off(args[1]);
    if (Get_HW_version() != 2) {
      std::printf("VPN tunnel LED: none on hardware version 1\n");
      return 0;
    }
    std::fflush(stdout);
    led_setVPNTunnelLED(on ? 1 : 0);
    return 0;
  }
  throw UsageError{"LED must be status or vpn, not '" + args[0] + "'"};
}

int cmd_do(const Args &args) {
  expect_args(args, 2, 2);
  const int n = static_cast<int>(parse_number(args[0], "output", 1, 2));
  const bool on = on_off(args[1]);
  WriteToGpio_DO(on ? 1 : 0, n - 1);
  std::printf("digital output %d: %s\n", n, on ? "on" : "off");
  return 0;
}

int cmd_fault(const Args &args) {
  expect_args(args, 1, 1);
  const bool on = on_off(args[0]);
  WriteToGpio_FAULT(on ? 1 : 0);
  std::printf("fault relay and LED: %s\n", on ? "on" : "off");
  return 0;
}

const Registration reg{{"hw",
                        "The board: identity EEPROM, GPIO inputs, hardware flags, LEDs, outputs.",
                        {
                            {"show", "", "identity fields, hardware version, GPIO inputs, power and alarm flags",
                             cmd_show},
                            {"led", "status first|second|off | vpn on|off", "set the status or VPN tunnel LED",
                             cmd_led},
                            {"do", "N on|off", "switch digital output N (1 or 2)", cmd_do},
                            {"fault", "on|off", "switch the fault relay and LED", cmd_fault},
                        }}};

}  // namespace
}  // namespace syscommon::tool
