// IPv4 addresses as the tool's groups show and take them.
#ifndef SYSCOMMON_TOOLS_ADDR_TEXT_H
#define SYSCOMMON_TOOLS_ADDR_TEXT_H

#include <cstdint>
#include <string>
#include <utility>

namespace syscommon::tool {

// "192.168.1.1" of an address as stored (network order).
std::string dotted(uint32_t addr);
// The address as stored; UsageError unless it is a dotted quad.
uint32_t parse_ip(const std::string &text);
// "A.B.C.D/LEN" -> address and mask, both as stored; UsageError otherwise.
std::pair<uint32_t, uint32_t> parse_prefix(const std::string &text);

}  // namespace syscommon::tool

#endif
