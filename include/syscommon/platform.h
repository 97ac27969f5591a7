/*
 * Platform services of libsyscommon.
 *
 * IPC primitives: System V semaphores (one per segment, used as a mutex between processes)
 * and shared-memory segments. Every semaphore operation uses SEM_UNDO, so a process that
 * dies inside a critical section releases it. None of these reports failure to the caller:
 * they block until the semaphore is obtained and always leave *ptr pointing at a mapping.
 *
 * Imported services: the loading process may supply its own definitions of the five
 * functions below simply by defining a symbol of the same name; the library reaches them
 * through the dynamic symbol table and ships defaults for a development host.
 *
 * Host simulation (environment):
 *   SYSCOMMON_ROOT   when non-empty, prefixed to every fixed absolute path the library
 *                    itself names (files, device nodes, sockets, programs), "/dev/null"
 *                    excepted. Paths handed in by a caller are used as given.
 *   SYSCOMMON_TRACE  when set, every command line handed to the shell is appended to this
 *                    file, followed by a newline.
 */
#ifndef SYSCOMMON_PLATFORM_H
#define SYSCOMMON_PLATFORM_H

#include <stdint.h>

#include "syscommon/export.h"

SYSCOMMON_BEGIN_DECLS

/* Creates semaphore semKey if absent and sets it free (value 1). */
SYSCOMMON_API int Semaphore_init(int semKey);
/* Waits on / releases a bare semaphore (created free if absent). */
SYSCOMMON_API int Semaphore_P(int semKey);
SYSCOMMON_API int Semaphore_V(int semKey);

/* Enters the system segment's critical section: waits on semKey, attaches shmKey
 * (created with 7112 bytes if absent) and stores its address in *ptr. */
SYSCOMMON_API int CS_Start(int semKey, int shmKey, void **ptr);
/* Detaches *ptr and releases semKey. */
SYSCOMMON_API int CS_End(int semKey, int shmKey, void **ptr);
/* The same for any segment of `size` bytes. */
SYSCOMMON_API int shm_enterCS(int semKey, int shmKey, void **ptr, int size);
SYSCOMMON_API int shm_leaveCS(int semKey, int shmKey, void **ptr);

/* 32-bit millisecond clock, wrapping (default: CLOCK_MONOTONIC). */
SYSCOMMON_API uint32_t Ssys_current_msecs(void);
/* Monotonic seconds, never 0 while running. */
SYSCOMMON_API uint32_t Ssys_current_secs(void);
/* Bit n set = port n (counted from 0) has link (default: 0). */
SYSCOMMON_API uint32_t Ssc_getPortLinkState(void);
/* Fills 24 counters of `port` (default: zeros) and returns 0. */
SYSCOMMON_API int Ssc_getPortStatsCounter(int port, uint32_t counters[24]);
/* Maps a user port index to module and port (default: module 0, port = index; result 1
 * for 0..9, else 0). */
SYSCOMMON_API int Ssys_UI_port2MdlPort(int index, int *module, int *port);

SYSCOMMON_END_DECLS

#endif
