// syscommon fw: the firmware image check, the upload road onto the flash partitions, and the
// version kept in flash.
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "syscommon/hw.h"
#include "syscommon/maint.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

struct Image {
  std::vector<uint8_t> bytes;
  FwHeader header{};  // host order
  uint64_t announced = 0;  // header + both sections, as the header says
};

// FILE --id N
std::pair<std::string, uint32_t> file_and_id(const Args &args) {
  const Options o = parse_options(args, {"--id"});
  expect_args(o.positional, 1, 1);
  if (o.get("--id") == nullptr) throw UsageError{"--id is required"};
  return {o.positional[0], static_cast<uint32_t>(parse_number(*o.get("--id"), "--id", 0, 4294967295LL))};
}

// Reads the file; false (after saying why) when it cannot hold even a header.
bool load(const std::string &path, Image &image) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    std::fprintf(stderr, "syscommon fw: cannot read '%s'\n", path.c_str());
    return false;
  }
  image.bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  if (image.bytes.size() < FW_HEADER_SIZE) {
    std::fprintf(stderr, "syscommon fw: '%s' holds %zu bytes, less than a 32-byte firmware header\n", path.c_str(),
                 image.bytes.size());
    return false;
  }
  std::memcpy(&image.header, image.bytes.data(), sizeof image.header);
  header_ntoh(&image.header);
  image.announced = uint64_t{FW_HEADER_SIZE} + image.header.kernel_size + image.header.fs_size;
  return true;
}

std::string version_text(const FwHeader &h) {
  char ver[32], built[32];
  Get_FW_Ver(&h, ver);
  Get_FW_Build_Time(&h, built);
  return std::string(ver) + ", " + built;
}

void show_header(const FwHeader &h) {
  std::printf("  kernel size      %" PRIu32 " bytes\n", h.kernel_size);
  std::printf("  filesystem size  %" PRIu32 " bytes\n", h.fs_size);
  std::printf("  image id         %" PRIu32 " (0x%08" PRIx32 ")\n", h.image_id, h.image_id);
  std::printf("  checksum         0x%08" PRIx32 "\n", h.check_sum);
  std::printf("  version          %s (0x%08" PRIx32 ")\n", version_text(h).c_str(), h.fw_version);
}

const char *refusal(int code) {
  switch (code) {
    case 0: return "valid";
    case -1: return "image id differs";
    case -2: return "bad section sizes";
    case -3: return "checksum differs";
    case -6: return "firmware too old for this hardware";
    default: return "refused";
  }
}

// Each check's verdict in words, then the library's own check; its code (0 = valid).
int check(const Image &image, uint32_t id) {
  const FwHeader &h = image.header;
  std::printf("header:\n");
  show_header(h);
  std::printf("checks:\n");
  const int hw = Get_HW_version();
  const bool too_old = hw == 2 && h.fw_version < 0x05000000;
  std::printf("  hardware         %s (hardware version %d)\n", too_old ? "too old: needs 5.0 or later" : "fits", hw);
  std::printf("  image id         %s (expected %" PRIu32 ")\n", h.image_id == id ? "matches" : "differs", id);
  std::printf("  section sizes    %s\n", h.kernel_size != FW_KERNEL_SIZE ? "kernel is not 4194304 bytes"
                                         : h.fs_size % 4 != 0            ? "filesystem is not a multiple of 4 bytes"
                                                                         : "good");
  if (image.bytes.size() < image.announced) {
    std::printf("  length           short: the file holds %zu of the %" PRIu64 " bytes its header announces\n",
                image.bytes.size(), image.announced);
    std::printf("verdict: refused (-2: %s)\n", refusal(-2));
    return -2;
  }
  std::printf("  length           %zu bytes, as announced%s\n", image.bytes.size(),
              image.bytes.size() > image.announced ? " (trailing bytes ignored)" : "");
  uint32_t sum = 0;
  if (image.announced <= 0x7FFFFFFF)
    file_check_sum(image.bytes.data() + FW_HEADER_SIZE, static_cast<int>(image.announced - FW_HEADER_SIZE), &sum);
  std::printf("  checksum         %s (computed 0x%08" PRIx32 ")\n", sum == h.check_sum ? "matches" : "differs", sum);
  std::fflush(stdout);
  const int code = Ssys_firmwareCheck(image.bytes.data(), id, 0);
  std::printf("verdict: %s (%d%s%s)\n", code == 0 ? "valid" : "refused", code, code == 0 ? "" : ": ",
              code == 0 ? "" : refusal(code));
  return code;
}

int cmd_check(const Args &args) {
  auto [path, id] = file_and_id(args);
  Image image;
  if (!load(path, image)) return 1;
  return check(image, id) == 0 ? 0 : 1;
}

// Compares a partition's first bytes with what was meant to be written there.
bool matches_flash(int partition, const uint8_t *expected, uint32_t length) {
  std::vector<uint8_t> back(length);
  bool same = fis_readBuf(0, static_cast<int>(length), partition, back.data()) == 1 &&
              std::memcmp(back.data(), expected, length) == 0;
  std::printf("  /dev/mtd%d: %" PRIu32 " bytes read back, %s\n", partition, length, same ? "identical" : "DIFFERENT");
  return same;
}

int cmd_write(const Args &args) {
  auto [path, id] = file_and_id(args);
  std::printf("stopping the services: snmpd, dhcpd, lldpd\n");
  std::fflush(stdout);
  fwupgrad_funkill();
  Image image;
  if (!load(path, image)) return 1;
  if (check(image, id) != 0) return 1;
  std::printf("writing the kernel to /dev/mtd1 and the filesystem to /dev/mtd2\n");
  std::fflush(stdout);
  const int rc = Ssys_writeProgram(image.bytes.data());
  std::printf("\n");
  if (rc != 0) {
    std::printf("write failed (%d: %s partition)\n", rc, rc == -4 ? "kernel" : "filesystem");
    return 1;
  }
  std::printf("read back:\n");
  const uint8_t *kernel = image.bytes.data() + FW_HEADER_SIZE;  // now ends with the header
  bool same = matches_flash(1, kernel, image.header.kernel_size);
  same = matches_flash(2, kernel + image.header.kernel_size, image.header.fs_size) && same;
  FwHeader flash{};
  if (Read_FW_Info(&flash) == 1) std::printf("  version in flash: %s\n", version_text(flash).c_str());
  if (!same) return 1;
  std::printf("restarting the unit through the watchdog\n");
  std::fflush(stdout);
  Kernel_reboot();
  return 0;
}

std::vector<uint8_t> read_all(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw UsageError{"cannot read '" + path + "'"};
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

void put_be32(uint8_t *p, uint32_t v) {
  for (int i = 0; i < 4; ++i) p[i] = static_cast<uint8_t>(v >> (24 - 8 * i));
}

// "A.B.C.D" into the header's version word.
uint32_t parse_version(const std::string &text) {
  uint32_t v = 0;
  std::size_t from = 0;
  for (int part = 0; part < 4; ++part) {
    std::size_t dot = part < 3 ? text.find('.', from) : text.size();
    if (dot == std::string::npos) throw UsageError{"--version must look like 5.1.2.0, not '" + text + "'"};
    v = v << 8 | static_cast<uint32_t>(parse_number(text.substr(from, dot - from), "--version part", 0, 255));
    from = dot + 1;
  }
  return v;
}

// KERNEL FS OUT --id N --version A.B.C.D [--built YYMMDDHH]: a firmware-only image with a
// 4 MiB kernel section (padded with 0xFF; its last 32 bytes take the header when written)
// and the filesystem padded with 0xFF to a multiple of 4.
int cmd_pack(const Args &args) {
  const Options o = parse_options(args, {"--id", "--version", "--built"});
  expect_args(o.positional, 3, 3);
  if (o.get("--id") == nullptr || o.get("--version") == nullptr) throw UsageError{"--id and --version are required"};
  const auto id = static_cast<uint32_t>(parse_number(*o.get("--id"), "--id", 0, 4294967295LL));
  const uint32_t version = parse_version(*o.get("--version"));
  uint32_t built = 0;
  if (o.get("--built") != nullptr) {
    const std::string &b = *o.get("--built");
    if (b.size() != 8) throw UsageError{"--built must be YYMMDDHH"};
    for (int i = 0; i < 4; ++i)
      built = built << 8 | static_cast<uint32_t>(parse_number(b.substr(2 * static_cast<std::size_t>(i), 2), "--built", 0, 99));
  }
  std::vector<uint8_t> kernel = read_all(o.positional[0]), fs = read_all(o.positional[1]);
  if (kernel.size() > FW_KERNEL_SIZE - FW_HEADER_SIZE) throw UsageError{"the kernel must fit 4194272 bytes"};
  kernel.resize(FW_KERNEL_SIZE, 0xFF);
  fs.resize((fs.size() + 3) / 4 * 4, 0xFF);
  std::vector<uint8_t> image(FW_HEADER_SIZE, 0);
  image.insert(image.end(), kernel.begin(), kernel.end());
  image.insert(image.end(), fs.begin(), fs.end());
  uint32_t sum = 0;
  file_check_sum(image.data() + FW_HEADER_SIZE, static_cast<int>(image.size() - FW_HEADER_SIZE), &sum);
  const uint32_t words[8] = {FW_KERNEL_SIZE, static_cast<uint32_t>(fs.size()), 0, id, sum, version, built, 0};
  for (std::size_t w = 0; w < 8; ++w) put_be32(image.data() + 4 * w, words[w]);
  std::ofstream out(o.positional[2], std::ios::binary | std::ios::trunc);
  out.write(reinterpret_cast<const char *>(image.data()), static_cast<std::streamsize>(image.size()));
  if (!out.flush()) {
    std::fprintf(stderr, "syscommon fw: cannot write '%s'\n", o.positional[2].c_str());
    return 1;
  }
  std::printf("packed %zu bytes into %s: kernel 4194304, filesystem %zu, checksum 0x%08" PRIx32 "\n", image.size(),
              o.positional[2].c_str(), fs.size(), sum);
  return 0;
}

int cmd_version(const Args &args) {
  expect_args(args, 0, 0);
  FwHeader h{};
  if (Read_FW_Info(&h) != 1) {
    std::fprintf(stderr, "syscommon fw: no firmware header readable at the end of /dev/mtd1\n");
    return 1;
  }
  uint32_t bcd = 0;
  Ssys_getFwVersion(&bcd);
  std::printf("firmware in flash (last 32 bytes of /dev/mtd1)%s:\n",
              h.kernel_size == 0xFFFFFFFF || h.kernel_size == 0 ? " - no firmware written yet" : "");
  show_header(h);
  std::printf("  version, BCD-decoded  0x%08" PRIx32 "\n", bcd);
  std::printf("library built for       %s (0x%08" PRIx32 ")\n", Gsys_firwareVersionString, Gsys_firmwareVersion);
  std::printf("CPU clock               %d\n", Ssys_getCpuFreq());
  return 0;
}

const Registration reg{{"fw",
                        "Firmware image check, flash programming and the version in flash.",
                        {
                            {"check", "FILE --id N",
                             "decode an image's header and give each check's verdict (exit 1 when refused)",
                             cmd_check},
                            {"write", "FILE --id N",
                             "the upload road: stop the services, check, write to /dev/mtd1 and /dev/mtd2,\n"
                             "read both back and compare, then restart through the watchdog",
                             cmd_write},
                            {"version", "", "the firmware header kept in flash, decoded", cmd_version},
                            {"pack", "KERNEL FS OUT --id N --version A.B.C.D [--built YYMMDDHH]",
                             "build a firmware-only image (header, 4 MiB kernel section, filesystem)", cmd_pack},
                        }}};

}  // namespace
}  // namespace syscommon::tool
