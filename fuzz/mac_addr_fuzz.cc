// mac_addr: any text gives six bytes and 1.
#include <array>

#include "fuzz/fuzz_input.h"
#include "syscommon/netstat.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::string text = syscommon::fuzz::text_of(data, size);
  std::array<uint8_t, 6> mac{};
  if (mac_addr(text.data(), mac.data()) != 1) __builtin_trap();
  return 0;
}
