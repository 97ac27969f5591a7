// Account rules: authority codes, reserved names, the last System admin, the shared-list
// search and the authority texts.
#include <cstring>
#include <string>
#include <tuple>

#include "support/test_support.h"
#include "syscommon/util.h"

namespace {

UserAccount make(const char *name, uint32_t authority, const char *password = "old", uint32_t state = 1) {
  UserAccount rec{};
  std::strncpy(rec.name, name, sizeof rec.name - 1);
  std::strncpy(rec.password, password, sizeof rec.password - 1);
  rec.state = state;
  rec.authority = authority;
  return rec;
}

TEST(AccountSet, CodesReservedNamesAndBounds) {
  static const int c0 = 0, c1 = 1, c2 = 2, c3 = 3, c4 = 4, c5 = 5;
  struct Row {
    const char *record_name;  // the record starts as a Configuration admin with state 7
    const int *code;
    const char *name;
    int is_new, result;
    uint32_t state, authority;  // afterwards
  };
  const Row rows[] = {
      {"bob", &c1, "carol", 1, 0, 1, 0},     {"bob", &c2, "carol", 1, 0, 1, 17},
      {"bob", &c3, "carol", 1, 0, 1, 16},    {"bob", &c4, "carol", 1, 0, 0, 16},
      {"bob", nullptr, "carol", 1, 0, 0, 16}, {"bob", &c3, "carol", 0, 0, 1, 16},
      {"bob", &c4, "carol", 0, 0, 7, 17},    {"bob", nullptr, "carol", 0, 0, 7, 17},
      {"bob", &c0, "carol", 1, 11, 7, 17},   {"bob", &c5, "carol", 0, 11, 7, 17},
      {"", &c3, "admin", 1, 8, 7, 17},       {"", nullptr, "admin", 1, 8, 7, 17},  // a new record defaults to user
      {"", &c1, "admin", 1, 0, 1, 0},        {"", &c2, "user", 1, 8, 7, 17},
      {"", nullptr, "user", 1, 0, 0, 16},    {"admin", &c3, nullptr, 0, 8, 7, 17},  // the record's own name counts
      {"bob", &c3, "admin", 0, 8, 7, 17},    {"administrator", &c3, nullptr, 0, 0, 1, 16},
  };
  for (const Row &r : rows) {
    SCOPED_TRACE(::testing::Message() << r.record_name << "/" << (r.code ? *r.code : -1) << "/" << r.is_new);
    UserAccount rec = make(r.record_name, 17, "old", 7);
    EXPECT_EQ(account_set(&rec, r.code, r.name, "new", r.is_new), r.result);
    EXPECT_EQ(rec.state, r.state);
    EXPECT_EQ(rec.authority, r.authority);
    EXPECT_STREQ(rec.password, r.result == 0 ? "new" : "old");
    EXPECT_STREQ(rec.name, r.result == 0 && r.is_new ? r.name : r.record_name);  // only a new record takes the name
  }
  UserAccount rec = make("x", 16);
  std::string long_text(40, 'n');
  EXPECT_EQ(account_set(&rec, &c3, long_text.c_str(), long_text.c_str(), 1), 0);
  EXPECT_EQ(std::string(rec.name), std::string(31, 'n'));
  EXPECT_EQ(std::string(rec.password), std::string(31, 'n'));
  EXPECT_EQ(account_set(&rec, &c3, nullptr, nullptr, 0), 0);
  EXPECT_STREQ(rec.password, "");  // an absent password stores an empty text
}

TEST(AccountRm, LastAdminEmptySlotsAndShift) {
  UserAccountList list{};  // a full list: "admin", then users u1..u9
  for (int i = 0; i < ACCOUNT_MAX; ++i) list.account[i] = make(i == 0 ? "admin" : ("u" + std::to_string(i)).c_str(), i == 0 ? 0 : 16);
  for (int index : {10, -1}) EXPECT_EQ(account_rm(&list, index), 3) << index;
  EXPECT_EQ(account_rm(&list, 0), 7);  // the only System admin
  ASSERT_EQ(account_rm(&list, 1), 0);
  EXPECT_STREQ(list.account[1].name, "u2");
  EXPECT_STREQ(list.account[8].name, "u9");
  UserAccount zero{};
  EXPECT_EQ(std::memcmp(&list.account[9], &zero, sizeof zero), 0);  // the last record is cleared
  EXPECT_EQ(account_rm(&list, 9), 3);                                // and counts as empty
  list.account[9] = make("root", 0);  // a second System admin: either may go
  ASSERT_EQ(account_rm(&list, 0), 0);
  EXPECT_EQ(account_rm(&list, 8), 7);
}

TEST(AccountAuthority, TextsAndSizeRules) {
  for (auto [authority, size, result, text] :
       {std::tuple<int, uint8_t, int, std::string>{0, 6, 0, "System admin"}, {0, 5, 1, "#"}, {16, 5, 0, "user"},
        {16, 4, 1, "#"}, {17, 13, 0, "Configuration admin"}, {17, 12, 1, "#"}}) {
    char out[32] = "#";
    EXPECT_EQ(account_get_authority_description(authority, out, size), result) << authority << "/" << +size;
    EXPECT_EQ(out, text);
  }
  ::testing::internal::CaptureStdout();
  char out[32] = "#";
  EXPECT_EQ(account_get_authority_description(5, out, 200), 1);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "unknown authority: 5, 200\n");
}

TEST(SharedAccounts, SearchStopsAtTheFirstEmptyRecord) {
  SYSCOMMON_REQUIRE_ISOLATION();
  shm_init();
  UserAccountList list{};
  list.account[0] = make("admin", 0, "adminpw");
  list.account[1] = make("bob", 16, "bobpw");
  list.account[3] = make("hidden", 16, "x");  // behind an empty record
  shm_sysSetUseraccount(&list);
  syscommon::testing::RawSegment raw(7894);  // 72-byte records from offset 0
  EXPECT_EQ(raw.text(72 + 32), "bobpw");
  EXPECT_EQ(raw.u32(72 + 68), 16u);

  for (auto [name, index] : {std::pair<const char *, int>{"admin", 0}, {"bob", 1}, {"hidden", -1}, {"Bob", -1},
                             {"bo", -1}, {"", -1}, {nullptr, -1}})
    EXPECT_EQ(account_get_account_list_index(name), index) << (name ? name : "null");
  char pw[32] = "unchanged";
  EXPECT_EQ(account_get_account_password("hidden", pw), -1);
  EXPECT_STREQ(pw, "unchanged");
  EXPECT_EQ(account_get_account_password("bob", pw), 0);
  EXPECT_STREQ(pw, "bobpw");

  for (int i = 0; i < ACCOUNT_MAX; ++i) list.account[i] = make(("u" + std::to_string(i)).c_str(), 16);
  shm_sysSetUseraccount(&list);
  EXPECT_EQ(account_get_account_list_index("u9"), 9);  // a full list is searched to its end
}

}  // namespace
