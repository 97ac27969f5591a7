// Stand-in for the device's PIM-SM or DVMRP daemon: answers the one-byte status requests
// on "/mnt/ramdisk/UI2PIM" (or "UI2MROUTED", rooted) from text files in a directory.
//
// usage: syscommon-sim-mcastd pim|dvmrp DIR [REQUESTS]
//   pim:   bsr, rp, neighbor, routing (first line "header A.B.C.D", then routes)
//   dvmrp: routes (code 100), vifs (code 101)
// One record per line of blank-separated words: a dotted quad is an IPv4 address, a number
// a 32-bit word, anything else a 32-byte name. Missing files answer a count of
// 0 (or nothing, for the single-datagram answers). Answers REQUESTS requests (default:
// until killed); each request is logged on standard output.
#include <arpa/inet.h>
#include <sys/socket.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "syscommon/net.h"
#include "syscommon/netstat.h"

namespace {

using Bytes = std::vector<uint8_t>;

// One record from its words, padded or cut to `size` bytes.
Bytes encode(const std::string &line, std::size_t size) {
  Bytes out;
  std::istringstream words(line);
  for (std::string w; words >> w;) {
    char *end = nullptr;
    uint32_t word = static_cast<uint32_t>(std::strtoul(w.c_str(), &end, 0));
    in_addr a{};
    if (inet_pton(AF_INET, w.c_str(), &a) == 1) {
      word = a.s_addr;
    } else if (w.empty() || end == nullptr || *end != '\0') {
      char name[32] = {};
      std::strncpy(name, w.c_str(), sizeof name - 1);
      out.insert(out.end(), name, name + sizeof name);
      continue;
    }
    const auto *b = reinterpret_cast<const uint8_t *>(&word);
    out.insert(out.end(), b, b + 4);
  }
  out.resize(size);
  return out;
}

struct Table {
  bool found = false;
  Bytes header;   // "header" line (PIM routing)
  Bytes records;  // the records back to back
  int32_t count = 0;
};

Table load(const std::string &path, std::size_t record_size) {
  Table t;
  std::ifstream in(path);
  t.found = static_cast<bool>(in);
  for (std::string line; std::getline(in, line);) {
    if (line.find_first_not_of(" \t") == std::string::npos) continue;
    if (line.rfind("header ", 0) == 0) {
      t.header = encode(line.substr(7), PIM_ROUTE_HEADER_SIZE);
      continue;
    }
    const Bytes r = encode(line, record_size);
    t.records.insert(t.records.end(), r.begin(), r.end());
    ++t.count;
  }
  if (t.header.empty()) t.header.resize(PIM_ROUTE_HEADER_SIZE);
  return t;
}

}  // namespace

int main(int argc, char **argv) {
  if (argc < 3 || (std::strcmp(argv[1], "pim") != 0 && std::strcmp(argv[1], "dvmrp") != 0)) {
    std::fprintf(stderr, "usage: %s pim|dvmrp DIR [REQUESTS]\n", argv[0]);
    return 2;
  }
  const bool pim = std::strcmp(argv[1], "pim") == 0;
  const std::string dir = argv[2];
  long left = argc > 3 ? std::strtol(argv[3], nullptr, 10) : -1;
  InterfaceSocket requests{}, answers{};
  if (net_OpenSocketToInterface_Recv(&requests, pim ? "UI2PIM" : "UI2MROUTED") < 0) return 1;
  net_OpenSocketToInterface_Send(&answers, pim ? "PIM2UI" : "MROUTED2UI", 0);
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const auto send = [&answers](const void *data, std::size_t size) {
    sendto(answers.fd, data, size, 0, reinterpret_cast<const sockaddr *>(&answers.address), answers.addr_len);
  };
  for (; left != 0; left = left > 0 ? left - 1 : left) {
    uint8_t code = 0;
    if (recv(requests.fd, &code, 1, 0) < 1) continue;
    std::printf("request %d\n", code);
    if (pim && code == 1) {
      const Table t = load(dir + "/bsr", PIM_BSR_SIZE);
      if (t.count > 0) send(t.records.data(), PIM_BSR_SIZE);
    } else if (pim && code >= 2 && code <= 4) {
      static const char *const kFiles[] = {"rp", "neighbor", "routing"};
      static const std::size_t kSizes[] = {PIM_RP_RECORD_SIZE, PIM_NEIGHBOR_RECORD_SIZE, PIM_ROUTE_RECORD_SIZE};
      const Table t = load(dir + "/" + kFiles[code - 2], kSizes[code - 2]);
      send(&t.count, sizeof t.count);
      if (t.count == 0) continue;
      if (code == 4) send(t.header.data(), t.header.size());
      send(t.records.data(), t.records.size());
    } else if (!pim && (code == 100 || code == 101)) {
      const Table t = load(dir + (code == 100 ? "/routes" : "/vifs"),
                           code == 100 ? DVMRP_ROUTE_RECORD_SIZE : DVMRP_VIF_RECORD_SIZE);
      if (t.found) send(t.records.data(), t.records.size());
    }
  }
  net_CloseSocketToInterface_Recv(&requests);
  net_CloseSocketToInterface_Send(&answers);
  return 0;
}
