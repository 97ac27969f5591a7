/*
 * Local-socket messaging: fixed-size datagrams between the management processes over
 * connectionless local (AF_UNIX) sockets under the RAM disk, with per-process sequence
 * numbering, reply matching and the request/reply patterns built on them.
 *
 * Paths the library builds itself ("/mnt/ramdisk/" + name) are rooted under SYSCOMMON_ROOT
 * when that is set; paths handed to InitSocket / InitConnSocket are used as given. A path
 * longer than the 107 characters an address can hold is cut short.
 *
 * Endpoint, message and buffer pointers are not checked: a null endpoint or message is the
 * caller's fault. A receiver trusts the sender's count and record size and writes into the
 * caller's buffer without a bound check (size it for the largest transfer); only the 4096
 * data bytes a datagram actually carries are ever copied out of it.
 *
 * Diagnostics are printed on standard output, one line each; nothing here locks, the
 * process-wide state below is plain data of the calling process.
 */
#ifndef SYSCOMMON_NET_H
#define SYSCOMMON_NET_H

#include <stddef.h>
#include <stdint.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>

#include "syscommon/export.h"

SYSCOMMON_BEGIN_DECLS

#define NET_MSG_SIZE 4108       /* every datagram, whatever its payload */
#define NET_MSG_HEADER_SIZE 12
#define NET_MSG_DATA_SIZE 4096
#define NET_ADDR_FULL_LEN 110   /* the whole local address: family + 108-byte path */
#define NET_TABLE_RECORD_SIZE 132 /* records of net_Web_CTL_Send_And_Recv_Table_Info */

/* Message types (header byte 1 before the sending endpoint's type_offset is added). */
#define NET_TYPE_CTL_REQUEST 0  /* send the data of this command */
#define NET_TYPE_DATA 1         /* data transfer: a reply or a one-way hand-over */
#define NET_TYPE_DATA_REQUEST 2 /* data transfer that expects data back */
#define NET_TYPE_TABLE_SIZE 3   /* table size query */
#define NET_TYPE_TABLE_DATA 4   /* table contents query */
#define NET_TYPE_DATA_CONFIRM 7 /* data transfer that expects a confirmation word */

/* Endpoint record: one per socket, owned by the calling process. Clear it to zero before
 * its first use. */
typedef struct InterfaceSocket {
  struct sockaddr_un address; /* receive: own bound path, then the last sender's address;
                                 send: the destination */
  int32_t fd;                 /* descriptor, negative when it could not be created */
  uint32_t addr_len;          /* address length for bind/sendto; in/out for a receive */
  uint32_t type_offset;       /* added to the type byte of every datagram sent; a receive
                                 replaces it with the type byte accepted */
  uint32_t record_size;       /* record size of the last datagram accepted */
  uint8_t tag;                /* copied into header byte 7 of every datagram sent */
  uint8_t last_command;       /* command byte of the last datagram accepted */
  uint8_t seq;                /* receive: sequence expected, then the one accepted;
                                 send: sequence written into data datagrams */
  uint8_t seq_check_off;      /* 1 = accept any sequence, 0 = enforce the match */
  int32_t timeout_sec;        /* receive time budget; both zero = no limit */
  int32_t timeout_usec;
} InterfaceSocket;

SYSCOMMON_STATIC_ASSERT(sizeof(struct sockaddr_un) == 110, "local address is 2 + 108 bytes");
SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceSocket, fd) == 112, "InterfaceSocket.fd");
SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceSocket, addr_len) == 116, "InterfaceSocket.addr_len");
SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceSocket, type_offset) == 120, "InterfaceSocket.type_offset");
SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceSocket, record_size) == 124, "InterfaceSocket.record_size");
SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceSocket, tag) == 128, "InterfaceSocket.tag");
SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceSocket, seq_check_off) == 131, "InterfaceSocket.seq_check_off");
SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceSocket, timeout_sec) == 132, "InterfaceSocket.timeout_sec");
SYSCOMMON_STATIC_ASSERT(sizeof(InterfaceSocket) == 140, "InterfaceSocket size");

/* The datagram: 12-byte header and 4096 data bytes, unused bytes zero. Integers are in
 * host byte order. */
typedef struct InterfaceMessage {
  uint8_t seq;          /* request sequence 1..255; a reply carries its request's */
  uint8_t type;         /* message type + the sender's type_offset, modulo 256 */
  uint8_t command;      /* chosen by the caller */
  uint8_t count;        /* records in this datagram */
  uint8_t more;         /* 1 = more datagrams of this transfer follow */
  uint8_t reserved[2];
  uint8_t tag;          /* the sending endpoint's tag */
  uint32_t record_size; /* bytes per record of the transfer */
  uint8_t data[NET_MSG_DATA_SIZE];
} InterfaceMessage;

SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceMessage, count) == 3, "InterfaceMessage.count");
SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceMessage, more) == 4, "InterfaceMessage.more");
SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceMessage, tag) == 7, "InterfaceMessage.tag");
SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceMessage, record_size) == 8, "InterfaceMessage.record_size");
SYSCOMMON_STATIC_ASSERT(offsetof(InterfaceMessage, data) == NET_MSG_HEADER_SIZE, "InterfaceMessage.data");
SYSCOMMON_STATIC_ASSERT(sizeof(InterfaceMessage) == NET_MSG_SIZE, "InterfaceMessage size");

/* ---- Process-wide state (each process has its own) ---- */

SYSCOMMON_API extern uint8_t net_seq_counter; /* sequence of the last request, starts at 0 */
SYSCOMMON_API extern uint8_t net_last_seq;    /* sequence of the last datagram accepted */
SYSCOMMON_API extern uint8_t net_seq_avoid;   /* nonzero: receives accept any sequence (starts 1) */
SYSCOMMON_API extern uint8_t net_ctl_busy;    /* one request at a time per process (starts 0) */

/* Called when a receive's time budget runs out: 1 makes the receive return -3, anything
 * else -4. */
typedef int (*net_timeout_fn)(void);

/* ---- Endpoints ---- */

/* Send endpoint to "/mnt/ramdisk/" + name, not bound; addr_len = path length + 2, budget
 * 10 s. Returns 1, or -1 after printing "socket fail". */
SYSCOMMON_API int net_OpenSocketToInterface_Send(InterfaceSocket *endpoint, const char *name,
                                                 uint32_t type_offset);
/* Receive endpoint bound on "/mnt/ramdisk/" + name (any old file removed first), bound with
 * the full length 110; seq 0, any sequence accepted, budget 10 s. Returns the bind's result
 * (0, or negative after "ERROR: cannot bind port"), or -1 when the socket could not be
 * created in 5 tries. */
SYSCOMMON_API int net_OpenSocketToInterface_Recv(InterfaceSocket *endpoint, const char *name);
/* As net_OpenSocketToInterface_Recv, but bound with the path length + 2 and the budget
 * taken from *timeout (not checked). */
SYSCOMMON_API int net_OpenSocketToInterface_RecvTO(InterfaceSocket *endpoint, const char *name,
                                                   const struct timeval *timeout);
/* Close when fd >= 1; the descriptor is then set to -1. Return 0. The receive form first
 * removes the file named in `address`, which after a receive is the last sender's. */
SYSCOMMON_API int net_CloseSocketToInterface_Send(InterfaceSocket *endpoint);
SYSCOMMON_API int net_CloseSocketToInterface_Recv(InterfaceSocket *endpoint);

/* ---- Datagrams and transfers ---- */

/* Sends one 4108-byte datagram: type += type_offset, byte 7 = tag. Types 1 and 7 addressed
 * to the main daemon's socket go to its "wexe" companion instead. Returns the bytes sent
 * or a negative value; the message is left unchanged apart from byte 7. */
SYSCOMMON_API int net_SendToInterface(InterfaceSocket *endpoint, InterfaceMessage *message);
/* Receives one transfer into `buffer` (an array of records; null = consume and record the
 * first datagram only). One time budget covers the whole transfer; microseconds of a second
 * or more count as select() counts them. A budget used up to exactly zero by earlier
 * datagrams makes the next wait one without limit, as the device's receivers have always
 * behaved. Returns the records stored, -1 budget spent, -2 wait failed, -3 / -4 on_timeout
 * returned 1 / other. */
SYSCOMMON_API int net_RecvFromInterface1(InterfaceSocket *endpoint, void *buffer, net_timeout_fn on_timeout);
/* Sends `count` records as a data transfer (type 1) in as many datagrams as needed, each
 * carrying the endpoint's seq. `per_datagram` is not used. Returns the last send's result,
 * 0 when nothing was sent. A record size above 4096 sends one record per datagram, cut to
 * the 4096 bytes a datagram carries. */
SYSCOMMON_API int net_Web_SendData(InterfaceSocket *endpoint, uint8_t command, const void *records,
                                   uint32_t record_size, int count, int per_datagram);
/* One-shot data transfer to "/mnt/ramdisk/" + name; -1 after "send_agent error" when the
 * socket cannot be created. */
SYSCOMMON_API int send_agent(const char *name, uint32_t type_offset, uint8_t command, const void *records,
                             uint32_t record_size, int count, int per_datagram);
/* "socket/" + name in a static buffer overwritten by each call. */
SYSCOMMON_API char *sock_path(const char *name);
/* Discards every datagram already queued on the endpoint; `address` is left holding the last
 * sender's, as after a receive. A descriptor that is not open ends the drain. Returns 0. */
SYSCOMMON_API int ClearSocket(InterfaceSocket *endpoint);
/* Stores `value` in net_last_seq and returns it. */
SYSCOMMON_API int set_seq_num(uint8_t value);
/* net_seq_avoid := 1. */
SYSCOMMON_API void set_seq_avoid(void);

/* Bound local datagram socket on `path` as given (old file removed), length = path length
 * + 2. Retries socket creation every 3 s and the bind every 3 s, forever. Returns 1. */
SYSCOMMON_API int InitSocket(int *fd_out, const char *path, struct sockaddr_un *address_out, socklen_t *len_out);
/* As InitSocket for a destination address: 1 s between socket attempts, no removal, no
 * bind. Returns 1. */
SYSCOMMON_API int InitConnSocket(int *fd_out, const char *path, struct sockaddr_un *address_out,
                                 socklen_t *len_out);

/* ---- Request/reply wrappers ---- */

/* Fills `buffer` with the reply records and returns the address of the reply's record
 * count; receives the number of request records (or the receive's negative code). */
typedef int32_t *(*net_reply_producer_fn)(int records);

/* Control request (type 0) answered by a data transfer with the request's sequence.
 * Returns the records received, 0 on time-out or failure. */
SYSCOMMON_API int net_Web_CTL_Send_And_Recv_Data(InterfaceSocket *send, InterfaceSocket *recv, uint8_t command,
                                                 void *buffer, int ignored);
/* As above with the caller's type; the sequence match is switched on before the send. */
SYSCOMMON_API int net_Web_CTL_Send_And_Recv_Datastruct_Info(uint8_t type, InterfaceSocket *send,
                                                            InterfaceSocket *recv, uint8_t command, void *buffer);
/* Caller's type, any reply sequence accepted; returns the receive's result as it is. */
SYSCOMMON_API int net_Web_CTL_Send_And_Recv_Info(uint8_t type, InterfaceSocket *send, InterfaceSocket *recv,
                                                 uint8_t command, void *buffer);
/* Two-step table fetch: size (type 3), then n records of 132 bytes (type 4) into a table
 * allocated here and stored in *table_out (the caller frees it; null when it could not be
 * allocated). Returns n, 0 when not positive. */
SYSCOMMON_API int net_Web_CTL_Send_And_Recv_Table_Info(InterfaceSocket *send, InterfaceSocket *recv, uint8_t command,
                                                       void **table_out);
/* Data transfer (type 2) of `count` records, `per_datagram` a datagram (values below 1
 * count as 1), answered with data into `buffer`. Returns the last send's result. */
SYSCOMMON_API int net_Web_SendData_And_Recv_Data(InterfaceSocket *send, InterfaceSocket *recv, uint8_t command,
                                                 void *buffer, uint32_t header_record_size, const void *data,
                                                 int count, int per_datagram, uint32_t record_size);
/* Data transfer (type 7) answered by a 32-bit confirmation word: 1 when the daemon answered
 * 0, otherwise the last send's result. */
SYSCOMMON_API int net_Web_SendData_And_Recv_Confirm(InterfaceSocket *send, InterfaceSocket *recv, uint8_t command,
                                                    const void *data, uint32_t record_size, int count, int ignored);
/* Server side: receives one request into `buffer`, lets `producer` fill the reply (a null
 * count address answers with 0 records) and sends it back as a data transfer with the
 * request's sequence and command and the send endpoint's record_size. Returns 0. */
SYSCOMMON_API int net_Web_CTL_Recv_And_Send_Data(InterfaceSocket *send, InterfaceSocket *recv, void *buffer,
                                                 net_reply_producer_fn producer);
/* Older framing in 4096-byte datagrams (byte 0 count, byte 1 more, records from byte 2):
 * gathers records into `buffer` until a datagram without the more flag or a failed
 * receive. Returns the records gathered. Unchecked as the framing defines it: `buffer`
 * must hold every record the sender announces (max_records bounds only the clearing of
 * the records not yet received), and each receive waits without limit. */
SYSCOMMON_API int RecvData(int *sock, int ignored, struct sockaddr_un *address, socklen_t *address_length,
                           void *buffer, int record_size, int max_records);
/* Receives until a transfer arrives, retrying time-outs and failures without limit; clears
 * the records after it up to max_records, sets *status_out to 1, returns the count. */
SYSCOMMON_API int Select_And_Recv_From_Socket(InterfaceSocket *endpoint, void *buffer, int max_records,
                                              int record_size, net_timeout_fn on_timeout, int *status_out);

SYSCOMMON_END_DECLS

#endif
