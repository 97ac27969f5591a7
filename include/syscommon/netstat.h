/*
 * Network and routing status helpers: interface queries, mask and address arithmetic,
 * route listing, VRRP state, LLDP neighbours, port statistics, routing protocol status and
 * configuration comparison.
 *
 * Addresses and masks are IPv4 values in network byte order (as in s_addr). Interface
 * names are the kernel's names (eth0, eth0.5, br1, ppp0); user-facing names are those of
 * the shared interface table plus "WAN" and "LAN". Every call opens its own socket, pipe
 * or file and closes it again; nothing is cached.
 *
 * Fixed paths ("/mnt/ramdisk/...", "/usr/quagga/bin/vtysh", "/proc/sock_raw_filter") are
 * rooted under SYSCOMMON_ROOT when that is set. The scratch files under the RAM disk have
 * fixed names: callers of the same helper in different processes must take turns.
 * Pointers are not checked unless a comment says so.
 */
#ifndef SYSCOMMON_NETSTAT_H
#define SYSCOMMON_NETSTAT_H

#include <stddef.h>
#include <stdint.h>

#include "syscommon/export.h"
#include "syscommon/shm.h"

SYSCOMMON_BEGIN_DECLS

/* ---- Interface queries ----
 *
 * Each takes the kernel interface name (cut to 15 characters) and asks the kernel on a
 * socket of its own: an AF_INET socket of type SOCK_PACKET (which needs CAP_NET_RAW),
 * except Get_IF_MAC, which uses a datagram socket. With only_if_up non-zero and the
 * interface down (or unknown), the outputs are zeroed (an index becomes -1) without
 * asking further. */

/* SIOCGIFFLAGS, then SIOCGIFADDR and SIOCGIFNETMASK: 1 when the interface is up (a failed
 * request leaves that output 0); -1 with both outputs 0 when it is down, unknown, or no
 * socket can be had. Get_eth_IP_MASK is the same function. */
SYSCOMMON_API int Get_IF_IP_MASK(const char *ifname, uint32_t *ip, uint32_t *mask);
SYSCOMMON_API int Get_eth_IP_MASK(const char *ifname, uint32_t *ip, uint32_t *mask);
/* Address and mask (0 each on failure). Returns 0. */
SYSCOMMON_API int commGetIfaceIpMask(const char *ifname, uint32_t *ip, uint32_t *mask, int only_if_up);
/* SIOCGIFBRDADDR (0 on failure). Returns 0. */
SYSCOMMON_API int commGetIfaceBcastAddr(const char *ifname, uint32_t *bcast, int only_if_up);
/* SIOCGIFINDEX (-1 on failure). Returns 0. */
SYSCOMMON_API int commGetIfaceIdx(const char *ifname, int *index, int only_if_up);
/* SIOCGIFHWADDR on a datagram socket: 1, or -1 with all six bytes 0. Prints
 * " Open socket error!." when no socket can be had. */
SYSCOMMON_API int Get_IF_MAC(const char *ifname, uint8_t mac[6]);
/* 1 when IFF_UP is set, else 0 (also for an unknown interface). */
SYSCOMMON_API int Get_IF_State(const char *ifname);

/* ---- Text and arithmetic helpers ---- */

/* Takes up to 12 hexadecimal digits of either case from `text`, ignoring every other
 * character; the first digit of a pair is the high nibble, missing digits leave zeros.
 * The text is altered in place: every letter is lowered and every hexadecimal digit is
 * replaced by its value (0..15), so callers pass a scratch copy. Returns 1. */
SYSCOMMON_API int mac_addr(char *text, uint8_t mac[6]);
/* 32 minus the trailing zero bits of the host-order mask (0.0.0.0 gives 0). */
SYSCOMMON_API int Mask2Number(uint32_t mask);
/* Mask of `bits` leading ones (0 or less gives 0.0.0.0, 32 or more 255.255.255.255). */
SYSCOMMON_API uint32_t Number2Mask(int bits);
/* 1 when the ones are contiguous from the top (0.0.0.0 included), else 0. */
SYSCOMMON_API int CheckMask(uint32_t mask);
/* Zeroes 4 bytes of `out`, then for width 1..3 writes the low byte of `value` in decimal,
 * zero-padded to exactly `width` digits (7 with width 3 gives "007"; digits beyond the
 * width are cut from the left, 255 with width 2 gives "55"). Returns 0. */
SYSCOMMON_API int dec2str(int value, int width, char *out);
/* "%d.%d.%d.%d" in one static buffer shared by all callers of the process. */
SYSCOMMON_API char *IP2Dot(uint32_t ip);

/* ---- Gateways, PPP peer, naming, VRRP, raw-socket filter ---- */

/* The number in the first three characters of "/mnt/ramdisk/DefaultGw"; -1 when the file
 * is missing or empty. */
SYSCOMMON_API int GetNowDefaultGw(void);
/* shm_wan_gw(w). */
SYSCOMMON_API uint32_t GetGWInfo(int w);
/* Runs "ifconfig ppp%d > /mnt/ramdisk/ppp_ip_dst%d" and copies the at most 15 characters
 * after "P-t-P:" up to the first white space into `out` (16 bytes). Returns 1; 0 with
 * `out` empty when the listing cannot be opened, and also when it ends without
 * "P-t-P:" (a link that is down), so a caller never waits on a listing. */
SYSCOMMON_API int PPP_IP_DST(int unit, char *out);
/* In place: "ppp..." becomes "WAN"; "br..." and "eth..." become the user-facing name of
 * the shared table (empty when it has none); "vpn..." and "tun..." stay. Returns 0, or -1
 * for any other name. `name` must hold 32 bytes. */
SYSCOMMON_API int Change_IFname_2_Portname(char *name);
/* State number of VRRP router `vrid` on the interface of VLAN `vid`, read from the first
 * line of "/mnt/ramdisk/vrrp/IFNAME_VRID"; 3 and anything that is not a number give 0. */
SYSCOMMON_API int CheckVrrpStatus(int vid, int ignored, int vrid);
/* Writes "b1,b2,b3,text1,text2" (bytes as %02x) to "/proc/sock_raw_filter" through the
 * shell: 1. Refuses (0) a text1 or text2 of more than 40 characters. The texts go into
 * the shell command as given: callers must not pass user text with shell characters. */
SYSCOMMON_API int set_sock_raw_filter(uint8_t b1, uint8_t b2, uint8_t b3, const char *text1, const char *text2);

/* ---- Ports, trunks and VLANs ---- */

/* Ssc_getPortLinkState(): bit n set = port n has link. */
SYSCOMMON_API uint32_t Link_state(void);
/* Ports 0..9: 1 when the port has link. Trunks 10..13 (groups 1..4): 1 when a member of
 * the group (member mask read under the system segment's lock) has link. Any other
 * number gives 0. */
SYSCOMMON_API int CheckPortLink(int port);
/* Empties `out` (32 bytes), then names the local interface whose subnet holds `ip`: "WAN"
 * for WAN record 0's subnet, else the user name of the first VLAN interface (at most 16,
 * ending at one with address 0) whose subnet holds it. Returns 0. */
SYSCOMMON_API int findLocalIfName(uint32_t ip, char *out);

enum { PORT_STATS_COUNTERS = 24, PORT_STATS_SUMMED = 18, PORT_STATS_BLOCKS = 14 };
/* Blocks 0..9: Ssc_getPortStatsCounter of each port. Blocks 10..13: for trunk groups 1..4,
 * the first 18 counters of every member port added in; their last 6 counters are not
 * touched, so the caller zeroes the array first. Returns 0. */
SYSCOMMON_API int Get_Port_Stats(uint32_t stats[PORT_STATS_BLOCKS][PORT_STATS_COUNTERS]);
/* Appends "%d," to `out` for every VLAN id 1..4094 of `table` (at most 16 records, ending
 * at id 0) whose membership byte for `port` equals `value`, in ascending order (equal ids
 * share one place and are written once). `out` must be zeroed by the caller and hold
 * 16 x 5 + 1 bytes. A port outside 0..15 matches nothing. Returns strlen(out). */
SYSCOMMON_API int vlan_get_vlan(int port, char *out, const ShmVlanInfoRecord *table, int value);

/* ---- Route listing ---- */

/* Protocol table: (name, code) pairs ended by a pair with code 0. */
typedef struct RouteProto {
  const char *name;
  char code;
} RouteProto;
SYSCOMMON_API extern const RouteProto string2proto_table[];
/* Name of a protocol code ('A' all "", 'S' "static", 'C' "connected", 'R' "rip",
 * 'K' "kernel", 'O' "ospf"); "unknown" for any other. */
SYSCOMMON_API const char *proto2string(char code);

typedef struct RouteRecord {
  const char *protocol; /* table name; kernel routes "default" (0.0.0.0...) or "other" */
  char destination[20]; /* as listed, e.g. "10.0.0.0/8" */
  uint32_t gateway;     /* next hop; connected routes: the interface's own address */
  char port[16];        /* user-facing name of the outgoing interface */
  uint32_t metric;      /* OSPF/RIP metric, static distance, 1 for connected and kernel */
} RouteRecord;

/* Runs "/usr/quagga/bin/vtysh -c \"show ip route NAME\" > /mnt/ramdisk/rtable_tmp" and
 * "wc -l" of it into "/mnt/ramdisk/rtable_len"; capacity = lines - 3 (the legend). Reads
 * lines of up to 127 characters and keeps selected routes (second character '>') whose
 * interface has a user-facing name, up to the capacity. *out is the array (allocated
 * here, freed by the caller with free) or null when the capacity is 0 or less. Returns the
 * number of records; -1 when "rtable_len" cannot be opened, -2 when it holds no number,
 * -3 when the listing cannot be opened (no array then). */
SYSCOMMON_API int Route_Parser(RouteRecord **out, char code);

/* ---- LLDP neighbours ---- */

enum { LLDP_MAX_NEIGHBORS = 64, LLDP_TEXT_SIZE = 256 };
typedef struct LldpNeighbor {
  int32_t port;                     /* "port:" */
  char nid[LLDP_TEXT_SIZE];         /* "NID:" */
  char nport[LLDP_TEXT_SIZE];       /* "NPort:" */
  char nportdesc[LLDP_TEXT_SIZE];   /* "NPORTDESC:" */
  char nsystem[LLDP_TEXT_SIZE];     /* "NSYSTEM:" */
  char nsysdesc[LLDP_TEXT_SIZE];    /* "NSYSDESC:" */
  char time[LLDP_TEXT_SIZE];        /* "TIME:" */
  char ttl[LLDP_TEXT_SIZE];         /* "TTL:" */
} LldpNeighbor;
SYSCOMMON_STATIC_ASSERT(sizeof(LldpNeighbor) == 4 + 7 * 256, "LLDP neighbor record");

/* Reads "/mnt/ramdisk/lldpinfo2": each line starting " ----------" opens the next record;
 * other lines carry one key and its value (trimmed of blanks and line ends, texts cut to
 * 255 characters). Keys before the first separator belong to no record and are dropped.
 * Returns the records counted (a trailing separator counts one more, empty, record); a
 * 65th separator stops the reading and 65 is returned (64 records filled). 0 and
 * "Get_lldpinfo, lldp fopen error" when the file is missing. */
SYSCOMMON_API int Get_lldpinfo(LldpNeighbor neighbors[LLDP_MAX_NEIGHBORS]);

/* ---- PIM-SM and DVMRP status ----
 *
 * A one-byte request to "/mnt/ramdisk/UI2PIM" (or "UI2MROUTED"), answers received on
 * "/mnt/ramdisk/PIM2UI" (or "MROUTED2UI"); the daemons' records are passed through as
 * they come, in host byte order. Each wait lasts 3 seconds. Both sockets are closed on
 * every path and the result is that of closing them (0). An unanswered request leaves the
 * caller's count and buffers as they were, so callers zero them first. */
enum {
  PIM_BSR_SIZE = 8,
  PIM_RP_RECORD_SIZE = 20,
  PIM_NEIGHBOR_RECORD_SIZE = 48,
  PIM_ROUTE_RECORD_SIZE = 28,
  PIM_ROUTE_HEADER_SIZE = 128,
  DVMRP_ROUTE_RECORD_SIZE = 24, /* code 100 */
  DVMRP_VIF_RECORD_SIZE = 16    /* code 101 */
};
/* Code 1: one 8-byte answer, waited for once. */
SYSCOMMON_API int getPimSmBsr(void *bsr);
/* Codes 2, 3, 4: a 32-bit count, then (code 4) the 128-byte header (into `header`, or
 * scratch room when it is null), whose first 4 bytes are printed as "showIp = A.B.C.D",
 * then the records in one datagram into an array allocated here (count x record size,
 * zero-filled, freed by the caller). The count is stored together with the array; a
 * count of 0, a negative one, or one whose array cannot be allocated (or would exceed
 * 64 MiB) stores 0, allocates nothing and ends the exchange. A wait that times out is
 * repeated while the daemon is silent, at most 3 times in a row (9 seconds), so a daemon
 * that stops answering never holds the caller. */
SYSCOMMON_API int getPimSmRp(void **records, int *count);
SYSCOMMON_API int getPimSmNeighbor(void **records, int *count);
SYSCOMMON_API int getPimSmRouting(void **records, int *count, void *header);
/* Request `code` (100: records of 24 bytes; any other: 16 bytes), one wait, then one
 * datagram of at most *count records into `buffer` (which must hold them; not checked). */
SYSCOMMON_API int getDvmrpRouting(void *buffer, int *count, int code);

/* ---- OSPF status (through the routing shell) ---- */

typedef struct OspfNeighbor {
  char neighbor_id[32];
  char priority[8];
  char state[32];
  char address[32];
  char port[32]; /* user-facing name of the interface */
} OspfNeighbor;

typedef struct OspfDbRecord {
  char area[32];
  char type[16];
  char link_id[32];
  char adv_router[32];
  char age[8];
  char seq[32];
} OspfDbRecord;

typedef struct OspfIfState {
  char key[32];
  char value[32];
} OspfIfState;

SYSCOMMON_STATIC_ASSERT(sizeof(OspfNeighbor) == 136, "OSPF neighbor record");
SYSCOMMON_STATIC_ASSERT(sizeof(OspfDbRecord) == 152, "OSPF database record");
SYSCOMMON_STATIC_ASSERT(sizeof(OspfIfState) == 64, "OSPF interface state record");

/* Presets `out` (32 bytes) to "0.0.0.0", then takes the text after the first ':' of the
 * first line of "show ip ospf". 0; -1 with "getOSPFRouterID() N file open fail" when the
 * command cannot be run. */
SYSCOMMON_API int getOSPFRouterID(char *out);
/* One record per line of "show ip ospf interface_tarn" ("KEY:VALUE"). The array is not
 * bounded here: it must hold as many records as the daemon prints lines. 0 or -1. */
SYSCOMMON_API int getOSPFIfState(OspfIfState *states);
/* "show ip ospf neighbor" into "/mnt/ramdisk/ospf_nt_tmp", its line count into
 * "/mnt/ramdisk/ospf_nt_len"; capacity = lines - 2; the first two lines are skipped.
 * Returns the records (array allocated here, freed by the caller; null when none); -1 when
 * the count file cannot be opened, -2 when it holds no number, -3 when the listing cannot
 * be opened. */
SYSCOMMON_API int getOSPFNeighborTable(OspfNeighbor **out);
/* The same with "show ip ospf db-tarn", "ospf_dt_tmp"/"ospf_dt_len", capacity = lines - 4
 * and three lines skipped (so the listing's last line is never read). */
SYSCOMMON_API int getOSPFDBTable(OspfDbRecord **out);

/* ---- Configuration comparison ---- */

/* Parameters of two_conf_cmp. */
typedef struct ConfCmpParams {
  uint32_t record_size;
  uint32_t compare_size; /* leading bytes compared */
  uint32_t key_width;    /* 1, 2 or 4 */
  uint32_t key_offset;   /* a record whose key is 0 is unused and ends a table */
} ConfCmpParams;

/* Zeroes flags[0..count); for each used old record (up to the first unused one), the first
 * new record (up to the first unused one) equal in its leading bytes gets flag 1; an old
 * record without one gets flag 2. A key width other than 1, 2 or 4 stops the process with
 * an assertion. The sizes and offsets are trusted. Returns 0. */
SYSCOMMON_API int two_conf_cmp(const void *old_table, const void *new_table, int count, uint8_t *flags,
                               const ConfCmpParams *params);

/* Change bits. */
enum {
  CONF_CHANGE_SETTING1 = 1,
  CONF_CHANGE_SUBNET = 2,
  CONF_CHANGE_SETTING2 = 4,
  CONF_CHANGE_FLAGS = 8,
  CONF_CHANGE_GONE = 128
};
/* Presence values. */
enum { CONF_PRESENT_BOTH = 1, CONF_PRESENT_OLD_ONLY = 2 };

enum { CONF_CHANGE_MAX = 32, CONF_BRG_CHANGE_MAX = 8 };

typedef struct ConfChangeEntry {
  char name[32];
  uint8_t old_settings[32];
  uint8_t new_settings[32];
  uint32_t presence;
  uint32_t changes;
} ConfChangeEntry;

typedef struct ConfChangeList {
  ConfChangeEntry entry[CONF_CHANGE_MAX];
  uint32_t count;
} ConfChangeList;

typedef struct ConfBrgChangeEntry {
  char name[32];
  uint8_t old_record[56];
  uint8_t new_record[56];
  uint32_t presence;
  uint32_t changes;
} ConfBrgChangeEntry;

typedef struct ConfBrgChangeList {
  ConfBrgChangeEntry entry[CONF_BRG_CHANGE_MAX];
  uint32_t count;
} ConfBrgChangeList;

/* Address client settings of the WAN (40 bytes). */
typedef struct WanClientConfig {
  uint32_t flags;     /* word 0; bit 16 is not compared */
  uint32_t setting2;  /* word 1: the second compared setting */
  uint32_t ip;        /* word 2 */
  uint32_t mask;      /* word 3 */
  uint32_t reserved[5];
  uint32_t setting1;  /* word 9: the first compared setting; 0 = no address client */
} WanClientConfig;

SYSCOMMON_STATIC_ASSERT(sizeof(ConfChangeEntry) == 104, "change entry");
SYSCOMMON_STATIC_ASSERT(offsetof(ConfChangeEntry, presence) == 96, "change entry presence");
SYSCOMMON_STATIC_ASSERT(sizeof(ConfChangeList) == 32 * 104 + 4, "change list");
SYSCOMMON_STATIC_ASSERT(sizeof(ConfBrgChangeEntry) == 152, "bridge change entry");
SYSCOMMON_STATIC_ASSERT(offsetof(ConfBrgChangeEntry, presence) == 144, "bridge change entry presence");
SYSCOMMON_STATIC_ASSERT(sizeof(ConfBrgChangeList) == 8 * 152 + 4, "bridge change list");
SYSCOMMON_STATIC_ASSERT(sizeof(WanClientConfig) == 40 && offsetof(WanClientConfig, setting1) == 36, "client");

/* For each old VLAN interface with a name, in table order: the new one of the same name
 * gives presence 1 with changes 2 (subnet), 4 (word 2), 1 (word 3) and both records' first
 * 32 bytes; none gives presence 2, change 128 and the old bytes. Interfaces only in the new
 * table give nothing. At most 32 entries. Returns the entries, also stored in count. */
SYSCOMMON_API int two_conf_cmpVconfig(const ShmVlanIfConfig *old_table, const ShmVlanIfConfig *new_table, int count,
                                      ConfChangeList *list);
/* The same over bridges matched by name: changes 2 (subnet) and 4 (the byte after the
 * name), whole records copied. At most 8 entries. */
SYSCOMMON_API int two_conf_cmpBrg(const ShmBridgeConfig *old_table, const ShmBridgeConfig *new_table, int count,
                                  ConfBrgChangeList *list);
/* Zeroes the list and fills one entry "WAN" (presence 0): settings as words flags without
 * bit 16, 0, setting2, setting1, ip, mask. A new setting1 of 0 gives change 128; else 2,
 * 4, 1, 8 for subnet, setting2, setting1 and flags (bit 16 aside). Count 1; returns 1. */
SYSCOMMON_API int two_conf_cmpIpclient(const WanClientConfig *old_rec, const WanClientConfig *new_rec,
                                       ConfChangeList *list);
/* Current WAN state {WAN VLAN id, address, mask of its interface}; 1 and `saved` replaced
 * when it differs from the 12 saved bytes, else 0. */
SYSCOMMON_API int cmpWANInfo(void *ignored, uint32_t saved[3]);

SYSCOMMON_END_DECLS

#endif
