// capture_string_only: the text cut in place within its buffer; start characters and
// delimiters from the input as well.
#include <cstring>
#include <vector>

#include "fuzz/fuzz_input.h"
#include "syscommon/hw.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 1) return 0;
  const bool with_start = (data[0] & 1) != 0, with_delims = (data[0] & 2) != 0;
  auto [text, rest] = syscommon::fuzz::two_texts_of(data + 1, size - 1);
  const std::size_t cut = rest.find('\x01');
  const std::string start = rest.substr(0, cut);
  const std::string delims = cut == std::string::npos ? std::string() : rest.substr(cut + 1);
  std::vector<char> buf(text.begin(), text.end());
  buf.push_back('\0');
  capture_string_only(buf.data(), static_cast<int>(buf.size()), with_start ? start.c_str() : nullptr,
                      with_delims ? delims.c_str() : nullptr);
  if (std::memchr(buf.data(), '\0', buf.size()) == nullptr) __builtin_trap();
  return 0;
}
