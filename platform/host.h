// Host access shared by every subsystem: rooting of the library's fixed paths, the one
// shell-command runner (with its trace) and owned file and pipe handles.
#ifndef SYSCOMMON_PLATFORM_HOST_H
#define SYSCOMMON_PLATFORM_HOST_H

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

namespace syscommon {

// Prefixes SYSCOMMON_ROOT (when set and non-empty) to a fixed absolute path the library
// names itself. "/dev/null" and relative paths are returned unchanged.
std::string rooted(std::string_view path);

// Appends one command line to the SYSCOMMON_TRACE file, when that is set.
void trace_command(std::string_view command);

// Hands `command` to the shell with system() and returns system()'s result.
int run_command(const std::string &command);

// The exit status of a command from run_command's result: -1 when no shell ran, 128 + the
// signal when one ended it.
int exit_status(int system_result);

struct FileCloser {
  void operator()(std::FILE *f) const {
    if (f != nullptr) std::fclose(f);
  }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// chdir / mkdir of a path as given: 0, or -1 with errno set.
int change_directory(const std::string &path);
int make_directory(const std::string &path, unsigned mode);

// True when `path` exists (stat succeeds).
bool path_exists(const std::string &path);

// One message to the local syslog service: openlog(ident, no options, facility 0),
// syslog(priority, "%s", text), closelog().
void syslog_once(const char *ident, int priority, const char *text);

// fopen of a path as given (callers root fixed paths with rooted()).
File open_file(const std::string &path, const char *mode);

// The size of the file at `path` (as given) into `size`: 0, or -1 with errno set.
int file_size(const std::string &path, long long &size);

// A popen stream that is closed with pclose when it goes out of scope.
class Pipe {
 public:
  Pipe() = default;
  explicit Pipe(std::FILE *f) : f_(f) {}
  Pipe(Pipe &&other) noexcept : f_(other.f_) { other.f_ = nullptr; }
  Pipe &operator=(Pipe &&other) noexcept;
  Pipe(const Pipe &) = delete;
  Pipe &operator=(const Pipe &) = delete;
  ~Pipe() { close(); }

  [[nodiscard]] std::FILE *get() const { return f_; }
  explicit operator bool() const { return f_ != nullptr; }
  // pclose's result, or -1 when nothing was open.
  int close();

 private:
  std::FILE *f_ = nullptr;
};

// Hands `command` to the shell with popen (traced like run_command).
Pipe open_pipe(const std::string &command, const char *mode);

}  // namespace syscommon

#endif
