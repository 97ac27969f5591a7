#include "support/test_support.h"

#include <sys/ipc.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

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
