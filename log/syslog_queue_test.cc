// The syslog queue: slot filling with its overflow-by-one terminator, the wrap of the write
// index, and the thread observed through a real local syslog socket bound at /dev/log in
// this test's private mount namespace (a fresh /dev; the host's is never touched).
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "net/test_peer.h"
#include "support/test_support.h"
#include "syscommon/log.h"

namespace {

using Clock = std::chrono::steady_clock;

TEST(SyslogQueue, SlotsAndWrap) {
  // Runs before the thread starts, so no slot is sent meanwhile.
  ASSERT_EQ(syslog_write_index, 0);
  messages[1][0] = 'x';
  EXPECT_EQ(syslog_send(std::string(300, 'a').c_str(), 3, 9), 0);
  EXPECT_EQ(std::string(messages[0], 256), std::string(256, 'a'));
  EXPECT_EQ(messages[1][0], '\0');  // the full slot's terminator, one past it
  EXPECT_EQ(priorities[0], 3);
  EXPECT_EQ(ThreadSyslog, 9);
  syslog_send("short", 5, 1);
  EXPECT_STREQ(messages[1], "short");
  EXPECT_EQ(std::string(messages[1] + 6, 250), std::string(250, '\0'));  // cleared first
  for (int i = 2; i < 63; ++i) syslog_send("", 0, 0);
  EXPECT_EQ(syslog_write_index, 63);
  syslog_send(std::string(256, 'z').c_str(), 1, 0);  // the last slot: nothing written past the array
  EXPECT_EQ(syslog_write_index, 0);                   // 64 calls: back at 0
  EXPECT_EQ(std::string(messages[63], 256), std::string(256, 'z'));
}

// A fresh /dev in this mount namespace with null and a bound log socket.
bool private_dev_log() {
  if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return false;
  if (mount("tmpfs", "/dev", "tmpfs", 0, "mode=755") != 0) return false;
  return mknod("/dev/null", S_IFCHR | 0666, makedev(1, 3)) == 0;
}

TEST(SyslogQueue, ThreadSendsAtMostTwoASecond) {
  SYSCOMMON_REQUIRE_ISOLATION();
  ASSERT_TRUE(private_dev_log()) << std::strerror(errno);
  syscommon::net::testing::Peer syslogd("/dev/log");
  ASSERT_TRUE(syslogd.ok());
  // The thread starts reading at slot 0, where the write index stands after 64 sends.
  ASSERT_EQ(syslog_write_index, 0);
  ASSERT_EQ(startup_syslog_thread(), 0);
  const std::vector<std::pair<std::string, int>> sent = {{"first", 3}, {"second one", 6}, {std::string(256, 'L'), 4}};
  const auto start = Clock::now();
  for (const auto &[text, priority] : sent) syslog_send(text.c_str(), priority, 0);
  std::vector<Clock::time_point> arrived;
  std::vector<std::string> got;
  for (auto end = Clock::now() + std::chrono::seconds(10); got.size() < sent.size() && Clock::now() < end;) {
    auto d = syslogd.receive(1000);
    if (!d) continue;
    arrived.push_back(Clock::now());
    got.emplace_back(d->bytes.begin(), d->bytes.end());
  }
  ASSERT_EQ(got.size(), sent.size());
  for (std::size_t i = 0; i < sent.size(); ++i) {
    const std::string &line = got[i];
    const auto &[text, priority] = sent[i];
    // "<PRI>timestamp  : text": identity " ", facility left as the default, our severity.
    EXPECT_EQ(std::atoi(line.c_str() + 1) & 7, priority) << line;
    EXPECT_TRUE(line.ends_with("  : " + text)) << line;
  }
  // Message i cannot leave before i paces have passed since the sends. Measured from the
  // start, not between arrivals: a receiver delayed by a loaded machine only adds to it.
  for (std::size_t i = 1; i < arrived.size(); ++i)
    EXPECT_GE(arrived[i] - start, std::chrono::milliseconds(450) * static_cast<int>(i)) << i;
}

}  // namespace
