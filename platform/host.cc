#include "platform/host.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <syslog.h>
#include <unistd.h>

#include <cstdlib>

namespace syscommon {

std::string rooted(std::string_view path) {
  const char *root = std::getenv("SYSCOMMON_ROOT");
  if (root == nullptr || *root == '\0' || path.empty() || path.front() != '/' || path == "/dev/null")
    return std::string(path);
  std::string out(root);
  out.append(path);
  return out;
}

void trace_command(std::string_view command) {
  const char *trace = std::getenv("SYSCOMMON_TRACE");
  if (trace == nullptr || *trace == '\0') return;
  int fd = ::open(trace, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0644);
  if (fd < 0) return;
  std::string line(command);
  line.push_back('\n');
  // One write with O_APPEND keeps lines from concurrent processes whole.
  [[maybe_unused]] ssize_t n = ::write(fd, line.data(), line.size());
  ::close(fd);
}

int run_command(const std::string &command) {
  trace_command(command);
  std::fflush(nullptr);  // keep our buffered output ahead of the command's
  return std::system(command.c_str());
}

int change_directory(const std::string &path) { return ::chdir(path.c_str()); }

int make_directory(const std::string &path, unsigned mode) { return ::mkdir(path.c_str(), static_cast<mode_t>(mode)); }

int exit_status(int system_result) {
  if (system_result == -1) return -1;
  if (WIFSIGNALED(system_result)) return 128 + WTERMSIG(system_result);
  return WEXITSTATUS(system_result);
}

bool path_exists(const std::string &path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0;
}

void syslog_once(const char *ident, int priority, const char *text) {
  openlog(ident, 0, 0);
  syslog(priority, "%s", text);
  closelog();
}

File open_file(const std::string &path, const char *mode) { return File(std::fopen(path.c_str(), mode)); }

int file_size(const std::string &path, long long &size) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return -1;
  size = static_cast<long long>(st.st_size);
  return 0;
}

Pipe &Pipe::operator=(Pipe &&other) noexcept {
  if (this != &other) {
    close();
    f_ = other.f_;
    other.f_ = nullptr;
  }
  return *this;
}

int Pipe::close() {
  if (f_ == nullptr) return -1;
  int rc = pclose(f_);
  f_ = nullptr;
  return rc;
}

Pipe open_pipe(const std::string &command, const char *mode) {
  trace_command(command);
  std::fflush(nullptr);
  return Pipe(popen(command.c_str(), mode));
}

}  // namespace syscommon
