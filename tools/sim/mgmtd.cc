// Stand-in main management daemon: the login-record set kept between requests.
#include "tools/sim/mgmtd.h"

#include <poll.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/host.h"
#include "session/login_record.h"
#include "syscommon/net.h"
#include "syscommon/session.h"

namespace syscommon::sim {
namespace {

constexpr uint8_t kRead = LOGIN_RECORD_TYPE_OFFSET + NET_TYPE_CTL_REQUEST;
constexpr uint8_t kRecordSize = LOGIN_RECORD_TYPE_OFFSET + 5;
constexpr uint8_t kWrite = LOGIN_RECORD_TYPE_OFFSET + NET_TYPE_DATA_CONFIRM;

volatile std::sig_atomic_t g_stop = 0;
LoginRecordSet g_set;
InterfaceSocket g_reply;
const InterfaceSocket *g_request = nullptr;  // endpoint of the request being answered
int32_t g_count = 0;
// Requests and replies pass through here. The wrapper's receive trusts the sender's count:
// 256 full datagrams fit, more than any peer of this stand-in sends.
alignas(8) uint8_t g_buffer[256 * NET_MSG_DATA_SIZE];

void on_signal(int /*signal*/) { g_stop = 1; }

void answer_word(int32_t word) {
  std::memcpy(g_buffer, &word, sizeof word);
  g_reply.record_size = sizeof word;
  g_count = 1;
}

// Fills the reply for the request just received (its type byte is in the endpoint's
// type_offset, its record size in record_size).
int32_t *produce(int records) {
  const auto type = static_cast<uint8_t>(g_request->type_offset);
  g_count = 0;
  g_reply.record_size = LOGIN_RECORD_SIZE;
  if (type == kRead) {
    std::memcpy(g_buffer, &g_set, sizeof g_set);
    g_count = LOGIN_RECORD_COUNT;
    std::printf("mgmtd: login records read\n");
  } else if (type == kRecordSize) {
    answer_word(LOGIN_RECORD_SIZE);
    std::printf("mgmtd: record size asked\n");
  } else if (type == kWrite && records > 0) {
    const std::size_t bytes = static_cast<std::size_t>(records) * g_request->record_size;
    std::memcpy(&g_set, g_buffer, bytes < sizeof g_set ? bytes : sizeof g_set);
    answer_word(1);
    std::printf("mgmtd: %d login records stored (%u bytes each)\n", records, g_request->record_size);
  } else {
    std::printf("mgmtd: request type %u ignored\n", type);
  }
  std::fflush(stdout);
  return &g_count;
}

}  // namespace

int run_mgmtd(int seconds) {
  struct sigaction sa {};
  sa.sa_handler = on_signal;
  sigaction(SIGTERM, &sa, nullptr);
  sigaction(SIGINT, &sa, nullptr);
  for (LoginRecord &r : g_set.record) {
    r = LoginRecord{};
    session::reset_ring(r);
  }

  const char *names[2] = {"socket/lumen168-socket", "socket/lumen168-wexe-socket"};
  InterfaceSocket endpoints[2] = {};
  int bound = 0;
  for (int i = 0; i < 2; ++i) bound += net_OpenSocketToInterface_Recv(&endpoints[i], names[i]) == 0 ? 1 : 0;
  net_OpenSocketToInterface_Send(&g_reply, "socket/socket-loginRecord", 0);
  const bool ready = bound == 2 && g_reply.fd >= 0;
  if (ready) {
    std::printf("mgmtd: serving login records\n");
    std::fflush(stdout);
  }

  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds);
  while (ready && g_stop == 0 && (seconds <= 0 || std::chrono::steady_clock::now() < end)) {
    pollfd fds[2] = {{endpoints[0].fd, POLLIN, 0}, {endpoints[1].fd, POLLIN, 0}};
    if (poll(fds, 2, 100) <= 0) continue;  // a signal or the 100 ms tick: look at the flag
    for (int i = 0; i < 2; ++i) {
      if ((fds[i].revents & POLLIN) == 0) continue;
      g_request = &endpoints[i];
      net_Web_CTL_Recv_And_Send_Data(&g_reply, &endpoints[i], g_buffer, produce);
    }
  }

  net_CloseSocketToInterface_Send(&g_reply);
  for (int i = 0; i < 2; ++i) {
    // Closed as a send endpoint: after a receive the address names the last sender.
    net_CloseSocketToInterface_Send(&endpoints[i]);
    std::remove(rooted(std::string("/mnt/ramdisk/") + names[i]).c_str());
  }
  return ready ? 0 : 1;
}

}  // namespace syscommon::sim
