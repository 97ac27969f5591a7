#include "support/test_support.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

extern char **environ;

namespace syscommon::testing {

bool isolated() {
  const char *v = std::getenv("SYSCOMMON_ISOLATED");
  return v != nullptr && std::string(v) == "1";
}

std::string sim_root() {
  const char *v = std::getenv("SYSCOMMON_ROOT");
  return v != nullptr ? v : "";
}

std::string sim_path(const std::string &absolute) { return sim_root() + absolute; }

int wait_for(pid_t pid, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  int status = 0;
  while (std::chrono::steady_clock::now() < deadline) {
    if (waitpid(pid, &status, WNOHANG) == pid) return WIFEXITED(status) ? WEXITSTATUS(status) : 128;
    usleep(5000);
  }
  kill(pid, SIGKILL);
  waitpid(pid, &status, 0);
  return -1;
}

bool wait_for_path(const std::string &path, std::chrono::milliseconds limit) {
  const auto deadline = std::chrono::steady_clock::now() + limit;
  while (access(path.c_str(), F_OK) != 0) {
    if (std::chrono::steady_clock::now() >= deadline) return false;
    usleep(10000);
  }
  return true;
}

void expect_usage_errors(const std::string &path, const std::vector<std::vector<std::string>> &bad) {
  for (const auto &args : bad) {
    const ProgramRun r = run_program(path, args);
    const std::string shown = ::testing::PrintToString(args);
    EXPECT_EQ(r.status, 2) << shown << r.out << r.err;
    EXPECT_TRUE(r.out.empty()) << shown << r.out;
    EXPECT_EQ(std::count(r.err.begin(), r.err.end(), '\n'), 1) << shown << r.err;
  }
}

ProgramRun run_program(const std::string &path, const std::vector<std::string> &args,
                       std::chrono::milliseconds limit) {
  ProgramRun run;
  int out[2], err[2];
  if (pipe(out) != 0) return run;
  if (pipe(err) != 0) {
    close(out[0]);
    close(out[1]);
    return run;
  }
  const pid_t pid = fork();
  if (pid == 0) {
    const int null = open("/dev/null", O_RDONLY);
    dup2(null, 0);
    dup2(out[1], 1);
    dup2(err[1], 2);
    std::vector<char *> argv{const_cast<char *>(path.c_str())};
    for (const auto &a : args) argv.push_back(const_cast<char *>(a.c_str()));
    argv.push_back(nullptr);
    execv(path.c_str(), argv.data());
    _exit(127);
  }
  close(out[1]);
  close(err[1]);
  // Both pipes are drained while the program runs, so a chatty one never blocks on them.
  const auto deadline = std::chrono::steady_clock::now() + limit;
  pollfd fds[2] = {{out[0], POLLIN, 0}, {err[0], POLLIN, 0}};
  std::string *sinks[2] = {&run.out, &run.err};
  int open_pipes = 2;
  while (open_pipes > 0 && std::chrono::steady_clock::now() < deadline) {
    if (poll(fds, 2, 50) <= 0) continue;
    for (int i = 0; i < 2; ++i) {
      if (fds[i].fd < 0 || fds[i].revents == 0) continue;
      char buf[4096];
      const ssize_t n = read(fds[i].fd, buf, sizeof buf);
      if (n > 0) {
        sinks[i]->append(buf, static_cast<std::size_t>(n));
        continue;
      }
      close(fds[i].fd);
      fds[i].fd = -1;
      --open_pipes;
    }
  }
  for (const pollfd &f : fds)
    if (f.fd >= 0) close(f.fd);
  const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
  run.status = wait_for(pid, std::max(left, std::chrono::milliseconds(0)));
  return run;
}

std::string read_file(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

void write_file(const std::string &path, const std::string &content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

std::vector<std::string> trace_lines() {
  const char *trace = std::getenv("SYSCOMMON_TRACE");
  std::vector<std::string> lines;
  if (trace == nullptr) return lines;
  std::istringstream in(read_file(trace));
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

void clear_trace() {
  const char *trace = std::getenv("SYSCOMMON_TRACE");
  if (trace != nullptr) write_file(trace, "");
}

void write_stub(const std::string &name, const std::string &script) {
  std::string path = sim_path("/bin/" + name);
  write_file(path, "#!/bin/sh\n" + script + "\n");
  chmod(path.c_str(), 0755);
}

pid_t start_named_sleep(const std::string &name) {
  std::string path = sim_path("/bin/" + name), argv0 = name, seconds = "300";
  std::filesystem::copy_file("/bin/sleep", path, std::filesystem::copy_options::skip_existing);
  char *argv[] = {argv0.data(), seconds.data(), nullptr};
  pid_t pid = -1;
  return posix_spawn(&pid, path.c_str(), nullptr, nullptr, argv, environ) == 0 ? pid : -1;
}

void install_device_ps() {
  write_stub("ps", R"(echo "  PID USER       VSZ STAT COMMAND"
for d in /proc/[0-9]*; do
  cmd=$(tr '\0' ' ' < "$d/cmdline" 2>/dev/null)
  printf '%5d root       1000 S    %s\n' "${d#/proc/}" "${cmd:-[$(cat "$d/comm" 2>/dev/null)]}"
done)");
}

void reset_flash() {
  const off_t sizes[] = {1 << 20, 4 << 20, 8 << 20};
  for (int n = 0; n < 3; ++n) {
    std::string path = sim_path("/dev/mtd" + std::to_string(n));
    write_file(path, "");
    truncate(path.c_str(), sizes[n]);
  }
}

RawSegment::RawSegment(int shm_key) {
  int id = shmget(shm_key, 0, 0);
  if (id < 0) throw std::runtime_error("segment " + std::to_string(shm_key) + " does not exist");
  void *p = shmat(id, nullptr, 0);
  if (p == reinterpret_cast<void *>(-1)) throw std::runtime_error("shmat failed");
  base_ = static_cast<uint8_t *>(p);
}

RawSegment::~RawSegment() { shmdt(base_); }

bool RawSegment::zero(std::size_t off, std::size_t n) const {
  for (std::size_t i = 0; i < n; ++i)
    if (base_[off + i] != 0) return false;
  return true;
}

}  // namespace syscommon::testing
