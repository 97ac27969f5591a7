// Endpoints, single datagrams, transfers and draining, against real peers bound on the
// simulated RAM disk.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <thread>

#include "net/internal.h"
#include "net/test_peer.h"
#include "support/test_support.h"
#include "syscommon/net.h"

using syscommon::net::testing::datagram;
using syscommon::net::testing::Peer;
using syscommon::net::testing::ram;
using syscommon::net::testing::records;
using syscommon::testing::sim_path;

namespace {

std::string path_of(const InterfaceSocket &ep) { return ep.address.sun_path; }
bool exists(const std::string &p) {
  struct stat st{};
  return ::stat(p.c_str(), &st) == 0;
}
bool is_socket(const std::string &p) {
  struct stat st{};
  return ::stat(p.c_str(), &st) == 0 && S_ISSOCK(st.st_mode);
}

class NetDatagramTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    net_seq_counter = 0;
    net_seq_avoid = 1;
    net_ctl_busy = 0;
  }
  // A receive endpoint on socket/NAME with a short budget.
  InterfaceSocket receiver(const char *name, long usec = 300000) {
    InterfaceSocket ep{};
    timeval tv{0, usec};
    EXPECT_EQ(net_OpenSocketToInterface_RecvTO(&ep, name, &tv), 0);
    return ep;
  }
};

TEST_F(NetDatagramTest, RequestSequenceRunsOneTo255ThenStartsAgainAtOne) {
  for (int i = 1; i <= 600; ++i) ASSERT_EQ(syscommon::net::next_request_seq(), (i - 1) % 255 + 1) << i;
  EXPECT_EQ(net_seq_counter, 600 % 255);
  EXPECT_EQ(set_seq_num(77), 77);
  EXPECT_EQ(net_last_seq, 77);
  net_seq_avoid = 0;
  set_seq_avoid();
  EXPECT_EQ(net_seq_avoid, 1);
}

TEST_F(NetDatagramTest, SendEndpointNamesRootedDestinationAndStaysUnbound) {
  InterfaceSocket ep{};
  ASSERT_EQ(net_OpenSocketToInterface_Send(&ep, "socket/lumen168-socket", 104), 1);
  EXPECT_EQ(path_of(ep), ram("socket/lumen168-socket"));
  EXPECT_EQ(ep.address.sun_family, AF_UNIX);
  EXPECT_EQ(ep.addr_len, path_of(ep).size() + 2);
  EXPECT_EQ(ep.type_offset, 104u);
  EXPECT_EQ(ep.timeout_sec, 10);
  EXPECT_EQ(ep.timeout_usec, 0);
  sockaddr_un self{};
  socklen_t len = sizeof self;
  ASSERT_EQ(getsockname(ep.fd, reinterpret_cast<sockaddr *>(&self), &len), 0);
  EXPECT_EQ(len, sizeof(sa_family_t));  // not bound
  EXPECT_EQ(net_CloseSocketToInterface_Send(&ep), 0);
  EXPECT_LT(ep.fd, 0);
  EXPECT_EQ(net_CloseSocketToInterface_Send(&ep), 0);
}

TEST_F(NetDatagramTest, ReceiveEndpointsReplaceOldFileAndDifferInBindLength) {
  struct Case {
    bool with_budget;
    bool full_length;
  };
  for (const Case c : {Case{false, true}, Case{true, false}}) {
    SCOPED_TRACE(c.with_budget);
    syscommon::testing::write_file(ram("socket/me"), "stale");
    InterfaceSocket ep{};
    ep.seq = 9;
    timeval tv{2, 500};
    int rc = c.with_budget ? net_OpenSocketToInterface_RecvTO(&ep, "socket/me", &tv)
                           : net_OpenSocketToInterface_Recv(&ep, "socket/me");
    ASSERT_EQ(rc, 0);
    EXPECT_TRUE(is_socket(ram("socket/me")));
    EXPECT_EQ(ep.addr_len, c.full_length ? 110u : ram("socket/me").size() + 2);
    EXPECT_EQ(ep.seq, 0);
    EXPECT_EQ(ep.seq_check_off, 1);
    EXPECT_EQ(ep.timeout_sec, c.with_budget ? 2 : 10);
    EXPECT_EQ(ep.timeout_usec, c.with_budget ? 500 : 0);
    Peer sender;
    EXPECT_TRUE(sender.send(ram("socket/me"), datagram(1, 1, 1, 0, 0, 0)));
    EXPECT_EQ(net_RecvFromInterface1(&ep, nullptr, nullptr), 0);
    net_CloseSocketToInterface_Recv(&ep);
    EXPECT_FALSE(exists(ram("socket/me")));
  }
}

TEST_F(NetDatagramTest, FailedBindIsReportedAndFieldsAreStillSet) {
  InterfaceSocket ep{};
  ep.seq_check_off = 0;
  ::testing::internal::CaptureStdout();
  int rc = net_OpenSocketToInterface_Recv(&ep, "no-such-dir/me");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "ERROR: cannot bind port\n");
  EXPECT_LT(rc, 0);
  EXPECT_GE(ep.fd, 0);
  EXPECT_EQ(ep.seq_check_off, 1);
  EXPECT_EQ(ep.timeout_sec, 10);
  net_CloseSocketToInterface_Send(&ep);
}

TEST_F(NetDatagramTest, SocketCreationFailuresGiveMinusOneWithTheirLines) {
  const std::string out = sim_path("/tmp/socket-fail.out");
  std::fflush(stdout);
  pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    int fd = ::open(out.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    ::dup2(fd, 1);
    ::close(fd);
    rlimit none{0, 0};
    ::setrlimit(RLIMIT_NOFILE, &none);  // no new descriptor can be had
    InterfaceSocket ep{};
    timeval tv{1, 0};
    bool ok = net_OpenSocketToInterface_Send(&ep, "socket/x", 0) == -1 && ep.fd < 0;
    ok = ok && net_OpenSocketToInterface_Recv(&ep, "socket/x") == -1;
    ok = ok && net_OpenSocketToInterface_RecvTO(&ep, "socket/x", &tv) == -1;
    ok = ok && send_agent("socket/x", 0, 0, nullptr, 0, 0, 0) == -1;
    std::fflush(stdout);
    _exit(ok ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(waitpid(pid, &status, 0), pid);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  EXPECT_EQ(syscommon::testing::read_file(out),
            "socket fail\n"
            "net_OpenSocketToInterface_Recv() 593 open socket error\n"
            "net_OpenSocketToInterface_RecvTO() 647 open socket error\n"
            "socket fail\nsend_agent error\n");
}

TEST_F(NetDatagramTest, SendAddsOffsetModulo256AndTagThenRestoresTheType) {
  Peer daemon(ram("socket/daemon"));
  ASSERT_TRUE(daemon.ok());
  struct Case {
    uint8_t type;
    uint32_t offset;
    uint8_t wire;
  };
  for (const Case c : {Case{0, 104, 104}, Case{5, 0, 5}, Case{100, 200, 44}, Case{2, 256, 2}}) {
    SCOPED_TRACE(int(c.type));
    InterfaceSocket ep{};
    ASSERT_EQ(net_OpenSocketToInterface_Send(&ep, "socket/daemon", c.offset), 1);
    ep.tag = 0x5a;
    ep.addr_len = 999;
    auto m = std::make_unique<InterfaceMessage>();
    m->seq = 3;
    m->type = c.type;
    m->command = 137;
    m->count = 2;
    m->more = 1;
    m->record_size = 0x01020304;
    std::memset(m->data, 0xab, 20);
    ASSERT_EQ(net_SendToInterface(&ep, m.get()), 4108);
    EXPECT_EQ(ep.addr_len, ram("socket/daemon").size() + 2);
    EXPECT_EQ(m->type, c.type);
    EXPECT_EQ(m->tag, 0x5a);
    auto d = daemon.receive();
    ASSERT_TRUE(d);
    ASSERT_EQ(d->bytes.size(), 4108u);
    EXPECT_EQ(d->seq(), 3);
    EXPECT_EQ(d->type(), c.wire);
    EXPECT_EQ(d->command(), 137);
    EXPECT_EQ(d->count(), 2);
    EXPECT_EQ(d->more(), 1);
    EXPECT_EQ(d->bytes[5] | d->bytes[6], 0);
    EXPECT_EQ(d->tag(), 0x5a);
    EXPECT_EQ(d->record_size(), 0x01020304u);
    EXPECT_EQ(d->data()[19], 0xab);
    EXPECT_TRUE(d->zero_from(20));
    net_CloseSocketToInterface_Send(&ep);
  }
}

TEST_F(NetDatagramTest, DataForTheMainDaemonGoesToItsWexeCompanion) {
  Peer main_daemon(ram("socket/lumen168-socket"));
  Peer wexe(ram("socket/lumen168-wexe-socket"));
  struct Case {
    const char *to;
    uint8_t type;
    uint32_t offset;
    bool redirected;
  };
  const Case cases[] = {
      {"socket/lumen168-socket", 0, 0, false},  {"socket/lumen168-socket", 1, 0, true},
      {"socket/lumen168-socket", 2, 0, false},  {"socket/lumen168-socket", 3, 0, false},
      {"socket/lumen168-socket", 4, 0, false},  {"socket/lumen168-socket", 7, 0, true},
      {"socket/lumen168-socket", 1, 104, true}, {"socket/lumen168-socket", 0, 1, false},
      {"socket/lumen168-socket", 6, 1, false},  {"socket/lumen168-socketX", 7, 0, true},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(std::string(c.to) + " type " + std::to_string(c.type) + "+" + std::to_string(c.offset));
    InterfaceSocket ep{};
    ASSERT_EQ(net_OpenSocketToInterface_Send(&ep, c.to, c.offset), 1);
    ep.addr_len = 7;
    InterfaceMessage m{};
    m.type = c.type;
    ASSERT_EQ(net_SendToInterface(&ep, &m), 4108);
    const Peer &got = c.redirected ? wexe : main_daemon;
    const Peer &not_got = c.redirected ? main_daemon : wexe;
    auto d = got.receive(1000);
    ASSERT_TRUE(d);
    EXPECT_EQ(d->type(), uint8_t(c.type + c.offset));
    EXPECT_FALSE(not_got.receive(0));
    // Only the direct path recomputes the endpoint's length.
    EXPECT_EQ(ep.addr_len, c.redirected ? 7u : path_of(ep).size() + 2);
    net_CloseSocketToInterface_Send(&ep);
  }
}

TEST_F(NetDatagramTest, FailedSendIsReportedWithTheDestination) {
  InterfaceSocket ep{};
  ASSERT_EQ(net_OpenSocketToInterface_Send(&ep, "socket/nobody", 0), 1);
  InterfaceMessage m{};
  ::testing::internal::CaptureStdout();
  EXPECT_LT(net_SendToInterface(&ep, &m), 0);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "net_SendToInterface() ERROR: cannot send data to " + ram("socket/nobody") + ".\n");
  net_CloseSocketToInterface_Send(&ep);
}

TEST_F(NetDatagramTest, TransferIsGatheredAcrossDatagramsAndHeaderFieldsRecorded) {
  InterfaceSocket ep = receiver("socket/me");
  Peer daemon(ram("socket/daemon"));
  auto all = records(5, 8);
  ASSERT_TRUE(daemon.send(ram("socket/me"), datagram(42, 105, 137, 2, 1, 8, {all.data(), 16})));
  ASSERT_TRUE(daemon.send(ram("socket/me"), datagram(42, 105, 137, 0, 1, 8)));
  ASSERT_TRUE(daemon.send(ram("socket/me"), datagram(43, 106, 138, 3, 0, 8, {all.data() + 16, 24})));
  std::vector<uint8_t> buffer(64, 0xee);
  EXPECT_EQ(net_RecvFromInterface1(&ep, buffer.data(), nullptr), 5);
  EXPECT_TRUE(std::equal(all.begin(), all.end(), buffer.begin()));
  EXPECT_EQ(buffer[40], 0xee);  // nothing past the records
  EXPECT_EQ(ep.seq, 43);
  EXPECT_EQ(ep.type_offset, 106u);
  EXPECT_EQ(ep.last_command, 138);
  EXPECT_EQ(ep.record_size, 8u);
  EXPECT_EQ(net_last_seq, 43);
  EXPECT_EQ(path_of(ep), ram("socket/daemon"));  // the sender's address replaced ours
  net_CloseSocketToInterface_Recv(&ep);
}

TEST_F(NetDatagramTest, NullBufferConsumesOnlyTheFirstDatagram) {
  InterfaceSocket ep = receiver("socket/me");
  Peer daemon(ram("socket/daemon"));
  ASSERT_TRUE(daemon.send(ram("socket/me"), datagram(7, 1, 20, 1, 1, 4)));
  ASSERT_TRUE(daemon.send(ram("socket/me"), datagram(8, 1, 21, 1, 0, 4)));
  EXPECT_EQ(net_RecvFromInterface1(&ep, nullptr, nullptr), 0);
  EXPECT_EQ(ep.last_command, 20);
  uint32_t word = 0;
  EXPECT_EQ(net_RecvFromInterface1(&ep, &word, nullptr), 1);
  EXPECT_EQ(ep.last_command, 21);
  net_CloseSocketToInterface_Recv(&ep);
}

int timeouts_seen = 0;
int answer_one() { return ++timeouts_seen, 1; }
int answer_zero() { return ++timeouts_seen, 0; }

TEST_F(NetDatagramTest, SpentBudgetGivesItsCode) {
  struct Case {
    net_timeout_fn fn;
    int result;
  };
  for (const Case c : {Case{nullptr, -1}, Case{answer_one, -3}, Case{answer_zero, -4}}) {
    InterfaceSocket ep = receiver("socket/me", 50000);
    timeouts_seen = 0;
    EXPECT_EQ(net_RecvFromInterface1(&ep, nullptr, c.fn), c.result);
    EXPECT_EQ(timeouts_seen, c.fn != nullptr ? 1 : 0);
    net_CloseSocketToInterface_Recv(&ep);
  }
}

TEST_F(NetDatagramTest, OneBudgetCoversTheWholeTransfer) {
  InterfaceSocket ep = receiver("socket/me", 300000);
  Peer daemon(ram("socket/daemon"));
  std::thread slow([&] {
    // Each gap fits the budget; both together do not.
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    daemon.send(ram("socket/me"), datagram(1, 1, 1, 1, 1, 4));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    daemon.send(ram("socket/me"), datagram(1, 1, 1, 1, 0, 4));
  });
  uint32_t buffer[2] = {};
  EXPECT_EQ(net_RecvFromInterface1(&ep, buffer, nullptr), -1);
  slow.join();
  net_CloseSocketToInterface_Recv(&ep);
}

TEST_F(NetDatagramTest, SequenceIsEnforcedOnlyWhenBothFlagsAreClear) {
  struct Case {
    uint8_t avoid, check_off;
    bool dropped;
  };
  for (const Case c : {Case{0, 0, true}, Case{1, 0, false}, Case{0, 1, false}}) {
    SCOPED_TRACE(int(c.avoid) * 10 + c.check_off);
    InterfaceSocket ep = receiver("socket/me");
    Peer daemon(ram("socket/daemon"));
    ep.seq = 5;
    ep.seq_check_off = c.check_off;
    net_seq_avoid = c.avoid;
    uint8_t old_rec = 0x44, new_rec = 0x55;
    ASSERT_TRUE(daemon.send(ram("socket/me"), datagram(4, 1, 1, 1, 0, 1, {&old_rec, 1})));
    ASSERT_TRUE(daemon.send(ram("socket/me"), datagram(5, 1, 1, 1, 0, 1, {&new_rec, 1})));
    uint8_t got = 0;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(net_RecvFromInterface1(&ep, &got, nullptr), 1);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              c.dropped ? "seq error domain_recv->address.sun_path = " + ram("socket/daemon") + "\n" : "");
    EXPECT_EQ(got, c.dropped ? new_rec : old_rec);
    net_seq_avoid = 1;
    net_CloseSocketToInterface_Recv(&ep);
  }
}

TEST_F(NetDatagramTest, WaitAndReceiveFailures) {
  InterfaceSocket ep{};
  ep.fd = -1;
  ep.timeout_sec = 1;
  EXPECT_EQ(net_RecvFromInterface1(&ep, nullptr, nullptr), -2);
  // A readable descriptor that is not a socket: the wait succeeds, the receive fails.
  int p[2];
  ASSERT_EQ(pipe(p), 0);
  ASSERT_EQ(write(p[1], "x", 1), 1);
  ep.fd = p[0];
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(net_RecvFromInterface1(&ep, nullptr, nullptr), 0);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "ERROR: cannot receive data.\n");
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
      {100, 80, {40, 40}},    {100, 81, {40, 40, 1}}, {100, 0, {0}},      {100, 1, {1}},
      {0, 3, {1, 1, 1}},      {4096, 2, {1, 1}},      {5000, 2, {1, 1}},  {3, 1400, {1365, 35}},
  };
  Peer daemon(ram("socket/daemon"));
  for (const Case &c : cases) {
    SCOPED_TRACE(std::to_string(c.record_size) + " x " + std::to_string(c.count));
    InterfaceSocket ep{};
    ASSERT_EQ(net_OpenSocketToInterface_Send(&ep, "socket/daemon", 3), 1);
    ep.seq = 99;
    ep.tag = 2;
    const std::size_t rs = c.record_size == 0 ? 1 : c.record_size;
    auto recs = records(c.count, rs, 10);
    EXPECT_EQ(net_Web_SendData(&ep, 55, recs.data(), c.record_size, c.count, 12345), 4108);
    std::size_t offset = 0;
    for (std::size_t i = 0; i < c.counts.size(); ++i) {
      auto d = daemon.receive(1000);
      ASSERT_TRUE(d) << i;
      ASSERT_EQ(d->bytes.size(), 4108u);
      EXPECT_EQ(d->seq(), 99);
      EXPECT_EQ(d->type(), 1 + 3);
      EXPECT_EQ(d->command(), 55);
      EXPECT_EQ(d->tag(), 2);
      EXPECT_EQ(d->record_size(), c.record_size);
      EXPECT_EQ(d->count(), uint8_t(c.counts[i]));
      EXPECT_EQ(d->more(), i + 1 < c.counts.size() ? 1 : 0);
      const std::size_t bytes = std::min<std::size_t>(std::size_t(c.counts[i]) * c.record_size, 4096);
      if (bytes != 0) EXPECT_EQ(std::memcmp(d->data(), recs.data() + offset, bytes), 0);
      EXPECT_TRUE(d->zero_from(bytes));
      offset += std::size_t(c.counts[i]) * c.record_size;
    }
    EXPECT_FALSE(daemon.receive(0));
    net_CloseSocketToInterface_Send(&ep);
  }
}

TEST_F(NetDatagramTest, SendAgentHandsOneRecordToTheNamedSocket) {
  char *first = sock_path("other");
  char *path = sock_path("NET_SECURITY_NOTIFICATION_SENDLOG.SOCKET");
  EXPECT_EQ(first, path);
  EXPECT_STREQ(path, "socket/NET_SECURITY_NOTIFICATION_SENDLOG.SOCKET");
  Peer agent(ram(path));
  auto rec = records(1, 72, 0x31);
  EXPECT_EQ(send_agent(path, 0, 0, rec.data(), 72, 1, 1), 4108);
  auto d = agent.receive();
  ASSERT_TRUE(d);
  EXPECT_EQ(d->type(), 1);
  EXPECT_EQ(d->count(), 1);
  EXPECT_EQ(d->more(), 0);
  EXPECT_EQ(d->record_size(), 72u);
  EXPECT_EQ(d->data()[71], 0x31);
  EXPECT_TRUE(d->zero_from(72));
}

TEST_F(NetDatagramTest, ClearSocketDiscardsWhatIsQueued) {
  InterfaceSocket ep = receiver("socket/me", 50000);
  Peer daemon(ram("socket/daemon"));
  for (int i = 0; i < 3; ++i) ASSERT_TRUE(daemon.send(ram("socket/me"), datagram(1, 1, 1, 0, 0, 0)));
  ep.addr_len = 0;
  EXPECT_EQ(ClearSocket(&ep), 0);
  EXPECT_EQ(ep.addr_len, ram("socket/daemon").size() + 3);  // the kernel's length of the sender
  EXPECT_EQ(net_RecvFromInterface1(&ep, nullptr, nullptr), -1);
  InterfaceSocket closed{};
  closed.fd = -1;
  EXPECT_EQ(ClearSocket(&closed), 0);
  net_CloseSocketToInterface_Recv(&ep);
}

TEST_F(NetDatagramTest, ClosingAReceiveEndpointRemovesTheFileNamedInItsAddress) {
  {  // a bound sender's address replaced ours: its file goes, ours stays
    InterfaceSocket ep = receiver("socket/me");
    Peer daemon(ram("socket/daemon"));
    ASSERT_TRUE(daemon.send(ram("socket/me"), datagram(1, 1, 1, 0, 0, 0)));
    ASSERT_EQ(net_RecvFromInterface1(&ep, nullptr, nullptr), 0);
    net_CloseSocketToInterface_Recv(&ep);
    EXPECT_FALSE(exists(ram("socket/daemon")));
    EXPECT_TRUE(exists(ram("socket/me")));
  }
  {  // an unbound sender leaves our own address in place
    InterfaceSocket ep = receiver("socket/me");
    Peer anonymous;
    ASSERT_TRUE(anonymous.send(ram("socket/me"), datagram(1, 1, 1, 0, 0, 0)));
    ASSERT_EQ(net_RecvFromInterface1(&ep, nullptr, nullptr), 0);
    EXPECT_EQ(path_of(ep), ram("socket/me"));
    net_CloseSocketToInterface_Recv(&ep);
    EXPECT_FALSE(exists(ram("socket/me")));
  }
}

TEST_F(NetDatagramTest, InitSocketBindsThePathAsGivenAndInitConnSocketOnlyAddresses) {
  const std::string path = sim_path("/var/run/legacy.sock");
  syscommon::testing::write_file(path, "stale");
  int fd = -1;
  sockaddr_un address{};
  socklen_t len = 0;
  ASSERT_EQ(InitSocket(&fd, path.c_str(), &address, &len), 1);
  EXPECT_TRUE(is_socket(path));
  EXPECT_EQ(len, path.size() + 2);
  EXPECT_EQ(std::string(address.sun_path), path);

  const std::string dest = sim_path("/var/run/dest");
  syscommon::testing::write_file(dest, "kept");
  int cfd = -1;
  sockaddr_un caddr{};
  socklen_t clen = 0;
  ASSERT_EQ(InitConnSocket(&cfd, dest.c_str(), &caddr, &clen), 1);
  EXPECT_FALSE(is_socket(dest));
  EXPECT_EQ(clen, dest.size() + 2);
  EXPECT_EQ(std::string(caddr.sun_path), dest);
  // The connecting socket reaches the bound one.
  sockaddr_un to = Peer::address(path);
  EXPECT_EQ(sendto(cfd, "hi", 2, 0, reinterpret_cast<sockaddr *>(&to), len), 2);
  char got[4] = {};
  EXPECT_EQ(recv(fd, got, sizeof got, 0), 2);
  close(fd);
  close(cfd);
}

}  // namespace
