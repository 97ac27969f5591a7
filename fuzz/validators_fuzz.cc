// The text validators and trimmers: any text gets one of their documented answers.
#include "fuzz/fuzz_input.h"
#include "syscommon/util.h"
#include "syscommon/vpn.h"

namespace {
void expect(bool ok) {
  if (!ok) __builtin_trap();
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
  std::string text = syscommon::fuzz::text_of(data, size);
  const char *t = text.c_str();
  int r = Ssys_CheckString(t);
  expect(r == 1 || r == -1);
  r = Ssys_CheckString_banner(t);
  expect(r == 1 || r == -1);
  r = Ssys_CheckStringHostname(t);
  expect(r == -1 || r == -2 || (r >= 2 && r <= 32));
  for (int (*has)(const char *) : {Ssys_CheckStringDigit, Ssys_CheckStringUppercase, Ssys_CheckStringLowercase,
                                   Ssys_CheckStringSpecialchar}) {
    r = has(t);
    expect(r == 1 || r == -1);
  }
  expect((isValidIpAddress(t) | 1) == 1);
  expect((isNumber(t) | 1) == 1);
  expect((is_filename_valid(t) | 1) == 1);
  std::string copy = text;
  expect(Ssys_stripspace(copy.data()) == static_cast<int>(text.size()));
  copy = text;
  expect(Ssys_stripCR(copy.data()) == static_cast<int>(text.size()));
  return 0;
}
