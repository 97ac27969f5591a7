// Command registry of the `syscommon` tool. Each command group lives in its own file and
// registers itself with a static Registration object.
#ifndef SYSCOMMON_TOOLS_COMMAND_H
#define SYSCOMMON_TOOLS_COMMAND_H

#include <functional>
#include <string>
#include <string_view>
#include <utility>
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

// Thrown when "--help" or "-h" stands where an option may stand: the command's usage is
// printed and the tool exits 0.
struct HelpRequest {};

// Registers a group at static-initialisation time.
struct Registration {
  explicit Registration(Group group);
};

const std::vector<Group> &groups();

// Argument helpers: parse or throw UsageError naming the argument.

// A decimal number, the whole token ("010" is ten, "0x10" and " 1" are refused), checked
// against [min, max].
long long parse_number(const std::string &text, std::string_view what, long long min, long long max);
void expect_args(const Args &args, std::size_t min, std::size_t max);
// Text that is stored or written into a one-line record: 1 to max_length characters, no
// control characters (a line feed would split the record).
void check_text(const std::string &text, std::string_view what, std::size_t max_length);

// "--name VALUE" options among positional arguments. An option may be given once; "--help"
// or "-h" where an option may stand throws HelpRequest.
struct Options {
  std::vector<std::string> positional;
  std::vector<std::pair<std::string, std::string>> named;
  const std::string *get(std::string_view name) const;
};
Options parse_options(const Args &args, const std::vector<std::string> &known);

}  // namespace syscommon::tool

#endif
