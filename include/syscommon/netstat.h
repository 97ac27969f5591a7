/*
 * Network and routing status helpers: interface queries.
 */
#ifndef SYSCOMMON_NETSTAT_H
#define SYSCOMMON_NETSTAT_H

#include <stdint.h>

#include "syscommon/export.h"

SYSCOMMON_BEGIN_DECLS

/* Hardware address of interface `name` into mac[6] (SIOCGIFHWADDR on a datagram socket):
 * 1; -1 with all six bytes 0 on failure (" Open socket error!." printed when no socket can
 * be had). */
SYSCOMMON_API int Get_IF_MAC(const char *name, uint8_t *mac);
/* The port link bitmask of Ssc_getPortLinkState (bit n = port n up). */
SYSCOMMON_API uint32_t Link_state(void);

SYSCOMMON_END_DECLS

#endif
