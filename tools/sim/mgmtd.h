// Stand-in for the main management daemon's login-record service, for the simulated device
// only (tests, the tool and the demo). It answers with the library's own server-side
// request wrapper, so a change of the exchange shows up on both sides at once.
#ifndef SYSCOMMON_TOOLS_SIM_MGMTD_H
#define SYSCOMMON_TOOLS_SIM_MGMTD_H

namespace syscommon::sim {

// Serves "socket/lumen168-socket" and "socket/lumen168-wexe-socket" under the (rooted) RAM
// disk, replying on "socket/socket-loginRecord": type 0 (+104) hands out the set of ten
// 220-byte login records, type 5 (+104) answers the record size 220, type 7 (+104) stores
// the records sent and confirms with the word 1. The set starts with every failure ring
// linked 0 -> 1 -> 2 -> 0 and is kept between requests.
//
// Runs until SIGTERM or SIGINT, or for `seconds` when that is above 0, then removes its two
// socket files and returns 0; 1 when a socket could not be bound. Prints one line per
// request on standard output.
int run_mgmtd(int seconds);

}  // namespace syscommon::sim

#endif
