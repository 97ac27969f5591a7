// Web session table on the store, with the millisecond clock under the test's control.
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "session/test_clock.h"
#include "support/test_support.h"
#include "syscommon/session.h"

using syscommon::testing::g_msecs;
using syscommon::testing::RawSegment;
using syscommon::testing::stdout_of;

namespace {

constexpr std::size_t kListOff = 44, kCsrfOff = 748, kCountOff = 8;

WebSessionList table() {
  WebSessionList list{};
  shm_sysGet_multiSession_List(&list);
  return list;
}

CsrfTokenList tokens() {
  CsrfTokenList list{};
  shm_sysGet_csrf_Token_List(&list);
  return list;
}

// Opens session `id` with user id + 100, protocol id % 3 and login token id * 2.
int open_session(uint32_t id) { return Ssgl2_webmultisession_session_set(id, id + 100, id % 3, id * 2); }

// Index of the open entry holding `id` after `from`, or -1.
int index_of(uint32_t id, int from = 0) {
  const WebSessionList list = table();
  for (int i = from; i < WEB_SESSION_MAX; ++i)
    if (list.entry[i].in_use == 1 && list.entry[i].session_id == id) return i;
  return -1;
}

class WebSessionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    shm_init();
    shm_sysSet_web_multiSession_maxUser(10);
    g_msecs = 1000;
  }
  // Entries given as (index, id), all last active now.
  static void fill(const std::vector<std::pair<int, uint32_t>> &entries) {
    WebSessionList list{};
    for (const auto &[i, id] : entries) list.entry[i] = {1, id, g_msecs, id * 2, id + 100, id % 3};
    shm_sysSet_multiSession_List(&list);
    shm_sysSet_usercount(static_cast<uint32_t>(entries.size()));
  }
};

TEST_F(WebSessionTest, CapacityIsTestedOnTheFirstFreeIndexAndDuplicatesOnlyBeforeIt) {
  struct Row {
    uint32_t max;
    std::vector<std::pair<int, uint32_t>> entries;
    uint32_t id;
    int rc, taken;
    const char *line;
  };
  const std::vector<std::pair<int, uint32_t>> all10 = {{0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 5},
                                                       {5, 6}, {6, 7}, {7, 8}, {8, 9}, {9, 10}};
  const Row rows[] = {
      {3, {{0, 1}, {2, 3}}, 9, 0, 1, nullptr},  // a hole below the maximum is taken
      {3, {{0, 1}, {1, 2}, {2, 3}}, 9, 13, -1, "\r\nSsgl2_webmultisession_session_set_476:session is full.\n"},
      {3, {{1, 2}, {2, 3}, {3, 4}, {4, 5}}, 9, 0, 0, nullptr},  // four open, index 0 free
      {10, {{0, 1}, {2, 3}}, 1, 16, -1, ""},
      {10, {{0, 1}, {2, 3}}, 3, 0, 1, nullptr},  // the duplicate sits after the first free entry
      {10, all10, 99, 13, -1, "\r\nSsgl2_webmultisession_session_set_507:session(0x63) not found.\n"},
      {0, {}, 9, 13, -1, "\r\nSsgl2_webmultisession_session_set_476:session is full.\n"},
  };
  for (const Row &row : rows) {
    shm_sysSet_web_multiSession_maxUser(row.max);
    fill(row.entries);
    const WebSessionList before = table();
    int rc = -1;
    const std::string out = stdout_of([&] { rc = open_session(row.id); });
    EXPECT_EQ(rc, row.rc) << row.id << " max " << row.max;
    if (row.taken >= 0) {
      EXPECT_EQ(index_of(row.id, row.taken), row.taken) << row.id;
      EXPECT_EQ(shm_sysGet_usercount(), row.entries.size() + 1);
    } else {
      EXPECT_EQ(out, row.line);
      const WebSessionList after = table();
      EXPECT_EQ(std::memcmp(&before, &after, sizeof before), 0);
      EXPECT_EQ(shm_sysGet_usercount(), row.entries.size());
    }
  }
}

TEST_F(WebSessionTest, OpeningPrintsItsLinesAndDerivesTheTokenFromIdAndClock) {
  g_msecs = 5000;
  const std::string out = stdout_of([] { EXPECT_EQ(open_session(0xabc), 0); });
  EXPECT_EQ(out,
            "\r\nSsgl2_webmultisession_session_set_480:sessionIndex[0],sessionID[0xabc],Time[5000]\n"
            "\r\n[Cookie index = 0] csrf [sessionID = abc] [csrfToken = 31cc] [LogincsrfToken = 1578]\n"
            "\r\n[Cookie index = 0] cookie [sessionID = abc] [LogincsrfToken = 1578]\n");
  RawSegment raw(7906);
  const uint32_t words[] = {1, 0xabc, 5000, 0x1578, 0xabc + 100, 0xabc % 3};
  for (int w = 0; w < 6; ++w) EXPECT_EQ(raw.u32(kListOff + 4 * w), words[w]) << w;
  const uint32_t csrf[] = {0xabc, 0xabc + 10000, 0x1578, 0xabc + 100};
  for (int w = 0; w < 4; ++w) EXPECT_EQ(raw.u32(kCsrfOff + 4 * w), csrf[w]) << w;
  EXPECT_EQ(raw.u32(kCountOff), 1u);

  // Same millisecond: the tokens differ only by the identifiers; the sum wraps at 2^32.
  EXPECT_EQ(open_session(0xFFFFFFF0u), 0);
  EXPECT_EQ(tokens().entry[1].csrf_token - tokens().entry[0].csrf_token, 0xFFFFFFF0u - 0xabc);
  EXPECT_EQ(tokens().entry[1].csrf_token, 0xFFFFFFF0u + 10000u);
}

TEST_F(WebSessionTest, VerifyAgesOnTheUnsignedMillisecondDifference) {
  struct Row {
    uint32_t opened, now;
    int rc;
  };
  const Row rows[] = {
      {1000, 31000, 0},  {1000, 31001, 14},
      {0xFFFFF000u, 0xFFFFF000u + 30000u, 0},  // across the wrap of the 32-bit clock
      {0xFFFFF000u, 0xFFFFF000u + 30001u, 14},
      {5000, 4999, 14},  // the clock went backwards
  };
  for (const Row &row : rows) {
    Ssgl2_webmultisession_initial();
    g_msecs = row.opened;
    open_session(7);
    g_msecs = row.now;
    uint32_t user = 0;
    int rc = -1;
    const std::string out = stdout_of([&] { rc = Ssgl2_webmultisession_session_verify(7, &user); });
    EXPECT_EQ(rc, row.rc) << row.opened << " -> " << row.now;
    if (row.rc == 0) {
      EXPECT_EQ(user, 107u);
      EXPECT_EQ(table().entry[0].time, row.now);  // refreshed
      EXPECT_EQ(out, "");
    } else {
      EXPECT_EQ(out,
                "\r\nSsgl2_webmultisession_session_verify_426:session(0x7) age.\n"
                "\r\nSsgl2_webmultisession_session_verify_427:session(0x7) age.\n");
      EXPECT_EQ(table().entry[0].in_use, 0u);
      EXPECT_EQ(tokens().entry[0].session_id, 0u);
      EXPECT_EQ(shm_sysGet_usercount(), 0u);
    }
  }
  // Opening a session ages the stale ones first, so their entries can be taken again.
  fill({{0, 1}, {1, 2}});
  shm_sysSet_web_multiSession_maxUser(1);
  g_msecs += 30001;
  EXPECT_EQ(open_session(3), 0);
  EXPECT_EQ(index_of(3), 0);
  EXPECT_EQ(shm_sysGet_usercount(), 1u);
}

TEST_F(WebSessionTest, LookupsRemovalAndForcedAgeing) {
  uint32_t user = 0;
  fill({{0, 1}, {1, 2}});
  shm_sysSet_usercount(0);  // a count of 0 hides filled entries from verify and remove
  EXPECT_EQ(stdout_of([&] { EXPECT_EQ(Ssgl2_webmultisession_session_verify(1, &user), 15); }), "");
  EXPECT_EQ(Ssgl2_webmultisession_session_remove(1), 15);
  shm_sysSet_usercount(2);

  const std::pair<std::function<int()>, std::string> misses[] = {
      {[&] { return Ssgl2_webmultisession_session_verify(9, &user); },
       "\r\nSsgl2_webmultisession_session_verify_421:session(0x9) not found.\n"},
      {[] { return Ssgl2_webmultisession_session_forceage(9); },
       "\r\nSsgl2_webmultisession_session_forceage_287:session(0x9) not found."},
      {[] { return Ssgl2_webmultisession_session_remove(9); }, ""},
  };
  for (const auto &[call, line] : misses) {
    int rc = 0;
    EXPECT_EQ(stdout_of([&] { rc = call(); }), line);
    EXPECT_EQ(rc, 15) << line;
  }
  const std::string update_miss = "\r\nSsgl2_update_session_now_124:session(0x9) not found.\n";
  EXPECT_EQ(stdout_of([&] { EXPECT_EQ(Ssgl2_update_session_now(9), int(update_miss.size())); }), update_miss);

  g_msecs += 100000;  // long idle: update refreshes without ageing
  EXPECT_EQ(Ssgl2_update_session_now(2), 0);
  EXPECT_EQ(table().entry[1].time, g_msecs);
  EXPECT_EQ(Ssgl2_webmultisession_check_auth_protocol(2), 2u);
  EXPECT_EQ(Ssgl2_webmultisession_check_auth_protocol(5), 0u);

  EXPECT_EQ(Ssgl2_webmultisession_session_forceage(2), 14);
  EXPECT_EQ(index_of(2), -1);
  EXPECT_EQ(Ssgl2_webmultisession_check_auth_protocol(2), 0u);
  EXPECT_EQ(stdout_of([] { EXPECT_EQ(Ssgl2_webmultisession_session_remove(1), 0); }),
            "\r\nSsgl2_webmultisession_session_remove_234:session(0x1) remove.\n");
  EXPECT_EQ(shm_sysGet_usercount(), 0u);
  RawSegment raw(7906);
  EXPECT_TRUE(raw.zero(kListOff, 240));
  EXPECT_TRUE(raw.zero(kCsrfOff, 160));
}

TEST_F(WebSessionTest, ChangingTheMaximumDropsSessionsOrReopensTheCallers) {
  fill({{0, 1}, {1, 2}});
  for (const int refused : {0, 11, -1, 10}) EXPECT_EQ(Ssgl2_webmultisession_maxuser_set(refused), refused);
  EXPECT_EQ(shm_sysGet_usercount(), 2u);
  EXPECT_EQ(Ssgl2_webmultisession_maxuser_set_bysession(11, 1), 1);
  EXPECT_EQ(Ssgl2_webmultisession_maxuser_set_bysession(10, 1), 0);
  EXPECT_EQ(index_of(2), 1);

  g_msecs += 50;
  EXPECT_EQ(Ssgl2_webmultisession_maxuser_set_bysession(4, 2), 0);
  EXPECT_EQ(shm_sysGet_web_multiSession_maxUser(), 4u);
  EXPECT_EQ(index_of(1), -1);
  EXPECT_EQ(index_of(2), 0);  // reopened alone, with a fresh time and token
  EXPECT_EQ(table().entry[0].user, 102u);
  EXPECT_EQ(tokens().entry[0].csrf_token, 2u + 2 * g_msecs);
  EXPECT_EQ(shm_sysGet_usercount(), 1u);

  const std::string out = stdout_of([] { EXPECT_EQ(Ssgl2_webmultisession_maxuser_set_bysession(5, 9), 0); });
  EXPECT_EQ(out.rfind("\r\nSsgl2_webmultisession_maxuser_set_bysession_387:session(0x9) not found.", 0), 0u);
  EXPECT_EQ(index_of(2), -1);

  fill({{0, 1}});
  std::string init;
  for (int i = 0; i < 10; ++i) init += "\r\nInit csrf token index = " + std::to_string(i);
  EXPECT_EQ(stdout_of([] { EXPECT_EQ(Ssgl2_webmultisession_maxuser_set(3), 0); }), init);
  EXPECT_EQ(shm_sysGet_usercount(), 0u);
  EXPECT_EQ(index_of(1), -1);
}

TEST_F(WebSessionTest, GarbageWrittenByAnotherProcessGivesCodesNotCrashes) {
  RawSegment raw(7906);
  uint32_t x = 0x9e3779b9u;
  for (std::size_t off = 0; off < 908; off += 4) {
    x = x * 1664525u + 1013904223u;
    raw.put_u32(off, (off / 4) % 3 == 0 ? x % 3 : x);  // in_use words of 0, 1 or 2 mixed in
  }
  for (uint32_t id : {0u, 1u, raw.u32(kListOff + 4), 0xFFFFFFFFu}) {
    uint32_t user = 0;
    const std::vector<int> rcs = {open_session(id), Ssgl2_webmultisession_session_verify(id, &user),
                                  Ssgl2_webmultisession_session_forceage(id),
                                  Ssgl2_webmultisession_session_remove(id)};
    for (const int rc : rcs) EXPECT_TRUE(rc == 0 || (rc >= 13 && rc <= 16)) << rc;
  }
  Ssgl2_webmultisession_initial();
  EXPECT_TRUE(raw.zero(kListOff, 240));
}

TEST_F(WebSessionTest, TwoProcessesOpeningAtOnceLeaveWholeEntries) {
  pid_t children[2];
  for (int k = 0; k < 2; ++k) {
    children[k] = fork();
    if (children[k] == 0) {
      std::freopen("/dev/null", "w", stdout);
      for (uint32_t i = 0; i < 20; ++i) {
        open_session(1000 * (k + 1) + i);
        Ssgl2_webmultisession_session_remove(1000 * (k + 1) + i - 1);
      }
      _exit(0);
    }
  }
  for (const pid_t pid : children) EXPECT_EQ(syscommon::testing::wait_for(pid, std::chrono::seconds(30)), 0);
  // Last writer wins: sessions may be lost, but each entry is one session's, never a mix.
  const WebSessionList list = table();
  const CsrfTokenList csrf = tokens();
  for (int i = 0; i < WEB_SESSION_MAX; ++i) {
    const WebSession &e = list.entry[i];
    if (e.in_use == 0) {
      EXPECT_EQ(e.session_id, 0u);
    } else {
      EXPECT_EQ(e.in_use, 1u);
      EXPECT_EQ(e.user, e.session_id + 100) << i;
      EXPECT_EQ(e.login_csrf_token, e.session_id * 2) << i;
    }
    if (csrf.entry[i].session_id != 0) EXPECT_EQ(csrf.entry[i].user, csrf.entry[i].session_id + 100) << i;
  }
}

}  // namespace
