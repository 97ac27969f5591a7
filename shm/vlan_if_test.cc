// Writers of the VLAN interface table: bytes at the documented offsets, the ifsInfo
// commands (in order, and whether the system segment's lock is held while they run),
// member masks, the port VLAN plan bounds, whole-table copies and the CPU-port segment.
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

ShmVlanIfConfig vlan_cfg(uint32_t vid, const char *usr, uint32_t ip = 0, uint32_t mask = 0) {
  ShmVlanIfConfig c{};
  c.vid = vid;
  c.ip = ip;
  c.mask = mask;
  c.attribute = 0xA0 + vid;
  c.routing = vid % 2;
  std::strncpy(c.usr_name, usr, sizeof c.usr_name - 1);
  return c;
}

std::string ifs_line(const std::string &text) { return "echo \"" + text + "\" > " + sim_path("/proc/tarn/ifsInfo"); }

// Stands in for the kernel entry with a FIFO. When the reader's open returns, a command's
// shell has just opened the FIFO, so the system segment's semaphore (1492) sampled then
// shows whether the lock was held during that command. Only the sample of the last
// command may come late, after the setter has returned; and a command that starts while
// the reader still has the FIFO open goes unsampled. The lines themselves are checked in
// the trace.
class LockWitness {
 public:
  LockWitness() : path_(sim_path("/proc/tarn/ifsInfo")) {
    unlink(path_.c_str());
    EXPECT_EQ(mkfifo(path_.c_str(), 0600), 0);
    reader_ = std::thread([this] {
      for (;;) {
        int fd = open(path_.c_str(), O_RDONLY);
        bool held = semctl(semget(1492, 1, 0), 0, GETVAL) == 0;
        char buf[256];
        ssize_t total = 0;
        for (ssize_t n; (n = read(fd, buf, sizeof buf)) > 0;) total += n;
        close(fd);
        if (total > 0) held_.push_back(held);  // else: stop() waking the reader
        if (total == 0 && done_) break;
      }
      exited_ = true;
    });
  }
  ~LockWitness() { stop(); }
  // Ends the reader; one entry per sampled command: was the lock held.
  std::vector<bool> stop() {
    if (reader_.joinable()) {
      done_ = true;
      while (!exited_) {  // wakes the reader wherever it waits
        int fd = open(path_.c_str(), O_WRONLY | O_NONBLOCK);
        if (fd >= 0) close(fd);
        usleep(1000);
      }
      reader_.join();
      unlink(path_.c_str());
    }
    return held_;
  }

 private:
  std::string path_;
  std::vector<bool> held_;
  std::atomic<bool> done_{false};
  std::atomic<bool> exited_{false};
  std::thread reader_;
};

// True when every sample but the last (which may come after the setter returned) says
// the lock was held.
bool held_throughout(std::vector<bool> held) {
  if (held.empty()) return false;
  held.pop_back();
  return std::count(held.begin(), held.end(), false) == 0;
}

class VlanIfTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    clear_trace();
  }
};

TEST_F(VlanIfTest, BulkSetterFillsEveryRecordAndPublishesEachInOrder) {
  SysSegmentWriter seg;
  seg.put_u32(kVlanAt + 92 * 2 + 80, 0x3c);  // member mask and link belong to the daemon
  seg.put_u32(kVlanAt + 92 * 2 + 84, 1);
  ShmVlanIfConfig recs[16];
  for (int i = 0; i < 16; ++i) recs[i] = vlan_cfg(static_cast<uint32_t>(10 + i), ("v" + std::to_string(i)).c_str());
  recs[0] = vlan_cfg(1, "lan1", ip4(192, 168, 1, 254), ip4(255, 255, 255, 0));
  recs[15] = vlan_cfg(0, "");
  set_shm_vconf_info_all("eth0", recs);

  std::size_t r0 = kVlanAt;
  EXPECT_EQ(seg.text(r0), "eth0.1");
  EXPECT_EQ(seg.text(r0 + 32), "lan1");
  EXPECT_EQ(seg.u32(r0 + 64), 1u);
  EXPECT_EQ(seg.u32(r0 + 68), ip4(192, 168, 1, 254));
  EXPECT_EQ(seg.u32(r0 + 72), ip4(255, 255, 255, 0));
  EXPECT_EQ(seg.u32(r0 + 76), 1u);     // routing flag (word 8)
  EXPECT_EQ(seg.u32(r0 + 88), 0xA1u);  // attribute (word 2)
  EXPECT_EQ(seg.u32(kVlanAt + 92 * 2 + 80), 0x3cu);
  EXPECT_EQ(seg.u32(kVlanAt + 92 * 2 + 84), 1u);
  EXPECT_EQ(seg.text(kVlanAt + 92 * 15), "eth0.0");

  std::vector<std::string> want;
  want.push_back(ifs_line("1-eth0.1-lan1-1"));
  for (int i = 1; i < 15; ++i)
    want.push_back(ifs_line(std::to_string(i + 1) + "-eth0." + std::to_string(10 + i) + "-v" + std::to_string(i) + "-" +
                            std::to_string(10 + i)));
  want.push_back(ifs_line("16-eth0.0--0"));
  EXPECT_EQ(trace_lines(), want);
  // Each command overwrites the entry; under the simulated root the file keeps the last.
  EXPECT_EQ(read_file(sim_path("/proc/tarn/ifsInfo")), "16-eth0.0--0\n");
}

TEST_F(VlanIfTest, BulkSettersHoldTheLockWhileTheSingleSetterReleasesItFirst) {
  ShmVlanIfConfig recs[16]{};
  recs[0] = vlan_cfg(5, "five");
  ShmBridgeConfig brg[4]{};
  ShmZoneBridgeConfig zones[4]{};
  const std::function<void()> bulk[] = {[&] { set_shm_vconf_info_all("eth0", recs); },
                                        [&] { set_shm_brg_info_all("br", brg); },
                                        [&] { set_shm_zone_brg_info_all("br", zones); }};
  for (const auto &setter : bulk) {
    LockWitness witness;
    setter();
    std::vector<bool> held = witness.stop();
    EXPECT_TRUE(held_throughout(held)) << ::testing::PrintToString(held);
  }
  EXPECT_EQ(trace_lines().size(), 24u);

  clear_trace();
  LockWitness single;
  set_shm_vconf_info(3, "eth0", &recs[0]);
  EXPECT_EQ(single.stop(), std::vector<bool>{false});
  EXPECT_EQ(trace_lines(), std::vector<std::string>{ifs_line("4-eth0.5-five-5")});
}

TEST_F(VlanIfTest, SingleSetterWritesOneRecordOrClearsItWhenGivenNoRecord) {
  SysSegmentWriter seg;
  std::size_t r3 = kVlanAt + 92 * 3;
  seg.put_u32(r3 + 84, 7);
  auto cfg = vlan_cfg(300, "office", ip4(10, 3, 0, 1), ip4(255, 255, 0, 0));
  EXPECT_EQ(set_shm_vconf_info(3, "eth1", &cfg), 0);
  EXPECT_EQ(seg.text(r3), "eth1.300");
  EXPECT_EQ(seg.text(r3 + 32), "office");
  EXPECT_EQ(seg.u32(r3 + 68), ip4(10, 3, 0, 1));
  EXPECT_EQ(seg.u32(r3 + 84), 7u);
  EXPECT_TRUE(seg.zero(kVlanAt, 92 * 3));  // neighbours untouched

  EXPECT_EQ(set_shm_vconf_info(3, "eth1", nullptr), 0);
  EXPECT_TRUE(seg.zero(r3, 92));
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{ifs_line("4-eth1.300-office-300"), ifs_line("4---0")}));
  EXPECT_EQ(read_file(sim_path("/proc/tarn/ifsInfo")), "4---0\n");
}

TEST_F(VlanIfTest, RoutingFlagMovesBothWaysButIpMaskWriteAlwaysClears) {
  SysSegmentWriter seg;
  std::size_t r5 = kVlanAt + 92 * 5;
  uint32_t flag = 9;
  shm_vconf_info_routing(0, 5, &flag);
  EXPECT_EQ(seg.u32(r5 + 76), 9u);
  seg.put_u32(r5 + 68, ip4(1, 2, 3, 4));
  seg.put_u32(r5 + 72, ip4(255, 0, 0, 0));
  uint32_t ip = 0, mask = 0;
  shm_vconf_info_ip_mask(1, 5, &ip, &mask);
  EXPECT_EQ(ip, ip4(1, 2, 3, 4));
  EXPECT_EQ(mask, ip4(255, 0, 0, 0));
  shm_vconf_info_ip_mask(0, 5, &ip, &mask);  // writes what it just cleared
  EXPECT_TRUE(seg.zero(r5 + 68, 8));
  EXPECT_EQ(ip, 0u);
}

TEST_F(VlanIfTest, MemberUpdateCopiesPortMemberWordsOfMatchingVlansUpToTheFirstZeroId) {
  SysSegmentWriter seg;
  for (int j = 0; j < 16; ++j) seg.put_u32(kPortMemberAt + 4 * j, 0x100u + static_cast<uint32_t>(j));
  ShmVlanIfConfig recs[16]{};
  recs[0].vid = 20;
  recs[1].vid = 10;
  recs[2].vid = 30;  // no information record carries 30
  recs[4].vid = 10;  // after the list's end (recs[3].vid == 0)
  ShmVlanInfoRecord info[16]{};
  info[0].vid = 10;
  info[1].vid = 20;
  info[3].vid = 30;  // after the list's end (info[2].vid == 0)
  shm_vconf_member_update(recs, info);
  EXPECT_EQ(seg.u32(kVlanAt + 80), 0x101u);
  EXPECT_EQ(seg.u32(kVlanAt + 92 + 80), 0x100u);
  EXPECT_EQ(seg.u32(kVlanAt + 92 * 2 + 80), 0u);
  EXPECT_EQ(seg.u32(kVlanAt + 92 * 4 + 80), 0u);
}

TEST_F(VlanIfTest, PortVlanIdSetterAndGetterKeepTheirDifferentBounds) {
  SysSegmentWriter seg;
  struct Case {
    int port, vid, result;
    std::size_t written_at;  // 0 = nothing written
  };
  const Case cases[] = {{0, 5, 0, kPlanAt}, {9, 0x12345, 0, kPlanAt + 72}, {13, 77, 0, kPlanAt + 104},
                        {14, 78, 14, 0},    {-1, 79, -1, 0}};
  for (const Case &c : cases) {
    SCOPED_TRACE(c.port);
    EXPECT_EQ(set_shm_port_vlan_id(c.port, c.vid), c.result);
    if (c.written_at != 0) EXPECT_EQ(seg.u16(c.written_at), static_cast<uint16_t>(c.vid));
  }
  EXPECT_TRUE(seg.zero(kPlanAt + 112, 64));  // nothing past the plan
  EXPECT_EQ(get_shm_port_vlan_id(9), 0x2345);
  EXPECT_EQ(get_shm_port_vlan_id(10), 0);  // stored, but above the getter's bound
  seg.port(10, 44);
  EXPECT_EQ(get_shm_port_vlan_id(10), 0);
  EXPECT_EQ(get_shm_port_vlan_id(-3), 0);
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
