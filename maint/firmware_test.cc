// Firmware images built here (4 MiB kernel + filesystem) checked and written to the
// simulated partitions, which are compared byte for byte and read back.
#include <arpa/inet.h>
#include <sched.h>
#include <sys/mount.h>

#include <chrono>
#include <cstdio>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "support/test_support.h"
#include "syscommon/maint.h"

namespace {

using namespace syscommon::testing;
using Bytes = std::vector<uint8_t>;

constexpr uint32_t kImageId = 0x4B563930;
constexpr std::size_t kFsSize = std::size_t{256} * 1024;

Bytes random_bytes(std::size_t n, unsigned seed) {
  std::mt19937 gen(seed);
  Bytes b(n);
  for (auto &x : b) x = static_cast<uint8_t>(gen());
  return b;
}

// Independent reference: big-endian words added one by one, the last group read whole.
uint32_t reference_sum(const uint8_t *p, std::size_t length) {
  uint32_t s = 0;
  for (std::size_t i = 0; i < length; i += 4)
    s += uint32_t{p[i]} << 24 | uint32_t{p[i + 1]} << 16 | uint32_t{p[i + 2]} << 8 | p[i + 3];
  return s;
}

void put_be(Bytes &b, std::size_t off, uint32_t v) {
  v = htonl(v);
  std::memcpy(b.data() + off, &v, 4);
}

// A firmware-only image: header, 4 MiB kernel, filesystem; checksum over both sections.
Bytes make_image(uint32_t version = 0x05010203, std::size_t fs = kFsSize) {
  Bytes img = random_bytes(32 + FW_KERNEL_SIZE + fs, 7);
  for (std::size_t w = 0; w < 8; ++w) put_be(img, 4 * w, 0);
  put_be(img, 0, FW_KERNEL_SIZE);
  put_be(img, 4, static_cast<uint32_t>(fs));
  put_be(img, 12, kImageId);
  put_be(img, 16, reference_sum(img.data() + 32, FW_KERNEL_SIZE + fs));
  put_be(img, 20, version);
  put_be(img, 24, 0x1A0B1709);
  return img;
}

Bytes partition(int n) {
  std::string s = read_file(sim_path("/dev/mtd" + std::to_string(n)));
  return Bytes(s.begin(), s.end());
}

bool all_ff(const Bytes &b, std::size_t from, std::size_t to) {
  for (std::size_t i = from; i < to; ++i)
    if (b[i] != 0xFF) return false;
  return true;
}

class Firmware : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();  // writes the root's partitions and runs commands
    reset_flash();
    sched_getparam(0, &param_);
    policy_ = sched_getscheduler(0);
    clear_trace();
  }
  void TearDown() override { sched_setscheduler(0, policy_, &param_); }  // undo priority 90
  static void set_hw_version(const char *text) { write_file(sim_path("/proc/tarn/hw_version"), text); }

  int policy_ = SCHED_OTHER;
  sched_param param_{};
};

TEST_F(Firmware, StreamedSumAgreesWithInMemorySum) {
  Bytes data = random_bytes(1200, 3);
  std::string path = sim_path("/tmp/sum");
  write_file(path, std::string(data.begin(), data.end()));
  for (std::size_t length : {0u, 1u, 3u, 4u, 6u, 255u, 256u, 257u, 510u, 512u, 1024u, 1199u}) {
    SCOPED_TRACE(length);
    uint32_t mem = 1, streamed = 2;
    EXPECT_EQ(file_check_sum(data.data(), static_cast<int>(length), &mem), 0);
    EXPECT_EQ(mem, reference_sum(data.data(), length));
    FILE *f = std::fopen(path.c_str(), "r");  // bounded over a longer file
    file_check_sum_tmp(f, static_cast<uint32_t>(length), &streamed);
    EXPECT_EQ(std::ftell(f), static_cast<long>(std::min<std::size_t>((length + 255) / 256 * 256, data.size())));  // whole chunks consumed
    std::fclose(f);
    EXPECT_EQ(streamed, mem);
    // To the end of a file of exactly `length` bytes: a partial last group is completed
    // from the previous 256-byte chunk (zeros in the first).
    write_file(path + "2", std::string(data.begin(), data.begin() + static_cast<long>(length)));
    Bytes padded(data.begin(), data.begin() + static_cast<long>(length));
    for (std::size_t j = 0; j < 4; ++j) padded.push_back(length >= 256 ? data[length - 256 + j] : 0);
    f = std::fopen((path + "2").c_str(), "r");
    file_check_sum_tmp(f, 0xFFFFFFFF, &streamed);
    std::fclose(f);
    EXPECT_EQ(streamed, reference_sum(padded.data(), length));
  }
  uint32_t sum = 5;
  file_check_sum(data.data(), -1, &sum);
  EXPECT_EQ(sum, 0u);
}

TEST_F(Firmware, CheckCodes) {
  Bytes good = make_image();
  set_hw_version("1\n");  // version 2: needs 5.0 or later
  testing::internal::CaptureStdout();
  EXPECT_EQ(Ssys_firmwareCheck(good.data(), kImageId, 0), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "FW version 05.01.02\n");
  EXPECT_EQ(Ssys_firmwareCheck(good.data(), kImageId + 1, 0), -1);
  Bytes tampered = good;
  tampered[32 + FW_KERNEL_SIZE + 100] ^= 1;
  EXPECT_EQ(Ssys_firmwareCheck(tampered.data(), kImageId, 0), -3);
  // Refusals decided on the header alone: only 32 bytes exist (an over-read would show
  // under the address sanitizer).
  auto header_only = [&](std::size_t word, uint32_t value, uint32_t id = kImageId) {
    Bytes h(good.begin(), good.begin() + 32);
    put_be(h, 4 * word, value);
    return Ssys_firmwareCheck(h.data(), id, 0);
  };
  EXPECT_EQ(header_only(0, FW_KERNEL_SIZE + 1), -2);
  EXPECT_EQ(header_only(1, 6), -2);
  EXPECT_EQ(header_only(1, 0xFFFFFFFC), -3);             // huge sizes: nothing summed
  EXPECT_EQ(header_only(5, 0x04FFFFFF), -6);             // too old for version 2 ...
  EXPECT_EQ(header_only(5, 0x04FFFFFF, kImageId + 1), -6);  // ... tested before the id
  set_hw_version("0\n");
  Bytes old = make_image(0x04000000);
  EXPECT_EQ(Ssys_firmwareCheck(old.data(), kImageId, 0), 0);
  EXPECT_EQ(Ssys_isFwHwMismatch(0x04000000), 0);
}

TEST_F(Firmware, WriteProgramAndReadBack) {
  Bytes image = make_image(0x10203040);
  const Bytes original = image;
  testing::internal::CaptureStdout();
  ASSERT_EQ(Ssys_writeProgram(image.data()), 0);
  std::string out = testing::internal::GetCapturedStdout();
  sched_param param{};
  sched_getparam(0, &param);
  if (sched_getscheduler(0) == SCHED_RR) EXPECT_EQ(param.sched_priority, 90);  // where real-time is allowed
  EXPECT_EQ(out.find_first_not_of('.'), std::string::npos) << out.substr(0, 200);
  EXPECT_EQ(out.size(), 64 + 1024 + 128 + 64u);  // a dot per erased block and per 4 KiB piece
  EXPECT_EQ(read_file(sim_path("/mnt/log2/WARM_START_LOG")), "39\n");
  EXPECT_EQ(trace_lines(), std::vector<std::string>{"echo 39 > " + sim_path("/mnt/log2/WARM_START_LOG")});

  Bytes kernel = partition(1), fs = partition(2);
  Bytes expect_kernel(original.begin() + 32, original.begin() + 32 + FW_KERNEL_SIZE);
  std::copy(original.begin(), original.begin() + 32, expect_kernel.end() - 32);  // header at the end
  EXPECT_TRUE(kernel == expect_kernel);
  EXPECT_TRUE(std::equal(fs.begin(), fs.begin() + kFsSize, original.begin() + 32 + FW_KERNEL_SIZE));
  EXPECT_TRUE(all_ff(fs, kFsSize, fs.size()));

  FwHeader h{};
  EXPECT_EQ(Read_FW_Info(&h), 1);
  EXPECT_EQ(std::tie(h.kernel_size, h.fs_size, h.image_id, h.fw_version, h.build_time),
            std::make_tuple(uint32_t{FW_KERNEL_SIZE}, uint32_t{kFsSize}, kImageId, 0x10203040u, 0x1A0B1709u));
  uint32_t bcd = 0;
  EXPECT_EQ(Ssys_getFwVersion(&bcd), 0);
  EXPECT_EQ(bcd, 0x0A141E28u);
  char text[32];
  EXPECT_EQ(Get_FW_Build_Time(&h, text), 15);
  EXPECT_STREQ(text, "build 26112309.");
}

TEST_F(Firmware, WriteProgramFailures) {
  Bytes image = make_image();
  testing::internal::CaptureStdout();
  truncate(sim_path("/dev/mtd2").c_str(), kFsSize / 2);  // partition smaller than the data
  EXPECT_EQ(Ssys_writeProgram(image.data()), -5);
  Bytes fs = partition(2);  // programmed as far as it goes, never grown
  EXPECT_TRUE(fs.size() == kFsSize / 2 && std::equal(fs.begin(), fs.end(), image.begin() + 32 + FW_KERNEL_SIZE));
  // A read-only partition file (bound read-only in this private mount namespace).
  std::string mtd1 = sim_path("/dev/mtd1");
  ASSERT_EQ(mount(mtd1.c_str(), mtd1.c_str(), nullptr, MS_BIND, nullptr), 0);
  ASSERT_EQ(mount(nullptr, mtd1.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr), 0);
  EXPECT_EQ(Ssys_writeProgram(image.data()), -4);
  umount(mtd1.c_str());
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("fis_writeBuf line "), std::string::npos);
}

// A combined boot loader + firmware image; its checksum is right unless `sum_error` is given.
Bytes make_combined(uint32_t &sum, uint32_t sum_error = 0) {
  Bytes img = random_bytes(FW_COMBINED_FS_OFFSET + kFsSize, 11);
  for (std::size_t w = 0; w < 8; ++w) put_be(img, FW_COMBINED_HEADER_OFFSET + 4 * w, 0);
  put_be(img, FW_COMBINED_HEADER_OFFSET, FW_KERNEL_SIZE);
  put_be(img, FW_COMBINED_HEADER_OFFSET + 4, kFsSize);
  sum = reference_sum(img.data() + FW_COMBINED_KERNEL_OFFSET, 0x3FFFE0) +
        reference_sum(img.data() + FW_COMBINED_FS_OFFSET, kFsSize);
  put_be(img, FW_COMBINED_HEADER_OFFSET + 16, sum + sum_error);
  return img;
}

TEST_F(Firmware, CombinedImageAndBootLoader) {
  uint32_t sum = 0;
  Bytes img = make_combined(sum, 1);
  testing::internal::CaptureStdout();
  EXPECT_EQ(Ssys_write_bios_fw(img.data()), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), " header->check_sum = " + std::to_string(int(sum + 1)) +
                                                        ", sum1 = " + std::to_string(int(sum)) + "\n");
  put_be(img, FW_COMBINED_HEADER_OFFSET + 16, sum);
  testing::internal::CaptureStdout();
  EXPECT_EQ(Ssys_write_bios_fw(img.data()), 1);
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.substr(out.size() - 7), "\nUp OK!");
  Bytes boot = partition(0);
  EXPECT_TRUE(std::equal(img.begin(), img.begin() + FW_BIOS_SIZE, boot.begin()));
  EXPECT_EQ(std::count(boot.begin() + FW_BIOS_SIZE, boot.end(), 0), static_cast<long>(boot.size() - FW_BIOS_SIZE))
      << "only 0xA0000 bytes of partition 0 are erased";
  EXPECT_TRUE(std::equal(img.begin() + FW_COMBINED_KERNEL_OFFSET, img.begin() + FW_COMBINED_FS_OFFSET,
                         partition(1).begin()));
  EXPECT_TRUE(std::equal(img.begin() + FW_COMBINED_FS_OFFSET, img.end(), partition(2).begin()));

  testing::internal::CaptureStdout();
  EXPECT_EQ(Ssys_write_bios(), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "/etc/u-boot.bos fopen error\n");
  write_file(sim_path("/etc/u-boot.bos"), std::string(1000, '\x5A'));
  testing::internal::CaptureStdout();
  EXPECT_EQ(Ssys_write_bios(), 0);
  out = testing::internal::GetCapturedStdout();
  EXPECT_EQ(out.substr(0, 46), "----- first 256 bytes -----\r\n5a 5a 5a 5a 5a 5a");
  EXPECT_NE(out.find("\nSsys_write_bios() buffer size = 655360, BIOS Upgrade file size = 1000\n"), std::string::npos);
  boot = partition(0);
  EXPECT_EQ(std::count(boot.begin(), boot.begin() + 1000, 0x5A), 1000);
  EXPECT_EQ(std::count(boot.begin() + 1000, boot.begin() + FW_BIOS_SIZE, 0), FW_BIOS_SIZE - 1000);
}

// Each partition that cannot be written stops the combined upgrade at its stage: its error
// line ends the output and the later stages never start.
TEST_F(Firmware, CombinedImageWriteFailures) {
  uint32_t sum = 0;
  const Bytes img = make_combined(sum);
  const std::string mtd2 = sim_path("/dev/mtd2");
  const struct {
    const char *stage;
    std::function<void()> break_it;
  } cases[] = {
      {"BIOS", [] { unlink(sim_path("/dev/mtd0").c_str()); }},
      {"KERNEL", [] { unlink(sim_path("/dev/mtd1").c_str()); }},
      {"FS", [&] { ASSERT_EQ(truncate(mtd2.c_str(), kFsSize / 2), 0); }},  // short write
  };
  for (const auto &c : cases) {
    reset_flash();
    c.break_it();
    testing::internal::CaptureStdout();
    EXPECT_EQ(Ssys_write_bios_fw(img.data()), -1) << c.stage;
    const std::string out = testing::internal::GetCapturedStdout();
    EXPECT_TRUE(out.ends_with("\n" + std::string(c.stage) + " Upgrade Error")) << c.stage << ": " << out.substr(0, 80);
    EXPECT_EQ(out.find("\nUp OK!"), std::string::npos);
  }
  EXPECT_TRUE(partition(2).size() == kFsSize / 2) << "a partition is never grown";

  // The boot loader from its file onto a partition 0 that is missing.
  reset_flash();
  write_file(sim_path("/etc/u-boot.bos"), std::string(1000, '\x5A'));
  unlink(sim_path("/dev/mtd0").c_str());
  testing::internal::CaptureStdout();
  EXPECT_EQ(Ssys_write_bios(), -1);
  EXPECT_TRUE(testing::internal::GetCapturedStdout().ends_with("\nBIOS Upgrade Error"));
}

// The version record read back from a kernel partition that is missing, and the header
// written into an upload file at its base offset.
TEST_F(Firmware, VersionRecordAndHeaderFileFailures) {
  unlink(sim_path("/dev/mtd1").c_str());
  FwHeader h{};
  h.fw_version = 7;
  EXPECT_EQ(Read_FW_Info(&h), -1);
  EXPECT_EQ(h.fw_version, 7u) << "left as it was";
  uint32_t version = 9;
  EXPECT_EQ(Ssys_getFwVersion(&version), 0);
  EXPECT_EQ(version, 0u);

  const std::string file = sim_path("/mnt/ramdisk/fwUpload");
  write_file(file, std::string(FW_KERNEL_SIZE + 64, '\0'));
  const char header[4] = {'H', 'D', 'R', '!'};
  EXPECT_EQ(Write_Header_To_Flash_tmp(header, file.c_str(), 4, 16), 0);
  const std::string back = read_file(file);
  EXPECT_EQ(back.size(), FW_KERNEL_SIZE + 64u);
  EXPECT_EQ(back.substr(FW_KERNEL_SIZE + 16, 4), "HDR!");
  const std::string missing = sim_path("/mnt/ramdisk/none/fwUpload");
  testing::internal::CaptureStdout();
  EXPECT_EQ(Write_Header_To_Flash_tmp(header, missing.c_str(), 4, 0), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), missing + " fopen error\n");
}

TEST_F(Firmware, VersionTexts) {
  for (auto [version, text] : std::vector<std::tuple<uint32_t, std::string>>{
           {0x01020304, "V1.2.3.4.3"}, {0x01020300, "V1.2.3"}, {0x01020004, "V1.2.0.4"}, {0x01020000, "V1.2"},
           {0x0A0BFF10, "Va.b.ff.10.ff"}}) {
    FwHeader h{};
    h.fw_version = version;
    char buf[32];
    Get_FW_Ver(&h, buf);
    EXPECT_EQ(buf, text);
  }
  FwHeader h{};
  h.fw_version = Gsys_firmwareVersion;
  char buf[32];
  Get_FW_Ver(&h, buf);
  EXPECT_STREQ(buf, Gsys_firwareVersionString);
  uint8_t src[5] = {1, 2, 3, 4, 5}, dst[5] = {};
  little_to_big_endian(5, src, dst);
  EXPECT_EQ(Bytes(dst, dst + 5), (Bytes{5, 4, 3, 2, 1}));
}

// The services stopped before an upload, inside this test's own PID namespace: copies of
// sleep under their names, and an agent whose name must not match.
TEST_F(Firmware, UploadStopsTheServicesByName) {
  install_device_ps();
  std::vector<pid_t> pids;
  for (const char *name : {"snmpd", "dhcpd", "lldpd", "agent_snmpd"}) pids.push_back(start_named_sleep(name));
  EXPECT_EQ(fwupgrad_funkill(), 0);
  std::vector<std::string> lines = trace_lines();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[1], "ps|grep -i dhcpd|grep -v grep|grep -v agent_dhcpd|cut -c 1-5|xargs kill -9");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(wait_for(pids[i], std::chrono::seconds(5)), 128) << "ended by a signal";
  EXPECT_EQ(wait_for(pids[3], std::chrono::milliseconds(200)), -1) << "the agent survives (killed now)";
}

}  // namespace
