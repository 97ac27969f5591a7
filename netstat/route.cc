// The routing daemon's route listing parsed into route records.
#include <cstdlib>
#include <cstring>
#include <string>

#include "netstat/internal.h"
#include "platform/number.h"
#include "syscommon/netstat.h"
#include "syscommon/util.h"

const RouteProto string2proto_table[] = {
    {"", 'A'}, {"static", 'S'}, {"connected", 'C'}, {"rip", 'R'}, {"kernel", 'K'}, {"ospf", 'O'}, {nullptr, 0},
};

const char *proto2string(char code) {
  for (const RouteProto *p = string2proto_table; p->code != 0; ++p)
    if (p->code == code) return p->name;
  return "unknown";
}

namespace {

using syscommon::netstat::copy_text;
using syscommon::netstat::parse_address;

// The gateway after the word that follows the metric token ("[110/20] via 10.0.0.1").
uint32_t gateway_after_one(char **save) {
  strtok_r(nullptr, " ", save);
  const char *gw = strtok_r(nullptr, " ", save);
  return gw != nullptr ? parse_address(gw) : 0;
}

// Fills `r` from one selected-route line (altered while it is split). False when the line
// names an unknown protocol code or an interface without a user-facing name.
bool parse_route(char *line, RouteRecord &r) {
  // The interface follows the first comma: "... via 10.0.0.1, eth0.2, 00:01:02" (the
  // route's age after a second comma is not part of it).
  char ifname[128] = "";
  if (char *comma = std::strchr(line, ','); comma != nullptr) {
    *comma = '\0';
    copy_text(ifname, comma[1] != '\0' ? comma + 2 : comma + 1);
    ifname[std::strcspn(ifname, ",")] = '\0';
    Ssys_stripCR(ifname);
    Ssys_stripspace(ifname);
  }
  char *save = nullptr;
  const char *type = strtok_r(line, " ", &save);
  if (type == nullptr) return false;
  const char code = type[0];
  r.protocol = proto2string(code);
  if (std::strcmp(r.protocol, "unknown") == 0) return false;
  const char *destination = strtok_r(nullptr, " ", &save);
  copy_text(r.destination, destination != nullptr ? destination : "");

  switch (code) {
    case 'C': {
      uint32_t mask = 0;
      Get_IF_IP_MASK(ifname, &r.gateway, &mask);
      r.metric = 1;
      break;
    }
    case 'K': {
      r.protocol = std::strncmp(r.destination, "0.0.0.0", 7) == 0 ? "default" : "other";
      const char *gw = strtok_r(nullptr, " ", &save);
      if (gw != nullptr && std::strcmp(gw, "via") == 0) gw = strtok_r(nullptr, " ", &save);
      r.gateway = gw != nullptr ? parse_address(gw) : 0;
      r.metric = 1;
      break;
    }
    case 'O':
    case 'R': {  // "[110/20]": the metric starts at the sixth character
      const char *t = strtok_r(nullptr, " ", &save);
      r.metric = t != nullptr && std::strlen(t) > 5 ? static_cast<uint32_t>(syscommon::device_atoi(t + 5)) : 0;
      r.gateway = gateway_after_one(&save);
      break;
    }
    case 'S': {  // "[1/0]": the distance starts at the second character
      const char *t = strtok_r(nullptr, " ", &save);
      r.metric = t != nullptr && t[0] != '\0' ? static_cast<uint32_t>(syscommon::device_atoi(t + 1)) : 0;
      r.gateway = gateway_after_one(&save);
      break;
    }
    default:
      break;
  }
  if (Change_IFname_2_Portname(ifname) != 0) return false;
  copy_text(r.port, ifname);
  return true;
}

}  // namespace

namespace syscommon::netstat {

int read_routes(std::FILE *listing, RouteRecord *records, int capacity) {
  int n = 0;
  char line[128];
  while (n < capacity && std::fgets(line, sizeof line, listing) != nullptr) {
    if (line[0] == '\0' || line[1] != '>') continue;
    if (parse_route(line, records[n]))
      ++n;
    else
      records[n] = RouteRecord{};  // the slot is reused by the next route
  }
  return n;
}

}  // namespace syscommon::netstat

int Route_Parser(RouteRecord **out, char code) {
  using namespace syscommon::netstat;
  *out = nullptr;
  SavedListing listing = save_listing(vtysh_command(std::string("show ip route ") + proto2string(code)),
                                      "/mnt/ramdisk/rtable_tmp", "/mnt/ramdisk/rtable_len");
  if (listing.lines < 0) return listing.lines;
  if (!listing.file) return -3;
  const int capacity = listing.lines - 3;  // the legend's three lines
  auto *records = allocate_records<RouteRecord>(capacity);
  if (records == nullptr) return 0;
  *out = records;
  return read_routes(listing.file.get(), records, capacity);
}
