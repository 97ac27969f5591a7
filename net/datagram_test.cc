// Endpoints, single datagrams, transfers and draining, against real peers bound on the
// simulated RAM disk. Sequence matching is exercised through the request wrappers.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <thread>
#include <tuple>

#include "net/test_peer.h"
#include "platform/local_socket.h"
#include "syscommon/net.h"

using namespace syscommon::net::testing;
using syscommon::testing::read_file;
using syscommon::testing::sim_path;

namespace {

std::string path_of(const InterfaceSocket &ep) { return ep.address.sun_path; }
bool exists(const std::string &p) {
  struct stat st{};
  return ::stat(p.c_str(), &st) == 0;
}

class NetDatagramTest : public ::testing::Test {
 protected:
  void SetUp() override { SYSCOMMON_REQUIRE_ISOLATION(); }
  // A receive endpoint on socket/me with a short budget.
  static InterfaceSocket receiver(long usec = 300000) {
    InterfaceSocket ep{};
    timeval tv{0, usec};
    EXPECT_EQ(net_OpenSocketToInterface_RecvTO(&ep, "socket/me", &tv), 0);
    return ep;
  }
  const std::string me_ = ram("socket/me");
  const Peer daemon_{ram("socket/daemon")};
};

TEST_F(NetDatagramTest, OpenSetsTheFieldsAndCloseRemovesTheFileNamedInAddress) {
  InterfaceSocket out{};
  ASSERT_EQ(net_OpenSocketToInterface_Send(&out, "socket/me", 104), 1);
  EXPECT_EQ(std::tuple(path_of(out), out.address.sun_family, out.addr_len, out.type_offset, out.timeout_sec,
                       out.timeout_usec),
            std::tuple(me_, AF_UNIX, me_.size() + 2, 104u, 10, 0));
  sockaddr_un self{};
  socklen_t len = sizeof self;
  EXPECT_TRUE(getsockname(out.fd, reinterpret_cast<sockaddr *>(&self), &len) == 0 && len == sizeof(sa_family_t));
  net_CloseSocketToInterface_Send(&out);

  // The plain form binds with the whole address, the budget form with the path's length.
  // An unbound sender leaves our address, which closing then removes; a bound sender's
  // address replaces ours, so closing removes its file and leaves ours.
  for (const bool with_budget : {true, false}) {
    SCOPED_TRACE(with_budget);
    syscommon::testing::write_file(me_, "stale");
    InterfaceSocket ep{};
    ep.seq = 9;
    timeval tv{2, 500};
    ASSERT_EQ(with_budget ? net_OpenSocketToInterface_RecvTO(&ep, "socket/me", &tv)
                          : net_OpenSocketToInterface_Recv(&ep, "socket/me"),
              0);
    EXPECT_EQ(std::tuple(ep.addr_len, ep.seq, ep.seq_check_off, ep.timeout_sec, ep.timeout_usec),
              with_budget ? std::tuple(me_.size() + 2, 0, 1, 2, 500) : std::tuple(size_t{110}, 0, 1, 10, 0));
    const Peer anonymous;
    ASSERT_TRUE((with_budget ? anonymous : daemon_).send(me_, datagram(1, 1, 1, 0, 0, 0)));
    EXPECT_EQ(net_RecvFromInterface1(&ep, nullptr, nullptr), 0);
    EXPECT_EQ(path_of(ep), with_budget ? me_ : ram("socket/daemon"));
    EXPECT_EQ(net_CloseSocketToInterface_Recv(&ep), 0);
    EXPECT_FALSE(exists(path_of(ep)));
    EXPECT_EQ(exists(me_), !with_budget);
  }

  InterfaceSocket unbound{};
  EXPECT_EQ(stdout_of([&] { EXPECT_LT(net_OpenSocketToInterface_Recv(&unbound, "no-such-dir/me"), 0); }),
            "ERROR: cannot bind port\n");
  EXPECT_EQ(std::tuple(unbound.seq_check_off, unbound.timeout_sec), std::tuple(1, 10));
  net_CloseSocketToInterface_Send(&unbound);
}

TEST_F(NetDatagramTest, SocketCreationFailuresGiveMinusOneWithTheirLines) {
  const std::string out = sim_path("/tmp/socket-fail.out");
  std::fflush(stdout);
  const pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    ::dup2(::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644), 1);
    rlimit none{0, 0};
    ::setrlimit(RLIMIT_NOFILE, &none);  // no new descriptor can be had
    InterfaceSocket ep{};
    timeval tv{1, 0};
    const bool ok = net_OpenSocketToInterface_Send(&ep, "socket/x", 0) == -1 && ep.fd < 0 &&
                    net_OpenSocketToInterface_Recv(&ep, "socket/x") == -1 &&
                    net_OpenSocketToInterface_RecvTO(&ep, "socket/x", &tv) == -1 &&
                    send_agent("socket/x", 0, 0, nullptr, 0, 0, 0) == -1;
    std::fflush(stdout);
    _exit(ok ? 0 : 1);
  }
  ASSERT_EQ(syscommon::testing::wait_for(pid, std::chrono::seconds(5)), 0);
  EXPECT_EQ(read_file(out),
            "socket fail\nnet_OpenSocketToInterface_Recv() 593 open socket error\n"
            "net_OpenSocketToInterface_RecvTO() 647 open socket error\nsocket fail\nsend_agent error\n");
}

TEST_F(NetDatagramTest, SendAddsOffsetAndTagAndRedirectsDataForTheMainDaemon) {
  const Peer main_daemon(ram("socket/lumen168-socket")), wexe(ram("socket/lumen168-wexe-socket"));
  struct Case {
    const char *to;
    uint8_t type;
    uint32_t offset;
    const Peer &reached;
  };
  const Case cases[] = {
      {"socket/daemon", 0, 104, daemon_},            {"socket/daemon", 100, 200, daemon_},  // modulo 256
      {"socket/daemon", 2, 256, daemon_},            {"socket/lumen168-socket", 0, 0, main_daemon},
      {"socket/lumen168-socket", 1, 0, wexe},        {"socket/lumen168-socket", 2, 0, main_daemon},
      {"socket/lumen168-socket", 3, 0, main_daemon}, {"socket/lumen168-socket", 4, 0, main_daemon},
      {"socket/lumen168-socket", 7, 0, wexe},        {"socket/lumen168-socket", 1, 104, wexe},
      {"socket/lumen168-socket", 0, 1, main_daemon}, {"socket/lumen168-socket", 6, 1, main_daemon},
      {"socket/lumen168-socketX", 7, 0, wexe},  // a prefix match
  };
  const auto payload = records(1, 20, 0xab);
  for (const Case &c : cases) {
    SCOPED_TRACE(std::string(c.to) + " type " + std::to_string(c.type) + "+" + std::to_string(c.offset));
    InterfaceSocket ep{};
    ASSERT_EQ(net_OpenSocketToInterface_Send(&ep, c.to, c.offset), 1);
    ep.tag = 0x5a;
    ep.addr_len = 7;
    auto m = std::make_unique<InterfaceMessage>();
    *m = {3, c.type, 137, 2, 1, {}, 0, 0x01020304, {}};
    std::memcpy(m->data, payload.data(), payload.size());
    ASSERT_EQ(net_SendToInterface(&ep, m.get()), 4108);
    EXPECT_EQ(std::tuple(m->type, m->tag), std::tuple(c.type, 0x5a));  // only the tag stays
    const Datagram d = c.reached.next(1000);
    EXPECT_EQ(d.head(), head(3, uint8_t(c.type + c.offset), 137, 2, 1, 0x5a, 0x01020304));
    EXPECT_TRUE(d.carries(payload));
    for (const Peer *other : {&daemon_, &main_daemon, &wexe}) EXPECT_FALSE(other->receive(0));
    // Only the direct path recomputes the endpoint's length.
    EXPECT_EQ(ep.addr_len, &c.reached == &wexe ? 7u : path_of(ep).size() + 2);
    net_CloseSocketToInterface_Send(&ep);
  }

  InterfaceSocket nobody{};
  ASSERT_EQ(net_OpenSocketToInterface_Send(&nobody, "socket/nobody", 0), 1);
  InterfaceMessage m{};
  EXPECT_EQ(stdout_of([&] { EXPECT_LT(net_SendToInterface(&nobody, &m), 0); }),
            "net_SendToInterface() ERROR: cannot send data to " + ram("socket/nobody") + ".\n");
  net_CloseSocketToInterface_Send(&nobody);
}

TEST_F(NetDatagramTest, TransferIsGatheredWithinOneBudgetAndTheLastHeaderRecorded) {
  InterfaceSocket ep = receiver();
  const auto all = records(5, 8);
  for (const auto &d : {datagram(42, 105, 137, 2, 1, 8, {all.data(), 16}), datagram(42, 105, 137, 0, 1, 8),
                        datagram(43, 106, 138, 3, 0, 8, {all.data() + 16, 24}), datagram(7, 1, 20, 1, 1, 4),
                        datagram(8, 1, 21, 1, 0, 4)})
    ASSERT_TRUE(daemon_.send(me_, d));
  std::vector<uint8_t> buffer(64, 0xee);
  EXPECT_EQ(net_RecvFromInterface1(&ep, buffer.data(), nullptr), 5);
  EXPECT_TRUE(std::equal(all.begin(), all.end(), buffer.begin()));
  EXPECT_EQ(buffer[40], 0xee);  // nothing past the records
  EXPECT_EQ(std::tuple(ep.seq, ep.type_offset, ep.last_command, ep.record_size, net_last_seq),
            std::tuple(43, 106u, 138, 8u, 43));
  // Without a buffer only the first datagram of a transfer is consumed.
  EXPECT_EQ(net_RecvFromInterface1(&ep, nullptr, nullptr), 0);
  EXPECT_EQ(ep.last_command, 20);
  EXPECT_EQ(net_RecvFromInterface1(&ep, buffer.data(), nullptr), 1);
  EXPECT_EQ(ep.last_command, 21);

  // One budget covers the whole transfer: each gap fits it, both together do not.
  std::thread slow([&] {
    for (const uint8_t more : {1, 0}) {
      std::this_thread::sleep_for(std::chrono::milliseconds(200));
      daemon_.send(me_, datagram(1, 1, 1, 1, more, 4));
    }
  });
  EXPECT_EQ(net_RecvFromInterface1(&ep, buffer.data(), nullptr), -1);
  slow.join();
  ::close(ep.fd);
}

int timeouts_seen = 0;
int answer_one() { return ++timeouts_seen, 1; }
int answer_zero() { return ++timeouts_seen, 0; }

TEST_F(NetDatagramTest, DrainedQueueSpentBudgetAndFailuresGiveTheirCodes) {
  InterfaceSocket ep = receiver(50000);
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(daemon_.send(me_, datagram(1, 1, 1, 0, 0, 0)));
  ep.addr_len = 0;
  EXPECT_EQ(ClearSocket(&ep), 0);
  EXPECT_EQ(ep.addr_len, ram("socket/daemon").size() + 3);  // the kernel's length of the sender
  for (const auto &[fn, result] : {std::pair<net_timeout_fn, int>{nullptr, -1}, {answer_one, -3}, {answer_zero, -4}}) {
    timeouts_seen = 0;
    EXPECT_EQ(net_RecvFromInterface1(&ep, nullptr, fn), result);
    EXPECT_EQ(timeouts_seen, fn != nullptr ? 1 : 0);
  }
  ::close(ep.fd);
  ep.fd = -1;
  EXPECT_EQ(ClearSocket(&ep), 0);
  EXPECT_EQ(net_RecvFromInterface1(&ep, nullptr, nullptr), -2);
  // A readable descriptor that is not a socket: the wait succeeds, the receive fails.
  int p[2];
  ASSERT_EQ(pipe(p), 0);
  ASSERT_EQ(write(p[1], "x", 1), 1);
  ep.fd = p[0];
  EXPECT_EQ(stdout_of([&] { EXPECT_EQ(net_RecvFromInterface1(&ep, nullptr, nullptr), 0); }),
            "ERROR: cannot receive data.\n");
  close(p[0]);
  close(p[1]);
}

TEST_F(NetDatagramTest, BudgetWithASecondOrMoreOfMicrosecondsWaitsAsSelectWould) {
  InterfaceSocket ep = receiver(1500000);
  ASSERT_TRUE(daemon_.send(me_, datagram(1, 1, 1, 1, 0, 4)));
  std::array<uint8_t, 8> buffer{};
  EXPECT_EQ(net_RecvFromInterface1(&ep, buffer.data(), nullptr), 1);
  ::close(ep.fd);

  // What is left of a budget comes back normalised; {-1, 1 050 000} is 50 ms.
  int p[2];
  ASSERT_EQ(pipe(p), 0);
  ASSERT_EQ(write(p[1], "x", 1), 1);
  timeval budget{1, 2500000};
  EXPECT_EQ(syscommon::wait_readable(p[0], &budget), 1);
  EXPECT_EQ(budget.tv_sec, 3);
  EXPECT_GT(budget.tv_usec, 400000);
  char c = 0;
  ASSERT_EQ(read(p[0], &c, 1), 1);
  budget = {-1, 1050000};
  EXPECT_EQ(syscommon::wait_readable(p[0], &budget), 0);
  EXPECT_EQ(std::pair(budget.tv_sec, budget.tv_usec), std::pair(time_t{0}, suseconds_t{0}));
  budget = {1, -1000001};
  EXPECT_EQ(syscommon::wait_readable(p[0], &budget), -1);
  EXPECT_EQ(errno, EINVAL);
  close(p[0]);
  close(p[1]);
}

TEST_F(NetDatagramTest, DataTransferIsCutIntoDatagrams) {
  struct Case {
    uint32_t record_size;
    int count;
    std::vector<int> counts;  // records per datagram sent
  };
  const Case cases[] = {
      {100, 80, {40, 40}}, {100, 81, {40, 40, 1}}, {100, 0, {0}},     {100, 1, {1}},
      {0, 3, {1, 1, 1}},   {4096, 2, {1, 1}},      {5000, 2, {1, 1}}, {3, 1400, {1365, 35}},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(std::to_string(c.record_size) + " x " + std::to_string(c.count));
    InterfaceSocket ep{};
    ASSERT_EQ(net_OpenSocketToInterface_Send(&ep, "socket/daemon", 3), 1);
    ep.seq = 99;
    ep.tag = 2;
    const auto recs = records(c.count, c.record_size, 10);
    EXPECT_EQ(net_Web_SendData(&ep, 55, recs.data(), c.record_size, c.count, 12345), 4108);
    std::size_t offset = 0;
    for (std::size_t i = 0; i < c.counts.size(); ++i) {
      const Datagram d = daemon_.next(1000);
      EXPECT_EQ(d.head(), head(99, 1 + 3, 55, uint8_t(c.counts[i]), i + 1 < c.counts.size(), 2, c.record_size));
      const std::size_t bytes = std::min<std::size_t>(std::size_t(c.counts[i]) * c.record_size, 4096);
      EXPECT_TRUE(d.carries({recs.data() + offset, bytes})) << i;
      offset += std::size_t(c.counts[i]) * c.record_size;
    }
    EXPECT_FALSE(daemon_.receive(0));
    net_CloseSocketToInterface_Send(&ep);
  }

  // The one-shot sender, as the security notification uses it.
  EXPECT_STREQ(sock_path("other"), "socket/other");
  char *path = sock_path("NET_SECURITY_NOTIFICATION_SENDLOG.SOCKET");
  EXPECT_STREQ(path, "socket/NET_SECURITY_NOTIFICATION_SENDLOG.SOCKET");
  const Peer agent(ram(path));
  const auto rec = records(1, 72, 0x31);
  EXPECT_EQ(send_agent(path, 0, 0, rec.data(), 72, 1, 1), 4108);
  const Datagram d = agent.next();
  EXPECT_EQ(d.head(), head(0, 1, 0, 1, 0, 0, 72));
  EXPECT_TRUE(d.carries(rec));
}

}  // namespace
