// syscommon session: the web and console session tables, changed only through the
// library's session operations (which print their own diagnostic lines as on the device).
#include <cstdint>
#include <cstdio>
#include <string>

#include "syscommon/platform.h"
#include "syscommon/session.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

// Identifiers are unsigned 32-bit.
constexpr long long kIdMax = UINT32_MAX;

uint32_t parse_id(const std::string &text) { return static_cast<uint32_t>(parse_number(text, "ID", 0, kIdMax)); }

// A token shown by its last two hex digits only.
std::string masked(uint32_t token) {
  char text[16];
  std::snprintf(text, sizeof text, "******%02x", token & 0xffu);
  return text;
}

std::string idle_seconds(uint32_t since, uint32_t now) {
  char text[24];
  std::snprintf(text, sizeof text, "%u.%u", (now - since) / 1000, (now - since) % 1000 / 100);
  return text;
}

const char *meaning(int rc) {
  switch (rc) {
    case SESSION_OK:
      return "ok";
    case SESSION_FULL:
      return "the table is full";
    case SESSION_AGED:
      return "aged out and removed";
    case SESSION_NOT_FOUND:
      return "no such session";
    case SESSION_ALREADY_OPEN:
      return "already open";
    default:
      return "unexpected result";
  }
}

// The library's own lines start with "\r\n"; the tool's line follows them.
int report(const char *what, uint32_t id, int rc, int success = SESSION_OK) {
  std::printf("\nsession %u: %s (%d)\n", id, rc == success ? what : meaning(rc), rc);
  return rc == success ? 0 : 1;
}

int cmd_list(const Args &args) {
  expect_args(args, 0, 0);
  const uint32_t now = Ssys_current_msecs();
  WebSessionList web{};
  CsrfTokenList csrf{};
  shm_sysGet_multiSession_List(&web);
  shm_sysGet_csrf_Token_List(&csrf);
  std::printf("web sessions: %u open, maximum %u (idle limit %d s)\n", shm_sysGet_usercount(),
              shm_sysGet_web_multiSession_maxUser(), WEB_SESSION_IDLE_MS / 1000);
  std::printf("  %-2s %-10s %-8s %-10s %-8s %-10s %s\n", "#", "id", "idle s", "user", "protocol", "csrf", "login csrf");
  for (int i = 0; i < WEB_SESSION_MAX; ++i) {
    const WebSession &e = web.entry[i];
    if (e.in_use == 0) continue;
    const std::string odd = e.in_use == 1 ? "" : " (in-use word " + std::to_string(e.in_use) + ")";
    std::printf("  %-2d %-10u %-8s %-10u %-8u %-10s %s%s\n", i, e.session_id, idle_seconds(e.time, now).c_str(),
                e.user, e.auth_protocol, masked(csrf.entry[i].csrf_token).c_str(), masked(e.login_csrf_token).c_str(),
                odd.c_str());
  }
  ConSessionList con{};
  shm_sysGet_con_multiSession_List(&con);
  std::printf("console sessions: %u counted, maximum %u\n", shm_sysGet_con_usercount(),
              shm_sysGet_Con_multiSession_maxUser());
  std::printf("  %-2s %-10s %-8s %-6s %s\n", "#", "id", "age s", "type", "name");
  for (int i = 0; i < CON_SESSION_ENTRIES; ++i) {
    const ConSession &e = con.entry[i];
    if (e.in_use == 0) continue;
    std::printf("  %-2d %-10u %-8s %-6d %.40s\n", i, e.session_id, idle_seconds(e.time, now).c_str(), e.session_type,
                e.name);
  }
  return 0;
}

int cmd_open(const Args &args) {
  const Options o = parse_options(args, {"--user", "--protocol", "--login-token"});
  expect_args(o.positional, 1, 1);
  const uint32_t id = parse_id(o.positional[0]);
  auto value = [&](const char *name) {
    const std::string *v = o.get(name);
    return v != nullptr ? static_cast<uint32_t>(parse_number(*v, name, 0, kIdMax)) : 0u;
  };
  const uint32_t user = value("--user"), protocol = value("--protocol"), token = value("--login-token");
  return report("opened", id, Ssgl2_webmultisession_session_set(id, user, protocol, token));
}

int cmd_verify(const Args &args) {
  expect_args(args, 1, 1);
  const uint32_t id = parse_id(args[0]);
  uint32_t user = 0;
  const int rc = Ssgl2_webmultisession_session_verify(id, &user);
  if (rc == SESSION_OK) {
    std::printf("session %u: valid, user %u, time refreshed\n", id, user);
    return 0;
  }
  return report("", id, rc);
}

int cmd_remove(const Args &args) {
  expect_args(args, 1, 1);
  const uint32_t id = parse_id(args[0]);
  return report("logged out", id, Ssgl2_webmultisession_session_remove(id));
}

int cmd_kick(const Args &args) {
  expect_args(args, 1, 1);
  const uint32_t id = parse_id(args[0]);
  return report("forced out", id, Ssgl2_webmultisession_session_forceage(id), SESSION_AGED);
}

int cmd_max(const Args &args) {
  expect_args(args, 2, 2);
  const bool web = args[0] == "web";
  if (!web && args[0] != "console") throw UsageError{"table must be web or console, not '" + args[0] + "'"};
  const int n = static_cast<int>(parse_number(args[1], "N", 1, web ? WEB_SESSION_MAX : CON_SESSION_MAX_USERS));
  const int rc = web ? Ssgl2_webmultisession_maxuser_set(n) : Ssgl2_conmultisession_maxuser_set(n);
  if (rc == n)
    std::printf("\n%s maximum is already %d\n", args[0].c_str(), n);
  else
    std::printf("\n%s maximum set to %d; every %s session was dropped\n", args[0].c_str(), n, args[0].c_str());
  return 0;
}

void check_console_name(const std::string &name) { check_text(name, "NAME", CON_SESSION_NAME_LEN); }

int cmd_console_open(const Args &args) {
  expect_args(args, 3, 3);
  const auto type = static_cast<int32_t>(parse_number(args[0], "TYPE", 0, INT32_MAX));
  check_console_name(args[1]);
  const uint32_t id = parse_id(args[2]);
  return report("console session opened", id, Ssgl2_conmultisession_session_set(type, args[1].c_str(), id));
}

int cmd_console_close(const Args &args) {
  expect_args(args, 3, 3);
  const auto type = static_cast<int32_t>(parse_number(args[0], "TYPE", 0, INT32_MAX));
  check_console_name(args[1]);
  const uint32_t id = parse_id(args[2]);
  if (Ssgl2_conmultisession_session_disconnect(type, args[1].c_str(), id) == 1) {
    std::printf("console session %u closed (the count is left to removal by type)\n", id);
    return 0;
  }
  std::printf("console session %u: no entry of type %d named '%s'\n", id, type, args[1].c_str());
  return 1;
}

const Registration reg{
    {"session",
     "Web and console login sessions in the shared session table.",
     {
         {"list", "", "web and console sessions: index, id, idle seconds, user, protocol; tokens masked", cmd_list},
         {"open", "ID [--user U] [--protocol P] [--login-token T]", "open a web session (as after a login)",
          cmd_open},
         {"verify", "ID", "check a web session as a request does (ages it out after 30 s idle)", cmd_verify},
         {"remove", "ID", "log a web session out", cmd_remove},
         {"kick", "ID", "force a web session out as if aged", cmd_kick},
         {"max", "web|console N", "change a maximum (a new value drops every session of that table)", cmd_max},
         {"console-open", "TYPE NAME ID", "open a console session", cmd_console_open},
         {"console-close", "TYPE NAME ID", "close a console session", cmd_console_close},
     }}};

}  // namespace
}  // namespace syscommon::tool
