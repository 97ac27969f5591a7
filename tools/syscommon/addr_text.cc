#include "tools/syscommon/addr_text.h"

#include <arpa/inet.h>

#include "tools/syscommon/command.h"

namespace syscommon::tool {

std::string dotted(uint32_t addr) {
  char buf[INET_ADDRSTRLEN] = "";
  in_addr a{};
  a.s_addr = addr;
  inet_ntop(AF_INET, &a, buf, sizeof buf);
  return buf;
}

uint32_t parse_ip(const std::string &text) {
  in_addr a{};
  if (inet_pton(AF_INET, text.c_str(), &a) != 1) throw UsageError{"address must look like 192.168.1.1, not '" + text + "'"};
  return a.s_addr;
}

std::pair<uint32_t, uint32_t> parse_prefix(const std::string &text) {
  auto slash = text.find('/');
  if (slash == std::string::npos) throw UsageError{"address must look like 192.168.1.1/24, not '" + text + "'"};
  uint32_t ip = parse_ip(text.substr(0, slash));
  long long len = parse_number(text.substr(slash + 1), "prefix length", 0, 32);
  uint32_t host_mask = len == 0 ? 0 : ~uint32_t{0} << (32 - len);
  return {ip, htonl(host_mask)};
}

}  // namespace syscommon::tool
