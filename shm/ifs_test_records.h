// Test helpers: interface, VLAN, bridge, zone-bridge and port records written straight
// into the system segment at their documented byte offsets, bypassing the library.
#ifndef SYSCOMMON_SHM_IFS_TEST_RECORDS_H
#define SYSCOMMON_SHM_IFS_TEST_RECORDS_H

#include <cstring>
#include <initializer_list>
#include <string>
#include <utility>

#include "support/test_support.h"

namespace syscommon::testing {

// An IPv4 address as stored: network byte order, a.b.c.d in memory order.
inline uint32_t ip4(unsigned a, unsigned b, unsigned c, unsigned d) {
  uint8_t bytes[4] = {uint8_t(a), uint8_t(b), uint8_t(c), uint8_t(d)};
  uint32_t v;
  std::memcpy(&v, bytes, 4);
  return v;
}

constexpr std::size_t kWanAt = 448, kWanSize = 64;
constexpr std::size_t kVlanAt = 1472, kVlanSize = 92;
constexpr std::size_t kBridgeAt = 2944, kBridgeSize = 88;
constexpr std::size_t kZoneAt = 3296, kZoneSize = 660;
constexpr std::size_t kVlanInfoAt = 5936, kPlanAt = 6224, kPortMemberAt = 6336;
constexpr std::size_t kTrunkGroupAt = 7048, kTrunkMaskAt = 7088;

class SysSegmentWriter : public RawSegment {
 public:
  SysSegmentWriter() : RawSegment(7890) {}

  void put_text(std::size_t off, const std::string &s) {
    std::memset(bytes() + off, 0, 32);
    std::memcpy(bytes() + off, s.data(), s.size() < 32 ? s.size() : 32);
  }
  void wan(int w, uint32_t vid, const std::string &ifname, uint32_t ip = 0, uint32_t mask = 0, uint32_t link = 0,
           uint32_t gw = 0, uint32_t conn = 0) {
    std::size_t r = kWanAt + kWanSize * w;
    put_u32(r + 0, conn);
    put_u32(r + 4, link);
    put_u32(r + 8, ip);
    put_u32(r + 12, mask);
    put_u32(r + 16, gw);
    put_u32(r + 20, vid);
    put_text(r + 24, ifname);
  }
  void vlan(int i, uint32_t vid, const std::string &ifname, const std::string &usr, uint32_t ip = 0,
            uint32_t mask = 0, uint32_t link = 0) {
    std::size_t r = kVlanAt + kVlanSize * i;
    put_text(r, ifname);
    put_text(r + 32, usr);
    put_u32(r + 64, vid);
    put_u32(r + 68, ip);
    put_u32(r + 72, mask);
    put_u32(r + 84, link);
  }
  void bridge(int b, uint32_t id, const std::string &ifname, const std::string &usr, uint32_t ip, uint8_t enable,
              uint32_t link = 0) {
    std::size_t r = kBridgeAt + kBridgeSize * b;
    put_text(r, ifname);
    put_text(r + 32, usr);
    put_u32(r + 64, id);
    put_u32(r + 68, ip);
    bytes()[r + 76] = enable;
    put_u32(r + 80, link);
  }
  void zone(int z, uint32_t id, const std::string &ifname, const std::string &usr, uint32_t ip, uint8_t enable,
            std::initializer_list<std::pair<int32_t, const char *>> members = {}) {
    std::size_t r = kZoneAt + kZoneSize * z;
    put_text(r, ifname);
    put_text(r + 32, usr);
    put_u32(r + 64, id);
    put_u32(r + 68, ip);
    bytes()[r + 76] = enable;
    int j = 0;
    for (const auto &[vid, name] : members) {
      put_u32(r + 84 + 4 * j, static_cast<uint32_t>(vid));
      put_text(r + 148 + 32 * j, name);
      ++j;
    }
  }
  void port(int p, uint16_t pvid, uint16_t in_use = 0) {
    put_u16(kPlanAt + 8 * p, pvid);
    put_u16(kPlanAt + 8 * p + 6, in_use);
  }
};

}  // namespace syscommon::testing

#endif
