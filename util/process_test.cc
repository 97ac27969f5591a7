// Process and kernel controls against throw-away processes inside the launcher's private
// PID namespace (a kill by name reaches nothing else there) and files of the simulated
// root. Every test here requires the isolation.
#include <sched.h>
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

namespace {

using namespace syscommon::testing;
using Lines = std::vector<std::string>;

class ProcessControl : public ::testing::Test {
 protected:
  void SetUp() override {
    SYSCOMMON_REQUIRE_ISOLATION();
    ASSERT_FALSE(sim_root().empty());
    install_device_ps();
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
    pid_t pid = start_named_sleep(name);
    EXPECT_GT(pid, 0) << name;
    children_.insert(pid);
    return pid;
  }
  // The signal that ended the child within five seconds; 0 while it still runs.
  int ended_by(pid_t pid, int tries = 500) {
    for (int status = 0; tries-- > 0; std::this_thread::sleep_for(std::chrono::milliseconds(10)))
      if (waitpid(pid, &status, WNOHANG) == pid) {
        children_.erase(pid);
        return WIFSIGNALED(status) ? WTERMSIG(status) : -1;
      }
    return 0;
  }
  bool running(pid_t pid) { return ended_by(pid, 1) == 0; }

  std::set<pid_t> children_;
};

TEST_F(ProcessControl, KillByNameSparesTheAgents) {
  pid_t snmpd = start("snmpd"), agent = start("agent_snmpd"), other = start("lldpd");
  pid_t ipsec = start("ipsec"), upper = start("IPSEC_starter");  // the match ignores case
  pid_t status_agent = start("agent_parse_IpsecStatus"), ipsec_agent = start("agent_ipsec");
  EXPECT_EQ(Ssys_taskKillByName("snmpd"), 0);
  EXPECT_EQ(ended_by(snmpd), SIGKILL);
  EXPECT_EQ(Ssys_taskKillByName("ipsec"), 0);
  EXPECT_EQ(ended_by(ipsec), SIGKILL);
  EXPECT_EQ(ended_by(upper), SIGKILL);
  for (pid_t pid : {agent, other, status_agent, ipsec_agent}) EXPECT_TRUE(running(pid)) << pid;
  EXPECT_EQ(trace_lines(), (Lines{"ps|grep -i snmpd|grep -v grep|grep -v agent_snmpd|cut -c 1-5|xargs kill -9",
                                  "ps|grep -i ipsec|grep -v grep|grep -v agent_ipsec|grep -v "
                                  "agent_parse_IpsecStatus|cut -c 1-5|xargs kill -9"}));
  // Any other name has no such exception: the status agent's line matches "Status".
  Ssys_taskKillByName("Status");
  EXPECT_EQ(ended_by(status_agent), SIGKILL);
}

TEST_F(ProcessControl, LookupsAndTerminateByName) {
  std::set<int> ids = {start("lldpd"), start("lldpd"), start("lldpd")};
  int pids[5] = {};
  EXPECT_EQ(get_pid_by_name("lldpd", pids, 2), 2);  // capacity reached
  EXPECT_EQ(pids[2], 0);
  EXPECT_EQ(get_pid_by_name("lldpd", pids, 5), 3);
  EXPECT_EQ((std::set<int>{pids[0], pids[1], pids[2]}), ids);
  EXPECT_EQ(get_pid_by_name("nosuchprog", pids, 5), 0);
  EXPECT_EQ(find_ap_run_in_ps("lldpd"), 1);
  EXPECT_EQ(find_ap_run_in_ps("nosuchprog"), 0);
  EXPECT_EQ(terminate_porcess("lldpd"), 0);  // only the first listed: /proc lists ascending ids
  EXPECT_EQ(ended_by(*ids.begin()), SIGTERM);
  EXPECT_TRUE(running(*ids.rbegin()));
  EXPECT_EQ(trace_lines(), (Lines{"pidof lldpd", "pidof lldpd", "pidof nosuchprog", "ps | grep lldpd | grep -v grep",
                                  "ps | grep nosuchprog | grep -v grep",
                                  "ps|grep lldpd|grep -v grep|sed -n '1p'|cut -c 1-5|xargs kill -15"}));
}

TEST_F(ProcessControl, TaskPriorityRoundRobin) {
  pid_t pid = start("worker");
  int rc = Ssys_setTaskPriority(pid, 10);
  if (rc != 0 && errno == EPERM) GTEST_SKIP() << "no permission for real-time policies here";
  ASSERT_EQ(rc, 0);
  sched_param param{};
  ASSERT_EQ(sched_getparam(pid, &param), 0);
  EXPECT_EQ(sched_getscheduler(pid) * 100 + param.sched_priority, SCHED_RR * 100 + 10);
  EXPECT_EQ(stdout_of([&] { EXPECT_EQ(Ssys_setTaskPriority(pid, 1000), -1); }),
            "Ssys_setTaskPriority() rv = -1, error\n");
}

TEST_F(ProcessControl, KernelEntriesInTheSimulatedRoot) {
  std::filesystem::create_directories(sim_path("/proc/sys/net/ipv4/conf/all"));
  const std::string rpf = sim_path("/proc/sys/net/ipv4/conf/all/rp_filter");
  const std::string igmp = sim_path("/proc/sys/net/ipv4/igmp_max_memberships");
  EXPECT_EQ(Ssys_rpfEnable(1), 0);  // deliberately a no-op
  EXPECT_FALSE(std::filesystem::exists(rpf));
  EXPECT_EQ(Ssys_rpfEnable(0), 0);
  EXPECT_EQ(read_file(rpf), "0\n");
  EXPECT_EQ(Ssys_netSetIgmpMaxMemberships(64), 0);
  EXPECT_EQ(read_file(igmp), "64\n");
  EXPECT_EQ(trace_lines(), (Lines{"echo 0 > " + rpf, "echo 64 > " + igmp}));

  int tid = 0, rc = -1;
  std::thread([&] {
    tid = static_cast<int>(gettid());
    rc = thread_log("tid_worker");
  }).join();
  EXPECT_EQ(rc, 0);
  EXPECT_EQ(read_file(sim_path("/mnt/ramdisk/tid_worker")), std::to_string(tid) + "\n");  // the thread, not getpid

  const std::string phy = sim_path("/proc/tarn/switch_init");
  std::filesystem::remove(phy);
  EXPECT_EQ(stdout_of([] { EXPECT_EQ(check_phy_init(), 0); }), "Error: Fail To Open /proc/tarn/switch_init\n");
  write_file(phy, "000000000000007123\n");  // only the first 15 characters are read
  EXPECT_EQ(check_phy_init(), 7);
}

// tftp stub: ends as $TFTP_END says: an exit code, or "signal" to have the shell that runs
// the command terminated by SIGTERM.
constexpr const char *kTftpStub = R"sh(if [ "$TFTP_END" = signal ]; then
  [ "$(cat /proc/$PPID/comm)" = sh ] && kill -TERM $PPID
  exit 0
fi
exit ${TFTP_END:-0})sh";

TEST_F(ProcessControl, TftpCommandsStatusesAndRefusedNames) {
  write_stub("tftp", kTftpStub);
  const std::string log = sim_path("/mnt/ramdisk/tftp_test");
  auto transfer = [](const char *end, int direction, const char *remote) {
    setenv("TFTP_END", end, 1);
    return tftpTransfer(direction, "10.0.0.1", remote, "/tmp/f");
  };
  EXPECT_EQ(transfer("0", 0, "fw.bin"), 0);
  EXPECT_EQ(transfer("3", 1, "cfg 1.ini"), 3);
  EXPECT_EQ(transfer("signal", 0, "a.bin"), 1);
  EXPECT_EQ(trace_lines(), (Lines{"tftp 10.0.0.1 -c get \"fw.bin\" \"/tmp/f\" > /dev/null 2>&1", "echo 0 >> " + log,
                                  "tftp 10.0.0.1 -c put \"/tmp/f\" \"cfg 1.ini\" > /dev/null 2>&1", "echo 768 >> " + log,
                                  "tftp 10.0.0.1 -c get \"a.bin\" \"/tmp/f\" > /dev/null 2>&1", "echo 15 >> " + log}));
  EXPECT_EQ(read_file(log), "0\n768\n15\n");  // raw wait statuses, appended

  clear_trace();
  for (const char *bad : {"a;rm -rf x", "", "a\"b", "a`b`", static_cast<const char *>(nullptr)})
    EXPECT_EQ(transfer("0", 0, bad), 1) << (bad ? bad : "null");
  EXPECT_TRUE(trace_lines().empty());
  std::string long_name(600, 'x');
  transfer("0", 0, long_name.c_str());
  EXPECT_EQ(trace_lines().front().size(), 511u);  // commands are cut at 511 characters
  unsetenv("TFTP_END");
}

}  // namespace
