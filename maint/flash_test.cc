// Partition erase and programming on the simulated MTD partitions, and the read-modify-write
// near a partition's end compared with references worked out here.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <random>
#include <string>
#include <vector>

#include "support/test_support.h"
#include "syscommon/hw.h"
#include "syscommon/maint.h"

namespace {

using namespace syscommon::testing;
using Bytes = std::vector<uint8_t>;
constexpr std::size_t E = 65536;

Bytes random_bytes(std::size_t n, unsigned seed) {
  std::mt19937 gen(seed);
  Bytes b(n);
  for (auto &x : b) x = static_cast<uint8_t>(gen());
  return b;
}

class Flash : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    reset_flash();
    kernel_ = random_bytes(std::size_t{4} << 20, 5);
    store(1, kernel_);
  }
  static std::string mtd(int n) { return sim_path("/dev/mtd" + std::to_string(n)); }
  static void store(int n, const Bytes &b) { write_file(mtd(n), std::string(b.begin(), b.end())); }
  static Bytes load(int n) {
    std::string s = read_file(mtd(n));
    return Bytes(s.begin(), s.end());
  }
  Bytes kernel_;
};

TEST_F(Flash, EraseProgramAndReadBack) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(fis_writeBuf(kernel_.data(), 100, FIS_FLAG_VERIFY | FIS_FLAG_ERASE_ONLY, 1), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string(64, '.'));  // erased, nothing written
  Bytes p = load(1);
  EXPECT_EQ(std::count(p.begin(), p.end(), 0xFF), static_cast<long>(p.size()));

  Bytes data = random_bytes(10000, 9), back(10000);
  testing::internal::CaptureStdout();
  EXPECT_EQ(fis_writeBuf(data.data(), 10000, FIS_FLAG_VERIFY, 0), 0);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), std::string(10 + 3, '.'));  // 0xA0000 only, 3 pieces
  p = load(0);
  EXPECT_TRUE(std::equal(data.begin(), data.end(), p.begin()));
  EXPECT_EQ(std::count(p.begin() + 10000, p.begin() + FW_BIOS_SIZE, 0xFF), FW_BIOS_SIZE - 10000);
  EXPECT_EQ(std::count(p.begin() + FW_BIOS_SIZE, p.end(), 0), static_cast<long>(p.size() - FW_BIOS_SIZE));
  EXPECT_EQ(fis_readBuf(0, 10000, 0, back.data()), 1);
  EXPECT_EQ(back, data);
  EXPECT_EQ(fis_readBuf(-16, 16, 0, back.data()), 1);
  EXPECT_EQ(fis_readBuf(-16, 17, 0, back.data()), -1);  // one read only: short at the end
  EXPECT_EQ(fis_readBuf(0, 4, 7, back.data()), -1);     // no such partition
  testing::internal::CaptureStdout();
  EXPECT_EQ(fis_writeBuf(data.data(), 10, FIS_FLAG_VERIFY, 7), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout().substr(0, 18), "fis_writeBuf line ");
  truncate(mtd(0).c_str(), 5 * E);  // smaller than the boot-loader area: the erase fails
  testing::internal::CaptureStdout();
  EXPECT_EQ(fis_writeBuf(data.data(), 10, FIS_FLAG_VERIFY, 0), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout().substr(0, 16), "......fis_erase ");
}

TEST_F(Flash, WriteFromUploadFile) {
  const std::string upload = sim_path("/mnt/ramdisk/fwUpload");
  testing::internal::CaptureStdout();
  EXPECT_EQ(fis_writeBuf_tmp(0, 10, FIS_FLAG_VERIFY, 2), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "/mnt/ramdisk/fwUpload fopen error\n");
  Bytes file = random_bytes(3 * 1024 * 1024 + 5, 2);
  write_file(upload, std::string(file.begin(), file.end()));
  testing::internal::CaptureStdout();
  // Past the 1 MiB buffer several times; the length is clamped, the file's end stops it.
  EXPECT_EQ(fis_writeBuf_tmp(7, 2 * 1024 * 1024 + 3, FIS_FLAG_VERIFY, 2), 0);
  EXPECT_EQ(fis_writeBuf_tmp(7, 2 * 1024 * 1024 + 3, FIS_FLAG_VERIFY, 1), 0);
  EXPECT_EQ(fis_writeBuf_tmp(2 * 1024 * 1024, 0x7FFFFFFF, FIS_FLAG_VERIFY, 0), 2048);  // too big for mtd0
  EXPECT_EQ(fis_writeBuf_tmp(0, 4, FIS_FLAG_VERIFY, 9), -1);
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_NE(out.find("/dev/mtd9 open error err=2\nfis_writeBuf_tmp line "), std::string::npos);
  Bytes p = load(1);
  EXPECT_TRUE(std::equal(file.begin() + 7, file.begin() + 7 + (2l << 20) + 3, p.begin()));
  EXPECT_EQ(p[2 * 1024 * 1024 + 3], 0xFF);
  EXPECT_EQ(fis_writeBuf_tmp(0, 100, FIS_FLAG_VERIFY | FIS_FLAG_ERASE_ONLY, 1), 0);  // erased only
  p = load(1);
  EXPECT_EQ(std::count(p.begin(), p.end(), 0xFF), static_cast<long>(p.size()));
  truncate(mtd(0).c_str(), 5 * E);  // smaller than the boot-loader area: the erase fails
  testing::internal::CaptureStdout();
  EXPECT_EQ(fis_writeBuf_tmp(0, 100, FIS_FLAG_VERIFY, 0), -1);
  EXPECT_EQ(testing::internal::GetCapturedStdout().substr(0, 16), "......fis_erase ");
  EXPECT_EQ(load(0).size(), 5 * E);
  write_file(upload, "");  // an empty upload: erased, nothing programmed
  EXPECT_EQ(fis_writeBuf_tmp(0, 100, FIS_FLAG_VERIFY, 1), 0);
  p = load(1);
  EXPECT_EQ(std::count(p.begin(), p.end(), 0xFF), static_cast<long>(p.size()));
}

TEST_F(Flash, ReadModifyWriteAcrossABlockBoundary) {
  Bytes data = random_bytes(200, 4);
  int fd = open(mtd(1).c_str(), O_RDWR);
  ASSERT_GE(fd, 0);
  testing::internal::CaptureStdout();
  const int start = static_cast<int>(2 * E - 100);
  EXPECT_EQ(flash_erase_to_write(fd, 0, start, 300, data.data(), 200), 0);
  EXPECT_EQ(flash_erase_to_write(fd, 1, static_cast<int>(4 * 1024 * 1024 - 100), 300, data.data(), 200), -1);
  close(fd);
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(out.starts_with("start = 130972, erase.start = 65536\n..count = 2,erase.start = 65536\n")) << out;
  // Blocks 1 and 2 erased; block 1 rewritten whole with the data laid in; of block 2 only
  // (end of data) mod E = 100 bytes after the data come back, from the same offset.
  Bytes expect = kernel_;
  std::fill(expect.begin() + E, expect.begin() + 3 * E, 0xFF);
  std::copy(kernel_.begin() + E, kernel_.begin() + 2 * E, expect.begin() + E);
  std::copy(data.begin(), data.end(), expect.begin() + start);
  std::copy(kernel_.begin() + 2 * E + 100, kernel_.begin() + 2 * E + 200, expect.begin() + 2 * E + 100);
  EXPECT_TRUE(load(1) == expect);
}

// Descriptors that erase cannot use: no partition behind them (the geometry request fails)
// or opened read-only (the erase fails); and a start at the partition's end, whose block
// cannot be read. Each is refused with its failure line, nothing erased.
TEST_F(Flash, EraseRefusals) {
  const Bytes data = random_bytes(16, 1);
  const int none = open("/dev/null", O_RDWR);
  const int read_only = open(mtd(1).c_str(), O_RDONLY);
  const int rw = open(mtd(1).c_str(), O_RDWR);
  ASSERT_GE(none, 0);
  ASSERT_GE(read_only, 0);
  ASSERT_GE(rw, 0);
  testing::internal::CaptureStdout();
  EXPECT_EQ(fis_erase(none, 0, 1), -1);
  EXPECT_EQ(flash_erase_to_write(none, 0, 0, 16, data.data(), 16), -1);
  EXPECT_EQ(fis_erase(read_only, 1, 1), -1);
  EXPECT_EQ(flash_erase_to_write(read_only, 0, 100, 16, data.data(), 16), -1);
  EXPECT_EQ(flash_erase_to_write(rw, 0, 4 << 20, 16, data.data(), 16), -1);
  const std::string out = testing::internal::GetCapturedStdout();
  for (int fd : {none, read_only, rw}) close(fd);
  std::vector<std::string> lines;
  for (std::size_t at = 0, end; (end = out.find('\n', at)) != std::string::npos; at = end + 1) {
    const std::string line = out.substr(at, end - at);
    lines.push_back(line.substr(0, line.find(" line ")));  // the function's name only
  }
  EXPECT_EQ(lines, (std::vector<std::string>{"fis_erase", "flash_erase_to_write", ".fis_erase",
                                             "start = 100, erase.start = 0", ".flash_erase_to_write",
                                             "start = 4194304, erase.start = 4194304", "flash_erase_to_write"}))
      << out;
  EXPECT_TRUE(load(1) == kernel_);
}

TEST_F(Flash, RecordNearTheEndAndTheEndOfTestFlag) {
  testing::internal::CaptureStdout();
  EXPECT_EQ(Ssys_setEOTFlagAndBurnHour(256, 0x01020304), 1);
  Bytes expect = kernel_;
  const std::size_t at = expect.size() - 48;
  const uint8_t rec[] = {'E', 'O', 'T', 'S', 'E', 'T', 'O', 'N', 4, 3, 2, 1};
  std::copy(rec, rec + 12, expect.begin() + static_cast<long>(at));
  EXPECT_TRUE(load(1) == expect);
  Bytes back(12);
  EXPECT_EQ(Read_from_Flash_From_End(back.data(), 48, 1, 12), 12);
  EXPECT_TRUE(std::equal(rec, rec + 12, back.begin()));
  EXPECT_EQ(Ssys_setEOTFlagAndBurnHour(1, 0), 1);
  EXPECT_EQ(Read_from_Flash_From_End(back.data(), 48, 1, 8), 8);
  EXPECT_EQ(std::string(back.begin(), back.begin() + 8), "EOTSETOF");
  EXPECT_EQ(Write_Data_To_Flash_From_End(rec, 5 * 1024 * 1024, 1, 12), -1);  // before the start
  EXPECT_EQ(Read_from_Flash_From_End(back.data(), 5 * 1024 * 1024, 1, 12), -1);
  EXPECT_EQ(Write_Data_To_Flash_From_End(rec, 100, 3, 12), -1);  // no such partition
  std::string out = testing::internal::GetCapturedStdout();
  EXPECT_TRUE(out.starts_with("min = 16909060\nstart = 4194256, erase.start = 4128768\n.count = 1,erase.start = 4128768\n")) << out;
}

}  // namespace
