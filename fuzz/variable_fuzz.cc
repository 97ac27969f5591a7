// getVariableFromString: key and haystack from the input; the copy never passes `size`.
#include <array>

#include "fuzz/fuzz_input.h"
#include "syscommon/log.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1) return 0;
  const int out_size = data[0] % 72;  // 0..71: empty, short and roomy outputs
  auto [key, haystack] = syscommon::fuzz::two_texts_of(data + 1, size - 1);
  std::array<char, 72> out{};
  const int n = getVariableFromString(key.c_str(), haystack.c_str(), out.data(), out_size);
  if (n > 0 && (n >= out_size || out[static_cast<size_t>(n)] != '\0')) __builtin_trap();
  return 0;
}
