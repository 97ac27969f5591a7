// The OpenVPN instances' files (pid, state, log, client secret), the easy-RSA variables
// script, client configuration files, and the small commands around them.
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "platform/host.h"
#include "platform/process.h"
#include "syscommon/util.h"
#include "syscommon/vpn.h"
#include "util/format.h"

namespace {

using syscommon::format_text;
using syscommon::open_file;
using syscommon::rooted;
using syscommon::run_command;

constexpr std::size_t kCommandSize = 1024;
constexpr int kDefaultPort = 1194;
constexpr std::size_t kCopyPiece = 8192;  // the CA certificate is copied in pieces of this size

// "%s%s%d<suffix>": a directory, an instance name and its number.
std::string instance_file(const char *dir, const char *name, int number, const char *suffix) {
  return rooted(dir) + name + std::to_string(number) + suffix;
}

// The first number of a file read with "%d\n"; false when the file is missing or holds none.
bool read_number(const std::string &path, int &value) {
  const auto f = open_file(path, "r");
  return f && std::fscanf(f.get(), "%d\n", &value) == 1;
}

template <std::size_t N>
const char *entry(const char *const (&table)[N], uint32_t index) {
  return index < N ? table[index] : "";
}

// Trims one instance's log when its pid file can be read.
void trim_log(const char *name, int number) {
  if (openvpn_getPid(instance_file(OPENVPN_RUN_DIR, name, number, ".pid").c_str(), number) == -1) return;
  const std::string log = instance_file(OPENVPN_LOG_DIR, name, number, ".log");
  long long size = 0;
  if (syscommon::file_size(log, size) != 0) {
    std::fprintf(stderr, "Cannot determine size of %s: %s\n", log.c_str(), std::strerror(errno));
    return;
  }
  if (size <= OPENVPN_LOG_LIMIT) return;
  const std::string scratch = rooted(OPENVPN_LOG_DIR) + "tmpLog";
  if (size - OPENVPN_LOG_LIMIT <= OPENVPN_LOG_LIMIT)
    run_command(format_text(kCommandSize, "tail -n +40 %s > %s", log.c_str(), scratch.c_str()));
  else
    run_command(format_text(kCommandSize, "tail -n +200 %s > %s", log.c_str(), scratch.c_str()));
  // Copied back over the same file (not moved), so the daemon keeps writing to it.
  run_command(format_text(kCommandSize, "cat %s > %s", scratch.c_str(), log.c_str()));
}

void copy_text(char *field, std::size_t size, const char *text) { syscommon::format_into({field, size}, "%s", text); }

}  // namespace

extern "C" {

const char *const GovpnDeviceTypeStr[2] = {"tap", "tun"};
const char *const GovpnProtocolStr[2] = {"udp", "tcp"};
const char *const GovpnCipherStr[6] = {"BF-CBC",      "AES-128-CBC", "AES-256-CBC",
                                                      "AES-192-CBC", "DES-CBC",     "DES-EDE3-CBC"};
const char *const GovpnAuthStr[3] = {"SHA1", "MD5", "SHA256"};
const char *const GovpnCompLzoStr[3] = {"no", "yes", "adaptive"};
const char *const GovpnClientAuthStr[2] = {"certificate", "password"};
const char *const GovpnClientStateStr[2] = {"Disconnect", "Connected"};

SYSCOMMON_API int openvpn_getPid(const char *path, int /*instance*/) {
  int pid = -1;
  if (path == nullptr || !read_number(path, pid)) {
    std::puts("Failed to read process id");
    return -1;
  }
  std::printf("PID: %d\n", pid);
  return pid;
}

SYSCOMMON_API int openvpnserver_getStatus(int instance) {
  if (instance != 1) return -1;
  return openvpn_getPid(instance_file(OPENVPN_RUN_DIR, OPENVPN_SERVER_NAME, instance, ".pid").c_str(), instance);
}

SYSCOMMON_API int openvpnclient_getState(int instance) {
  int state = 0;
  if (!read_number(instance_file(OPENVPN_RUN_DIR, OPENVPN_CLIENT_NAME, instance, ".state"), state)) return 0;
  return state;
}

SYSCOMMON_API void openvpn_checkLogUsage(void) {
  trim_log(OPENVPN_CLIENT_NAME, 1);
  trim_log(OPENVPN_CLIENT_NAME, 2);
  trim_log(OPENVPN_SERVER_NAME, 1);
}

SYSCOMMON_API int openvpn_clean_all_certs(const char *dir) {
  run_command(format_text(kCommandSize, "rm -f %s/*", dir != nullptr ? dir : ""));
  return 0;
}

SYSCOMMON_API int openvpn_build_dh_params(int key_size) {
  run_command(format_text(kCommandSize, "cd %s; source ./vars_kvr810; nohup ./build-dh %d > /dev/null &",
                          rooted(OPENVPN_RSA_DIR).c_str(), key_size));
  return 0;
}

SYSCOMMON_API int openvpn_setDevTapProc(int flag) {
  run_command(format_text(kCommandSize, "echo %d > %s", flag != 0 ? 1 : 0,
                          rooted("/proc/tarnarm11/openvpn_tap").c_str()));
  return 0;
}

SYSCOMMON_API int openvpn_setClientCertPasswd2File(int client, const char *password) {
  const std::string secret = rooted(OPENVPN_CLIENT_KEY_DIR) + "/" + OPENVPN_CLIENT_NAME + std::to_string(client) + ".secret";
  run_command(format_text(kCommandSize, "echo \"%s\" > %s", password != nullptr ? password : "", secret.c_str()));
  return 0;
}

SYSCOMMON_API void send_signal(const char *name, int signal) {
  if (name == nullptr || std::isalnum(static_cast<unsigned char>(name[0])) == 0) return;
  int pids[64];
  if (get_pid_by_name(name, pids, 64) <= 0) {
    std::puts("NOT FOUND.");
    return;
  }
  syscommon::signal_process(pids[0], signal);
}

SYSCOMMON_API int openvpn_initCertParam(OpenvpnCertParam *param) {
  std::memset(param, 0, sizeof *param);
  copy_text(param->key_dir, sizeof param->key_dir, OPENVPN_SERVER_KEY_DIR);
  param->key_size = 1024;
  param->days = 3650;
  copy_text(param->country, sizeof param->country, "US");
  copy_text(param->province, sizeof param->province, "NY");
  copy_text(param->city, sizeof param->city, "New York");
  copy_text(param->org, sizeof param->org, "OpenVPN");
  copy_text(param->org_unit, sizeof param->org_unit, "changeme");
  copy_text(param->email, sizeof param->email, "root@example.org");
  return 0;
}

SYSCOMMON_API int openvpn_setRsaVarsFile(int kind, const char *path, const OpenvpnCertParam *param) {
  const auto f = open_file(path != nullptr ? path : "", "w+");
  if (!f) {
    std::printf("%s() %d file %s open fail\n", __func__, __LINE__, path != nullptr ? path : "(null)");
    return -1;
  }
  // Texts of the record are read within their fields, terminated or not.
  auto text = [](const char *field, std::size_t size) { return std::string(field, strnlen(field, size)); };
  std::FILE *out = f.get();
  std::fprintf(out, "export KEY_DIR=\"%s\";\n", OPENVPN_SERVER_KEY_DIR);
  std::fprintf(out, "export KEY_SIZE=\"%d\";\n", static_cast<int>(param->key_size));
  std::fprintf(out, "export KEY_COUNTRY=\"%s\";\n", text(param->country, sizeof param->country).c_str());
  std::fprintf(out, "export KEY_PROVINCE=\"%s\"; \n", text(param->province, sizeof param->province).c_str());
  std::fprintf(out, "export KEY_CITY=\"%s\"; \n", text(param->city, sizeof param->city).c_str());
  std::fprintf(out, "export KEY_ORG=\"%s\"; \n", text(param->org, sizeof param->org).c_str());
  std::fprintf(out, "export KEY_OU=\"%s\"; \n", text(param->org_unit, sizeof param->org_unit).c_str());
  std::fprintf(out, "export KEY_EMAIL=\"%s\"; \n", text(param->email, sizeof param->email).c_str());
  if (kind == 1) {
    const std::string org = text(param->org, sizeof param->org);
    std::fprintf(out, "export CA_EXPIRE=\"%d\";\n", static_cast<int>(param->days));
    std::fprintf(out, "export KEY_CN=\"%sCA\"; \n", org.c_str());
    std::fprintf(out, "export KEY_NAME=\"%sCA\"; \n", org.c_str());
  } else {
    const std::string cn = text(param->common_name, sizeof param->common_name);
    std::fprintf(out, "export KEY_EXPIRE=\"%d\";\n", static_cast<int>(param->days));
    std::fprintf(out, "export KEY_CN=\"%s\"; \n", cn.c_str());
    std::fprintf(out, "export KEY_NAME=\"%s\"; \n", cn.c_str());
  }
  return 0;
}

SYSCOMMON_API int openvpn_genClientConfigByServer(const char *path, OpenvpnServerSettings *settings, int /*reserved*/,
                                                  const char *server_address) {
  const auto f = open_file(path != nullptr ? path : "", "w+");
  if (!f) {
    std::printf("%s() %d config file %s open fail\n", __func__, __LINE__, path != nullptr ? path : "(null)");
    return -1;
  }
  if (settings->port == 0) settings->port = kDefaultPort;
  std::FILE *out = f.get();
  std::fprintf(out, "client\n");
  std::fprintf(out, "dev %s\n", entry(GovpnDeviceTypeStr, settings->dev_type));
  std::fprintf(out, "proto %s\n", entry(GovpnProtocolStr, settings->protocol));
  std::fprintf(out, "remote %s %d\n", server_address != nullptr ? server_address : "", static_cast<int>(settings->port));
  std::fprintf(out, "resolv-retry infinite\n");
  std::fprintf(out, "nobind\n");
  std::fprintf(out, "keepalive %d %d\n", 10, 60);
  std::fprintf(out, "cipher %s\n", entry(GovpnCipherStr, settings->cipher));
  std::fprintf(out, "auth %s\n", entry(GovpnAuthStr, settings->auth));
  if (settings->comp_lzo != 0) std::fprintf(out, "comp-lzo\n");
  std::fprintf(out, "verb 3\n");
  std::fprintf(out, "auth-user-pass\n");

  const std::string ca_path = format_text(kCommandSize, "%s/%s", rooted(OPENVPN_SERVER_KEY_DIR).c_str(), "ca.crt");
  const auto ca = open_file(ca_path, "r");
  if (!ca) {
    std::printf("%s() %d %s open fail\n", __func__, __LINE__, ca_path.c_str());
    return 0;
  }
  std::fputs("<ca>\n", out);
  std::string piece(kCopyPiece, '\0');
  for (;;) {
    const std::size_t got = std::fread(piece.data(), 1, piece.size(), ca.get());
    if (got == 0) break;
    if (std::fwrite(piece.data(), 1, got, out) != got) return 0;  // a short write ends without "</ca>"
  }
  std::fputs("</ca>\n", out);
  return 0;
}

}  // extern "C"
