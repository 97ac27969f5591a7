// Request/reply wrappers against a daemon thread bound on the simulated RAM disk: the
// requests on the wire, the replies matched or dropped, silence, the server's answer and
// the older helpers.
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <thread>

#include "net/test_peer.h"
#include "support/test_support.h"
#include "syscommon/net.h"

using syscommon::net::testing::Datagram;
using syscommon::net::testing::datagram;
using syscommon::net::testing::Peer;
using syscommon::net::testing::ram;
using syscommon::net::testing::records;
using syscommon::testing::sim_path;

namespace {


std::vector<uint8_t> word(int32_t v) {
  std::vector<uint8_t> b(4);
  std::memcpy(b.data(), &v, 4);
  return b;
}

class NetRequestTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    net_seq_counter = 0;
    net_seq_avoid = 1;
    net_ctl_busy = 0;
    daemon_ = std::make_unique<Peer>(ram("socket/daemon"));
    ASSERT_EQ(net_OpenSocketToInterface_Send(&send_, "socket/daemon", 0), 1);
    timeval tv{0, 300000};
    ASSERT_EQ(net_OpenSocketToInterface_RecvTO(&recv_, "socket/reply", &tv), 0);
  }
  void TearDown() override {
    net_CloseSocketToInterface_Send(&send_);
    if (recv_.fd > 0) ::close(recv_.fd);
    if (daemon_thread_.joinable()) daemon_thread_.join();
  }

  // Runs `script` as the daemon: it sees each request and answers through `reply`.
  void serve(std::function<void()> script) { daemon_thread_ = std::thread(std::move(script)); }
  void finish() {
    if (daemon_thread_.joinable()) daemon_thread_.join();
  }
  Datagram request() {
    auto d = daemon_->receive();
    if (!d) return Datagram{std::vector<uint8_t>(4108, 0xff), {}};
    return *d;
  }
  void reply(const std::vector<uint8_t> &bytes) { daemon_->send(ram("socket/reply"), bytes); }

  std::unique_ptr<Peer> daemon_;
  std::thread daemon_thread_;
  InterfaceSocket send_{};
  InterfaceSocket recv_{};
};

TEST_F(NetRequestTest, ControlRequestTakesTheNextSequenceAndGathersTheMatchingReply) {
  net_seq_counter = 10;
  Datagram req;
  auto recs = records(3, 6);
  serve([&] {
    req = request();
    reply(datagram(10, 1, 137, 1, 0, 6, recs));  // late answer to an older request
    reply(datagram(11, 1, 137, 2, 1, 6, {recs.data(), 12}));
    reply(datagram(11, 1, 137, 1, 0, 6, {recs.data() + 12, 6}));
  });
  std::vector<uint8_t> buffer(32, 0);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(net_Web_CTL_Send_And_Recv_Data(&send_, &recv_, 137, buffer.data(), 0), 3);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "seq error domain_recv->address.sun_path = " + ram("socket/daemon") + "\n");
  finish();
  ASSERT_EQ(req.bytes.size(), 4108u);
  EXPECT_EQ(req.seq(), 11);
  EXPECT_EQ(req.type(), 0);
  EXPECT_EQ(req.command(), 137);
  EXPECT_EQ(req.count(), 0);
  EXPECT_EQ(req.more(), 0);
  EXPECT_EQ(req.record_size(), 0u);
  EXPECT_TRUE(req.zero_from(0));
  EXPECT_TRUE(std::equal(recs.begin(), recs.end(), buffer.begin()));
  EXPECT_EQ(recv_.seq, 11);
  EXPECT_EQ(recv_.seq_check_off, 1);
  EXPECT_EQ(net_seq_avoid, 1);
  EXPECT_EQ(net_ctl_busy, 0);
}

TEST_F(NetRequestTest, LateReplyIsDroppedOnlyByTheMatchingWrappers) {
  using Wrapper = std::function<int(void *)>;
  struct Case {
    const char *name;
    Wrapper call;
    uint8_t wire_type;
    bool matches;
  };
  send_.type_offset = 104;
  const Case cases[] = {
      {"Data", [&](void *b) { return net_Web_CTL_Send_And_Recv_Data(&send_, &recv_, 7, b, 0); }, 104, true},
      {"Datastruct", [&](void *b) { return net_Web_CTL_Send_And_Recv_Datastruct_Info(5, &send_, &recv_, 7, b); },
       109, true},
      {"Info", [&](void *b) { return net_Web_CTL_Send_And_Recv_Info(5, &send_, &recv_, 7, b); }, 109, false},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.name);
    Datagram req;
    const uint8_t old_rec[2] = {0xa1, 0xa2}, new_rec[1] = {0xb1};
    serve([&] {
      req = request();
      reply(datagram(uint8_t(req.seq() - 1), 1, 7, 2, 0, 1, old_rec));
      reply(datagram(req.seq(), 1, 7, 1, 0, 1, new_rec));
    });
    uint8_t buffer[4] = {};
    ::testing::internal::CaptureStdout();
    const int got = c.call(buffer);
    const std::string out = ::testing::internal::GetCapturedStdout();
    finish();
    EXPECT_EQ(req.type(), c.wire_type);
    EXPECT_EQ(got, c.matches ? 1 : 2);
    EXPECT_EQ(buffer[0], c.matches ? 0xb1 : 0xa1);
    EXPECT_EQ(out.find("seq error") != std::string::npos, c.matches);
    ClearSocket(&recv_);
  }
}

TEST_F(NetRequestTest, SilentDaemonLooksLikeAnEmptyAnswerExceptToInfo) {
  uint8_t buffer[8];
  EXPECT_EQ(net_Web_CTL_Send_And_Recv_Data(&send_, &recv_, 1, buffer, 0), 0);
  EXPECT_EQ(net_Web_CTL_Send_And_Recv_Datastruct_Info(5, &send_, &recv_, 1, buffer), 0);
  EXPECT_EQ(net_Web_CTL_Send_And_Recv_Info(5, &send_, &recv_, 1, buffer), -1);
  void *table = &buffer;
  EXPECT_EQ(net_Web_CTL_Send_And_Recv_Table_Info(&send_, &recv_, 1, &table), 0);
  EXPECT_EQ(table, &buffer);
  EXPECT_EQ(net_ctl_busy, 0);
  EXPECT_EQ(net_seq_counter, 4);
}

TEST_F(NetRequestTest, TableFetchAsksSizeThenContents) {
  std::vector<Datagram> reqs;
  auto table_recs = records(3, 132, 0x20);
  serve([&] {
    reqs.push_back(request());
    reply(datagram(reqs[0].seq(), 1, 9, 1, 0, 4, word(3)));
    reqs.push_back(request());
    // An answer carrying the first request's sequence is still taken: no match here.
    reply(datagram(reqs[0].seq(), 1, 9, 3, 0, 132, table_recs));
  });
  void *table = nullptr;
  EXPECT_EQ(net_Web_CTL_Send_And_Recv_Table_Info(&send_, &recv_, 9, &table), 3);
  finish();
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(std::memcmp(table, table_recs.data(), table_recs.size()), 0);
  std::free(table);
  ASSERT_EQ(reqs.size(), 2u);
  EXPECT_EQ(reqs[0].seq(), 1);
  EXPECT_EQ(reqs[0].type(), 3);
  EXPECT_EQ(reqs[0].command(), 9);
  EXPECT_EQ(reqs[1].seq(), 2);
  EXPECT_EQ(reqs[1].type(), 4);
  EXPECT_EQ(reqs[1].command(), 9);
  EXPECT_TRUE(reqs[1].zero_from(0));
  EXPECT_EQ(net_ctl_busy, 0);
}

TEST_F(NetRequestTest, TableSizeOfZeroEndsAfterOneRequest) {
  std::vector<Datagram> reqs;
  serve([&] {
    reqs.push_back(request());
    reply(datagram(reqs[0].seq(), 1, 9, 1, 0, 4, word(0)));
    if (auto extra = daemon_->receive(200)) reqs.push_back(*extra);
  });
  int sentinel = 0;
  void *table = &sentinel;
  EXPECT_EQ(net_Web_CTL_Send_And_Recv_Table_Info(&send_, &recv_, 9, &table), 0);
  finish();
  EXPECT_EQ(table, &sentinel);
  EXPECT_EQ(reqs.size(), 1u);
}

TEST_F(NetRequestTest, DataRequestIsChunkedByTheCallersCountAndEndsEarly) {
  struct Case {
    int count, per;
    std::vector<std::pair<int, int>> sent;  // count, more
  };
  const Case cases[] = {{6, 3, {{3, 1}, {3, 0}}},
                        {7, 3, {{3, 1}, {3, 1}, {1, 0}}},
                        {5, 1, {{1, 1}}},  // one record only, more flag still set
                        {2, 0, {{1, 1}}},
                        {0, 4, {{0, 0}}}};
  for (const Case &c : cases) {
    SCOPED_TRACE(std::to_string(c.count) + "/" + std::to_string(c.per));
    auto data = records(c.count, 8, 0x40);
    std::vector<Datagram> reqs;
    serve([&] {
      for (std::size_t i = 0; i < c.sent.size(); ++i) reqs.push_back(request());
      reply(datagram(reqs[0].seq(), 1, 3, 1, 0, 4, word(0x77)));
    });
    int32_t answer = 0;
    EXPECT_EQ(net_Web_SendData_And_Recv_Data(&send_, &recv_, 3, &answer, 999, data.data(), c.count, c.per, 8),
              4108);
    finish();
    EXPECT_EQ(answer, 0x77);
    EXPECT_FALSE(daemon_->receive(0));
    std::size_t offset = 0;
    for (std::size_t i = 0; i < reqs.size(); ++i) {
      EXPECT_EQ(reqs[i].seq(), net_seq_counter);
      EXPECT_EQ(reqs[i].type(), 2);
      EXPECT_EQ(reqs[i].command(), 3);
      EXPECT_EQ(reqs[i].record_size(), 999u);
      EXPECT_EQ(reqs[i].count(), c.sent[i].first);
      EXPECT_EQ(reqs[i].more(), c.sent[i].second);
      if (c.sent[i].first > 0)
        EXPECT_EQ(std::memcmp(reqs[i].data(), data.data() + offset, c.sent[i].first * 8u), 0);
      offset += c.sent[i].first * 8u;
    }
    EXPECT_EQ(net_seq_avoid, 1);
  }
}

TEST_F(NetRequestTest, DataRequestLeavesTheMatchToTheEndpointsOwnFlag) {
  for (uint8_t check_off : {0, 1}) {
    SCOPED_TRACE(int(check_off));
    recv_.seq_check_off = check_off;
    serve([&] {
      Datagram req = request();
      reply(datagram(uint8_t(req.seq() + 1), 1, 3, 1, 0, 4, word(1)));
      reply(datagram(req.seq(), 1, 3, 1, 0, 4, word(2)));
    });
    int32_t answer = 0;
    uint8_t rec = 0;
    ::testing::internal::CaptureStdout();
    net_Web_SendData_And_Recv_Data(&send_, &recv_, 3, &answer, 1, &rec, 1, 1, 1);
    ::testing::internal::GetCapturedStdout();
    finish();
    EXPECT_EQ(answer, check_off == 0 ? 2 : 1);
    EXPECT_EQ(recv_.seq_check_off, check_off);
    ClearSocket(&recv_);
  }
}

TEST_F(NetRequestTest, ConfirmedTransferToTheMainDaemonReachesWexeAndReadsTheWord) {
  Peer wexe(ram("socket/lumen168-wexe-socket"));
  InterfaceSocket to_main{};
  ASSERT_EQ(net_OpenSocketToInterface_Send(&to_main, "socket/lumen168-socket", 0), 1);
  struct Case {
    const char *name;
    bool answers;
    int32_t word;
    int result;
  };
  for (const Case c : {Case{"zero", true, 0, 1}, Case{"nonzero", true, 5, 4108}, Case{"silent", false, 0, 4108}}) {
    SCOPED_TRACE(c.name);
    auto data = records(50, 100, 1);  // 40 records a datagram
    std::vector<Datagram> reqs;
    std::thread agent([&] {
      for (int i = 0; i < 2; ++i)
        if (auto d = wexe.receive()) reqs.push_back(*d);
      if (c.answers) wexe.send(ram("socket/reply"), datagram(reqs[0].seq(), 1, 0, 1, 0, 4, word(c.word)));
    });
    EXPECT_EQ(net_Web_SendData_And_Recv_Confirm(&to_main, &recv_, 33, data.data(), 100, 50, 0), c.result);
    agent.join();
    ASSERT_EQ(reqs.size(), 2u);
    EXPECT_EQ(reqs[0].type(), 7);
    EXPECT_EQ(reqs[0].command(), 33);
    EXPECT_EQ(reqs[0].record_size(), 100u);
    EXPECT_EQ(reqs[0].count(), 40);
    EXPECT_EQ(reqs[1].count(), 10);
    EXPECT_EQ(reqs[1].more(), 0);
    EXPECT_EQ(reqs[1].data()[0], 41);
  }
  net_CloseSocketToInterface_Send(&to_main);
}

int32_t reply_count = 0;
int producer_saw = -100;
uint8_t server_buffer[4096];
int32_t *produce(int records_in) {
  producer_saw = records_in;
  std::memset(server_buffer, 0x66, 3 * 16);
  reply_count = 3;
  return &reply_count;
}

TEST_F(NetRequestTest, ServerAnswersWithTheRequestsSequenceAndCommand) {
  InterfaceSocket server_recv{};
  timeval tv{2, 0};
  ASSERT_EQ(net_OpenSocketToInterface_RecvTO(&server_recv, "socket/server", &tv), 0);
  InterfaceSocket server_send{};
  ASSERT_EQ(net_OpenSocketToInterface_Send(&server_send, "socket/client", 0), 1);
  server_send.record_size = 16;
  Peer client(ram("socket/client"));
  auto req_recs = records(2, 4, 0x10);
  ASSERT_TRUE(client.send(ram("socket/server"), datagram(77, 0, 9, 2, 0, 4, req_recs)));
  server_recv.seq = 55;
  EXPECT_EQ(net_Web_CTL_Recv_And_Send_Data(&server_send, &server_recv, server_buffer, produce), 0);
  EXPECT_EQ(producer_saw, 2);
  auto d = client.receive();
  ASSERT_TRUE(d);
  EXPECT_EQ(d->seq(), 77);
  EXPECT_EQ(d->type(), 1);
  EXPECT_EQ(d->command(), 9);
  EXPECT_EQ(d->count(), 3);
  EXPECT_EQ(d->more(), 0);
  EXPECT_EQ(d->record_size(), 16u);
  EXPECT_EQ(d->data()[47], 0x66);
  EXPECT_TRUE(d->zero_from(48));
  net_CloseSocketToInterface_Send(&server_send);
  ::close(server_recv.fd);
}

TEST_F(NetRequestTest, BusyFlagHoldsARequestBack) {
  net_ctl_busy = 1;
  std::atomic<int> result{-100};
  std::thread requester([&] {
    uint8_t b[4];
    result = net_Web_CTL_Send_And_Recv_Data(&send_, &recv_, 1, b, 0);
  });
  EXPECT_FALSE(daemon_->receive(100));
  std::atomic_ref<uint8_t>(net_ctl_busy).store(0);
  auto d = daemon_->receive();
  requester.join();
  ASSERT_TRUE(d);
  EXPECT_EQ(d->seq(), 1);
  EXPECT_EQ(result, 0);
}

TEST_F(NetRequestTest, RecvDataGathersTheOlderFraming) {
  const std::string path = sim_path("/var/run/old.sock");
  int fd = -1;
  sockaddr_un address{};
  socklen_t len = 0;
  ASSERT_EQ(InitSocket(&fd, path.c_str(), &address, &len), 1);
  auto recs = records(3, 4, 0x30);
  std::vector<uint8_t> first(4096, 0), second(4096, 0);
  first[0] = 2, first[1] = 1;
  std::memcpy(first.data() + 2, recs.data(), 8);
  second[0] = 1, second[1] = 0;
  std::memcpy(second.data() + 2, recs.data() + 8, 4);
  ASSERT_TRUE(daemon_->send(path, first));
  ASSERT_TRUE(daemon_->send(path, second));
  std::vector<uint8_t> buffer(5 * 4, 0xee);
  sockaddr_un from{};
  socklen_t from_len = sizeof from;
  EXPECT_EQ(RecvData(&fd, 0, &from, &from_len, buffer.data(), 4, 5), 3);
  EXPECT_TRUE(std::equal(recs.begin(), recs.end(), buffer.begin()));
  EXPECT_TRUE(std::all_of(buffer.begin() + 12, buffer.end(), [](uint8_t b) { return b == 0; }));
  EXPECT_EQ(std::string(from.sun_path), ram("socket/daemon"));
  ::close(fd);
  int bad = -1;
  EXPECT_EQ(RecvData(&bad, 0, nullptr, nullptr, buffer.data(), 4, 5), 0);
}

int silent_rounds = 0;
int count_round() { return ++silent_rounds, 0; }

TEST_F(NetRequestTest, SelectAndRecvWaitsThroughSilence) {
  recv_.timeout_usec = 50000;
  silent_rounds = 0;
  serve([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(250));
    reply(datagram(1, 1, 1, 2, 0, 4, records(2, 4, 0x50)));
  });
  std::vector<uint8_t> buffer(4 * 4, 0xee);
  int status = 0;
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(Select_And_Recv_From_Socket(&recv_, buffer.data(), 4, 4, count_round, &status), 2);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "ret = 2,ret_idx = 2\n");
  finish();
  EXPECT_GE(silent_rounds, 2);
  EXPECT_EQ(status, 1);
  EXPECT_EQ(buffer[7], 0x51);
  EXPECT_TRUE(std::all_of(buffer.begin() + 8, buffer.end(), [](uint8_t b) { return b == 0; }));
}

}  // namespace
