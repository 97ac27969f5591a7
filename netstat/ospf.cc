// OSPF status read from the routing shell: router id, interface states, the neighbour
// table and the link-state database.
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <span>
#include <string>

#include "netstat/internal.h"
#include "syscommon/netstat.h"
#include "syscommon/shm.h"
#include "syscommon/util.h"

namespace {

using syscommon::netstat::copy_text;

constexpr int kLineSize = 256;

// The blank-separated words of a line, each cut to its field's width; `columns` names the
// field of each word in turn (an empty span skips that word).
void split_columns(const char *line, std::initializer_list<std::span<char>> columns) {
  const char *p = line;
  for (std::span<char> field : columns) {
    p += std::strspn(p, " \t\r\n");
    const std::size_t n = std::strcspn(p, " \t\r\n");
    if (n == 0) return;
    if (!field.empty()) copy_text(field, std::string(p, n).c_str());
    p += n;
  }
}

}  // namespace

namespace syscommon::netstat {

void split_pair(const char *line, std::span<char> key, std::span<char> value) {
  const char *colon = std::strchr(line, ':');
  copy_text(key, std::string(line, colon != nullptr ? static_cast<std::size_t>(colon - line) : std::strlen(line)).c_str());
  if (colon != nullptr) split_columns(colon + 1, {value});
}

void parse_ospf_neighbor(const char *line, OspfNeighbor &r) {
  // The dead time (fourth column) is skipped.
  char port[32] = "", ifname[32] = "", address[32] = "";
  split_columns(line, {r.neighbor_id, r.priority, r.state, {}, r.address, port});
  // "eth0.2:10.0.0.1": the interface before the colon, shown by its user name.
  split_pair(port, ifname, address);
  get_shm_usr_interface_name_by_vid(get_shm_vid_by_interface_name(ifname), r.port);
  r.port[sizeof r.port - 1] = '\0';
}

void parse_ospf_db(const char *line, OspfDbRecord &r) {
  split_columns(line, {r.area, r.type, r.link_id, r.adv_router, r.age, r.seq});
}

}  // namespace syscommon::netstat

namespace {

using namespace syscommon;
using namespace syscommon::netstat;

// Runs `show` into the scratch files, skips `skip` lines and hands each further line, up
// to lines - reserve, to `parse`. The readers' shared shape and failure codes.
template <class Record, class Parse>
int read_table(Record **out, const char *show, const char *tmp, const char *len, int reserve, int skip,
               Parse parse) {
  *out = nullptr;
  SavedListing listing = save_listing(vtysh_command(show), tmp, len);
  if (listing.lines < 0) return listing.lines;
  if (!listing.file) return -3;
  const int capacity = listing.lines - reserve;
  auto *records = allocate_records<Record>(capacity);
  if (records == nullptr) return 0;
  *out = records;
  char line[kLineSize];
  for (int i = 0; i < skip && std::fgets(line, sizeof line, listing.file.get()) != nullptr; ++i) {
  }
  int n = 0;
  while (n < capacity && std::fgets(line, sizeof line, listing.file.get()) != nullptr) parse(line, records[n++]);
  return n;
}

// Each output line of a "KEY:VALUE" command, carriage returns removed, to `each`.
template <class Each>
int read_pairs(const char *show, int line_no, const char *function, Each each) {
  Pipe p = open_pipe(vtysh_command(show), "r");
  if (!p) {
    std::printf("%s() %d file open fail\n", function, line_no);
    return -1;
  }
  char line[kLineSize];
  while (std::fgets(line, sizeof line, p.get()) != nullptr) {
    Ssys_stripCR(line);
    char key[32] = "", value[32] = "";
    split_pair(line, key, value);
    if (!each(key, value)) break;
  }
  return 0;
}

}  // namespace

int getOSPFRouterID(char *out) {
  std::strcpy(out, "0.0.0.0");
  return read_pairs("show ip ospf", __LINE__, __func__, [out](const char *, const char *value) {
    if (value[0] != '\0') copy_text({out, 32}, value);
    return false;  // the first line only
  });
}

int getOSPFIfState(OspfIfState *states) {
  int i = 0;
  return read_pairs("show ip ospf interface_tarn", __LINE__, __func__, [states, &i](const char *key, const char *value) {
    OspfIfState &s = states[i++];
    copy_text(s.key, key);
    copy_text(s.value, value);
    return true;
  });
}

int getOSPFNeighborTable(OspfNeighbor **out) {
  return read_table(out, "show ip ospf neighbor", "/mnt/ramdisk/ospf_nt_tmp", "/mnt/ramdisk/ospf_nt_len", 2, 2,
                    parse_ospf_neighbor);
}

int getOSPFDBTable(OspfDbRecord **out) {
  return read_table(out, "show ip ospf db-tarn", "/mnt/ramdisk/ospf_dt_tmp", "/mnt/ramdisk/ospf_dt_len", 4, 3,
                    parse_ospf_db);
}
