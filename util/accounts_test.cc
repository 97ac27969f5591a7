// Account rules: authority codes, reserved names, the last System admin, the shared-list
// search and the authority texts.
#include <cstring>
#include <string>

#include "support/test_support.h"
#include "syscommon/util.h"

namespace {

UserAccount make(const char *name, uint32_t authority, const char *password = "pw", uint32_t state = 1) {
  UserAccount rec{};
  std::strncpy(rec.name, name, sizeof rec.name - 1);
  std::strncpy(rec.password, password, sizeof rec.password - 1);
  rec.state = state;
  rec.authority = authority;
  return rec;
}

TEST(AccountSet, CodesOnNewAndExistingRecords) {
  struct Row {
    const int *code;
    int is_new;
    int result;
    uint32_t state, authority;
  };
  static const int c0 = 0, c1 = 1, c2 = 2, c3 = 3, c4 = 4, c5 = 5, cm = -1;
  // Existing record starts as a Configuration admin with state 7.
  const Row rows[] = {
      {&c1, 1, 0, 1, 0},   {&c2, 1, 0, 1, 17},  {&c3, 1, 0, 1, 16},  {&c4, 1, 0, 0, 16},  {nullptr, 1, 0, 0, 16},
      {&c1, 0, 0, 1, 0},   {&c3, 0, 0, 1, 16},  {&c4, 0, 0, 7, 17},  {nullptr, 0, 0, 7, 17},
      {&c0, 1, 11, 7, 17}, {&c5, 0, 11, 7, 17}, {&cm, 1, 11, 7, 17},
  };
  for (const Row &r : rows) {
    SCOPED_TRACE(::testing::Message() << "code " << (r.code ? *r.code : -99) << " new " << r.is_new);
    UserAccount rec = make("bob", 17, "old", 7);
    EXPECT_EQ(account_set(&rec, r.code, "carol", "new", r.is_new), r.result);
    EXPECT_EQ(rec.state, r.state);
    EXPECT_EQ(rec.authority, r.authority);
    if (r.result != 0) {
      EXPECT_STREQ(rec.name, "bob");
      EXPECT_STREQ(rec.password, "old");
    } else {
      EXPECT_STREQ(rec.name, r.is_new ? "carol" : "bob");  // only a new record takes the name
      EXPECT_STREQ(rec.password, "new");
    }
  }
}

TEST(AccountSet, ReservedNames) {
  const int sys = 1, cfg = 2, usr = 3, keep = 4;
  struct Row {
    const char *record_name;
    uint32_t record_authority;
    const int *code;
    const char *name;
    int is_new;
    int result;
  };
  const Row rows[] = {
      {"", 16, &usr, "admin", 1, 8},        {"", 16, &cfg, "admin", 1, 8},
      {"", 16, &sys, "admin", 1, 0},        {"", 16, nullptr, "admin", 1, 8},  // a new record defaults to user
      {"", 16, &cfg, "user", 1, 8},         {"", 16, &sys, "user", 1, 8},
      {"", 16, &usr, "user", 1, 0},         {"", 16, nullptr, "user", 1, 0},
      {"admin", 0, &keep, "admin", 0, 0},   {"admin", 0, &usr, nullptr, 0, 8},  // the record's own name counts
      {"user", 16, &sys, nullptr, 0, 8},    {"bob", 16, &sys, "admin", 0, 0},
      {"bob", 16, &usr, "admin", 0, 8},     {"administrator", 0, &usr, nullptr, 0, 0},
  };
  for (const Row &r : rows) {
    SCOPED_TRACE(::testing::Message() << r.record_name << " -> " << (r.name ? r.name : "(null)"));
    UserAccount rec = make(r.record_name, r.record_authority, "old", 1);
    UserAccount before = rec;
    EXPECT_EQ(account_set(&rec, r.code, r.name, "pw", r.is_new), r.result);
    if (r.result != 0) EXPECT_EQ(std::memcmp(&rec, &before, sizeof rec), 0);
  }
}

TEST(AccountSet, PasswordAndNameBounds) {
  const int usr = 3;
  UserAccount rec = make("x", 16, "secret");
  std::memset(rec.name, 'Q', sizeof rec.name);
  std::string long_name(40, 'n');
  std::string long_pw(40, 'p');
  EXPECT_EQ(account_set(&rec, &usr, long_name.c_str(), long_pw.c_str(), 1), 0);
  EXPECT_EQ(std::string(rec.name), std::string(31, 'n'));
  EXPECT_EQ(std::string(rec.password), std::string(31, 'p'));
  EXPECT_EQ(account_set(&rec, &usr, nullptr, nullptr, 0), 0);
  EXPECT_STREQ(rec.password, "");  // an absent password stores an empty text
}

TEST(AccountRm, LastAdminEmptySlotsAndShift) {
  UserAccountList list{};
  list.account[0] = make("admin", 0);
  list.account[1] = make("bob", 16);
  list.account[2] = make("carol", 17);
  list.account[3] = make("dave", 16);

  EXPECT_EQ(account_rm(&list, 0), 7);  // the only System admin
  EXPECT_EQ(account_rm(&list, 4), 3);  // empty record
  EXPECT_EQ(account_rm(&list, 10), 3);
  EXPECT_EQ(account_rm(&list, -1), 3);

  ASSERT_EQ(account_rm(&list, 1), 0);
  EXPECT_STREQ(list.account[0].name, "admin");
  EXPECT_STREQ(list.account[1].name, "carol");
  EXPECT_STREQ(list.account[2].name, "dave");
  EXPECT_EQ(list.account[3].name[0], '\0');

  // With a second System admin either may go; the list stays packed.
  list.account[3] = make("root", 0);
  ASSERT_EQ(account_rm(&list, 0), 0);
  EXPECT_STREQ(list.account[2].name, "root");
  EXPECT_EQ(account_rm(&list, 2), 7);  // now the only one again

  // A full list: removing the first moves nine records and clears the tenth.
  UserAccountList full{};
  for (int i = 0; i < ACCOUNT_MAX; ++i) full.account[i] = make(("u" + std::to_string(i)).c_str(), i == 9 ? 0 : 16);
  ASSERT_EQ(account_rm(&full, 0), 0);
  EXPECT_STREQ(full.account[8].name, "u9");
  UserAccount zero{};
  EXPECT_EQ(std::memcmp(&full.account[9], &zero, sizeof zero), 0);
}

TEST(AccountAuthority, TextsAndSizeRules) {
  struct Row {
    int authority;
    uint8_t size;
    int result;
    const char *text;
  };
  const Row rows[] = {
      {0, 20, 0, "System admin"}, {0, 6, 0, "System admin"}, {0, 5, 1, nullptr},
      {16, 5, 0, "user"},         {16, 4, 1, nullptr},       {17, 13, 0, "Configuration admin"},
      {17, 12, 1, nullptr},       {17, 255, 0, "Configuration admin"},
  };
  for (const Row &r : rows) {
    SCOPED_TRACE(::testing::Message() << r.authority << "/" << int(r.size));
    char out[32];
    std::memset(out, '#', sizeof out);
    out[31] = '\0';
    EXPECT_EQ(account_get_authority_description(r.authority, out, r.size), r.result);
    if (r.text != nullptr)
      EXPECT_STREQ(out, r.text);
    else
      EXPECT_EQ(out[0], '#');  // nothing written
  }
  ::testing::internal::CaptureStdout();
  char out[32] = "";
  EXPECT_EQ(account_get_authority_description(5, out, 200), 1);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "unknown authority: 5, 200\n");
  EXPECT_STREQ(out, "");
}

class SharedAccounts : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
  }
};

TEST_F(SharedAccounts, SearchStopsAtTheFirstEmptyRecord) {
  UserAccountList list{};
  list.account[0] = make("admin", 0, "adminpw");
  list.account[1] = make("bob", 16, "bobpw");
  list.account[3] = make("hidden", 16, "x");  // behind an empty record
  shm_sysSetUseraccount(&list);

  // The list lives at offset 0 of segment 7894 as 72-byte records.
  syscommon::testing::RawSegment raw(7894);
  EXPECT_EQ(raw.text(72), "bob");
  EXPECT_EQ(raw.text(72 + 32), "bobpw");
  EXPECT_EQ(raw.u32(72 + 68), 16u);

  EXPECT_EQ(account_get_account_list_index("admin"), 0);
  EXPECT_EQ(account_get_account_list_index("bob"), 1);
  EXPECT_EQ(account_get_account_list_index("hidden"), -1);
  EXPECT_EQ(account_get_account_list_index("Bob"), -1);
  EXPECT_EQ(account_get_account_list_index("bo"), -1);
  EXPECT_EQ(account_get_account_list_index(""), -1);
  EXPECT_EQ(account_get_account_list_index(nullptr), -1);

  char pw[32] = "unchanged";
  EXPECT_EQ(account_get_account_password("bob", pw), 0);
  EXPECT_STREQ(pw, "bobpw");
  std::strcpy(pw, "unchanged");
  EXPECT_EQ(account_get_account_password("hidden", pw), -1);
  EXPECT_STREQ(pw, "unchanged");

  // A full list of ten is searched to its end.
  for (int i = 0; i < ACCOUNT_MAX; ++i) list.account[i] = make(("u" + std::to_string(i)).c_str(), 16);
  shm_sysSetUseraccount(&list);
  EXPECT_EQ(account_get_account_list_index("u9"), 9);
}

}  // namespace
