// syscommon: inspect and drive the shared device state from a shell.
#include <algorithm>
#include <charconv>
#include <cstdio>
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

// A message quoting what was typed stays on one line: control characters are shown escaped.
std::string one_line(const std::string &text) {
  std::string out;
  for (const char c : text) {
    if (static_cast<unsigned char>(c) >= 0x20 && c != 0x7f) {
      out.push_back(c);
      continue;
    }
    char escaped[8];
    std::snprintf(escaped, sizeof escaped, "\\x%02x", static_cast<unsigned char>(c));
    out += escaped;
  }
  return out;
}

void print_command_help(const Group &g, const Command &c) {
  std::cout << "usage: syscommon " << g.name << " " << c.name << (c.usage.empty() ? "" : " " + c.usage) << "\n\n"
            << c.summary << "\n";
}
}  // namespace

Registration::Registration(Group group) { registry().push_back(std::move(group)); }

const std::vector<Group> &groups() { return registry(); }

long long parse_number(const std::string &text, std::string_view what, long long min, long long max) {
  long long v = 0;
  const char *end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, v, 10);
  if (text.empty() || error != std::errc() || stop != end || v < min || v > max)
    throw UsageError{std::string(what) + " must be a decimal number from " + std::to_string(min) + " to " +
                     std::to_string(max) + ", not '" + text + "'"};
  return v;
}

void expect_args(const Args &args, std::size_t min, std::size_t max) {
  if (args.size() < min) throw UsageError{"missing argument"};
  if (args.size() > max) throw UsageError{"unexpected argument '" + args[max] + "'"};
}

void check_text(const std::string &text, std::string_view what, std::size_t max_length) {
  if (text.empty() || text.size() > max_length)
    throw UsageError{std::string(what) + " must have 1 to " + std::to_string(max_length) + " characters"};
  for (const char c : text)
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f)
      throw UsageError{std::string(what) + " must not contain control characters or line feeds"};
}

const std::string *Options::get(std::string_view name) const {
  for (const auto &[k, v] : named)
    if (k == name) return &v;
  return nullptr;
}

Options parse_options(const Args &args, const std::vector<std::string> &known) {
  Options o;
  for (std::size_t i = 0; i < args.size(); ++i) {
    if (args[i] == "--help" || args[i] == "-h") throw HelpRequest{};
    if (args[i].rfind("--", 0) != 0) {
      o.positional.push_back(args[i]);
      continue;
    }
    if (std::find(known.begin(), known.end(), args[i]) == known.end())
      throw UsageError{"unknown option '" + args[i] + "'"};
    if (o.get(args[i]) != nullptr) throw UsageError{args[i] + " given twice"};
    if (i + 1 >= args.size()) throw UsageError{args[i] + " needs a value"};
    o.named.emplace_back(args[i], args[i + 1]);
    ++i;
  }
  return o;
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
    std::cerr << "syscommon: unknown group '" << one_line(words[0]) << "' (try 'syscommon --help')\n";
    return 2;
  }
  if (words.size() < 2 || is_help(words[1])) {
    print_group_help(*group);
    return words.size() < 2 ? 2 : 0;
  }
  for (const auto &c : group->commands) {
    if (c.name != words[1]) continue;
    const Args args(words.begin() + 2, words.end());
    try {
      // Only an option in option position asks for help; a value spelled "help" is a value.
      if (!args.empty() && (args[0] == "--help" || args[0] == "-h")) throw HelpRequest{};
      return c.run(args);
    } catch (const HelpRequest &) {
      print_command_help(*group, c);
      return 0;
    } catch (const UsageError &e) {
      std::cerr << "syscommon " << group->name << " " << c.name << ": " << one_line(e.message) << " (usage: syscommon "
                << group->name << " " << c.name << (c.usage.empty() ? "" : " " + c.usage) << ")\n";
      return 2;
    }
  }
  std::cerr << "syscommon " << group->name << ": unknown command '" << one_line(words[1]) << "' (try 'syscommon "
            << group->name << " --help')\n";
  return 2;
}

}  // namespace syscommon::tool

int main(int argc, char **argv) { return syscommon::tool::run(argc, argv); }
