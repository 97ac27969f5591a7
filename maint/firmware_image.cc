// The firmware header, the image checksums, the image check and the version texts.
#include <arpa/inet.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "maint/checksum.h"
#include "syscommon/hw.h"
#include "syscommon/maint.h"
#include "util/buffer.h"

namespace syscommon::maint {

uint32_t sum_be_words(const unsigned char *p, std::size_t words) {
  // Eight words per step in two vector accumulators (SSE2 on x86-64, NEON on ARM); the
  // byte swap is written with shifts and masks so that it stays in vector registers.
  // Addition modulo 2^32 is associative, so the lanes add up to the exact sum.
  using v4u = uint32_t __attribute__((vector_size(16)));
  auto to_host = [](v4u v) {
    if constexpr (std::endian::native == std::endian::little)
      v = (v << 24) | ((v << 8) & 0x00FF0000u) | ((v >> 8) & 0x0000FF00u) | (v >> 24);
    return v;
  };
  v4u acc0 = {0, 0, 0, 0}, acc1 = {0, 0, 0, 0};
  std::size_t i = 0;
  for (; i + 8 <= words; i += 8) {
    v4u a, b;
    std::memcpy(&a, p + 4 * i, sizeof a);
    std::memcpy(&b, p + 4 * i + 16, sizeof b);
    acc0 += to_host(a);
    acc1 += to_host(b);
  }
  acc0 += acc1;
  uint32_t sum = acc0[0] + acc0[1] + acc0[2] + acc0[3];
  for (; i < words; ++i) sum += load_be32(p + 4 * i);
  return sum;
}

}  // namespace syscommon::maint

namespace {

using syscommon::maint::load_be32;

constexpr uint32_t kMinFwOnVersion2 = 0x05000000;
constexpr std::size_t kStreamChunk = 256;
constexpr std::size_t kStreamBlock = 256 * kStreamChunk;
constexpr uint32_t kToEnd = 0xFFFFFFFF;

unsigned byte_of(uint32_t word, int index) { return (word >> (24 - 8 * index)) & 0xFF; }

}  // namespace

extern "C" {

const uint32_t Gsys_firmwareVersion = 0x05000000;
const char Gsys_firwareVersionString[] = "V5.0";

SYSCOMMON_API int header_ntoh(FwHeader *header) {
  auto *words = reinterpret_cast<uint32_t *>(header);
  for (int i = 0; i < 8; ++i) words[i] = ntohl(words[i]);
  return 0;
}

SYSCOMMON_API void little_to_big_endian(int n, const uint8_t *src, uint8_t *dst) {
  for (int i = 0; i < n; ++i) dst[i] = src[n - 1 - i];
}

SYSCOMMON_API int file_check_sum(const void *data, int length, uint32_t *sum) {
  const auto *p = static_cast<const unsigned char *>(data);
  uint32_t total = 0;
  if (length > 0) {
    auto whole = static_cast<std::size_t>(length) / 4;
    total = syscommon::maint::sum_be_words(p, whole);
    if (length % 4 != 0) total += load_be32(p + 4 * whole);  // the last group read whole
  }
  *sum = total;
  return 0;
}

SYSCOMMON_API int file_check_sum_tmp(FILE *stream, uint32_t length, uint32_t *sum) {
  // The sum is defined over 256-byte chunks read into one buffer zeroed once at the start:
  // a final partial group takes the bytes the buffer still holds from the previous chunk.
  // The stream is read in blocks of whole chunks instead (fread returns short only at the
  // end), with the same result and, in bounded mode, the same number of bytes consumed.
  const bool to_end = length == kToEnd;
  int64_t remaining = length;
  uint32_t total = 0;
  // Groups a chunk view of `n` bytes contributes: each one that begins below n, and in
  // bounded mode only while the remaining length, less 4 per group, stays at 1 or more.
  auto groups_in = [&](std::size_t n) {
    std::size_t groups = (n + 3) / 4;
    if (!to_end) groups = std::min<std::size_t>(groups, static_cast<std::size_t>((remaining + 3) / 4));
    remaining -= 4 * static_cast<int64_t>(groups);
    return groups;
  };
  std::array<unsigned char, kStreamChunk> chunk{};  // the device's chunk buffer
  syscommon::ByteBuffer heap = syscommon::try_buffer(kStreamBlock);
  std::array<unsigned char, kStreamChunk> small{};  // without a block: 256-byte reads
  unsigned char *block = heap ? heap.get() : small.data();
  const std::size_t block_size = heap ? kStreamBlock : small.size();
  while (to_end || remaining >= 1) {
    std::size_t want = block_size;
    if (!to_end) want = std::min<std::size_t>(want, (static_cast<std::size_t>(remaining) + 255) / 256 * 256);
    std::size_t got = std::fread(block, 1, want, stream);
    if (got == 0) break;
    std::size_t whole = got / kStreamChunk * kStreamChunk;
    total += syscommon::maint::sum_be_words(block, groups_in(whole));
    if (whole > 0) std::memcpy(chunk.data(), block + whole - kStreamChunk, kStreamChunk);
    if (got > whole && (to_end || remaining >= 1)) {
      std::memcpy(chunk.data(), block + whole, got - whole);
      std::size_t groups = groups_in(got - whole), full = std::min(groups, (got - whole) / 4);
      total += syscommon::maint::sum_be_words(chunk.data(), full);
      if (groups > full) total += load_be32(chunk.data() + 4 * full);
    }
  }
  *sum = total;
  return 0;
}

SYSCOMMON_API int Ssys_isFwHwMismatch(uint32_t fw_version) {
  std::printf("FW version %02u.%02u.%02u\n", byte_of(fw_version, 0), byte_of(fw_version, 1), byte_of(fw_version, 2));
  return Get_HW_version() == 2 && fw_version < kMinFwOnVersion2 ? 1 : 0;
}

SYSCOMMON_API int Ssys_firmwareCheck(const void *image, uint32_t image_id, uint32_t /*unused*/) {
  FwHeader header;
  std::memcpy(&header, image, sizeof header);
  header_ntoh(&header);
  if (Ssys_isFwHwMismatch(header.fw_version) == 1) return -6;
  if (header.image_id != image_id) return -1;
  if (header.kernel_size != FW_KERNEL_SIZE || header.fs_size % 4 != 0) return -2;
  // The sections' total as the signed length the sum takes; a total beyond its range
  // (a header with huge sizes) sums nothing rather than wrap to a small length.
  uint64_t total = uint64_t{header.kernel_size} + header.fs_size;
  int length = total > static_cast<uint64_t>(INT32_MAX) ? -1 : static_cast<int>(total);
  uint32_t sum = 0;
  file_check_sum(static_cast<const unsigned char *>(image) + FW_HEADER_SIZE, length, &sum);
  return sum == header.check_sum ? 0 : -3;
}

SYSCOMMON_API int Get_FW_Ver(const FwHeader *header, char *text) {
  uint32_t v = header->fw_version;
  unsigned patch = byte_of(v, 2), build = byte_of(v, 3);
  int n = std::sprintf(text, "V%x.%x", byte_of(v, 0), byte_of(v, 1));
  char *end = text + n;
  if (patch != 0 && build != 0) {
    end += std::sprintf(end, ".%x.%x", patch, build);
    n = std::sprintf(end, ".%x", patch);  // the patch digit twice, as the device shows it
  } else if (patch != 0) {
    n = std::sprintf(end, ".%x", patch);
  } else if (build != 0) {
    n = std::sprintf(end, ".%x.%x", patch, build);
  }
  return n;
}

SYSCOMMON_API int Get_FW_Build_Time(const FwHeader *header, char *text) {
  uint32_t t = header->build_time;
  return std::sprintf(text, "build %02u%02u%02u%02u.", byte_of(t, 0), byte_of(t, 1), byte_of(t, 2), byte_of(t, 3));
}

}  // extern "C"
