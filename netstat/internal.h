// Helpers shared by the network status files.
#ifndef SYSCOMMON_NETSTAT_INTERNAL_H
#define SYSCOMMON_NETSTAT_INTERNAL_H

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>

#include "platform/host.h"
#include "syscommon/netstat.h"

namespace syscommon::netstat {

// "%d.%d.%d.%d" of an address in network order.
std::string dotted(uint32_t ip);

// inet_addr of a token: the address in network order, INADDR_NONE when it is none.
uint32_t parse_address(const char *text);

// "/usr/quagga/bin/vtysh -c \"SHOW\"" with the shell's path rooted.
std::string vtysh_command(const std::string &show);

// A routing-shell listing saved to a scratch file with its line count beside it, as the
// table readers size their arrays before reading.
struct SavedListing {
  int lines = 0;  // the count from LEN, or -1 / -2 when LEN cannot be opened / holds none
  File file;      // TMP opened for reading (only when the count was read), else null
};
// Runs "COMMAND > TMP" and "wc -l TMP > LEN" (TMP and LEN rooted here; the command comes
// rooted), then reads the count and opens TMP.
SavedListing save_listing(const std::string &command, const char *tmp, const char *len);

// A zeroed array of `n` records from calloc (the caller frees it), null when n is not
// positive or the memory cannot be had.
template <class T>
T *allocate_records(long long n) {
  if (n <= 0) return nullptr;
  return static_cast<T *>(std::calloc(static_cast<std::size_t>(n), sizeof(T)));
}

// The readers' parsing, apart from running the routing shell or opening the daemon's file.
// Selected routes of a "show ip route" listing (lines of up to 127 characters), at most
// `capacity`; returns how many were stored.
int read_routes(std::FILE *listing, RouteRecord *records, int capacity);
// One line of "show ip ospf neighbor" / "show ip ospf db-tarn" into its record.
void parse_ospf_neighbor(const char *line, OspfNeighbor &r);
void parse_ospf_db(const char *line, OspfDbRecord &r);
// "KEY:VALUE": the key is the text before the first colon (the whole line without one),
// the value the first word after it; both cut to their fields.
void split_pair(const char *line, std::span<char> key, std::span<char> value);
// The LLDP neighbour file's records; Get_lldpinfo's result.
int read_lldp(std::FILE *file, LldpNeighbor neighbors[LLDP_MAX_NEIGHBORS]);

// Copies `text` into `dst`, cut to dst.size() - 1 characters and terminated.
void copy_text(std::span<char> dst, const char *text);

}  // namespace syscommon::netstat

#endif
