// Validators as tables of accepted and refused inputs, and the in-place text edits.
#include <regex.h>

#include <cstring>
#include <string>
#include <vector>

#include "support/test_support.h"
#include "syscommon/util.h"

namespace {

struct Case {
  const char *text;
  int expected;
};

TEST(CheckString, GeneralTextSet) {
  const Case cases[] = {
      {"Admin 1.0/x", 1},
      {"a_b@c!d#e$f%g^h&i*j(k)l.m/n-o", 1},
      {"back\\slash", 1},
      {"MiXeD", 1},
      {" ", 1},
      {"", -1},
      {"a,b", -1},
      {"a:b", -1},
      {"a\"b", -1},
      {"a'b", -1},
      {"a+b", -1},
      {"a\nb", -1},
      {"a\tb", -1},
      {"caf\xc3\xa9", -1},
  };
  for (const Case &c : cases) EXPECT_EQ(Ssys_CheckString(c.text), c.expected) << c.text;
  EXPECT_EQ(Ssys_CheckString(nullptr), -1);
}

TEST(CheckString, BannerAllowsLineBreaksOnly) {
  const Case cases[] = {
      {"Welcome\r\nto the router\n", 1},
      {"line one\nline two", 1},
      {"one line", 1},
      {"tab\there", -1},
      {"a,b\n", -1},
      {"", -1},
  };
  for (const Case &c : cases) EXPECT_EQ(Ssys_CheckString_banner(c.text), c.expected) << c.text;
  EXPECT_EQ(Ssys_CheckString_banner(nullptr), -1);
}

TEST(CheckString, HostnameMatchLength) {
  std::string name32 = "a" + std::string(31, 'b');
  std::string name33 = name32 + "c";
  const Case cases[] = {
      {"a", -1},   {"a1", 2},    {name32.c_str(), 32}, {name33.c_str(), -1}, {"1abc", -1},
      {"ab_c", -1}, {"ab-", 3},  {"Router-7", 8},      {"-ab", -1},          {"ab c", -1},
      {"", -1},    {"ab.c", -1},
  };
  for (const Case &c : cases) EXPECT_EQ(Ssys_CheckStringHostname(c.text), c.expected) << c.text;
  EXPECT_EQ(Ssys_CheckStringHostname(nullptr), -1);
  // The GNU interface anchors "$" before a line feed as well.
  EXPECT_EQ(Ssys_CheckStringHostname("ab\nzz"), 2);
}

TEST(CheckString, HostnameLeavesProcessSyntaxAlone) {
  reg_syntax_t before = re_set_syntax(RE_SYNTAX_POSIX_BASIC);
  EXPECT_EQ(Ssys_CheckStringHostname("host"), 4);
  EXPECT_EQ(re_set_syntax(before), RE_SYNTAX_POSIX_BASIC);
}

TEST(CheckString, RegexResultsAndMessages) {
  EXPECT_EQ(Ssys_CheckStringRegex("abc", "^a.c$", nullptr), 0);
  EXPECT_EQ(Ssys_CheckStringRegex("abd", "^a.c$", nullptr), REG_NOMATCH);
  // Extended syntax by default: "+" is an operator.
  EXPECT_EQ(Ssys_CheckStringRegex("aaa", "^a+$", nullptr), 0);
  int basic = 0;
  EXPECT_EQ(Ssys_CheckStringRegex("aaa", "^a+$", &basic), REG_NOMATCH);
  EXPECT_EQ(Ssys_CheckStringRegex("a+", "^a+$", &basic), 0);
  int icase = REG_EXTENDED | REG_ICASE;
  EXPECT_EQ(Ssys_CheckStringRegex("ABC", "^abc$", &icase), 0);

  ::testing::internal::CaptureStderr();
  EXPECT_EQ(Ssys_CheckStringRegex(nullptr, "x", nullptr), -1);
  EXPECT_EQ(Ssys_CheckStringRegex("x", nullptr, nullptr), -1);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "common|Ssys_CheckStringRegex:8275 Invalid parameter\n"
            "common|Ssys_CheckStringRegex:8275 Invalid parameter\n");

  ::testing::internal::CaptureStderr();
  int rc = Ssys_CheckStringRegex("x", "a(b", nullptr);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "common|Ssys_CheckStringRegex:8282 regcomp(a(b) failed\n");
  EXPECT_EQ(rc, REG_EPAREN);
}

TEST(CharacterClasses, AnyOccurrence) {
  struct Row {
    const char *text;
    int digit, upper, lower, special;
  };
  const Row rows[] = {
      {"pass word", -1, -1, 1, -1}, {"a+b", -1, -1, 1, -1}, {"a_b", -1, -1, 1, 1}, {"A9", 1, 1, -1, -1},
      {"", -1, -1, -1, -1},         {"~", -1, -1, -1, 1},   {"()", -1, -1, -1, 1}, {"x=y'", -1, -1, 1, -1},
      {"\xc4", -1, -1, -1, -1},
  };
  for (const Row &r : rows) {
    SCOPED_TRACE(r.text);
    EXPECT_EQ(Ssys_CheckStringDigit(r.text), r.digit);
    EXPECT_EQ(Ssys_CheckStringUppercase(r.text), r.upper);
    EXPECT_EQ(Ssys_CheckStringLowercase(r.text), r.lower);
    EXPECT_EQ(Ssys_CheckStringSpecialchar(r.text), r.special);
  }
  for (char c : std::string("~!@#$%^&*-_|;:,.<>[]{}()")) {
    char s[2] = {c, 0};
    EXPECT_EQ(Ssys_CheckStringSpecialchar(s), 1) << c;
  }
  EXPECT_EQ(Ssys_CheckStringDigit(nullptr), -1);
}

TEST(Scalars, IpAddressNumberAndPrintable) {
  const Case ips[] = {{"0.0.0.0", 1},       {"192.168.1.1", 1}, {"255.255.255.255", 1}, {"192.168.1.256", 0},
                      {"1.2.3", 0},         {"1.2.3.4 ", 0},    {" 1.2.3.4", 0},         {"1.2.3.4.5", 0},
                      {"01.2.3.4", 0},      {"", 0},            {"a.b.c.d", 0}};
  for (const Case &c : ips) EXPECT_EQ(isValidIpAddress(c.text), c.expected) << c.text;
  EXPECT_EQ(isValidIpAddress(nullptr), 0);

  const Case numbers[] = {{"0", 1}, {"0123", 1}, {"", 0}, {"-1", 0}, {"+1", 0}, {"1 ", 0}, {"1.5", 0}, {"x1", 0}};
  for (const Case &c : numbers) EXPECT_EQ(isNumber(c.text), c.expected) << c.text;
  EXPECT_EQ(isNumber(nullptr), 0);

  EXPECT_EQ(Lsyscommon_isValidCharacter(' '), 1);
  EXPECT_EQ(Lsyscommon_isValidCharacter('~'), 1);
  EXPECT_EQ(Lsyscommon_isValidCharacter(31), 0);
  EXPECT_EQ(Lsyscommon_isValidCharacter(127), 0);
  EXPECT_EQ(Lsyscommon_isValidCharacter(0x100 + 'A'), 1);  // only the low 8 bits count
  EXPECT_EQ(Lsyscommon_isValidCharacter(-1), 0);
}

TEST(Scalars, IsZeroArrayHasTheInvertedSense) {
  const unsigned char zeros[4] = {0, 0, 0, 0};
  const unsigned char last[3] = {0, 0, 1};
  EXPECT_EQ(isZeroArray(zeros, 4), 0);
  EXPECT_EQ(isZeroArray(last, 3), 1);
  EXPECT_EQ(isZeroArray(last, 2), 0);
  EXPECT_EQ(isZeroArray(last, 0), 0);
  EXPECT_EQ(isZeroArray(last, -3), 0);
}

TEST(Trimming, SpacesAndLineBreaks) {
  struct Row {
    const char *in;
    const char *space_out;
    const char *cr_out;
  };
  const Row rows[] = {
      {"  ab  ", "ab", "  ab  "},     {"\r\nab\r\n", "\r\nab\r\n", "ab"}, {"", "", ""},
      {"    ", "", "    "},         {"\n\r\n", "\n\r\n", ""},           {"\ta b\t", "\ta b\t", "\ta b\t"},
      {" a\nb ", "a\nb", " a\nb "}, {"x", "x", "x"},
  };
  for (const Row &r : rows) {
    SCOPED_TRACE(r.in);
    std::string a = r.in;
    std::string b = r.in;
    EXPECT_EQ(Ssys_stripspace(a.data()), static_cast<int>(a.size()));
    EXPECT_STREQ(a.c_str(), r.space_out);
    EXPECT_EQ(Ssys_stripCR(b.data()), static_cast<int>(b.size()));
    EXPECT_STREQ(b.c_str(), r.cr_out);
  }
}

TEST(Case, ConvertInPlace) {
  char text[] = "Mixed Case 123_z";
  EXPECT_EQ(toUpper(text), text);
  EXPECT_STREQ(text, "MIXED CASE 123_Z");
  EXPECT_EQ(toLower(text), text);
  EXPECT_STREQ(text, "mixed case 123_z");
}

TEST(AppendStr, BoundsAndTermination) {
  char buf[8];
  std::memset(buf, 'X', sizeof buf);
  std::strcpy(buf, "ab");
  append_str(buf, "cd", sizeof buf);
  EXPECT_STREQ(buf, "abcd");
  append_str(buf, "efg", sizeof buf);  // 7 characters and the zero fill 8 bytes
  EXPECT_STREQ(buf, "abcdefg");

  char full[8];
  std::memset(full, '#', sizeof full);
  std::strcpy(full, "abcde");
  append_str(full, "xyz", sizeof full);  // would reach 8: three bytes copied, no zero
  EXPECT_EQ(std::string(full, 8), "abcdexyz");

  char over[8] = "abcdef";
  append_str(over, "uvwxyz", sizeof over);
  EXPECT_EQ(std::string(over, 8), "abcdefuv");

  char at_size[6] = "abcde";
  append_str(at_size, "zz", 5);  // already holds `size` characters: unchanged
  EXPECT_STREQ(at_size, "abcde");
}

TEST(Months, FewestLetters) {
  const Case cases[] = {{"Jan", 1},  {"feb", 2},  {"MAR", 3},  {"Apr", 4},  {"may", 5},    {"Jun", 6},
                        {"Jul", 7},  {"Aug", 8},  {"Sep", 9},  {"Oct", 10}, {"Nov", 11},   {"Dec", 12},
                        {"August", 8}, {"Axe", 8}, {"Ja", 1},  {"J", 7},    {"M", 5},      {"Mxr", 3},
                        {"Jxn", 6},  {"", 0},     {"Xyz", 0},  {"1", 0}};
  for (const Case &c : cases) EXPECT_EQ(month_str_to_int(c.text), c.expected) << c.text;
  EXPECT_EQ(month_str_to_int(nullptr), 0);
}

TEST(LockStrtok, Tokenises) {
  char text[] = "a,b;;c";
  std::vector<std::string> tokens;
  for (char *t = lock_strtok(text, ",;"); t != nullptr; t = lock_strtok(nullptr, ",;")) tokens.emplace_back(t);
  EXPECT_EQ(tokens, (std::vector<std::string>{"a", "b", "c"}));

}

}  // namespace
