// The log files the log agent writes, and what every reader of them shares: the fixed
// paths, the semaphores that guard them and a line reader with a fixed buffer.
#ifndef SYSCOMMON_LOG_FILES_H
#define SYSCOMMON_LOG_FILES_H

#include <cstdio>
#include <span>

#include "syscommon/platform.h"

namespace syscommon::log {

inline constexpr const char *kSystemLog1 = "/mnt/log2/KVR900_LOG1";
inline constexpr const char *kSystemLog2 = "/mnt/log2/KVR900_LOG2";
inline constexpr const char *kVpnLog = "/mnt/log2/vpn_log";
inline constexpr const char *kFirewallLog = "/mnt/log2/firewall_log";
inline constexpr const char *kKernelLog = "/mnt/log2/kernel_log";
inline constexpr const char *kRamdisk = "/mnt/ramdisk";

inline constexpr int kSemVpnLog = 1517;   // the VPN log file
inline constexpr int kSemLogFiles = 1519;  // the system and firewall log files

// Holds a bare semaphore (Semaphore_P / Semaphore_V) for one scope.
class SemaphoreHold {
 public:
  explicit SemaphoreHold(int key) : key_(key) { Semaphore_P(key_); }
  ~SemaphoreHold() { Semaphore_V(key_); }
  SemaphoreHold(const SemaphoreHold &) = delete;
  SemaphoreHold &operator=(const SemaphoreHold &) = delete;

 private:
  int key_;
};

// Reads one line into `buf` (fgets). The rest of a line longer than the buffer is read
// and dropped, so that one line of the file is always one line here. False at the end.
// A line that fills the buffer is told by its last byte (fgets's terminator there), so
// NUL bytes inside a line do not matter. `buf` holds at least two bytes.
inline bool read_line(std::FILE *file, std::span<char> buf) {
  const std::size_t last = buf.size() - 1;
  buf[last] = 1;
  if (std::fgets(buf.data(), static_cast<int>(buf.size()), file) == nullptr) return false;
  if (buf[last] == '\0' && buf[last - 1] != '\n')
    for (int c = std::fgetc(file); c != EOF && c != '\n'; c = std::fgetc(file)) {
    }
  return true;
}

}  // namespace syscommon::log

#endif
