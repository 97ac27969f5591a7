// syscommon diff: change lists of two saved VLAN interface or bridge tables, as the
// configuration agents compute them before applying a new configuration.
//
// A saved table is a text file, one record per line ('#' starts a comment):
//   vlan:   NAME VID A.B.C.D/LEN [ATTRIBUTE]
//   bridge: NAME ID A.B.C.D/LEN on|off
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "syscommon/netstat.h"
#include "tools/syscommon/addr_text.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

// The words of each record line of `path`, at most `max` records.
std::vector<std::vector<std::string>> read_table(const std::string &path, std::size_t max) {
  check_text(path, "table file", 4095);
  std::ifstream in(path);
  if (!in) throw UsageError{"cannot read the table file '" + path + "'"};
  std::vector<std::vector<std::string>> rows;
  int line_no = 0;
  for (std::string line; std::getline(in, line);) {
    ++line_no;
    if (const auto hash = line.find('#'); hash != std::string::npos) line.resize(hash);
    std::istringstream words(line);
    std::vector<std::string> row;
    for (std::string w; words >> w;) row.push_back(w);
    if (row.empty()) continue;
    if (rows.size() == max) throw UsageError{path + ": more than " + std::to_string(max) + " records"};
    for (auto &w : row) check_text(w, path + " line " + std::to_string(line_no), 31);
    row.push_back(std::to_string(line_no));
    rows.push_back(std::move(row));
  }
  return rows;
}

std::string where(const std::string &path, const std::vector<std::string> &row) {
  return path + " line " + row.back();
}

std::vector<ShmVlanIfConfig> vlan_table(const std::string &path) {
  std::vector<ShmVlanIfConfig> out(SHM_VLAN_IF_COUNT);
  std::size_t i = 0;
  for (const auto &row : read_table(path, SHM_VLAN_IF_COUNT)) {
    if (row.size() < 4 || row.size() > 5) throw UsageError{where(path, row) + ": expected NAME VID A.B.C.D/LEN [ATTRIBUTE]"};
    ShmVlanIfConfig &r = out[i++];
    std::strncpy(r.usr_name, row[0].c_str(), sizeof r.usr_name - 1);
    r.vid = static_cast<uint32_t>(parse_number(row[1], "VID", 1, 4094));
    std::tie(r.ip, r.mask) = parse_prefix(row[2]);
    if (row.size() == 5) r.attribute = static_cast<uint32_t>(parse_number(row[3], "ATTRIBUTE", 0, 0x7fffffff));
  }
  return out;
}

std::vector<ShmBridgeConfig> bridge_table(const std::string &path) {
  std::vector<ShmBridgeConfig> out(SHM_BRIDGE_COUNT);
  std::size_t i = 0;
  for (const auto &row : read_table(path, SHM_BRIDGE_COUNT)) {
    if (row.size() != 5 || (row[3] != "on" && row[3] != "off"))
      throw UsageError{where(path, row) + ": expected NAME ID A.B.C.D/LEN on|off"};
    ShmBridgeConfig &r = out[i++];
    std::strncpy(r.usr_name, row[0].c_str(), sizeof r.usr_name - 1);
    r.id = static_cast<uint32_t>(parse_number(row[1], "ID", 8000, 0x7fffffff));
    std::tie(r.ip, r.mask) = parse_prefix(row[2]);
    r.enable = row[3] == "on" ? 1 : 0;
  }
  return out;
}

// "subnet, VLAN id" from the change bits, with the names of the two compared settings.
std::string changes_text(uint32_t bits, const char *setting1, const char *setting2) {
  const std::pair<uint32_t, const char *> names[] = {{CONF_CHANGE_SUBNET, "subnet"},
                                                     {CONF_CHANGE_SETTING1, setting1},
                                                     {CONF_CHANGE_SETTING2, setting2},
                                                     {CONF_CHANGE_GONE, "gone from the new table"}};
  std::string out;
  for (const auto &[bit, name] : names)
    if ((bits & bit) != 0) out += (out.empty() ? "" : ", ") + std::string(name);
  return out.empty() ? "unchanged" : out;
}

template <class Entry>
void print_entry(const Entry &e, const char *setting1, const char *setting2) {
  std::printf("  %-31.32s %-8s %s\n", e.name, e.presence == CONF_PRESENT_BOTH ? "both" : "old only",
              changes_text(e.changes, setting1, setting2).c_str());
}

int cmd_vlan(const Args &args) {
  expect_args(args, 2, 2);
  const auto old_t = vlan_table(args[0]), new_t = vlan_table(args[1]);
  ConfChangeList list{};
  const int n = two_conf_cmpVconfig(old_t.data(), new_t.data(), SHM_VLAN_IF_COUNT, &list);
  std::printf("%d VLAN interface(s) of the old table:\n", n);
  for (int i = 0; i < n; ++i) print_entry(list.entry[i], "VLAN id", "attribute");
  return 0;
}

int cmd_bridge(const Args &args) {
  expect_args(args, 2, 2);
  const auto old_t = bridge_table(args[0]), new_t = bridge_table(args[1]);
  ConfBrgChangeList list{};
  const int n = two_conf_cmpBrg(old_t.data(), new_t.data(), SHM_BRIDGE_COUNT, &list);
  std::printf("%d bridge(s) of the old table:\n", n);
  for (int i = 0; i < n; ++i) print_entry(list.entry[i], "-", "enable");
  return 0;
}

const Registration reg{{"diff",
                        "Change lists of two saved tables, as applied by the configuration agents.",
                        {
                            {"vlan", "OLD NEW",
                             "compare VLAN interface tables (lines: NAME VID A.B.C.D/LEN [ATTRIBUTE])", cmd_vlan},
                            {"bridge", "OLD NEW", "compare bridge tables (lines: NAME ID A.B.C.D/LEN on|off)",
                             cmd_bridge},
                        }}};

}  // namespace
}  // namespace syscommon::tool
