// syscommon vpn / cert / ipsec: the OpenVPN instances and client configurations, the
// certificate checks the VPN pages make, and the IPsec proposal names.
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>

#include "platform/host.h"
#include "syscommon/vpn.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

namespace fs = std::filesystem;

std::string log_size(const std::string &name) {
  std::error_code error;
  const auto size = fs::file_size(rooted(OPENVPN_LOG_DIR) + name + ".log", error);
  return error ? "no log" : std::to_string(size) + " bytes of log";
}

int cmd_status(const Args &args) {
  expect_args(args, 0, 0);
  std::puts("OpenVPN instances");
  // The library reports what it reads from each pid file on its own lines.
  const int server = openvpnserver_getStatus(1);
  std::printf("  server 1   %-22s %s\n", server < 0 ? "not running" : ("pid " + std::to_string(server)).c_str(),
              log_size("ovpnserver1").c_str());
  for (int n = 1; n <= 2; ++n) {
    const std::string name = "ovpnclient" + std::to_string(n);
    const int pid = openvpn_getPid((rooted(OPENVPN_RUN_DIR) + name + ".pid").c_str(), n);
    const int state = openvpnclient_getState(n);
    std::printf("  client %d   %-22s %s, %s\n", n, pid < 0 ? "not running" : ("pid " + std::to_string(pid)).c_str(),
                state >= 0 && state <= 1 ? GovpnClientStateStr[state] : ("state " + std::to_string(state)).c_str(),
                log_size(name).c_str());
  }
  return 0;
}

int cmd_trim_logs(const Args &args) {
  expect_args(args, 0, 0);
  openvpn_checkLogUsage();
  std::printf("logs of running instances longer than %d bytes trimmed\n", OPENVPN_LOG_LIMIT);
  return 0;
}

// The index of `text` in a Govpn*Str table.
template <std::size_t N>
uint32_t table_index(const char *const (&table)[N], const std::string &text, const char *what) {
  std::string all;
  for (std::size_t i = 0; i < N; ++i) {
    if (text == table[i]) return static_cast<uint32_t>(i);
    all += std::string(i == 0 ? "" : ", ") + table[i];
  }
  throw UsageError{std::string(what) + " must be one of " + all + ", not '" + text + "'"};
}

int cmd_client_config(const Args &args) {
  const Options o = parse_options(args, {"--server", "--port", "--dev", "--proto", "--cipher", "--auth", "--comp"});
  if (o.positional.size() != 1) throw UsageError{"expected the OUT file"};
  if (o.get("--server") == nullptr) throw UsageError{"--server is required"};
  check_text(*o.get("--server"), "--server", 253);
  auto pick = [&](const char *option, const char *fallback) {
    return o.get(option) != nullptr ? *o.get(option) : std::string(fallback);
  };
  OpenvpnServerSettings s{};
  s.dev_type = table_index(GovpnDeviceTypeStr, pick("--dev", "tun"), "--dev");
  s.protocol = table_index(GovpnProtocolStr, pick("--proto", "udp"), "--proto");
  s.cipher = table_index(GovpnCipherStr, pick("--cipher", "AES-256-CBC"), "--cipher");
  s.auth = table_index(GovpnAuthStr, pick("--auth", "SHA256"), "--auth");
  s.comp_lzo = table_index(GovpnCompLzoStr, pick("--comp", "no"), "--comp");
  s.port = static_cast<uint32_t>(parse_number(pick("--port", "0"), "--port", 0, 65535));
  if (openvpn_genClientConfigByServer(o.positional[0].c_str(), &s, 0, o.get("--server")->c_str()) != 0) return 1;
  std::printf("wrote %s: %s %s to %s port %u, %s/%s, compression %s\n", o.positional[0].c_str(),
              GovpnDeviceTypeStr[s.dev_type], GovpnProtocolStr[s.protocol], o.get("--server")->c_str(), s.port,
              GovpnCipherStr[s.cipher], GovpnAuthStr[s.auth], GovpnCompLzoStr[s.comp_lzo]);
  return 0;
}

// ---- cert

const char *yes_no(int match) { return match == 1 ? "match" : "no match"; }

// The device's request files, where the library looks for the key and request it checks.
struct RequestFiles {
  std::string key = rooted("/mnt/log1/tarncsr.key");
  std::string csr = rooted("/mnt/log1/tarn.csr");
};

// Puts KEY and CSR where the library reads them for the length of one check, keeping the
// device's own files aside and putting them back afterwards.
class Borrowed {
 public:
  Borrowed(const std::string &key, const std::string &csr) {
    for (const auto &[mine, theirs] : {std::pair{files_.key, key}, {files_.csr, csr}}) {
      std::error_code error;
      if (fs::exists(mine, error)) fs::rename(mine, mine + ".kept", error);
      fs::copy_file(theirs, mine, fs::copy_options::overwrite_existing, error);
      if (error) throw UsageError{"cannot read '" + theirs + "'"};
    }
  }
  ~Borrowed() {
    for (const std::string &mine : {files_.key, files_.csr}) {
      std::error_code error;
      fs::remove(mine, error);
      if (fs::exists(mine + ".kept", error)) fs::rename(mine + ".kept", mine, error);
    }
  }
  Borrowed(const Borrowed &) = delete;
  Borrowed &operator=(const Borrowed &) = delete;

 private:
  RequestFiles files_;
};

int cmd_check(const Args &args) {
  if (args.size() != 1 && args.size() != 3) throw UsageError{"expected CERT, or KEY CSR CERT"};
  for (const auto &a : args) check_text(a, "file name", 200);
  const std::string &cert = args.back();
  std::optional<Borrowed> borrowed;
  if (args.size() == 3) borrowed.emplace(args[0], args[1]);
  const int key_cert = check_cer_pkey_match(cert.c_str());  // shows its commands and hashes first
  std::printf("\nprivate key and certificate:  %s\n", yes_no(key_cert));
  std::printf("request and certificate:      %s\n", yes_no(check_cer_csr_match(cert.c_str())));
  std::printf("private key and request:      %s (the device's weaker test: it compares line counts only)\n",
              yes_no(check_csr_pkey_match(nullptr)));
  return 0;
}

int cmd_subject(const Args &args) {
  expect_args(args, 1, 1);
  char subject[512] = "";
  const int n = openvpn_getCertSubject(args[0].c_str(), subject, sizeof subject);
  if (n < 0) {
    std::fprintf(stderr, "syscommon cert: %s\n", n == -1 ? "no such file" : "not a certificate");
    return 1;
  }
  std::printf("%s\nkey length: %d bits\n", subject, get_key_length(0, args[0].c_str()));
  return 0;
}

int cmd_split(const Args &args) {
  expect_args(args, 3, 3);
  check_text(args[1], "PASSWORD", 64);
  char outs[3][128];
  const char *names[3] = {"ca.crt", "client.key", "client.crt"};
  for (int i = 0; i < 3; ++i) {
    const std::string path = args[2] + "/" + names[i];
    if (path.size() >= sizeof outs[i]) throw UsageError{"OUTDIR is too long"};
    std::snprintf(outs[i], sizeof outs[i], "%s", path.c_str());
  }
  const int rc = openssl_pkcs12CheckFile(args[0].c_str(), args[1].c_str(), outs);
  static const char *const kFailed[] = {"", "the bundle is missing", "", "the client certificate could not be extracted",
                                        "the CA certificate could not be extracted",
                                        "the private key could not be extracted"};
  if (rc != 0) {
    std::fprintf(stderr, "syscommon cert: %s\n", -rc < 6 ? kFailed[-rc] : "failed");
    return 1;
  }
  for (const auto &out : outs) std::printf("wrote %s\n", out);
  return 0;
}

// ---- ipsec

int cmd_proposal(const Args &args) {
  const Options o = parse_options(args, {"--keylen", "--dh"});
  if (o.positional.size() != 3) throw UsageError{"expected ike|esp ENC HASH"};
  const bool esp = o.positional[0] == "esp";
  if (!esp && o.positional[0] != "ike") throw UsageError{"expected ike or esp, not '" + o.positional[0] + "'"};
  IpsecAlgWords w{};
  const auto enc = static_cast<uint32_t>(parse_number(o.positional[1], "ENC", 0, 0x7fffffff));
  // The hash and group tables are read without a bound check: only their numbers are let through.
  const auto hash = static_cast<uint32_t>(parse_number(o.positional[2], "HASH", 0, esp ? 5 : 6));
  const auto keylen = static_cast<uint32_t>(
      o.get("--keylen") != nullptr ? parse_number(*o.get("--keylen"), "--keylen", 0, 4096) : 128);
  const auto dh = static_cast<uint32_t>(o.get("--dh") != nullptr ? parse_number(*o.get("--dh"), "--dh", 0, 0x7fffffff) : 2);
  if (dh > 5 && dh < 14) throw UsageError{"--dh must be 0 to 5 or above 13"};
  (esp ? w.esp_enc : w.ike_enc) = enc;
  (esp ? w.esp_hash : w.ike_hash) = hash;
  (esp ? w.esp_key_len : w.ike_key_len) = keylen;
  w.ike_dh = dh;
  std::puts(ipsec_alg_combin(&w, esp ? 1 : 0));
  return 0;
}

const Registration vpn_reg{
    {"vpn",
     "OpenVPN instances and client configurations.",
     {
         {"status", "", "server 1 and clients 1 and 2: pid, state and log size", cmd_status},
         {"trim-logs", "", "trim the logs of running instances as the device does", cmd_trim_logs},
         {"client-config", "OUT --server ADDR [--port N] [--dev tap|tun] [--proto udp|tcp] [--cipher C] [--auth A] "
                           "[--comp no|yes|adaptive]",
          "write a client configuration with the server's CA certificate (port 0 or none: 1194)", cmd_client_config},
     }}};

const Registration cert_reg{
    {"cert",
     "Certificates, requests and PKCS#12 bundles (through openssl).",
     {
         {"check", "[KEY CSR] CERT",
          "which of the device's private key, request and CERT belong together; KEY and CSR stand in\n"
          "for the device's own files during the check",
          cmd_check},
         {"subject", "FILE", "a certificate's subject and key length", cmd_subject},
         {"split", "BUNDLE PASSWORD OUTDIR", "extract ca.crt, client.key and client.crt from a PKCS#12 bundle",
          cmd_split},
     }}};

const Registration ipsec_reg{
    {"ipsec",
     "IPsec proposal names.",
     {
         {"proposal", "ike|esp ENC HASH [--keylen N] [--dh GROUP]",
          "the proposal text of IANA algorithm numbers, e.g. ike 5 2 --dh 2 gives 3DES-SHA1-MODP1024", cmd_proposal},
     }}};

}  // namespace
}  // namespace syscommon::tool
