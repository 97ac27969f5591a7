// syscommon: inspect and drive the shared device state from a shell.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <iostream>

#include "tools/syscommon/command.h"

namespace syscommon::tool {

namespace {
std::vector<Group> &registry() {
  static std::vector<Group> all;
  return all;
}

bool is_help(const std::string &arg) { return arg == "--help" || arg == "-h" || arg == "help"; }

void print_top_help() {
  std::cout << "usage: syscommon GROUP COMMAND [ARGS...]\n\n"
               "Inspect and drive the router's shared device state (libsyscommon).\n"
               "Honours SYSCOMMON_ROOT (simulated device root) and SYSCOMMON_TRACE.\n\ngroups:\n";
  for (const auto &g : registry()) std::printf("  %-10s %s\n", g.name.c_str(), g.summary.c_str());
  std::cout << "\n'syscommon GROUP --help' lists a group's commands.\n";
}

void print_group_help(const Group &g) {
  std::cout << "usage: syscommon " << g.name << " COMMAND [ARGS...]\n\n" << g.summary << "\n\ncommands:\n";
  for (const auto &c : g.commands) {
    std::string head = c.name + (c.usage.empty() ? "" : " " + c.usage);
    std::string first_line = c.summary.substr(0, c.summary.find('\n'));
    std::printf("  %-34s %s\n", head.c_str(), first_line.c_str());
  }
}

void print_command_help(const Group &g, const Command &c) {
  std::cout << "usage: syscommon " << g.name << " " << c.name << (c.usage.empty() ? "" : " " + c.usage) << "\n\n"
            << c.summary << "\n";
}
}  // namespace

Registration::Registration(Group group) { registry().push_back(std::move(group)); }

const std::vector<Group> &groups() { return registry(); }

long parse_number(const std::string &text, std::string_view what, long min, long max) {
  char *end = nullptr;
  errno = 0;
  long v = std::strtol(text.c_str(), &end, 0);
  if (text.empty() || *end != '\0' || errno != 0 || v < min || v > max)
    throw UsageError{std::string(what) + " must be a number from " + std::to_string(min) + " to " +
                     std::to_string(max) + ", not '" + text + "'"};
  return v;
}

void expect_args(const Args &args, std::size_t min, std::size_t max) {
  if (args.size() < min) throw UsageError{"missing argument"};
  if (args.size() > max) throw UsageError{"unexpected argument '" + args[max] + "'"};
}

int run(int argc, char **argv) {
  Args words(argv + 1, argv + argc);
  if (words.empty()) {
    print_top_help();
    return 2;
  }
  if (is_help(words[0])) {
    print_top_help();
    return 0;
  }
  const Group *group = nullptr;
  for (const auto &g : registry())
    if (g.name == words[0]) group = &g;
  if (group == nullptr) {
    std::cerr << "syscommon: unknown group '" << words[0] << "' (try 'syscommon --help')\n";
    return 2;
  }
  if (words.size() < 2 || is_help(words[1])) {
    print_group_help(*group);
    return words.size() < 2 ? 2 : 0;
  }
  for (const auto &c : group->commands) {
    if (c.name != words[1]) continue;
    Args args(words.begin() + 2, words.end());
    for (const auto &a : args) {
      if (is_help(a)) {
        print_command_help(*group, c);
        return 0;
      }
    }
    try {
      return c.run(args);
    } catch (const UsageError &e) {
      std::cerr << "syscommon " << group->name << " " << c.name << ": " << e.message << "\n"
                << "usage: syscommon " << group->name << " " << c.name << " " << c.usage << "\n";
      return 2;
    }
  }
  std::cerr << "syscommon " << group->name << ": unknown command '" << words[1] << "' (try 'syscommon "
            << group->name << " --help')\n";
  return 2;
}

}  // namespace syscommon::tool

int main(int argc, char **argv) { return syscommon::tool::run(argc, argv); }
