// setconfig and readconfig with every field type, from text and raw bytes. Descriptor,
// index and record are trusted by both functions, so the harness builds them within that
// contract: the record is allocated to exactly what the descriptor and index reach, and
// any access beyond it is a finding of the sanitizers.
#include <algorithm>
#include <cstring>
#include <memory>
#include <string>

#include "fuzz/fuzz_input.h"
#include "syscommon/maint.h"

namespace {
// Bytes from the field's element that the two functions may touch.
std::size_t reach(const CfgFieldDesc &d, int index) {
  if (d.type == 10) return d.offset + 4;  // the storage word, at most 32 bits
  return d.offset + static_cast<std::size_t>(index) * d.size + std::max<std::size_t>({d.size, 6, 4});
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  if (size < 6) return 0;
  CfgFieldDesc d{};
  d.type = data[0] % 20;  // 1..18 and a few outside the table
  d.size = data[1];
  d.offset = data[2];
  const int index = data[3] % 4;
  d.bit_position = data[4] % 34;  // 0 and 33 are refused
  const int text = data[5] & 1;
  // The value: a terminated text, with room for the 4 bytes a raw store reads.
  std::string value = syscommon::fuzz::text_of(data + 6, size - 6);
  value.resize(std::max<std::size_t>(value.size(), 8));

  const std::size_t bytes = reach(d, index);
  const auto record = std::make_unique<unsigned char[]>(bytes);
  setconfig(record.get(), value.data(), &d, text, index);
  const char *shown = readconfig(record.get(), &d, 1, index);
  if (d.type != 2 && d.type != 9 && strnlen(shown, sizeof readconfig_msg) == sizeof readconfig_msg) __builtin_trap();
  readconfig(record.get(), &d, 0, index);
  return 0;
}
