// Helpers shared by the messaging files: request sequence numbers, the request flag, the
// bounded receive loop and the chunked sender.
#ifndef SYSCOMMON_NET_INTERNAL_H
#define SYSCOMMON_NET_INTERNAL_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "syscommon/net.h"

namespace syscommon::net {

// "/mnt/ramdisk/" + name, rooted.
std::string ramdisk_path(const char *name);

// Where a datagram of `type` (before the offset) to `destination` is delivered: data for the
// main daemon (types 1 and 7) goes to its "wexe" companion. Empty when not redirected.
std::string redirected_destination(std::string_view destination, uint8_t type);

// The next request sequence: 1..255, then 1 again; stored back in net_seq_counter.
uint8_t next_request_seq();

// A message on the heap, or null when it cannot be allocated. Cleared whole, or only its
// header when the data area is written in full before each send (send_chunks does that).
std::unique_ptr<InterfaceMessage> new_message(bool clear_data = true);

// Waits (5 ms steps) until no request of this process is under way, then marks one.
void take_request_flag();
void release_request_flag();

// The receive loop of net_RecvFromInterface1. Data is never copied past `capacity` bytes of
// `buffer` (the public call passes no limit; the library's own scratch buffers do).
int receive_transfer(InterfaceSocket *endpoint, void *buffer, std::size_t capacity, net_timeout_fn on_timeout);

// net_Web_CTL_Send_And_Recv_Data and net_Web_CTL_Send_And_Recv_Info with the reply stored
// into at most `capacity` bytes of `buffer`, for the library's own fixed-size buffers.
int ctl_send_and_recv_data(InterfaceSocket *send, InterfaceSocket *recv, uint8_t command, void *buffer,
                           std::size_t capacity);
int ctl_send_and_recv_info(uint8_t type, InterfaceSocket *send, InterfaceSocket *recv, uint8_t command,
                           void *buffer, std::size_t capacity);

// Sends `count` records through `message` (header already filled by the caller), at most
// `per_datagram` a datagram (below 1 counts as 1): sets count and more and writes the whole
// data area (the chunk's records, at most 4096 bytes, then zeros). With `early_ends` it also
// stops when (chunk + 1) x per == count, and after one chunk when per is 1. Returns the last
// send's result, 0 when nothing was sent.
int send_chunks(InterfaceSocket *endpoint, InterfaceMessage &message, const void *records, uint32_t record_size,
                int count, int per_datagram, bool early_ends);

// Records per datagram of a data transfer: 1 for a single record or size 0, else 4096 / size.
int records_per_datagram(int count, uint32_t record_size);

}  // namespace syscommon::net

#endif
