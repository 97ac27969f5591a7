// Process and kernel controls against throw-away processes inside the launcher's private
// PID namespace (a kill by name reaches nothing else there) and files of the simulated
// root. Every test here requires the isolation.
#include <sched.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "support/test_support.h"
#include "syscommon/util.h"

extern char **environ;

namespace {

using namespace std::chrono_literals;
using syscommon::testing::clear_trace;
using syscommon::testing::read_file;
using syscommon::testing::sim_path;
using syscommon::testing::sim_root;
using syscommon::testing::trace_lines;
using syscommon::testing::write_file;
using syscommon::testing::write_stub;

// The device's ps listing: PID right-aligned in the first five columns, then user, size,
// state and the command line.
constexpr const char *kPsStub = R"(echo "  PID USER       VSZ STAT COMMAND"
for d in /proc/[0-9]*; do
  pid=${d#/proc/}
  cmd=$(tr '\0' ' ' < "$d/cmdline" 2>/dev/null)
  [ -n "$cmd" ] || cmd="[$(cat "$d/comm" 2>/dev/null)]"
  printf '%5d %-8s %6s %-4s %s\n' "$pid" root 1000 S "$cmd"
done)";

class ProcessControl : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    ASSERT_FALSE(sim_root().empty());
    write_stub("ps", kPsStub);
    clear_trace();
  }
  void TearDown() override {
    for (pid_t pid : children_) {
      kill(pid, SIGKILL);
      waitpid(pid, nullptr, 0);
    }
  }

  // Starts a copy of sleep installed as $ROOT/bin/NAME, with argv[0] NAME.
  pid_t start(const std::string &name) {
    std::string path = sim_path("/bin/" + name);
    if (!std::filesystem::exists(path)) {
      std::filesystem::copy_file("/bin/sleep", path);
      chmod(path.c_str(), 0755);
    }
    std::string arg0 = name;
    std::string arg1 = "300";
    char *argv[] = {arg0.data(), arg1.data(), nullptr};
    pid_t pid = -1;
    EXPECT_EQ(posix_spawn(&pid, path.c_str(), nullptr, nullptr, argv, environ), 0);
    children_.insert(pid);
    return pid;
  }

  // Waits up to five seconds for the child to end; the signal that ended it, or 0.
  int ended_by(pid_t pid) {
    for (int i = 0; i < 500; ++i) {
      int status = 0;
      if (waitpid(pid, &status, WNOHANG) == pid) {
        children_.erase(pid);
        return WIFSIGNALED(status) ? WTERMSIG(status) : -1;
      }
      std::this_thread::sleep_for(10ms);
    }
    return 0;
  }
  bool running(pid_t pid) {
    int status = 0;
    return waitpid(pid, &status, WNOHANG) == 0;
  }

  std::set<pid_t> children_;
};

TEST_F(ProcessControl, KillByNameSparesTheAgent) {
  pid_t snmpd = start("snmpd");
  pid_t agent = start("agent_snmpd");
  pid_t other = start("lldpd");
  EXPECT_EQ(Ssys_taskKillByName("snmpd"), 0);
  EXPECT_EQ(ended_by(snmpd), SIGKILL);
  EXPECT_TRUE(running(agent));
  EXPECT_TRUE(running(other));
  EXPECT_EQ(trace_lines(),
            std::vector<std::string>{"ps|grep -i snmpd|grep -v grep|grep -v agent_snmpd|cut -c 1-5|xargs kill -9"});
}

TEST_F(ProcessControl, KillByNameIpsecKeepsTheStatusAgent) {
  pid_t ipsec = start("ipsec");
  pid_t upper = start("IPSEC_starter");  // the match ignores case
  pid_t status_agent = start("agent_parse_IpsecStatus");
  pid_t agent = start("agent_ipsec");
  EXPECT_EQ(Ssys_taskKillByName("ipsec"), 0);
  EXPECT_EQ(ended_by(ipsec), SIGKILL);
  EXPECT_EQ(ended_by(upper), SIGKILL);
  EXPECT_TRUE(running(status_agent));
  EXPECT_TRUE(running(agent));
  EXPECT_EQ(trace_lines(), std::vector<std::string>{"ps|grep -i ipsec|grep -v grep|grep -v agent_ipsec|grep -v "
                                                    "agent_parse_IpsecStatus|cut -c 1-5|xargs kill -9"});

  // Any other name has no such exception: the status agent's line matches "Status".
  EXPECT_EQ(Ssys_taskKillByName("Status"), 0);
  EXPECT_EQ(ended_by(status_agent), SIGKILL);
}

TEST_F(ProcessControl, TerminateEndsOnlyTheFirstListed) {
  pid_t first = start("dhcpd");
  pid_t second = start("dhcpd");
  ASSERT_LT(first, second);  // /proc lists ascending ids
  EXPECT_EQ(terminate_porcess("dhcpd"), 0);
  EXPECT_EQ(ended_by(first), SIGTERM);
  EXPECT_TRUE(running(second));
  EXPECT_EQ(trace_lines(),
            std::vector<std::string>{"ps|grep dhcpd|grep -v grep|sed -n '1p'|cut -c 1-5|xargs kill -15"});
}

TEST_F(ProcessControl, LookupsByName) {
  std::set<int> ids = {start("lldpd"), start("lldpd"), start("lldpd")};
  int pids[5] = {0, 0, 0, 0, 0};
  EXPECT_EQ(get_pid_by_name("lldpd", pids, 2), 2);
  EXPECT_TRUE(ids.count(pids[0]) == 1 && ids.count(pids[1]) == 1 && pids[0] != pids[1]);
  EXPECT_EQ(pids[2], 0);
  EXPECT_EQ(get_pid_by_name("lldpd", pids, 5), 3);
  EXPECT_EQ((std::set<int>{pids[0], pids[1], pids[2]}), ids);
  EXPECT_EQ(get_pid_by_name("nosuchprog", pids, 5), 0);
  EXPECT_EQ(get_pid_by_name("lldpd", pids, 0), 0);

  EXPECT_EQ(find_ap_run_in_ps("lldpd"), 1);
  EXPECT_EQ(find_ap_run_in_ps("nosuchprog"), 0);
  EXPECT_EQ(trace_lines().back(), "ps | grep nosuchprog | grep -v grep");
  EXPECT_EQ(trace_lines().front(), "pidof lldpd");
}

TEST_F(ProcessControl, TaskPriorityRoundRobin) {
  pid_t pid = start("worker");
  int rc = Ssys_setTaskPriority(pid, 10);
  if (rc != 0 && errno == EPERM) GTEST_SKIP() << "no permission for real-time policies here";
  ASSERT_EQ(rc, 0);
  EXPECT_EQ(sched_getscheduler(pid), SCHED_RR);
  sched_param param{};
  ASSERT_EQ(sched_getparam(pid, &param), 0);
  EXPECT_EQ(param.sched_priority, 10);

  ::testing::internal::CaptureStdout();
  EXPECT_EQ(Ssys_setTaskPriority(pid, 1000), -1);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Ssys_setTaskPriority() rv = -1, error\n");
}

TEST_F(ProcessControl, KernelSwitchesLandInTheSimulatedRoot) {
  std::filesystem::create_directories(sim_path("/proc/sys/net/ipv4/conf/all"));
  const std::string rpf = sim_path("/proc/sys/net/ipv4/conf/all/rp_filter");
  const std::string igmp = sim_path("/proc/sys/net/ipv4/igmp_max_memberships");
  std::filesystem::remove(rpf);

  EXPECT_EQ(Ssys_rpfEnable(1), 0);  // deliberately a no-op
  EXPECT_TRUE(trace_lines().empty());
  EXPECT_FALSE(std::filesystem::exists(rpf));

  EXPECT_EQ(Ssys_rpfEnable(0), 0);
  EXPECT_EQ(read_file(rpf), "0\n");
  EXPECT_EQ(Ssys_rpfEnable(2), 0);
  EXPECT_EQ(read_file(rpf), "2\n");
  EXPECT_EQ(Ssys_netSetIgmpMaxMemberships(64), 0);
  EXPECT_EQ(read_file(igmp), "64\n");
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{"echo 0 > " + rpf, "echo 2 > " + rpf, "echo 64 > " + igmp}));
}

TEST_F(ProcessControl, ThreadLogWritesTheCallersThreadId) {
  int tid = 0;
  int rc = -1;
  std::thread worker([&] {
    tid = static_cast<int>(gettid());
    rc = thread_log("tid_worker");
  });
  worker.join();
  EXPECT_EQ(rc, 0);
  EXPECT_NE(tid, static_cast<int>(getpid()));
  EXPECT_EQ(read_file(sim_path("/mnt/ramdisk/tid_worker")), std::to_string(tid) + "\n");
}

TEST_F(ProcessControl, PhyInitReadsTheSwitchEntry) {
  const std::string path = sim_path("/proc/tarn/switch_init");
  std::filesystem::remove(path);
  ::testing::internal::CaptureStdout();
  EXPECT_EQ(check_phy_init(), 0);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "Error: Fail To Open /proc/tarn/switch_init\n");
  write_file(path, "1\n");
  EXPECT_EQ(check_phy_init(), 1);
  write_file(path, "000000000000007123\n");  // only the first 15 characters are read
  EXPECT_EQ(check_phy_init(), 7);
  write_file(path, "");
  EXPECT_EQ(check_phy_init(), 0);
}

class Tftp : public ProcessControl {
 protected:
  void SetUp() override {
    ProcessControl::SetUp();
    if (IsSkipped()) return;
    // Records its arguments; ends as $TFTP_END says: an exit code, or "signal" to have
    // the shell that runs the command terminated by SIGTERM.
    write_stub("tftp", "printf '%s|' \"$@\" > \"$SYSCOMMON_ROOT/tftp_args\"\n"
                       "if [ \"$TFTP_END\" = signal ]; then\n"
                       "  [ \"$(cat /proc/$PPID/comm)\" = sh ] && kill -TERM $PPID\n"
                       "  exit 0\n"
                       "fi\n"
                       "exit ${TFTP_END:-0}");
    std::filesystem::remove(sim_path("/mnt/ramdisk/tftp_test"));
  }
  static std::string args() { return read_file(sim_path("/tftp_args")); }
};

TEST_F(Tftp, GetAndPutCommandLines) {
  setenv("TFTP_END", "0", 1);
  EXPECT_EQ(tftpTransfer(0, "10.0.0.1", "fw.bin", "/tmp/fw.bin"), 0);
  EXPECT_EQ(args(), "10.0.0.1|-c|get|fw.bin|/tmp/fw.bin|");
  EXPECT_EQ(tftpTransfer(1, "10.0.0.2", "cfg 1.ini", "/tmp/cfg.ini"), 0);
  EXPECT_EQ(args(), "10.0.0.2|-c|put|/tmp/cfg.ini|cfg 1.ini|");
  const std::string log = sim_path("/mnt/ramdisk/tftp_test");
  EXPECT_EQ(trace_lines(), (std::vector<std::string>{
                               "tftp 10.0.0.1 -c get \"fw.bin\" \"/tmp/fw.bin\" > /dev/null 2>&1",
                               "echo 0 >> " + log,
                               "tftp 10.0.0.2 -c put \"/tmp/cfg.ini\" \"cfg 1.ini\" > /dev/null 2>&1",
                               "echo 0 >> " + log,
                           }));
}

TEST_F(Tftp, ExitCodesSignalsAndRefusedNames) {
  setenv("TFTP_END", "3", 1);
  EXPECT_EQ(tftpTransfer(0, "10.0.0.1", "a.bin", "/tmp/a"), 3);
  setenv("TFTP_END", "signal", 1);
  EXPECT_EQ(tftpTransfer(0, "10.0.0.1", "a.bin", "/tmp/a"), 1);
  // The raw wait statuses are appended, one per line.
  std::string log = read_file(sim_path("/mnt/ramdisk/tftp_test"));
  EXPECT_EQ(log, "768\n15\n");

  clear_trace();
  for (const char *bad : {"a;rm -rf x", "", "a\"b", "a`b`"}) EXPECT_EQ(tftpTransfer(0, "h", bad, "/tmp/a"), 1) << bad;
  EXPECT_EQ(tftpTransfer(0, "h", nullptr, "/tmp/a"), 1);
  EXPECT_TRUE(trace_lines().empty());

  // Commands are cut at 511 characters.
  setenv("TFTP_END", "0", 1);
  std::string long_name(600, 'x');
  tftpTransfer(0, "h", long_name.c_str(), "/tmp/a");
  EXPECT_EQ(trace_lines().front().size(), 511u);
  unsetenv("TFTP_END");
}

}  // namespace
