// Validators as one table of accepted and refused inputs, and the in-place text edits.
#include <regex.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "support/test_support.h"
#include "syscommon/util.h"

namespace {

struct Group {
  const char *what;
  int (*fn)(const char *);
  std::vector<std::pair<const char *, int>> rows;  // text, result
};

TEST(TextChecks, Table) {
  const std::string name32 = "a" + std::string(31, 'b'), name33 = name32 + "c";
  const Group groups[] = {
      {"general", Ssys_CheckString, {{"Admin 1.0/x", 1}, {"a_b@c!d#e$f%g^h&i*j(k)l.m/n-o", 1}, {"back\\slash", 1},
                                     {"", -1}, {nullptr, -1}, {"a,b", -1}, {"a:b", -1}, {"a\"b", -1}, {"a+b", -1},
                                     {"a\nb", -1}, {"a\tb", -1}}},
      {"banner", Ssys_CheckString_banner, {{"Welcome\r\nto the router\n", 1}, {"tab\there", -1}, {"a,b\n", -1}, {"", -1}}},
      {"hostname", Ssys_CheckStringHostname, {{"a", -1}, {"a1", 2}, {name32.c_str(), 32}, {name33.c_str(), -1},
                                              {"1abc", -1}, {"ab_c", -1}, {"ab-", 3}, {nullptr, -1},
                                              {"ab\nzz", 2}}},  // the GNU interface anchors "$" before a line feed
      {"special", Ssys_CheckStringSpecialchar, {{"pass word", -1}, {"a+b", -1}, {"a_b", 1}, {"", -1}}},
      {"digit", Ssys_CheckStringDigit, {{"A9", 1}, {"Ab", -1}, {nullptr, -1}}},
      {"upper", Ssys_CheckStringUppercase, {{"A9", 1}, {"a9", -1}}},
      {"lower", Ssys_CheckStringLowercase, {{"xA", 1}, {"A9", -1}}},
      {"ip", isValidIpAddress, {{"0.0.0.0", 1}, {"255.255.255.255", 1}, {"192.168.1.256", 0}, {"1.2.3", 0},
                                {"1.2.3.4 ", 0}, {"01.2.3.4", 0}, {nullptr, 0}}},
      {"number", isNumber, {{"0123", 1}, {"", 0}, {"-1", 0}, {"1 ", 0}, {"1.5", 0}, {nullptr, 0}}},
      {"month", month_str_to_int, {{"Jan", 1}, {"feb", 2}, {"MAR", 3}, {"Apr", 4}, {"may", 5}, {"Jun", 6}, {"Jul", 7},
                                   {"Aug", 8}, {"Sep", 9}, {"Oct", 10}, {"Nov", 11}, {"Dec", 12}, {"Axe", 8}, {"Ja", 1},
                                   {"J", 7}, {"Mxr", 3}, {"Jxn", 6}, {"Xyz", 0}, {"", 0}, {nullptr, 0}}},
  };
  for (const Group &g : groups)
    for (auto [text, expected] : g.rows) EXPECT_EQ(g.fn(text), expected) << g.what << "(" << (text ? text : "null") << ")";
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
  for (auto [in, space_out, cr_out] :
       {std::tuple<std::string, const char *, const char *>{"  ab  ", "ab", "  ab  "}, {"\r\nab\r\n", "\r\nab\r\n", "ab"},
        {"", "", ""}, {"    ", "", "    "}, {"\n\r\n", "\n\r\n", ""}, {"\ta b\t", "\ta b\t", "\ta b\t"}}) {
    std::string a = in, b = in;
    EXPECT_EQ(Ssys_stripspace(a.data()), static_cast<int>(in.size())) << in;
    EXPECT_STREQ(a.c_str(), space_out);
    EXPECT_EQ(Ssys_stripCR(b.data()), static_cast<int>(in.size())) << in;
    EXPECT_STREQ(b.c_str(), cr_out);
  }
}

TEST(TextEdits, CaseAppendAndTokens) {
  char text[] = "Mixed Case 123_z";
  EXPECT_STREQ(toUpper(text), "MIXED CASE 123_Z");
  EXPECT_STREQ(toLower(text), "mixed case 123_z");

  using namespace std::string_literals;
  for (auto [start, add, size, after] :  // `after`: all 8 bytes of the buffer
       {std::tuple<const char *, const char *, int, std::string>{"ab", "cd", 8, "abcd\0###"s},
        {"ab", "cdefg", 8, "abcdefg\0"s}, {"abcde", "xyz", 8, "abcdexyz"},  // would reach 8: no terminator
        {"abcdef", "uvwxyz", 8, "abcdefuv"}, {"abcde", "zz", 5, "abcde\0##"s}}) {  // already holds `size`
    char buf[8];
    std::memset(buf, '#', sizeof buf);
    std::strcpy(buf, start);
    append_str(buf, add, size);
    EXPECT_EQ(std::string(buf, 8), after) << start << "+" << add;
  }

  char list[] = "a,b;;c";
  std::vector<std::string> tokens;
  for (char *t = lock_strtok(list, ",;"); t != nullptr; t = lock_strtok(nullptr, ",;")) tokens.emplace_back(t);
  EXPECT_EQ(tokens, (std::vector<std::string>{"a", "b", "c"}));
}

}  // namespace
