// PIM-SM and DVMRP status exchanges with a daemon played by a child process: answers
// passed through, counts without records, and silence.
#include "syscommon/netstat.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "support/test_support.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Clock = std::chrono::steady_clock;

sockaddr_un address(const std::string &name) {
  sockaddr_un a{AF_UNIX, {}};
  std::strncpy(a.sun_path, syscommon::testing::sim_path("/mnt/ramdisk/" + name).c_str(), sizeof a.sun_path - 1);
  return a;
}

Bytes bytes(std::size_t n, int seed) {
  Bytes b(n);
  for (std::size_t i = 0; i < n; ++i) b[i] = static_cast<uint8_t>(seed + static_cast<int>(i));
  return b;
}
Bytes count_word(int32_t n) { return Bytes(reinterpret_cast<uint8_t *>(&n), reinterpret_cast<uint8_t *>(&n) + 4); }

// A daemon in a child process: one request on `request_name`, `answers` sent back to
// `answer_name`; code() is the request code it received (its exit status).
class Daemon {
 public:
  Daemon(const char *request_name, const char *answer_name, const std::vector<Bytes> &answers) {
    int ready[2];
    EXPECT_EQ(pipe(ready), 0);
    pid_ = fork();
    if (pid_ == 0) {
      const int fd = socket(AF_UNIX, SOCK_DGRAM, 0);
      const sockaddr_un me = address(request_name), peer = address(answer_name);
      unlink(me.sun_path);
      uint8_t code = 0;
      if (bind(fd, reinterpret_cast<const sockaddr *>(&me), sizeof me) != 0 || write(ready[1], "r", 1) != 1 ||
          recv(fd, &code, 1, 0) != 1)
        _exit(255);
      for (const Bytes &a : answers) sendto(fd, a.data(), a.size(), 0, reinterpret_cast<const sockaddr *>(&peer), sizeof peer);
      _exit(code);
    }
    char c = 0;
    EXPECT_EQ(read(ready[0], &c, 1), 1);  // bound before the request goes out
    close(ready[0]);
    close(ready[1]);
  }
  int code() { return syscommon::testing::wait_for(pid_, std::chrono::seconds(5)); }

 private:
  pid_t pid_ = -1;
};

class MrouteTest : public ::testing::Test {
 protected:
  void SetUp() override { SYSCOMMON_REQUIRE_ISOLATION(); }
};

TEST_F(MrouteTest, AnswersPassedThrough) {
  for (const auto &[code, size] : {std::pair{2, 20}, {3, 48}, {4, 28}}) {
    const Bytes records = bytes(3 * static_cast<std::size_t>(size), code);
    Bytes header = bytes(PIM_ROUTE_HEADER_SIZE, 0);
    const uint32_t shown = inet_addr("10.1.2.3");
    std::memcpy(header.data(), &shown, 4);
    Daemon d("UI2PIM", "PIM2UI", code == 4 ? std::vector{count_word(3), header, records} : std::vector{count_word(3), records});
    void *array = nullptr;
    int count = 0;
    Bytes got_header(PIM_ROUTE_HEADER_SIZE);
    testing::internal::CaptureStdout();
    EXPECT_EQ(code == 2 ? getPimSmRp(&array, &count)
              : code == 3 ? getPimSmNeighbor(&array, &count)
                          : getPimSmRouting(&array, &count, got_header.data()),
              0);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), code == 4 ? "showIp = 10.1.2.3\n" : "");
    EXPECT_EQ(d.code(), code);
    ASSERT_EQ(count, 3);
    EXPECT_EQ(Bytes(static_cast<uint8_t *>(array), static_cast<uint8_t *>(array) + records.size()), records);
    if (code == 4) EXPECT_EQ(got_header, header);
    std::free(array);
    // Both sockets closed: the answer socket's name is gone, a new exchange can bind it.
    EXPECT_NE(access(address("PIM2UI").sun_path, F_OK), 0);
  }
  const Bytes bsr = bytes(PIM_BSR_SIZE, 40);
  Daemon p("UI2PIM", "PIM2UI", {bsr});
  Bytes got(PIM_BSR_SIZE);
  EXPECT_EQ(getPimSmBsr(got.data()), 0);
  EXPECT_EQ(p.code(), 1);
  EXPECT_EQ(got, bsr);
  for (const auto &[code, size] : {std::pair{100, 24}, {101, 16}}) {
    const Bytes routes = bytes(5 * static_cast<std::size_t>(size), 9);
    Daemon d("UI2MROUTED", "MROUTED2UI", {routes});
    Bytes buffer(routes.size(), 0xee);
    int count = 4;  // one record fewer than sent: the rest is not taken
    EXPECT_EQ(getDvmrpRouting(buffer.data(), &count, code), 0);
    EXPECT_EQ(d.code(), code);
    EXPECT_EQ(Bytes(buffer.begin(), buffer.end() - size), Bytes(routes.begin(), routes.end() - size));
    EXPECT_EQ(buffer.back(), 0xee);
  }
}

TEST_F(MrouteTest, CountsWithoutRecordsAllocateNothing) {
  for (const int32_t n : {0, -4, 0x7fffffff}) {
    Daemon d("UI2PIM", "PIM2UI", {count_word(n), bytes(48, 0)});
    void *array = nullptr;
    int count = 9;
    const auto start = Clock::now();
    EXPECT_EQ(getPimSmNeighbor(&array, &count), 0);
    EXPECT_LT(Clock::now() - start, std::chrono::seconds(2)) << n;  // ended at the count
    EXPECT_EQ(count, 0) << n;
    EXPECT_EQ(array, nullptr) << n;
    EXPECT_EQ(d.code(), 3);
  }
}

TEST_F(MrouteTest, SilenceEndsTheWaits) {
  // No DVMRP daemon: one wait of 3 seconds, the buffer untouched.
  Bytes buffer(48, 0xee);
  int count = 2;
  auto start = Clock::now();
  EXPECT_EQ(getDvmrpRouting(buffer.data(), &count, 100), 0);
  EXPECT_NEAR(std::chrono::duration<double>(Clock::now() - start).count(), 3.0, 0.5);
  EXPECT_EQ(buffer, Bytes(48, 0xee));

  // A count and then nothing: three silent waits, the array handed over zero-filled.
  Daemon d("UI2PIM", "PIM2UI", {count_word(2)});
  void *array = nullptr;
  start = Clock::now();
  EXPECT_EQ(getPimSmRp(&array, &count), 0);
  EXPECT_NEAR(std::chrono::duration<double>(Clock::now() - start).count(), 9.0, 1.0);
  EXPECT_EQ(d.code(), 2);
  ASSERT_EQ(count, 2);
  EXPECT_EQ(Bytes(static_cast<uint8_t *>(array), static_cast<uint8_t *>(array) + 40), Bytes(40, 0));
  std::free(array);
}

}  // namespace
