// Get_alarm_flag from the GPIO inputs, the port link bits (through this program's own
// Ssc_getPortLinkState, as a management process supplies it) and the overload relays.
#include <array>
#include <cstdint>

#include "support/test_support.h"
#include "syscommon/hw.h"
#include "syscommon/shm.h"

namespace {
uint32_t g_links = 0;
}

extern "C" uint32_t Ssc_getPortLinkState(void) { return g_links; }

namespace {

using namespace syscommon::testing;

TEST(Alarm, EachWordCarriesItsEnableWhenActive) {
  SYSCOMMON_REQUIRE_ISOLATION();
  shm_init();
  std::array<uint32_t, 35> config{};
  for (uint32_t k = 0; k < config.size(); ++k) config[k] = 100 + k;
  std::array<uint32_t, 10> relay = {1, 0, 2, 0, 0, 0, 0, 0, 0, 1};
  shm_set_port_overload_relay(relay.data(), 10);
  g_links = 0x205;  // ports 0, 2 and 9 up
  write_file(sim_path("/proc/tarn/gpio_get"), "32");  // power 1 failed, DI0 on
  std::array<uint32_t, 35> out{};
  out[34] = 7;  // 34 words only
  EXPECT_EQ(Get_alarm_flag(config.data(), out.data()), 1);
  std::array<uint32_t, 35> expect{};
  expect[0] = 101;
  expect[2] = 103;
  for (int p = 0; p < 10; ++p) expect[(g_links >> p & 1) ? 4 + p : 14 + p] = (g_links >> p & 1) ? 105 + p : 115 + p;
  expect[24] = 125;
  expect[33] = 134;
  expect[34] = 7;
  EXPECT_EQ(out, expect);

  write_file(sim_path("/proc/tarn/gpio_get"), "16400");  // power 2 failed, DI0 off
  Get_alarm_flag(config.data(), out.data());
  EXPECT_EQ(std::make_tuple(out[0], out[1], out[2], out[3]), std::make_tuple(0u, 102u, 0u, 104u));
}

}  // namespace
