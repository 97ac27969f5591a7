// Test helpers: interface, VLAN, bridge, zone-bridge and port records written straight
// into the system segment at their documented byte offsets, bypassing the library, and
// the fixture of the interface tests.
#ifndef SYSCOMMON_SHM_IFS_TEST_RECORDS_H
#define SYSCOMMON_SHM_IFS_TEST_RECORDS_H

#include <algorithm>
#include <cstring>
#include <initializer_list>
#include <optional>
#include <string>
#include <utility>

#include "support/test_support.h"
#include "syscommon/shm.h"

namespace syscommon::testing {

// An IPv4 address as stored: network byte order, a.b.c.d in memory order.
inline uint32_t ip4(unsigned a, unsigned b, unsigned c, unsigned d) {
  const uint8_t bytes[4] = {uint8_t(a), uint8_t(b), uint8_t(c), uint8_t(d)};
  uint32_t v;
  std::memcpy(&v, bytes, 4);
  return v;
}

constexpr std::size_t kWanAt = 448, kVlanAt = 1472, kBridgeAt = 2944, kZoneAt = 3296;
constexpr std::size_t kVlanInfoAt = 5936, kPlanAt = 6224, kPortMemberAt = 6336;
constexpr std::size_t wan_at(std::size_t w) { return kWanAt + 64 * w; }
constexpr std::size_t vlan_at(std::size_t i) { return kVlanAt + 92 * i; }
constexpr std::size_t bridge_at(std::size_t b) { return kBridgeAt + 88 * b; }
constexpr std::size_t zone_at(std::size_t z) { return kZoneAt + 660 * z; }

class SysSegmentWriter : public RawSegment {
 public:
  SysSegmentWriter() : RawSegment(7890) {}

  void put_text(std::size_t off, const std::string &s) {
    std::memset(bytes() + off, 0, 32);
    std::memcpy(bytes() + off, s.data(), std::min<std::size_t>(s.size(), 32));
  }
  // Puts consecutive u32 words from `off` on.
  void put_words(std::size_t off, std::initializer_list<uint32_t> words) {
    for (uint32_t w : words) put_u32(std::exchange(off, off + 4), w);
  }
  void wan(int w, uint32_t vid, const std::string &ifname, uint32_t ip = 0, uint32_t mask = 0, uint32_t link = 0,
           uint32_t gw = 0, uint32_t conn = 0) {
    put_words(wan_at(w), {conn, link, ip, mask, gw, vid});
    put_text(wan_at(w) + 24, ifname);
  }
  void vlan(int i, uint32_t vid, const std::string &ifname, const std::string &usr, uint32_t ip = 0,
            uint32_t mask = 0, uint32_t link = 0) {
    std::size_t r = vlan_at(i);
    put_text(r, ifname);
    put_text(r + 32, usr);
    put_words(r + 64, {vid, ip, mask});
    put_u32(r + 84, link);
  }
  void bridge(int b, uint32_t id, const std::string &ifname, const std::string &usr, uint32_t ip, uint8_t enable,
              uint32_t link = 0) {
    std::size_t r = bridge_at(b);
    put_text(r, ifname);
    put_text(r + 32, usr);
    put_words(r + 64, {id, ip, 0, enable, link});  // the enable byte is the first of its word
  }
  void zone(int z, uint32_t id, const std::string &ifname, const std::string &usr, uint32_t ip, uint8_t enable,
            std::initializer_list<std::pair<int32_t, const char *>> members = {}) {
    std::size_t r = zone_at(z);
    put_text(r, ifname);
    put_text(r + 32, usr);
    put_words(r + 64, {id, ip, 0, enable});
    std::size_t j = 0;
    for (const auto &[vid, name] : members) {
      put_u32(r + 84 + 4 * j, static_cast<uint32_t>(vid));
      put_text(r + 148 + 32 * j++, name);
    }
  }
  void port(std::size_t p, uint16_t pvid, uint16_t in_use = 0) {
    put_u16(kPlanAt + 8 * p, pvid);
    put_u16(kPlanAt + 8 * p + 6, in_use);
  }
};

// The command that tells the kernel side about one interface.
inline std::string ifs_line(const std::string &text) {
  return "echo \"" + text + "\" > " + sim_path("/proc/tarn/ifsInfo");
}

// Fixture of the interface tests: a clean store, an empty trace, `seg` on the system segment.
class IfsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    clear_trace();
    seg.emplace();
  }
  std::optional<SysSegmentWriter> seg;
};

}  // namespace syscommon::testing

#endif
