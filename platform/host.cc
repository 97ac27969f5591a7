#include "platform/host.h"

#include <fcntl.h>
#include <sys/stat.h>
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
