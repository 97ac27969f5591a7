// Request/reply wrappers of the management processes: control requests answered by data,
// data answered by data or by a confirmation word, the two-step table fetch and the
// server's answer.
#include <cstdlib>
#include <cstring>

#include "net/internal.h"

using namespace syscommon::net;

namespace {

// When a control request switches the reply's sequence match on.
enum class Match { kNever, kBeforeSend, kAfterSend };

void set_match(InterfaceSocket *recv, bool on) {
  net_seq_avoid = on ? 0 : 1;
  recv->seq_check_off = on ? 0 : 1;
}

// Stamps a fresh request sequence into the message and the reply endpoint.
void stamp_request(InterfaceMessage &m, InterfaceSocket *recv, uint8_t type, uint8_t command) {
  const uint8_t seq = next_request_seq();
  m.seq = seq;
  recv->seq = seq;
  m.type = type;
  m.command = command;
}

// A control request of one datagram and its reply, stored into at most `capacity` bytes of
// `buffer`; the receive's result as it is.
int control_request(uint8_t type, InterfaceSocket *send, InterfaceSocket *recv, uint8_t command, void *buffer,
                    Match match, std::size_t capacity = SIZE_MAX) {
  take_request_flag();
  const auto m = new_message();
  if (!m) {
    release_request_flag();
    return 0;
  }
  stamp_request(*m, recv, type, command);
  if (match == Match::kBeforeSend) set_match(recv, true);
  net_SendToInterface(send, m.get());
  if (match == Match::kAfterSend) set_match(recv, true);
  const int received = receive_transfer(recv, buffer, capacity, nullptr);
  if (match != Match::kNever) set_match(recv, false);
  release_request_flag();
  return received;
}

}  // namespace

namespace syscommon::net {

int ctl_send_and_recv_data(InterfaceSocket *send, InterfaceSocket *recv, uint8_t command, void *buffer,
                           std::size_t capacity) {
  const int received =
      control_request(NET_TYPE_CTL_REQUEST, send, recv, command, buffer, Match::kAfterSend, capacity);
  return received < 0 ? 0 : received;
}

int ctl_send_and_recv_info(uint8_t type, InterfaceSocket *send, InterfaceSocket *recv, uint8_t command,
                           void *buffer, std::size_t capacity) {
  return control_request(type, send, recv, command, buffer, Match::kNever, capacity);
}

}  // namespace syscommon::net

int net_Web_CTL_Send_And_Recv_Data(InterfaceSocket *send, InterfaceSocket *recv, uint8_t command, void *buffer,
                                   int /*ignored*/) {
  return ctl_send_and_recv_data(send, recv, command, buffer, SIZE_MAX);
}

int net_Web_CTL_Send_And_Recv_Datastruct_Info(uint8_t type, InterfaceSocket *send, InterfaceSocket *recv,
                                              uint8_t command, void *buffer) {
  const int received = control_request(type, send, recv, command, buffer, Match::kBeforeSend);
  return received < 0 ? 0 : received;
}

int net_Web_CTL_Send_And_Recv_Info(uint8_t type, InterfaceSocket *send, InterfaceSocket *recv, uint8_t command,
                                   void *buffer) {
  return ctl_send_and_recv_info(type, send, recv, command, buffer, SIZE_MAX);
}

int net_Web_CTL_Send_And_Recv_Table_Info(InterfaceSocket *send, InterfaceSocket *recv, uint8_t command,
                                         void **table_out) {
  take_request_flag();
  const auto m = new_message();
  if (!m) return 0;  // the request flag stays set: later requests of this process wait
  stamp_request(*m, recv, NET_TYPE_TABLE_SIZE, command);
  net_SendToInterface(send, m.get());
  receive_transfer(recv, m->data, sizeof m->data, nullptr);
  int32_t records = 0;
  std::memcpy(&records, m->data, sizeof records);
  if (records > 0) {
    const uint64_t bytes = static_cast<uint64_t>(records) * NET_TABLE_RECORD_SIZE;
    void *table = bytes <= SIZE_MAX ? std::malloc(static_cast<std::size_t>(bytes)) : nullptr;
    *table_out = table;
    if (table != nullptr) {
      std::memset(m.get(), 0, sizeof *m);
      std::memset(table, 0, sizeof(int32_t));
      stamp_request(*m, recv, NET_TYPE_TABLE_DATA, command);
      net_SendToInterface(send, m.get());
      receive_transfer(recv, table, static_cast<std::size_t>(bytes), nullptr);
    }
  }
  release_request_flag();
  return records > 0 ? records : 0;
}

int net_Web_SendData_And_Recv_Data(InterfaceSocket *send, InterfaceSocket *recv, uint8_t command, void *buffer,
                                   uint32_t header_record_size, const void *data, int count, int per_datagram,
                                   uint32_t record_size) {
  const auto m = new_message(false);
  if (!m) return 0;
  stamp_request(*m, recv, NET_TYPE_DATA_REQUEST, command);
  m->record_size = header_record_size;
  const int sent = send_chunks(send, *m, data, record_size, count, per_datagram, true);
  net_seq_avoid = 0;  // the endpoint's own flag decides
  net_RecvFromInterface1(recv, buffer, nullptr);
  net_seq_avoid = 1;
  return sent;
}

int net_Web_SendData_And_Recv_Confirm(InterfaceSocket *send, InterfaceSocket *recv, uint8_t command,
                                      const void *data, uint32_t record_size, int count, int /*ignored*/) {
  const auto m = new_message(false);
  if (!m) return 0;
  stamp_request(*m, recv, NET_TYPE_DATA_CONFIRM, command);
  m->record_size = record_size;
  const int sent = send_chunks(send, *m, data, record_size, count, records_per_datagram(count, record_size), true);
  // The confirmation word starts at 1: no answer counts as a confirmation. Nothing past the
  // word is stored, whatever the daemon sends.
  int32_t word = 1;
  receive_transfer(recv, &word, sizeof word, nullptr);
  return word != 0 ? sent : 1;
}

int net_Web_CTL_Recv_And_Send_Data(InterfaceSocket *send, InterfaceSocket *recv, void *buffer,
                                   net_reply_producer_fn producer) {
  recv->seq = 0;
  const int received = net_RecvFromInterface1(recv, buffer, nullptr);
  const int32_t *reply_count = producer != nullptr ? producer(received) : nullptr;
  send->seq = recv->seq;  // the reply carries the request's sequence
  const uint32_t size = send->record_size;
  net_Web_SendData(send, recv->last_command, buffer, size, reply_count != nullptr ? *reply_count : 0,
                   size != 0 ? static_cast<int>(NET_MSG_DATA_SIZE / size) : 0);
  return 0;
}
