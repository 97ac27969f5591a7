// Login records fetched from and stored in the main daemon's stand-in, run in another
// process on the simulated device's sockets.
#include <dlfcn.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <chrono>
#include <cstring>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "net/test_peer.h"
#include "session/test_accounts.h"
#include "support/test_support.h"
#include "syscommon/session.h"
#include "syscommon/util.h"
#include "tools/sim/mgmtd.h"

using syscommon::testing::sim_path;

namespace {
// While set, a wait of a second or more is answered at once as the silence it would end in,
// and its length is noted: the case of a daemon that never answers need not sit out the
// whole budget in real time.
bool g_cut_long_waits = false;
std::vector<long> g_long_waits_ms;
}  // namespace

extern "C" int ppoll(pollfd *fds, nfds_t n, const timespec *timeout, const sigset_t *mask) {
  using Fn = int (*)(pollfd *, nfds_t, const timespec *, const sigset_t *);
  static const auto real = reinterpret_cast<Fn>(dlsym(RTLD_NEXT, "ppoll"));
  if (g_cut_long_waits && timeout != nullptr && timeout->tv_sec >= 1) {
    g_long_waits_ms.push_back(timeout->tv_sec * 1000 + timeout->tv_nsec / 1000000);
    return 0;
  }
  return real(fds, n, timeout, mask);
}

namespace {

// The failure texts kept for n = 0, 1, 2 (empty when nothing is kept there).
std::vector<std::string> kept_failures(const char *name) {
  std::vector<std::string> texts;
  for (int n = 0; n < 3; ++n) {
    char text[41] = "?";
    uint32_t time = 0;
    const int rc = Ssgl2_sysnotify_failLoginrecord_get(name, n, text, &time);
    texts.push_back(rc == 0 ? std::string(text) + "@" + std::to_string(time) : std::to_string(rc));
  }
  return texts;
}

uint32_t fail_times(const char *name) {
  uint32_t count = 99;
  EXPECT_EQ(Ssgl2_sysnotify_faillogintimes_get(name, &count), 0);
  return count;
}

class LoginRecordTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    // carol stands behind an empty record
    const UserAccountList accounts = syscommon::testing::accounts_named({{0, "admin"}, {1, "bob"}, {3, "carol"}});
    shm_sysSetUseraccount(&accounts);
    daemon_ = fork();
    if (daemon_ == 0) {
      std::freopen("/dev/null", "w", stdout);
      _exit(syscommon::sim::run_mgmtd(120));
    }
    const std::string ready = sim_path("/mnt/ramdisk/socket/lumen168-wexe-socket");
    ASSERT_TRUE(syscommon::testing::wait_for_path(ready)) << "stand-in daemon did not start";
  }
  void TearDown() override { stop_daemon(); }
  void stop_daemon() {
    if (daemon_ <= 0) return;
    kill(daemon_, SIGTERM);
    EXPECT_EQ(syscommon::testing::wait_for(daemon_, std::chrono::seconds(5)), 0);  // a clean stop
    EXPECT_NE(access(sim_path("/mnt/ramdisk/socket/lumen168-socket").c_str(), F_OK), 0);
    daemon_ = 0;
  }
  pid_t daemon_ = 0;
};

TEST_F(LoginRecordTest, TheRingKeepsTheLatestThreeFailuresOldestFirst) {
  const std::vector<std::vector<std::string>> after = {
      {"f1@101", "1", "1"},
      {"f1@101", "f2@102", "1"},
      {"f1@101", "f2@102", "f3@103"},
      {"f2@102", "f3@103", "f4@104"},
      {"f3@103", "f4@104", "f5@105"},
  };
  for (int i = 0; i < 5; ++i) {
    const std::string text = "f" + std::to_string(i + 1);
    EXPECT_EQ(Ssgl2_sysnotify_loginrecord_set("bob", text.c_str(), 101 + i, 0), 0);
    EXPECT_EQ(kept_failures("bob"), after[i]) << i + 1 << " failures";
  }
  EXPECT_EQ(fail_times("bob"), 5u);
  char text[41];
  uint32_t time = 0;
  EXPECT_EQ(Ssgl2_sysnotify_failLoginrecord_get("bob", 4, text, &time), 0);  // around the ring
  EXPECT_STREQ(text, "f4");

  // Success: the count goes to 0, the ring stays, the text is cut to 40 characters.
  const std::string from(45, 'x');
  EXPECT_EQ(Ssgl2_sysnotify_loginrecord_set("bob", from.c_str(), 500, 1), 0);
  EXPECT_EQ(fail_times("bob"), 0u);
  EXPECT_EQ(kept_failures("bob"), after[4]);
  EXPECT_EQ(Ssgl2_sysnotify_lastloginrecord_get("bob", text, &time), 0);
  EXPECT_EQ(std::string(text), from.substr(0, 40));
  EXPECT_EQ(time, 500u);

  // Clearing empties the ring and keeps the count.
  Ssgl2_sysnotify_loginrecord_set("bob", "f6", 106, 0);
  EXPECT_EQ(Ssgl2_sysnotify_failLoginrecord_clear("bob"), 0);
  EXPECT_EQ(kept_failures("bob"), std::vector<std::string>({"1", "1", "1"}));
  EXPECT_EQ(fail_times("bob"), 1u);
  Ssgl2_sysnotify_loginrecord_set("bob", "f7", 107, 0);
  EXPECT_EQ(kept_failures("bob"), std::vector<std::string>({"f7@107", "1", "1"}));

  // Other accounts' records are untouched; one behind an empty account record is found.
  EXPECT_EQ(Ssgl2_sysnotify_lastloginrecord_get("admin", text, &time), 1);
  EXPECT_EQ(Ssgl2_sysnotify_loginrecord_set("carol", "tty", 9, 1), 0);
  LoginRecordSet set{};
  EXPECT_EQ(Ssgl2_get_login_record(&set), 10);
  EXPECT_EQ(set.record[3].last_login_time, 9u);
  EXPECT_EQ(set.record[0].fail_times, 0u);
  EXPECT_EQ(set.record[1].fail_ring[0].time, 107u);
  EXPECT_EQ(Ssgl2_set_login_record(&set), NET_MSG_SIZE);  // confirmed
}

TEST_F(LoginRecordTest, BadNamesAndIndicesGetTheirCodes) {
  const std::string long33(33, 'a'), long32(32, 'a');
  char text[41];
  uint32_t value = 0;
  const std::pair<const char *, int> names[] = {{nullptr, 6}, {"", 6}, {long33.c_str(), 6}, {long32.c_str(), 3},
                                                {"nobody", 3}};
  for (const auto &[name, rc] : names) {
    EXPECT_EQ(Ssgl2_sysnotify_loginrecord_set(name, "x", 1, 0), rc);
    EXPECT_EQ(Ssgl2_sysnotify_lastloginrecord_get(name, text, &value), rc);
    EXPECT_EQ(Ssgl2_sysnotify_faillogintimes_get(name, &value), rc);
    EXPECT_EQ(Ssgl2_sysnotify_failLoginrecord_get(name, 0, text, &value), rc);
    EXPECT_EQ(Ssgl2_sysnotify_failLoginrecord_clear(name), rc);
  }
  EXPECT_EQ(Ssgl2_sysnotify_failLoginrecord_clear_byAccountIndex(10), 1);
  EXPECT_EQ(Ssgl2_sysnotify_failLoginrecord_clear_byAccountIndex(-1), 1);
  EXPECT_EQ(Ssgl2_sysnotify_failLoginrecord_get("bob", -5, text, &value), 1);  // no step: the empty oldest
}

TEST_F(LoginRecordTest, ADaemonThatDoesNotAnswerGivesAnEmptySetWithinTheBudget) {
  Ssgl2_sysnotify_loginrecord_set("bob", "here", 77, 1);
  stop_daemon();
  char text[41];
  uint32_t time = 0;
  g_cut_long_waits = true;
  EXPECT_EQ(Ssgl2_sysnotify_lastloginrecord_get("bob", text, &time), 1);
  g_cut_long_waits = false;
  EXPECT_EQ(g_long_waits_ms, std::vector<long>{60000});  // one budget of a minute, spent
}

// The exchange as it travels, against bare sockets in place of the daemon: types shifted by
// 104, command 137, ten 220-byte records in one datagram, and replies kept within the set.
TEST(LoginRecordWireTest, RequestsAndRepliesAsTheDaemonSeesThem) {
  SYSCOMMON_REQUIRE_ISOLATION();
  using namespace syscommon::net::testing;
  const Peer daemon(ram("socket/lumen168-socket")), wexe(ram("socket/lumen168-wexe-socket")), replier;
  const std::string reply_to = ram("socket/socket-loginRecord");
  LoginRecordSet set{};
  std::memset(&set, 0x5a, sizeof set);

  for (const auto &[size, confirm, rc] : {std::tuple{220, 0, 1}, std::tuple{221, 1, -1}, std::tuple{0, 1, -1}}) {
    int result = 0;
    std::thread exchange([&] { result = Ssgl2_set_login_record(&set); });
    const Datagram ask = daemon.next();
    EXPECT_EQ(ask.head(), head(ask.seq(), 109, 137, 0, 0, 0, 0));
    replier.send(reply_to, datagram(ask.seq(), 1, 137, 1, 0, 4, word(size)));
    if (rc != -1) {
      const Datagram data = wexe.next();
      EXPECT_EQ(data.head(), head(data.seq(), 111, 137, 10, 0, 0, 220));
      EXPECT_TRUE(data.carries({reinterpret_cast<const uint8_t *>(&set), sizeof set}));
      replier.send(reply_to, datagram(data.seq(), 1, 137, 1, 0, 4, word(confirm)));
    }
    exchange.join();
    EXPECT_EQ(result, rc) << "record size " << size;
    EXPECT_FALSE(wexe.receive(100).has_value()) << "record size " << size;
  }

  // A reply of 18 records is counted, but only the set's 2200 bytes are stored.
  LoginRecordSet got{};
  int received = 0;
  std::thread fetch([&] { received = Ssgl2_get_login_record(&got); });
  const Datagram ask = daemon.next();
  EXPECT_EQ(ask.head(), head(ask.seq(), 104, 137, 0, 0, 0, 0));
  replier.send(reply_to, datagram(ask.seq(), 1, 137, 18, 0, 220, records(18, 220)));
  fetch.join();
  EXPECT_EQ(received, 18);
  EXPECT_EQ(reinterpret_cast<const uint8_t *>(&got)[sizeof got - 1], 10);
}

}  // namespace
