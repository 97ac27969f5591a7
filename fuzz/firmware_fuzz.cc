// Ssys_firmwareCheck on an image built from the input: the 32-byte header, then the
// sections. The function takes no length (the image must hold 32 + kernel_size + fs_size
// bytes), so the harness lays the input into a zeroed image of exactly the size the header
// announces when the sizes pass the check, and only the header otherwise. The image lives
// in one reused buffer; in sanitized builds the bytes past the announced size are poisoned
// so that any read beyond the contract is reported.
#include <arpa/inet.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "syscommon/maint.h"

#if defined(__SANITIZE_ADDRESS__)
#define SYSCOMMON_FUZZ_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define SYSCOMMON_FUZZ_ASAN 1
#endif
#endif
#ifdef SYSCOMMON_FUZZ_ASAN
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(addr, size) ((void)(addr), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(addr, size) ((void)(addr), (void)(size))
#endif

namespace {
constexpr std::size_t kMaxFs = 1 << 20;  // larger file systems are skipped (the sum is the same work)
constexpr std::size_t kCapacity = FW_HEADER_SIZE + FW_KERNEL_SIZE + kMaxFs;
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  static std::vector<unsigned char> image(kCapacity);
  static std::size_t dirty = 0;  // bytes holding the previous input (the check only reads)
  FwHeader header{};
  std::memcpy(&header, data, std::min<std::size_t>(size, sizeof header));
  header_ntoh(&header);
  std::size_t length = FW_HEADER_SIZE;
  if (header.kernel_size == FW_KERNEL_SIZE && header.fs_size % 4 == 0) {
    // Sections adding up to 2 GiB or more are not read at all: the header alone is the image.
    const uint64_t sections = uint64_t{FW_KERNEL_SIZE} + header.fs_size;
    if (sections < (uint64_t{1} << 31)) {
      if (header.fs_size > kMaxFs) return 0;
      length += sections;
    }
  }
  ASAN_UNPOISON_MEMORY_REGION(image.data(), kCapacity);
  std::memset(image.data(), 0, dirty);
  dirty = std::min(size, length);
  std::memcpy(image.data(), data, dirty);
  ASAN_POISON_MEMORY_REGION(image.data() + length, kCapacity - length);
  uint32_t image_id = 0;
  std::memcpy(&image_id, image.data() + 12, sizeof image_id);  // the header's own, in network order
  for (const uint32_t expected : {ntohl(image_id), image_id}) {
    const int r = Ssys_firmwareCheck(image.data(), expected, 0);
    if (r != 0 && r != -1 && r != -2 && r != -3 && r != -6) __builtin_trap();
  }
  return 0;
}
