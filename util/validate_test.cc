// Validators as one table of accepted and refused inputs, and the in-place text edits.
#include <regex.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/test_support.h"
#include "syscommon/util.h"

namespace {

struct Check {
  const char *what;
  int (*fn)(const char *);
  const char *text;
  int expected;
};
#define ROW(fn, text, expected) {#fn, fn, text, expected}

const std::string kName32 = "a" + std::string(31, 'b');
const std::string kName33 = kName32 + "c";

TEST(TextChecks, Table) {
  const Check rows[] = {
      ROW(Ssys_CheckString, "Admin 1.0/x", 1), ROW(Ssys_CheckString, "a_b@c!d#e$f%g^h&i*j(k)l.m/n-o", 1),
      ROW(Ssys_CheckString, "back\\slash", 1), ROW(Ssys_CheckString, "", -1), ROW(Ssys_CheckString, nullptr, -1),
      ROW(Ssys_CheckString, "a,b", -1), ROW(Ssys_CheckString, "a:b", -1), ROW(Ssys_CheckString, "a\"b", -1),
      ROW(Ssys_CheckString, "a+b", -1), ROW(Ssys_CheckString, "a\nb", -1), ROW(Ssys_CheckString, "a\tb", -1),
      ROW(Ssys_CheckString_banner, "Welcome\r\nto the router\n", 1), ROW(Ssys_CheckString_banner, "tab\there", -1),
      ROW(Ssys_CheckString_banner, "a,b\n", -1), ROW(Ssys_CheckString_banner, "", -1),
      ROW(Ssys_CheckStringHostname, "a", -1), ROW(Ssys_CheckStringHostname, "a1", 2),
      ROW(Ssys_CheckStringHostname, kName32.c_str(), 32), ROW(Ssys_CheckStringHostname, kName33.c_str(), -1),
      ROW(Ssys_CheckStringHostname, "1abc", -1), ROW(Ssys_CheckStringHostname, "ab_c", -1),
      ROW(Ssys_CheckStringHostname, "ab-", 3), ROW(Ssys_CheckStringHostname, nullptr, -1),
      ROW(Ssys_CheckStringHostname, "ab\nzz", 2),  // the GNU interface anchors "$" before a line feed
      ROW(Ssys_CheckStringSpecialchar, "pass word", -1), ROW(Ssys_CheckStringSpecialchar, "a+b", -1),
      ROW(Ssys_CheckStringSpecialchar, "a_b", 1), ROW(Ssys_CheckStringSpecialchar, "", -1),
      ROW(Ssys_CheckStringDigit, "A9", 1), ROW(Ssys_CheckStringDigit, "Ab", -1), ROW(Ssys_CheckStringDigit, nullptr, -1),
      ROW(Ssys_CheckStringUppercase, "A9", 1), ROW(Ssys_CheckStringUppercase, "a9", -1),
      ROW(Ssys_CheckStringLowercase, "xA", 1), ROW(Ssys_CheckStringLowercase, "A9", -1),
      ROW(isValidIpAddress, "0.0.0.0", 1), ROW(isValidIpAddress, "255.255.255.255", 1),
      ROW(isValidIpAddress, "192.168.1.256", 0), ROW(isValidIpAddress, "1.2.3", 0),
      ROW(isValidIpAddress, "1.2.3.4 ", 0), ROW(isValidIpAddress, "01.2.3.4", 0), ROW(isValidIpAddress, nullptr, 0),
      ROW(isNumber, "0123", 1), ROW(isNumber, "", 0), ROW(isNumber, "-1", 0), ROW(isNumber, "1 ", 0),
      ROW(isNumber, "1.5", 0), ROW(isNumber, nullptr, 0),
      ROW(month_str_to_int, "Jan", 1), ROW(month_str_to_int, "feb", 2), ROW(month_str_to_int, "MAR", 3),
      ROW(month_str_to_int, "Apr", 4), ROW(month_str_to_int, "may", 5), ROW(month_str_to_int, "Jun", 6),
      ROW(month_str_to_int, "Jul", 7), ROW(month_str_to_int, "Aug", 8), ROW(month_str_to_int, "Sep", 9),
      ROW(month_str_to_int, "Oct", 10), ROW(month_str_to_int, "Nov", 11), ROW(month_str_to_int, "Dec", 12),
      ROW(month_str_to_int, "Axe", 8), ROW(month_str_to_int, "Ja", 1), ROW(month_str_to_int, "J", 7),
      ROW(month_str_to_int, "Mxr", 3), ROW(month_str_to_int, "Jxn", 6), ROW(month_str_to_int, "Xyz", 0),
      ROW(month_str_to_int, "", 0), ROW(month_str_to_int, nullptr, 0),
  };
  for (const Check &r : rows)
    EXPECT_EQ(r.fn(r.text), r.expected) << r.what << "(" << (r.text != nullptr ? r.text : "null") << ")";
  for (char c : std::string("~!@#$%^&*-_|;:,.<>[]{}()")) EXPECT_EQ(Ssys_CheckStringSpecialchar(std::string(1, c).c_str()), 1) << c;
}

TEST(TextChecks, HostnameLeavesProcessSyntaxAlone) {
  reg_syntax_t before = re_set_syntax(RE_SYNTAX_POSIX_BASIC);
  EXPECT_EQ(Ssys_CheckStringHostname("host"), 4);
  EXPECT_EQ(re_set_syntax(before), RE_SYNTAX_POSIX_BASIC);
}

TEST(TextChecks, RegexResultsAndMessages) {
  int basic = 0;
  EXPECT_EQ(Ssys_CheckStringRegex("aaa", "^a+$", nullptr), 0);  // extended by default: "+" repeats
  EXPECT_EQ(Ssys_CheckStringRegex("abd", "^a+$", nullptr), REG_NOMATCH);
  EXPECT_EQ(Ssys_CheckStringRegex("a+", "^a+$", &basic), 0);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(Ssys_CheckStringRegex(nullptr, "x", nullptr), -1);
  EXPECT_EQ(Ssys_CheckStringRegex("x", nullptr, nullptr), -1);
  EXPECT_EQ(Ssys_CheckStringRegex("x", "a(b", nullptr), REG_EPAREN);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "common|Ssys_CheckStringRegex:8275 Invalid parameter\n"
            "common|Ssys_CheckStringRegex:8275 Invalid parameter\n"
            "common|Ssys_CheckStringRegex:8282 regcomp(a(b) failed\n");
}

TEST(TextChecks, BytesAndCharacters) {
  const unsigned char bytes[4] = {0, 0, 1, 0};
  EXPECT_EQ(isZeroArray(bytes, 4), 1);  // the inverted sense is kept
  EXPECT_EQ(isZeroArray(bytes, 2), 0);
  EXPECT_EQ(isZeroArray(bytes, -3), 0);
  EXPECT_EQ(isZeroArray(nullptr, 4), 0);
  for (auto [c, expected] : {std::pair<int, int>{' ', 1}, {'~', 1}, {31, 0}, {127, 0}, {0x100 + 'A', 1}, {-1, 0}})
    EXPECT_EQ(Lsyscommon_isValidCharacter(c), expected) << c;
}

TEST(TextEdits, Trimming) {
  struct Row {
    const char *in, *space_out, *cr_out;
  };
  const Row rows[] = {{"  ab  ", "ab", "  ab  "}, {"\r\nab\r\n", "\r\nab\r\n", "ab"}, {"", "", ""},
                      {"    ", "", "    "},     {"\n\r\n", "\n\r\n", ""},          {"\ta b\t", "\ta b\t", "\ta b\t"}};
  for (const Row &r : rows) {
    std::string a = r.in, b = r.in;
    EXPECT_EQ(Ssys_stripspace(a.data()), static_cast<int>(a.size())) << r.in;
    EXPECT_STREQ(a.c_str(), r.space_out);
    EXPECT_EQ(Ssys_stripCR(b.data()), static_cast<int>(b.size())) << r.in;
    EXPECT_STREQ(b.c_str(), r.cr_out);
  }
}

TEST(TextEdits, CaseAppendAndTokens) {
  char text[] = "Mixed Case 123_z";
  EXPECT_STREQ(toUpper(text), "MIXED CASE 123_Z");
  EXPECT_STREQ(toLower(text), "mixed case 123_z");

  struct Row {
    const char *start, *add;
    int size;
    std::string after;  // all 8 bytes of the buffer
  };
  const Row rows[] = {{"ab", "cd", 8, std::string("abcd\0###", 8)},
                      {"ab", "cdefg", 8, std::string("abcdefg\0", 8)},
                      {"abcde", "xyz", 8, "abcdexyz"},  // would reach 8: no terminator
                      {"abcdef", "uvwxyz", 8, "abcdefuv"},
                      {"abcde", "zz", 5, std::string("abcde\0##", 8)}};  // already holds `size`
  for (const Row &r : rows) {
    char buf[8];
    std::memset(buf, '#', sizeof buf);
    std::strcpy(buf, r.start);
    append_str(buf, r.add, r.size);
    EXPECT_EQ(std::string(buf, 8), r.after) << r.start << "+" << r.add;
  }

  char list[] = "a,b;;c";
  std::vector<std::string> tokens;
  for (char *t = lock_strtok(list, ",;"); t != nullptr; t = lock_strtok(nullptr, ",;")) tokens.emplace_back(t);
  EXPECT_EQ(tokens, (std::vector<std::string>{"a", "b", "c"}));
}

}  // namespace
