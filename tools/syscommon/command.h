// Command registry of the `syscommon` tool. Each command group lives in its own file and
// registers itself with a static Registration object.
#ifndef SYSCOMMON_TOOLS_COMMAND_H
#define SYSCOMMON_TOOLS_COMMAND_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace syscommon::tool {

using Args = std::vector<std::string>;

// A leaf command: its words after the group, a one-line summary, and the action.
// The action returns the exit status; it throws UsageError on a bad argument.
struct Command {
  std::string name;
  std::string usage;    // arguments, e.g. "NAME VALUE"
  std::string summary;
  std::function<int(const Args &)> run;
};

struct Group {
  std::string name;
  std::string summary;
  std::vector<Command> commands;
};

struct UsageError {
  std::string message;
};

// Registers a group at static-initialisation time.
struct Registration {
  explicit Registration(Group group);
};

const std::vector<Group> &groups();

// Argument helpers: parse or throw UsageError naming the argument.
long parse_number(const std::string &text, std::string_view what, long min, long max);
void expect_args(const Args &args, std::size_t min, std::size_t max);

}  // namespace syscommon::tool

#endif
