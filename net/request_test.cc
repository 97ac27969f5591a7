// Request/reply wrappers against a daemon thread bound on the simulated RAM disk: the
// requests on the wire, the replies matched or dropped, silence, and the older helpers.
// The server's side is exercised across processes in tests/net_cross_process_test.cc.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <thread>
#include <tuple>

#include "net/test_peer.h"
#include "syscommon/net.h"

using namespace syscommon::net::testing;

namespace {

class NetRequestTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    net_seq_counter = 0;
    net_seq_avoid = 1;
    net_ctl_busy = 0;
    ASSERT_EQ(net_OpenSocketToInterface_Send(&send_, "socket/daemon", 0), 1);
    timeval tv{0, 300000};
    ASSERT_EQ(net_OpenSocketToInterface_RecvTO(&recv_, "socket/reply", &tv), 0);
  }
  void TearDown() override {
    finish();
    net_CloseSocketToInterface_Send(&send_);
    ::close(recv_.fd);
  }

  // Runs `script` as the daemon in a thread.
  void serve(std::function<void()> script) { daemon_thread_ = std::thread(std::move(script)); }
  void finish() {
    if (daemon_thread_.joinable()) daemon_thread_.join();
  }
  void reply(const std::vector<uint8_t> &bytes) const { daemon_.send(ram("socket/reply"), bytes); }
  static uint8_t next_seq() { return uint8_t(net_seq_counter % 255 + 1); }

  const Peer daemon_{ram("socket/daemon")};
  std::thread daemon_thread_;
  InterfaceSocket send_{};
  InterfaceSocket recv_{};
};

TEST_F(NetRequestTest, ControlRequestsDropALateReplyOnlyWhereTheyMatch) {
  struct Case {
    const char *name;
    std::function<int(void *)> call;
    uint8_t wire_type;
    bool matches;
    int silent;  // the result when nobody answers
  };
  send_.type_offset = 104;
  const Case cases[] = {
      {"Data", [&](void *b) { return net_Web_CTL_Send_And_Recv_Data(&send_, &recv_, 7, b, 0); }, 104, true, 0},
      {"Datastruct", [&](void *b) { return net_Web_CTL_Send_And_Recv_Datastruct_Info(5, &send_, &recv_, 7, b); },
       109, true, 0},
      {"Info", [&](void *b) { return net_Web_CTL_Send_And_Recv_Info(5, &send_, &recv_, 7, b); }, 109, false, -1},
  };
  net_seq_counter = 254;  // the second request wraps to 1
  const auto old_rec = records(1, 6, 0x90), recs = records(3, 6);
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    const uint8_t seq = next_seq();
    Datagram req;
    serve([&] {
      req = daemon_.next();
      reply(datagram(uint8_t(req.seq() == 1 ? 255 : req.seq() - 1), 1, 7, 1, 0, 6, old_rec));  // a late answer
      reply(datagram(req.seq(), 1, 7, 2, 1, 6, {recs.data(), 12}));
      reply(datagram(req.seq(), 1, 7, 1, 0, 6, {recs.data() + 12, 6}));
    });
    std::vector<uint8_t> buffer(32, 0);
    int got = 0;
    recv_.seq_check_off = 0;  // only a request that switches the global match on enforces it
    const std::string out = stdout_of([&] { got = c.call(buffer.data()); });
    finish();
    EXPECT_EQ(req.head(), head(seq, c.wire_type, 7, 0, 0, 0, 0));
    EXPECT_TRUE(req.carries({}));
    EXPECT_EQ(got, c.matches ? 3 : 1);
    const auto &expected = c.matches ? recs : old_rec;
    EXPECT_TRUE(std::equal(expected.begin(), expected.end(), buffer.begin()));
    EXPECT_EQ(out, c.matches ? "seq error domain_recv->address.sun_path = " + ram("socket/daemon") + "\n" : "");
    EXPECT_EQ(std::tuple(recv_.seq_check_off, net_seq_avoid, net_ctl_busy), std::tuple(c.matches, 1, 0));
    ClearSocket(&recv_);
  }
  uint8_t buffer[8];
  for (const Case &c : cases) EXPECT_EQ(c.call(buffer), c.silent) << c.name;
  EXPECT_EQ(net_ctl_busy, 0);
}

TEST_F(NetRequestTest, TableFetchAsksSizeThenContents) {
  const auto table_recs = records(3, 132, 0x20);
  for (const int32_t size : {3, 0}) {
    SCOPED_TRACE(size);
    const uint8_t seq = next_seq();
    std::vector<Datagram> reqs;
    serve([&] {
      reqs.push_back(daemon_.next());
      reply(datagram(seq, 1, 9, 1, 0, 4, word(size)));
      if (auto contents = daemon_.receive(size != 0 ? 3000 : 200)) {
        reqs.push_back(*contents);
        // An answer carrying the first request's sequence is still taken: no match here.
        reply(datagram(seq, 1, 9, 3, 0, 132, table_recs));
      }
    });
    int sentinel = 0;
    void *table = &sentinel;
    EXPECT_EQ(net_Web_CTL_Send_And_Recv_Table_Info(&send_, &recv_, 9, &table), size);
    finish();
    EXPECT_EQ(net_ctl_busy, 0);
    ASSERT_EQ(reqs.size(), size != 0 ? 2u : 1u);
    EXPECT_EQ(reqs[0].head(), head(seq, 3, 9, 0, 0, 0, 0));
    if (size == 0) {
      EXPECT_EQ(table, &sentinel);
      continue;
    }
    EXPECT_EQ(reqs[1].head(), head(seq + 1, 4, 9, 0, 0, 0, 0));
    EXPECT_TRUE(reqs[1].carries({}));
    ASSERT_NE(table, &sentinel);
    EXPECT_EQ(std::memcmp(table, table_recs.data(), table_recs.size()), 0);
    std::free(table);
  }
}

TEST_F(NetRequestTest, DataRequestIsChunkedByTheCallersCountAndMatchedByTheEndpointsFlag) {
  struct Case {
    int count, per;
    std::vector<std::pair<int, int>> sent;  // count, more
    uint8_t check_off;
  };
  const Case cases[] = {{6, 3, {{3, 1}, {3, 0}}, 0},
                        {7, 3, {{3, 1}, {3, 1}, {1, 0}}, 1},
                        {5, 1, {{1, 1}}, 0},  // one record only, more flag still set
                        {2, 0, {{1, 1}}, 1},
                        {0, 4, {{0, 0}}, 0}};
  for (const Case &c : cases) {
    SCOPED_TRACE(std::to_string(c.count) + "/" + std::to_string(c.per));
    const auto data = records(c.count, 8, 0x40);
    const uint8_t seq = next_seq();
    recv_.seq_check_off = c.check_off;
    std::vector<Datagram> reqs;
    serve([&] {
      for (std::size_t i = 0; i < c.sent.size(); ++i) reqs.push_back(daemon_.next());
      reply(datagram(seq + 1, 1, 3, 1, 0, 4, word(1)));  // not this request's
      reply(datagram(seq, 1, 3, 1, 0, 4, word(0x77)));
    });
    int32_t answer = 0;
    const std::string out = stdout_of([&] {
      EXPECT_EQ(net_Web_SendData_And_Recv_Data(&send_, &recv_, 3, &answer, 999, data.data(), c.count, c.per, 8),
                4108);
    });
    finish();
    // The global match is switched on for the receive: the endpoint's own flag decides.
    EXPECT_EQ(answer, c.check_off == 0 ? 0x77 : 1);
    EXPECT_EQ(out.empty(), c.check_off == 1);
    EXPECT_EQ(std::tuple(recv_.seq_check_off, net_seq_avoid), std::tuple(c.check_off, 1));
    EXPECT_FALSE(daemon_.receive(0));
    std::size_t offset = 0;
    for (std::size_t i = 0; i < reqs.size(); ++i) {
      const auto [count, more] = c.sent[i];
      EXPECT_EQ(reqs[i].head(), head(seq, 2, 3, count, more, 0, 999)) << i;
      EXPECT_TRUE(reqs[i].carries({data.data() + offset, std::size_t(count) * 8})) << i;
      offset += std::size_t(count) * 8;
    }
    ClearSocket(&recv_);
  }
}

TEST_F(NetRequestTest, ConfirmedTransferToTheMainDaemonReachesWexeAndReadsTheWord) {
  const Peer wexe(ram("socket/lumen168-wexe-socket"));
  InterfaceSocket to_main{};
  ASSERT_EQ(net_OpenSocketToInterface_Send(&to_main, "socket/lumen168-socket", 0), 1);
  const auto data = records(50, 100, 1);  // 40 records a datagram
  // Daemon's word (none = silent) -> result.
  for (const auto &[word_sent, result] : {std::pair<int, int>{0, 1}, {5, 4108}, {-1, 4108}}) {
    const int answer = word_sent;
    SCOPED_TRACE(answer);
    const uint8_t seq = next_seq();
    Datagram first, second;
    std::thread agent([&] {
      first = wexe.next();
      second = wexe.next();
      auto reply_words = word(answer), extra = word(0x7777);  // only the first word is taken
      reply_words.insert(reply_words.end(), extra.begin(), extra.end());
      if (answer >= 0) wexe.send(ram("socket/reply"), datagram(seq, 1, 0, 2, 0, 4, reply_words));
    });
    EXPECT_EQ(net_Web_SendData_And_Recv_Confirm(&to_main, &recv_, 33, data.data(), 100, 50, 0), result);
    agent.join();
    EXPECT_EQ(first.head(), head(seq, 7, 33, 40, 1, 0, 100));
    EXPECT_EQ(second.head(), head(seq, 7, 33, 10, 0, 0, 100));
    EXPECT_TRUE(second.carries({data.data() + 4000, 1000}));
  }
  net_CloseSocketToInterface_Send(&to_main);
}

TEST_F(NetRequestTest, BusyFlagHoldsARequestBack) {
  net_ctl_busy = 1;
  std::atomic<int> result{-100};
  std::thread requester([&] {
    uint8_t b[4];
    result = net_Web_CTL_Send_And_Recv_Data(&send_, &recv_, 1, b, 0);
  });
  EXPECT_FALSE(daemon_.receive(100));
  std::atomic_ref<uint8_t>(net_ctl_busy).store(0);
  EXPECT_EQ(daemon_.next().seq(), 1);
  requester.join();
  EXPECT_EQ(result, 0);
}

TEST_F(NetRequestTest, OlderHelpersBindAddressAndGatherTheOlderFraming) {
  const std::string path = syscommon::testing::sim_path("/var/run/old.sock");
  syscommon::testing::write_file(path, "stale");
  int fd = -1, cfd = -1;
  sockaddr_un address{}, to{};
  socklen_t len = 0, to_len = 0;
  ASSERT_EQ(InitSocket(&fd, path.c_str(), &address, &len), 1);    // the stale file is replaced
  ASSERT_EQ(InitConnSocket(&cfd, path.c_str(), &to, &to_len), 1);  // neither removes nor binds
  EXPECT_EQ(std::tuple(std::string(address.sun_path), len, std::string(to.sun_path), to_len),
            std::tuple(path, path.size() + 2, path, path.size() + 2));
  // Byte 0 count, byte 1 more, records from byte 2, in 4096-byte datagrams.
  const auto recs = records(3, 4, 0x30);
  uint8_t first[4096] = {2, 1}, second[4096] = {1, 0};
  std::memcpy(first + 2, recs.data(), 8);
  std::memcpy(second + 2, recs.data() + 8, 4);
  for (const uint8_t *d : {first, second})
    ASSERT_EQ(sendto(cfd, d, 4096, 0, reinterpret_cast<sockaddr *>(&to), to_len), 4096);
  std::vector<uint8_t> buffer(20, 0xee);  // 5 records of 4
  EXPECT_EQ(RecvData(&fd, 0, nullptr, nullptr, buffer.data(), 4, 5), 3);
  EXPECT_TRUE(std::equal(recs.begin(), recs.end(), buffer.begin()));
  EXPECT_TRUE(std::all_of(buffer.begin() + 12, buffer.end(), [](uint8_t b) { return b == 0; }));
  ::close(fd);
  ::close(cfd);
  int bad = -1;
  EXPECT_EQ(RecvData(&bad, 0, nullptr, nullptr, buffer.data(), 4, 5), 0);
}

int silent_rounds = 0;
int count_round() { return ++silent_rounds, 0; }

TEST_F(NetRequestTest, SelectAndRecvWaitsThroughSilence) {
  recv_.timeout_usec = 50000;
  serve([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    reply(datagram(1, 1, 1, 2, 0, 4, records(2, 4, 0x50)));
  });
  std::vector<uint8_t> buffer(16, 0xee);  // 4 records of 4
  int status = 0;
  EXPECT_EQ(stdout_of([&] {
              EXPECT_EQ(Select_And_Recv_From_Socket(&recv_, buffer.data(), 4, 4, count_round, &status), 2);
            }),
            "ret = 2,ret_idx = 2\n");
  EXPECT_GE(silent_rounds, 2);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(buffer[7], 0x51);
  EXPECT_TRUE(std::all_of(buffer.begin() + 8, buffer.end(), [](uint8_t b) { return b == 0; }));
}

}  // namespace
