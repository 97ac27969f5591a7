// syscommon event: render an event from its ids and list the description tables.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <vector>

#include "syscommon/log.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

int cmd_render(const Args &a) {
  expect_args(a, 2, 3);
  SlogSystemRecord rec{};
  rec.event_id = static_cast<uint32_t>(parse_number(a[0], "EVENT", 0, 0xFFFF));
  rec.reason_id = static_cast<uint8_t>(parse_number(a[1], "REASON", 0, 0xFF));
  if (a.size() == 3) {
    if (a[2].size() >= sizeof rec.text) throw UsageError{"ARG holds at most 255 characters"};
    std::memcpy(rec.text, a[2].c_str(), a[2].size() + 1);
  }
  char out[256];
  if (Eventlog_to_Str(rec, out, 1, sizeof out) == 0) {
    std::fprintf(stderr, "syscommon: no event with id %u\n", rec.event_id);
    return 1;
  }
  std::puts(out);
  return 0;
}

// One table sorted by id; texts are quoted so that empty texts and trailing blanks show.
void print_table(const char *title, std::span<const SlogDescEntry> table) {
  std::vector<const SlogDescEntry *> rows;
  for (const SlogDescEntry &e : table) rows.push_back(&e);
  std::stable_sort(rows.begin(), rows.end(), [](const auto *x, const auto *y) { return x->id < y->id; });
  std::printf("%s (%zu entries)\n  %5s  %-8s %s\n", title, table.size(), "id", "message", "text");
  for (const SlogDescEntry *e : rows) {
    char msg[12] = "-";
    if (e->msg_id != 0) std::snprintf(msg, sizeof msg, "%u", e->msg_id);
    std::printf("  %5u  %-8s \"%s\"\n", e->id, msg, e->text);
  }
}

int cmd_tables(const Args &a) {
  expect_args(a, 0, 0);
  print_table("Events", event_desc_table);
  std::puts("");
  print_table("Reasons", reason_desc_table);
  std::puts("");
  print_table("VPN events", vpn_log_table);
  return 0;
}

const Registration reg{{"event",
                        "Event log: render events and list the description tables.",
                        {
                            {"render", "EVENT REASON [ARG]",
                             "render an event as the log pages show it\n"
                             "The text starts with the message number; bootup and startup time are 0.\n"
                             "REASON 0 gives the event text alone. Port events name the port from the\n"
                             "device-identity record of the shared store.",
                             cmd_render},
                            {"tables", "", "list the event, reason and VPN description tables by id", cmd_tables},
                        }}};

}  // namespace
}  // namespace syscommon::tool
