// Field access through descriptors, every type and bit-field storage width, against the
// record bytes; and the SSH service's configuration file and restart.
#include <sys/stat.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "support/test_support.h"
#include "syscommon/maint.h"
#include "syscommon/session.h"
#include "syscommon/shm.h"

namespace {

using namespace syscommon::testing;
using Record = std::array<uint8_t, 48>;

CfgFieldDesc field(uint32_t type, uint32_t size, uint32_t offset, uint32_t position = 0) {
  CfgFieldDesc d{};
  std::memset(&d, 0xEE, sizeof d);  // the words not read here must not matter
  d.type = type, d.size = size, d.offset = offset, d.bit_position = position;
  return d;
}

std::vector<uint8_t> bytes(const Record &r, std::size_t from, std::size_t n) {
  return {r.begin() + static_cast<long>(from), r.begin() + static_cast<long>(from + n)};
}

TEST(Field, TextValuesOfEveryType) {
  const struct Case {
    uint32_t type, size;
    int index;
    const char *value;
    int result;
    std::vector<uint8_t> stored;  // at offset 8 + index * size
    const char *read;
  } cases[] = {
      {1, 1, 0, "300", 300, {44}, "44"},  // cut to the size
      {8, 2, 0, "-2", -2, {0xFE, 0xFF}, "-2"},
      {17, 4, 0, "123456789", 123456789, {0x15, 0xCD, 0x5B, 0x07}, "123456789"},
      {18, 2, 3, "40000", 40000, {0x40, 0x9C}, "-25536"},  // 2-byte values read signed
      {1, 3, 0, "65536", 65536, {0, 0, 1, 0}, "65536"},     // other sizes as 4 bytes
      {2, 4, 0, "abcdef", 0, {'a', 'b', 'c', 0}, "abc"},
      {2, 4, 1, "", 0, {0}, ""},
      {15, 4, 0, "", 0, {0}, "0"},
      {15, 4, 0, "on", 0, {'o', 'n', 0}, "1"},
      {3, 4, 0, "192.168.1.20", 0, {192, 168, 1, 20}, "192.168.1.20"},
      {14, 4, 0, "", 0, {0, 0, 0, 0}, "0.0.0.0"},
      {4, 6, 0, "00:90:E8:0a:0b:ff", 0, {0x00, 0x90, 0xe8, 0x0a, 0x0b, 0xff}, "00:90:e8:0a:0b:ff"},
  };
  for (const Case &c : cases) {
    Record r;
    r.fill(0xAA);
    const CfgFieldDesc d = field(c.type, c.size, 8);
    const std::string what = std::to_string(c.type) + "/" + c.value;
    const std::size_t at = 8 + static_cast<std::size_t>(c.index) * c.size;
    EXPECT_EQ(setconfig(r.data(), c.value, &d, 1, c.index), c.result) << what;
    EXPECT_EQ(bytes(r, at, c.stored.size()), c.stored) << what;
    EXPECT_EQ(r[at + (c.type == 4 ? 6 : c.type == 2 || c.type == 15 ? c.size : c.stored.size())], 0xAA) << what;
    EXPECT_EQ(r[at - 1], 0xAA) << what;
    const char *got = readconfig(r.data(), &d, 1, c.index);
    EXPECT_STREQ(got, c.read) << what;
    EXPECT_EQ(got == reinterpret_cast<char *>(r.data() + at), c.type == 2) << what;
  }
}

TEST(Field, RawValuesAndUnsupportedTypes) {
  Record r{};
  const uint8_t value[6] = {1, 2, 3, 4, 5, 6};
  CfgFieldDesc d = field(17, 2, 4);
  EXPECT_EQ(setconfig(r.data(), value, &d, 0, 1), 0x0201);
  EXPECT_EQ(bytes(r, 6, 3), (std::vector<uint8_t>{1, 2, 0}));
  EXPECT_EQ(std::memcmp(readconfig(r.data(), &d, 0, 1), "\x01\x02", 2), 0);
  EXPECT_EQ(readconfig(r.data(), &d, 0, 1), readconfig_msg);

  d = field(3, 4, 0);
  setconfig(r.data(), value, &d, 0, 0);
  EXPECT_EQ(bytes(r, 0, 4), (std::vector<uint8_t>{1, 2, 3, 4}));
  EXPECT_EQ(std::memcmp(readconfig(r.data(), &d, 0, 0), value, 4), 0);

  d = field(7, 4, 20);
  setconfig(r.data(), value, &d, 1, 0);  // copied in both modes
  EXPECT_EQ(bytes(r, 20, 4), (std::vector<uint8_t>{1, 2, 3, 4}));
  EXPECT_STREQ(readconfig(r.data(), &d, 1, 0), "");

  d = field(9, 4, 20);
  const Record before = r;
  setconfig(r.data(), "7", &d, 1, 0);
  EXPECT_EQ(r, before);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(readconfig(r.data(), &d, 1, 0)), 0x04030201u);
  for (const uint32_t type : {0u, 5u, 19u, 0xFFFFFFFFu}) {
    d = field(type, 4, 20);
    EXPECT_EQ(setconfig(r.data(), "12", &d, 1, 0), 0);
    EXPECT_EQ(r, before) << type;
    EXPECT_STREQ(readconfig(r.data(), &d, 1, 0), "") << type;
  }
}

TEST(Field, BitFieldsInEveryStorageWidth) {
  const struct Case {
    int storage;                 // index argument: 1, 2, anything else
    uint32_t width, position;
    const char *value;
    std::vector<uint8_t> before, after;  // the storage word and the byte after it
    const char *read;
  } cases[] = {
      {1, 3, 5, "5", {0xFF, 0x11}, {0xDF, 0x11}, "5"},
      {1, 3, 5, "2", {0x00, 0x11}, {0x20, 0x11}, "2"},
      {1, 3, 7, "7", {0x00, 0x11}, {0xC0, 0x11}, "3"},  // the top bit falls off the byte
      {2, 4, 7, "9", {0xFF, 0xFF, 0x11}, {0x7F, 0xFE, 0x11}, "9"},
      {4, 1, 32, "1", {0, 0, 0, 0, 0x11}, {0, 0, 0, 0x80, 0x11}, "1"},
      {4, 3, 32, "7", {0, 0, 0, 0, 0x11}, {0, 0, 0, 0x80, 0x11}, "1"},  // bits 32 and 33 fall off
      {3, 32, 1, "-1", {0, 0, 0, 0, 0x11}, {0xFF, 0xFF, 0xFF, 0xFF, 0x11}, "-1"},
      {4, 2, 3, "5", {0, 0, 0, 0, 0x11}, {0x14, 0, 0, 0, 0x11}, "1"},  // not cut: 5 << 2 added
      {4, 3, 0, "5", {0x33, 0, 0, 0, 0x11}, {0x33, 0, 0, 0, 0x11}, "0"},  // no bit 0: unchanged
  };
  for (const Case &c : cases) {
    Record r{};
    std::memcpy(r.data() + 12, c.before.data(), c.before.size());
    const CfgFieldDesc d = field(10, c.width, 12, c.position);
    const std::string what = std::to_string(c.width) + "@" + std::to_string(c.position) + "=" + c.value;
    setconfig(r.data(), c.value, &d, 1, c.storage);
    EXPECT_EQ(bytes(r, 12, c.after.size()), c.after) << what;
    EXPECT_STREQ(readconfig(r.data(), &d, 1, c.storage), c.read) << what;
  }
  Record r{};
  const CfgFieldDesc d = field(10, 4, 0, 5);
  const uint16_t raw = 0x0B;
  EXPECT_EQ(setconfig(r.data(), &raw, &d, 0, 2), 11);
  EXPECT_EQ(bytes(r, 0, 2), (std::vector<uint8_t>{0xB0, 0x00}));
  EXPECT_EQ(std::memcmp(readconfig(r.data(), &d, 0, 2), "\x0b\0\0\0", 4), 0);
}

class Ssh : public ::testing::Test {
 protected:
  const std::string conf_ = sim_path("/etc/sshd_config"), args_ = sim_path("/tmp/sshd.args");
};

TEST_F(Ssh, ConfigurationFile) {
  const std::string common_head = "Protocol 2\nPermitEmptyPasswords yes\n";
  const std::string common_tail =
      "Subsystem\tsftp\t/usr/libexec/sftp-server\nCiphers aes128-ctr,aes192-ctr,aes256-ctr\n"
      "MACs hmac-sha2-256,hmac-sha2-512\nPermitRootLogin yes\n";
  EXPECT_EQ(write_sshd_config(0), 1);
  EXPECT_EQ(read_file(conf_), common_head + common_tail);
  EXPECT_EQ(write_sshd_config(-3), 1);
  EXPECT_EQ(read_file(conf_), common_head + common_tail);
  EXPECT_EQ(write_sshd_config(15), 1);
  EXPECT_EQ(read_file(conf_), common_head + "ClientAliveInterval 900\nClientAliveCountMax 0\n" + common_tail);
}

TEST_F(Ssh, RestartRemovesSshSessions) {
  SYSCOMMON_REQUIRE_ISOLATION();
  shm_init();
  Ssgl2_conmultisession_maxuser_set(5);
  ASSERT_EQ(Ssgl2_conmultisession_session_set(3, "admin", 11), 0);
  ASSERT_EQ(Ssgl2_conmultisession_session_set(1, "admin", 12), 0);
  clear_trace();
  EXPECT_EQ(uiMgmt_setSSH(1, 2222, 5), 0);
  std::vector<std::string> trace = trace_lines();
  ASSERT_EQ(trace.size(), 3u);  // the kill, the start and the start's own line feed
  EXPECT_NE(trace[0].find("grep -i sshd"), std::string::npos);
  EXPECT_EQ(trace[1], sim_path("/sbin/sshd") + " -p 2222");
  EXPECT_EQ(read_file(args_), "-p 2222\n");
  EXPECT_NE(read_file(conf_).find("ClientAliveInterval 300\n"), std::string::npos);
  EXPECT_EQ(Ssgl2_conmultisession_session_disconnect(3, "admin", 11), 0);  // already gone
  EXPECT_EQ(Ssgl2_conmultisession_session_disconnect(1, "admin", 12), 1);

  // Off: stopped only. A configuration that cannot be written starts nothing.
  write_file(args_, "");
  clear_trace();
  EXPECT_EQ(uiMgmt_setSSH(0, 22, 0), 0);
  EXPECT_EQ(trace_lines().size(), 1u);
  unlink(conf_.c_str());
  mkdir(conf_.c_str(), 0755);
  testing::internal::CaptureStdout();
  EXPECT_EQ(uiMgmt_setSSH(1, 22, 0), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "fopen error\n");
  EXPECT_EQ(read_file(args_), "");
}

}  // namespace
