// The firmware header, the image checksums, the image check and the version texts.
#include <arpa/inet.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "maint/checksum.h"
#include "syscommon/hw.h"
#include "syscommon/maint.h"

namespace syscommon::maint {

uint32_t sum_be_words(const unsigned char *p, std::size_t words) {
  // Four independent lanes: the loop vectorises and stays exact (addition modulo 2^32
  // is associative).
  uint32_t lane[4] = {0, 0, 0, 0};
  std::size_t i = 0;
  for (; i + 4 <= words; i += 4)
    for (std::size_t k = 0; k < 4; ++k) lane[k] += load_be32(p + 4 * (i + k));
  uint32_t sum = lane[0] + lane[1] + lane[2] + lane[3];
  for (; i < words; ++i) sum += load_be32(p + 4 * i);
  return sum;
}

}  // namespace syscommon::maint

namespace {

using syscommon::maint::load_be32;

constexpr uint32_t kMinFwOnVersion2 = 0x05000000;
constexpr std::size_t kStreamChunk = 256;
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
  // Zeroed once: a final partial group takes the bytes left there by the previous chunk.
  unsigned char chunk[kStreamChunk] = {};
  const bool to_end = length == kToEnd;
  int64_t remaining = length;
  uint32_t total = 0;
  while (to_end || remaining >= 1) {
    std::size_t got = std::fread(chunk, 1, sizeof chunk, stream);
    if (got == 0) break;
    for (std::size_t i = 0; i < got && (to_end || remaining >= 1); i += 4) {
      total += load_be32(chunk + i);
      remaining -= 4;
    }
  }
  *sum = total;
  return 0;
}

SYSCOMMON_API int Ssys_isFwHwMismatch(uint32_t fw_version) {
  std::printf("FW version %02d.%02d.%02d\n", byte_of(fw_version, 0), byte_of(fw_version, 1), byte_of(fw_version, 2));
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
  return std::sprintf(text, "build %02d%02d%02d%02d.", byte_of(t, 0), byte_of(t, 1), byte_of(t, 2), byte_of(t, 3));
}

}  // extern "C"
