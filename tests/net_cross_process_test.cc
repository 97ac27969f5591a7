// Two processes over the shared object: a forked daemon answers control requests with
// net_Web_CTL_Recv_And_Send_Data while the parent asks with net_Web_CTL_Send_And_Recv_Data,
// across the wrap of the sequence numbers.
#include <unistd.h>

#include <cstring>
#include <tuple>

#include "support/test_support.h"
#include "syscommon/net.h"

namespace {

constexpr std::size_t kRecordSize = 16;
uint8_t server_buffer[NET_MSG_DATA_SIZE];
InterfaceSocket server_recv{}, server_send{};
int32_t reply_count = 0;
bool stop_serving = false;

// Answers command c with (c % 5) records of 16 bytes, each filled with c and ending in the
// request's sequence. Command 0 or a silent client ends the daemon after this answer.
int32_t *produce(int records_in) {
  const uint8_t command = server_recv.last_command;
  stop_serving = records_in < 0 || command == 0;
  reply_count = command % 5;
  for (std::size_t i = 0; i < std::size_t(reply_count); ++i) {
    std::memset(server_buffer + i * kRecordSize, command, kRecordSize);
    server_buffer[i * kRecordSize + kRecordSize - 1] = server_recv.seq;
  }
  return &reply_count;
}

TEST(NetCrossProcess, RequestsAcrossTheSequenceWrapGetTheirOwnReplies) {
  SYSCOMMON_REQUIRE_ISOLATION();
  InterfaceSocket recv{}, send{};
  timeval budget{3, 0};
  ASSERT_EQ(net_OpenSocketToInterface_RecvTO(&recv, "socket/xproc-client", &budget), 0);
  std::fflush(stdout);
  const pid_t pid = fork();
  ASSERT_GE(pid, 0);
  if (pid == 0) {
    timeval daemon_budget{5, 0};
    if (net_OpenSocketToInterface_RecvTO(&server_recv, "socket/xproc-daemon", &daemon_budget) != 0 ||
        net_OpenSocketToInterface_Send(&server_send, "socket/xproc-client", 0) != 1)
      _exit(2);
    server_send.record_size = uint32_t{kRecordSize};
    while (!stop_serving) net_Web_CTL_Recv_And_Send_Data(&server_send, &server_recv, server_buffer, produce);
    _exit(0);
  }
  ASSERT_EQ(net_OpenSocketToInterface_Send(&send, "socket/xproc-daemon", 0), 1);
  // The daemon binds after the fork; wait for its socket file.
  const std::string daemon_path = syscommon::testing::sim_path("/mnt/ramdisk/socket/xproc-daemon");
  ASSERT_TRUE(syscommon::testing::wait_for_path(daemon_path));

  net_seq_counter = 0;
  for (int n = 1; n <= 300; ++n) {
    const uint8_t command = static_cast<uint8_t>(n % 250 + 1), seq = static_cast<uint8_t>((n - 1) % 255 + 1);
    uint8_t buffer[5 * kRecordSize] = {};
    ASSERT_EQ(net_Web_CTL_Send_And_Recv_Data(&send, &recv, command, buffer, 0), command % 5) << n;
    EXPECT_EQ(std::tuple(recv.seq, recv.last_command, recv.type_offset, recv.record_size),
              std::tuple(seq, command, uint32_t{NET_TYPE_DATA}, uint32_t{kRecordSize}))
        << n;
    for (std::size_t r = 0; r < command % 5u; ++r)
      EXPECT_EQ(std::tuple(buffer[r * kRecordSize], buffer[r * kRecordSize + kRecordSize - 1]),
                std::tuple(command, seq))
          << n;
  }
  uint8_t last[4];
  EXPECT_EQ(net_Web_CTL_Send_And_Recv_Data(&send, &recv, 0, last, 0), 0);
  EXPECT_EQ(syscommon::testing::wait_for(pid, std::chrono::seconds(5)), 0);
  net_CloseSocketToInterface_Send(&send);
  net_CloseSocketToInterface_Recv(&recv);
}

}  // namespace
