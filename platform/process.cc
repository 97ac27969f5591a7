#include "platform/process.h"

#include <sched.h>
#include <signal.h>
#include <sys/sysinfo.h>
#include <unistd.h>

namespace syscommon {

int set_round_robin(int pid, int priority) {
  sched_param param{};
  param.sched_priority = priority;
  return sched_setscheduler(pid, SCHED_RR, &param);
}

int current_thread_id() { return static_cast<int>(gettid()); }

int signal_process(int pid, int signal) { return kill(pid, signal); }

int system_uptime(long &seconds) {
  struct sysinfo info {};
  int rc = sysinfo(&info);
  seconds = rc == 0 ? info.uptime : 0;
  return rc;
}

}  // namespace syscommon
