// GPIO inputs and outputs, the LEDs, the watchdog, and the hardware event and alarm flags.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/host.h"
#include "platform/number.h"
#include "syscommon/hw.h"
#include "syscommon/netstat.h"
#include "syscommon/shm.h"
#include "util/format.h"

namespace {

using syscommon::format_text;
using syscommon::rooted;
using syscommon::run_command;

constexpr uint32_t kFault = 256;
constexpr uint32_t kStatusFirst = 64;
constexpr uint32_t kStatusSecond = 128;
constexpr uint32_t kDigitalOut0 = 32768;
constexpr uint32_t kVpnTunnel = 131072;
constexpr uint32_t kDigitalIn0 = 16384;
constexpr std::size_t kCommandLimit = 256;
// The secured-mode LED file: not known in this version, so WriteToI2c_LED fails.
constexpr const char *kSecuredLedFile = "";

// `base` << n in 32 bits; 0 for shifts outside 0..31.
uint32_t shifted(uint32_t base, unsigned n) { return n < 32 ? static_cast<uint32_t>(uint64_t{base} << n) : 0; }

// "echo VALUE > /proc/tarn/gpio_clr" (on: outputs are active low) or ".../gpio_set".
std::string gpio_command(uint32_t value, bool on) {
  std::string file = rooted(on ? "/proc/tarn/gpio_clr" : "/proc/tarn/gpio_set");
  return format_text(kCommandLimit, "echo %d > %s", static_cast<int>(value), file.c_str());
}

void write_gpio(uint32_t value, bool on) { run_command(gpio_command(value, on)); }

}  // namespace

extern "C" {

const uint32_t GPIO_PWR_FLAG[2] = {32, 16};

SYSCOMMON_API uint32_t Get_gpio_state(void) {
  auto file = syscommon::open_file(rooted("/proc/tarn/gpio_get"), "r");
  if (!file) {
    std::printf("%s() octeon_gpio_get fopen error\n", "Get_gpio_state");
    return 0;
  }
  std::array<char, 128> line{};
  if (std::fgets(line.data(), static_cast<int>(line.size()), file.get()) == nullptr) line[0] = '\0';
  return static_cast<uint32_t>(syscommon::device_atoi(line.data())) ^ (GPIO_PWR_FLAG[0] | GPIO_PWR_FLAG[1]);
}

SYSCOMMON_API int GetGpio_DI(int n) {
  uint32_t bit = shifted(kDigitalIn0, static_cast<unsigned>(n) % 256);
  return (Get_gpio_state() & bit) == 0 ? 1 : 0;
}

SYSCOMMON_API int WriteToGpio_DO(int on, int n) {
  write_gpio(n >= 0 ? shifted(kDigitalOut0, static_cast<unsigned>(n)) : 0, on != 0);
  return 0;
}

SYSCOMMON_API int WriteToGpio_FAULT(int on) {
  write_gpio(kFault, on != 0);
  return 0;
}

SYSCOMMON_API int WriteToGpio_STATUS_LED(int mode) {
  if (mode == static_cast<int>(kStatusFirst)) {
    write_gpio(kStatusFirst, false);
    write_gpio(kStatusSecond, true);
  } else if (mode == static_cast<int>(kStatusSecond)) {
    write_gpio(kStatusSecond, false);
    write_gpio(kStatusFirst, true);
  } else {
    write_gpio(kStatusFirst, false);
    write_gpio(kStatusSecond, false);
  }
  return 0;
}

SYSCOMMON_API int set_default_led_status(void) { return WriteToGpio_STATUS_LED(static_cast<int>(kStatusFirst)); }

SYSCOMMON_API int led_setVPNTunnelLED(int on) {
  if (Get_HW_version() != 2) return 0;
  std::string cmd = gpio_command(kVpnTunnel, on != 0);
  run_command(cmd);
  return std::printf("msg = %s\n", cmd.c_str());
}

SYSCOMMON_API int WriteToI2c_LED(uint32_t code) {
  unsigned number = (code >> 8) & 0xF;
  bool green = ((code >> 4) & 0xF) != 0, on = (code & 0xF) != 0;
  std::string path = rooted(kSecuredLedFile);
  auto file = syscommon::open_file(path, "r");
  if (!file) {
    std::printf("%s fopen error\n", kSecuredLedFile);
    return -1;
  }
  uint32_t bit = green ? shifted(32, number) : shifted(1, number);
  std::array<char, 256> line{};
  if (std::fgets(line.data(), static_cast<int>(line.size()), file.get()) == nullptr) line[0] = '\0';
  std::printf("msg = %s\n", line.data());
  auto value = static_cast<uint32_t>(syscommon::device_atoi(line.data()));
  std::printf("buffer = %d\n", static_cast<int>(value));
  value = on ? value & ~bit : value | bit;
  run_command(format_text(kCommandLimit, "echo %d > %s", static_cast<int>(value), path.c_str()));
  std::printf(on ? "Secured %s LED %lu On\n" : "Secured %s LED %lu Off\n", green ? "Green" : "Red",
              static_cast<unsigned long>(number) + 1);
  return 0;
}

SYSCOMMON_API int WD_enable(void) {
  return run_command(format_text(kCommandLimit, "echo 1 > %s", rooted("/proc/tarn/wd_reboot").c_str()));
}

SYSCOMMON_API int Kernel_reboot(void) { return WD_enable(); }

SYSCOMMON_API int WD_reboot(void) {
  return run_command("echo 8192 >" + rooted("/sys/devices/platform/octeon-gpio/octeon_gpio_clr"));
}

SYSCOMMON_API uint32_t Get_hw_event_flag(void) {
  uint32_t state = Get_gpio_state(), events = 0;
  for (unsigned i = 0; i < 2; ++i) events |= (state & GPIO_PWR_FLAG[i]) != 0 ? 1u << (i + 2) : 1u << i;
  events |= GetGpio_DI(0) == 1 ? 1u << 14 : 1u << 15;
  return events;
}

SYSCOMMON_API int Get_alarm_flag(const uint32_t *config, uint32_t *out) {
  constexpr int kPorts = 10;
  uint32_t state = Get_gpio_state(), link = Link_state();
  uint32_t relay[kPorts] = {};
  shm_get_port_overload_relay(relay, kPorts);
  std::array<uint32_t, 34> flags{};
  auto carry = [&](int word, bool active) { flags[static_cast<std::size_t>(word)] = active ? config[word + 1] : 0; };
  carry(0, (state & GPIO_PWR_FLAG[0]) == 0);
  carry(1, (state & GPIO_PWR_FLAG[1]) == 0);
  bool input_on = GetGpio_DI(0) != 0;
  carry(2, input_on);
  carry(3, !input_on);
  for (int p = 0; p < kPorts; ++p) {
    bool up = (link >> p & 1u) != 0;
    carry(4 + p, up);
    carry(14 + p, !up);
    carry(24 + p, relay[p] == 1);
  }
  std::memcpy(out, flags.data(), sizeof flags);
  return 1;
}

}  // extern "C"
