// Process and system queries that the helpers of util/ need from the OS.
#ifndef SYSCOMMON_PLATFORM_PROCESS_H
#define SYSCOMMON_PLATFORM_PROCESS_H

namespace syscommon {

// sched_setscheduler(pid, SCHED_RR, priority): 0, or -1 with errno set.
int set_round_robin(int pid, int priority);

// The calling thread's kernel thread id.
int current_thread_id();

// kill(pid, signal): 0, or -1 with errno set.
int signal_process(int pid, int signal);

// sysinfo's uptime in seconds into `seconds`; returns sysinfo's result (0 on success).
int system_uptime(long &seconds);

}  // namespace syscommon

#endif
