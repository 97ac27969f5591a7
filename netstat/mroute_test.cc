// PIM-SM and DVMRP status exchanges with a daemon played by a child process: answers
// passed through, counts of 0, counts no allocation can hold, and silence.
#include "syscommon/netstat.h"

#include <arpa/inet.h>
#include <dirent.h>
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
using syscommon::testing::sim_path;
using Clock = std::chrono::steady_clock;

sockaddr_un address(const std::string &name) {
  sockaddr_un a{};
  a.sun_family = AF_UNIX;
  std::strncpy(a.sun_path, sim_path("/mnt/ramdisk/" + name).c_str(), sizeof a.sun_path - 1);
  return a;
}

Bytes word(int32_t v) {
  Bytes b(4);
  std::memcpy(b.data(), &v, 4);
  return b;
}

Bytes pattern(std::size_t n, uint8_t seed) {
  Bytes b(n);
  for (std::size_t i = 0; i < n; ++i) b[i] = static_cast<uint8_t>(seed + i);
  return b;
}

int open_descriptors() {
  int n = 0;
  DIR *d = opendir("/proc/self/fd");
  while (readdir(d) != nullptr) ++n;
  closedir(d);
  return n;
}

// A daemon in a child process: takes one request on `request_name`, sends `answers` to
// `answer_name` and exits with the request code as its status.
class Daemon {
 public:
  Daemon(const char *request_name, const char *answer_name, std::vector<Bytes> answers) {
    int ready[2];
    if (pipe(ready) != 0) return;
    pid_ = fork();
    if (pid_ == 0) {
      close(ready[0]);
      const int fd = socket(AF_UNIX, SOCK_DGRAM, 0);
      const sockaddr_un me = address(request_name), peer = address(answer_name);
      unlink(me.sun_path);
      if (bind(fd, reinterpret_cast<const sockaddr *>(&me), sizeof me) != 0) _exit(200);
      if (write(ready[1], "r", 1) != 1) _exit(201);
      uint8_t code = 0;
      if (recv(fd, &code, 1, 0) != 1) _exit(202);
      for (const Bytes &a : answers)
        sendto(fd, a.data(), a.size(), 0, reinterpret_cast<const sockaddr *>(&peer), sizeof peer);
      unlink(me.sun_path);
      _exit(code);
    }
    close(ready[1]);
    char c = 0;
    EXPECT_EQ(read(ready[0], &c, 1), 1);  // bound before the request goes out
    close(ready[0]);
  }
  // The request code the daemon received.
  int code() { return syscommon::testing::wait_for(pid_, std::chrono::seconds(5)); }

 private:
  pid_t pid_ = -1;
};

class MrouteTest : public ::testing::Test {
 protected:
  void SetUp() override { SYSCOMMON_REQUIRE_ISOLATION(); }
};

TEST_F(MrouteTest, CountedAnswersPassedThroughIntoAllocatedArrays) {
  struct Case {
    int code;
    std::size_t size;
  };
  for (const Case c : {Case{2, PIM_RP_RECORD_SIZE}, Case{3, PIM_NEIGHBOR_RECORD_SIZE}, Case{4, PIM_ROUTE_RECORD_SIZE}}) {
    SCOPED_TRACE(c.code);
    const Bytes records = pattern(3 * c.size, static_cast<uint8_t>(c.code));
    Bytes header = pattern(PIM_ROUTE_HEADER_SIZE, 0);
    const uint32_t shown = inet_addr("10.1.2.3");
    std::memcpy(header.data(), &shown, 4);
    std::vector<Bytes> answers{word(3)};
    if (c.code == 4) answers.push_back(header);
    answers.push_back(records);
    Daemon d("UI2PIM", "PIM2UI", answers);
    const int fds = open_descriptors();
    void *array = nullptr;
    int count = 0;
    Bytes got_header(PIM_ROUTE_HEADER_SIZE);
    testing::internal::CaptureStdout();
    const int rc = c.code == 2   ? getPimSmRp(&array, &count)
                   : c.code == 3 ? getPimSmNeighbor(&array, &count)
                                 : getPimSmRouting(&array, &count, got_header.data());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.code == 4 ? "showIp = 10.1.2.3\n" : "");
    EXPECT_EQ(rc, 0);
    EXPECT_EQ(d.code(), c.code);
    ASSERT_EQ(count, 3);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(Bytes(static_cast<uint8_t *>(array), static_cast<uint8_t *>(array) + records.size()), records);
    if (c.code == 4) EXPECT_EQ(got_header, header);
    std::free(array);
    EXPECT_EQ(open_descriptors(), fds);  // both sockets closed
    EXPECT_NE(access(sim_path("/mnt/ramdisk/PIM2UI").c_str(), F_OK), 0);
  }
}

TEST_F(MrouteTest, SingleDatagramAnswers) {
  const Bytes bsr = pattern(PIM_BSR_SIZE, 40);
  Daemon p("UI2PIM", "PIM2UI", {bsr});
  Bytes got(PIM_BSR_SIZE);
  EXPECT_EQ(getPimSmBsr(got.data()), 0);
  EXPECT_EQ(p.code(), 1);
  EXPECT_EQ(got, bsr);
  for (const auto &[code, size] : {std::pair{100, 24}, {101, 16}}) {
    const Bytes routes = pattern(5 * static_cast<std::size_t>(size), 9);
    Daemon d("UI2MROUTED", "MROUTED2UI", {routes});
    Bytes buffer(routes.size() + 8, 0xee);
    int count = 4;  // one record fewer than sent: the rest is not taken
    EXPECT_EQ(getDvmrpRouting(buffer.data(), &count, code), 0);
    EXPECT_EQ(d.code(), code);
    EXPECT_EQ(Bytes(buffer.begin(), buffer.begin() + 4 * size), Bytes(routes.begin(), routes.begin() + 4 * size));
    EXPECT_EQ(buffer[static_cast<std::size_t>(4 * size)], 0xee);
  }
}

TEST_F(MrouteTest, CountsWithoutRecordsAllocateNothing) {
  for (const int32_t n : {0, -4, 0x7fffffff}) {
    Daemon d("UI2PIM", "PIM2UI", {word(n), pattern(48, 0)});
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
  auto took = Clock::now() - start;
  EXPECT_GE(took, std::chrono::milliseconds(2900));
  EXPECT_LT(took, std::chrono::milliseconds(4500));
  EXPECT_EQ(buffer, Bytes(48, 0xee));
  EXPECT_EQ(count, 2);

  // A count and then nothing: three silent waits, the array handed over zero-filled.
  Daemon d("UI2PIM", "PIM2UI", {word(2)});
  void *array = nullptr;
  count = 0;
  start = Clock::now();
  EXPECT_EQ(getPimSmRp(&array, &count), 0);
  took = Clock::now() - start;
  EXPECT_GE(took, std::chrono::milliseconds(8900));
  EXPECT_LT(took, std::chrono::milliseconds(11000));
  EXPECT_EQ(d.code(), 2);
  ASSERT_EQ(count, 2);
  EXPECT_EQ(Bytes(static_cast<uint8_t *>(array), static_cast<uint8_t *>(array) + 40), Bytes(40, 0));
  std::free(array);
}

}  // namespace
