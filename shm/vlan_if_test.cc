// Writers of the VLAN interface table: bytes at the documented offsets, the ifsInfo
// commands (in order, and whether the system segment's lock is held while they run),
// member masks, the port VLAN plan bounds and the CPU-port segment.
#include <fcntl.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <thread>

#include "shm/ifs_test_records.h"
#include "syscommon/shm.h"

using namespace syscommon::testing;

namespace {

ShmVlanIfConfig vlan_cfg(uint32_t vid, const std::string &usr, uint32_t ip = 0, uint32_t mask = 0) {
  ShmVlanIfConfig c{};
  c.vid = vid;
  c.ip = ip;
  c.mask = mask;
  c.attribute = 0xA0 + vid;
  c.routing = vid % 2;
  std::strncpy(c.usr_name, usr.c_str(), sizeof c.usr_name - 1);
  return c;
}

// Runs `setter` with the kernel entry replaced by a FIFO. Each time a command's shell opens
// it, the system segment's semaphore (1492) is sampled: was the lock held while that command
// ran. Only the last sample may come after the setter has returned, and commands that open
// the FIFO while the reader still has it open share one sample.
std::vector<bool> lock_samples(long commands, const std::function<void()> &setter) {
  const std::string path = sim_path("/proc/tarn/ifsInfo");
  unlink(path.c_str());
  EXPECT_EQ(mkfifo(path.c_str(), 0600), 0);
  std::vector<bool> held;
  std::atomic<bool> done{false};
  std::thread reader([&] {
    for (long seen = 0; seen < commands;) {
      int fd = open(path.c_str(), O_RDONLY);
      held.push_back(semctl(semget(1492, 1, 0), 0, GETVAL) == 0);
      char buf[256];
      for (ssize_t n; (n = read(fd, buf, sizeof buf)) > 0;) seen += std::count(buf, buf + n, '\n');
      close(fd);
    }
    done = true;
  });
  setter();
  while (!done) {  // after a setter that ran too few commands (the trace tells): end the reader
    int fd = open(path.c_str(), O_WRONLY | O_NONBLOCK);
    if (fd >= 0) {
      (void)!write(fd, "\n", 1);
      close(fd);
    }
    usleep(1000);
  }
  reader.join();
  unlink(path.c_str());
  return held;
}

using VlanIfTest = IfsTest;

TEST_F(VlanIfTest, BulkSetterFillsEveryRecordAndPublishesEachInOrder) {
  seg->put_words(vlan_at(2) + 80, {0x3c, 1});  // member mask and link belong to the daemon
  ShmVlanIfConfig recs[16];
  std::vector<std::string> want;
  for (uint32_t i = 0; i < 16; ++i) {
    recs[i] = vlan_cfg(10 + i, "v" + std::to_string(i));
    std::string vid = std::to_string(10 + i);
    want.push_back(ifs_line(std::to_string(i + 1).append("-eth0.").append(vid).append("-v").append(
        std::to_string(i)).append("-").append(vid)));
  }
  recs[15] = vlan_cfg(0, "");
  want.back() = ifs_line("16-eth0.0--0");
  set_shm_vconf_info_all("eth0", recs);
  EXPECT_EQ(trace_lines(), want);
  EXPECT_EQ(seg->text(vlan_at(2)), "eth0.12");
  EXPECT_EQ(seg->u32(vlan_at(2) + 80), 0x3cu);
  EXPECT_EQ(seg->u32(vlan_at(2) + 84), 1u);
  // Each command overwrites the entry; under the simulated root the file keeps the last.
  EXPECT_EQ(read_file(sim_path("/proc/tarn/ifsInfo")), "16-eth0.0--0\n");
}

TEST_F(VlanIfTest, BulkSettersHoldTheLockWhileTheSingleSetterReleasesItFirst) {
  ShmVlanIfConfig recs[16]{};
  recs[0] = vlan_cfg(5, "five");
  ShmBridgeConfig brg[4]{};
  ShmZoneBridgeConfig zones[4]{};
  const std::pair<long, std::function<void()>> bulk[] = {{16, [&] { set_shm_vconf_info_all("eth0", recs); }},
                                                         {4, [&] { set_shm_brg_info_all("br", brg); }},
                                                         {4, [&] { set_shm_zone_brg_info_all("br", zones); }}};
  for (const auto &[commands, setter] : bulk) {
    std::vector<bool> held = lock_samples(commands, setter);
    ASSERT_FALSE(held.empty());
    held.pop_back();
    EXPECT_EQ(std::count(held.begin(), held.end(), false), 0) << ::testing::PrintToString(held);
  }
  EXPECT_EQ(trace_lines().size(), 24u);
  clear_trace();
  EXPECT_EQ(lock_samples(1, [&] { set_shm_vconf_info(3, "eth0", &recs[0]); }), std::vector<bool>{false});
  EXPECT_EQ(trace_lines(), std::vector<std::string>{ifs_line("4-eth0.5-five-5")});
}

TEST_F(VlanIfTest, SingleSetterWritesOneRecordOrClearsItWhenGivenNoRecord) {
  std::size_t r3 = vlan_at(3);
  seg->put_words(r3 + 80, {0x3c, 7});
  auto cfg = vlan_cfg(301, "office", ip4(10, 3, 0, 1), ip4(255, 255, 0, 0));
  EXPECT_EQ(set_shm_vconf_info(3, "eth1", &cfg), 0);
  EXPECT_EQ(seg->text(r3), "eth1.301");
  EXPECT_EQ(seg->text(r3 + 32), "office");
  // VLAN id, address, mask, routing flag (word 8), members, link, attribute (word 2).
  EXPECT_EQ(std::vector<uint32_t>({seg->u32(r3 + 64), seg->u32(r3 + 68), seg->u32(r3 + 72), seg->u32(r3 + 76),
                                   seg->u32(r3 + 80), seg->u32(r3 + 84), seg->u32(r3 + 88)}),
            std::vector<uint32_t>({301, ip4(10, 3, 0, 1), ip4(255, 255, 0, 0), 1, 0x3c, 7, 0xA0 + 301}));
  EXPECT_TRUE(seg->zero(kVlanAt, vlan_at(3) - kVlanAt));  // neighbours untouched
  EXPECT_TRUE(seg->zero(r3 + 92, 92));

  EXPECT_EQ(set_shm_vconf_info(3, "eth1", nullptr), 0);
  EXPECT_TRUE(seg->zero(r3, 92));
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{ifs_line("4-eth1.301-office-301"), ifs_line("4---0")}));
}

TEST_F(VlanIfTest, RoutingFlagMovesBothWaysButIpMaskWriteAlwaysClears) {
  std::size_t r5 = vlan_at(5);
  uint32_t flag = 9, back = 0;
  shm_vconf_info_routing(0, 5, &flag);
  shm_vconf_info_routing(1, 5, &back);
  EXPECT_EQ(seg->u32(r5 + 76), 9u);
  EXPECT_EQ(back, 9u);
  seg->put_u32(r5 + 68, ip4(1, 2, 3, 4));
  seg->put_u32(r5 + 72, ip4(255, 0, 0, 0));
  uint32_t ip = 0, mask = 0;
  shm_vconf_info_ip_mask(1, 5, &ip, &mask);
  EXPECT_EQ(ip, ip4(1, 2, 3, 4));
  EXPECT_EQ(mask, ip4(255, 0, 0, 0));
  shm_vconf_info_ip_mask(0, 5, &ip, &mask);  // writes what it just cleared
  EXPECT_TRUE(seg->zero(r5 + 68, 8));
}

TEST_F(VlanIfTest, MemberUpdateCopiesPortMemberWordsOfMatchingVlansUpToTheFirstZeroId) {
  for (std::size_t j = 0; j < 16; ++j) seg->put_u32(kPortMemberAt + 4 * j, 0x100 + uint32_t(j));
  ShmVlanIfConfig recs[16]{};
  ShmVlanInfoRecord info[16]{};
  for (auto [i, vid] : {std::pair{0, 20}, {1, 10}, {2, 30}, {4, 10}}) recs[i].vid = vid;  // 4: past recs[3]
  for (auto [j, vid] : {std::pair{0, 10}, {1, 20}, {3, 30}}) info[j].vid = uint16_t(vid);  // 3: past info[2]
  shm_vconf_member_update(recs, info);
  EXPECT_EQ(std::vector<uint32_t>({seg->u32(kVlanAt + 80), seg->u32(kVlanAt + 92 + 80), seg->u32(vlan_at(2) + 80),
                                   seg->u32(vlan_at(4) + 80)}),
            std::vector<uint32_t>({0x101, 0x100, 0, 0}));
}

TEST_F(VlanIfTest, PortVlanIdSetterAndGetterKeepTheirDifferentBounds) {
  const std::tuple<int, int, int> set_cases[] = {{0, 5, 0}, {9, 0x12345, 0}, {13, 77, 0}, {14, 78, 14}, {-1, 79, -1}};
  for (const auto &[port, vid, result] : set_cases) EXPECT_EQ(set_shm_port_vlan_id(port, vid), result) << port;
  EXPECT_EQ(seg->u16(kPlanAt), 5);
  EXPECT_EQ(seg->u16(kPlanAt + 72), 0x2345);  // the low 16 bits
  EXPECT_EQ(seg->u16(kPlanAt + 104), 77);
  EXPECT_TRUE(seg->zero(kPlanAt + 112, 64));  // nothing past the plan
  const std::pair<int, int> get_cases[] = {{9, 0x2345}, {13, 0}, {10, 0}, {-3, 0}};
  seg->port(10, 44);  // stored, but above the getter's bound
  for (const auto &[port, want] : get_cases) EXPECT_EQ(get_shm_port_vlan_id(port), want) << port;
}

TEST_F(VlanIfTest, CpuPortRecordsAreClaimedOredClearedAndFreed) {
  RawSegment cpu(7898);
  ShmVlanCpuPortRecord rec{};
  EXPECT_EQ(shm_vlanGetCpuPortInfo(5, &rec), 0);
  shm_vlanEnableCpuPort(5, 0x1);
  shm_vlanEnableCpuPort(6, 0x4);
  shm_vlanEnableCpuPort(5, 0x2);
  EXPECT_EQ(cpu.u32(4), 0x3u);
  EXPECT_EQ(shm_vlanGetCpuPortInfo(6, &rec), 1);
  EXPECT_EQ(rec.mask, 0x4u);
  EXPECT_EQ(shm_vlanDisableCpuPort(5, 0x1), 0);
  EXPECT_EQ(shm_vlanDisableCpuPort(5, 0x2), 1);
  EXPECT_TRUE(cpu.zero(0, 8));
  shm_vlanEnableCpuPort(7, 0x8);  // takes the freed first record
  EXPECT_EQ(cpu.u32(0), 7u);
  for (int v = 100; v < 114; ++v) shm_vlanEnableCpuPort(v, 1);  // fills the table
  std::vector<uint8_t> before(cpu.bytes(), cpu.bytes() + 128);
  EXPECT_EQ(shm_vlanEnableCpuPort(200, 1), 0);
  EXPECT_EQ(std::vector<uint8_t>(cpu.bytes(), cpu.bytes() + 128), before);
}

}  // namespace
