// PKCS#12 splitting, certificate subjects and key lengths, and the check that a private
// key, a certificate request and a certificate belong together (their RSA moduli hashed
// with "openssl md5" into files under the RAM disk), all through the openssl tool.
#include <regex.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/host.h"
#include "platform/number.h"
#include "syscommon/util.h"
#include "syscommon/vpn.h"
#include "util/format.h"

namespace {

using syscommon::format_text;
using syscommon::open_file;
using syscommon::open_pipe;
using syscommon::rooted;
using syscommon::run_command;

constexpr std::size_t kCommandSize = 1024;
constexpr int kHashLine = 128;  // room for one line of "openssl md5" output

const char *text_or_empty(const char *s) { return s != nullptr ? s : ""; }

// The part of a PKCS#12 extraction after the bundle and output: the bundle's password and
// an empty password for what is written.
std::string password_part(const char *password) {
  return format_text(kCommandSize, " -passin pass:%s -passout pass:", text_or_empty(password));
}

// Runs one extraction command and checks that it made `out`.
int extract(const char *function, const char *bundle, const std::string &command, const char *out) {
  if (bundle == nullptr || !syscommon::path_exists(bundle)) return -1;
  const int rv = run_command(command);
  if (rv != 0) {
    std::printf("%s() cmd = %s, rv = %d\n", function, command.c_str(), rv);
    return -2;
  }
  return syscommon::path_exists(text_or_empty(out)) ? 0 : -3;
}

// The modulus-hash files and the commands that write them.
struct HashFiles {
  std::string key = rooted("/mnt/ramdisk/privatekeymd5");
  std::string csr = rooted("/mnt/ramdisk/csrmd5");
  std::string cert = rooted("/mnt/ramdisk/csrcermd5");
};

std::string key_hash_command(const HashFiles &h) {
  return format_text(kCommandSize, "openssl rsa -noout -modulus -in %s/%s | openssl md5 > %s",
                     rooted("/mnt/log1").c_str(), "tarncsr.key", h.key.c_str());
}

std::string csr_hash_command(const HashFiles &h, const char *csr) {
  if (csr == nullptr)
    return format_text(kCommandSize, "openssl req -noout -modulus -in %s/%s | openssl md5 > %s",
                       rooted("/mnt/log1").c_str(), "tarn.csr", h.csr.c_str());
  return format_text(kCommandSize, "openssl req -noout -modulus -in %s | openssl md5 > %s", csr, h.csr.c_str());
}

std::string cert_hash_command(const HashFiles &h, const char *cert) {
  return format_text(kCommandSize, "openssl x509 -noout -modulus -in %s |openssl md5 > %s", text_or_empty(cert),
                     h.cert.c_str());
}

// One side of a comparison: get_csr_file_md5's result and the hash text it left.
struct Hash {
  int result = 0;
  std::array<char, kHashLine> text{};
};

Hash read_hash(const std::string &path) {
  Hash h;
  h.result = get_csr_file_md5(h.text.data(), path.c_str(), static_cast<int>(h.text.size()));
  return h;
}

int same(const Hash &a, const Hash &b) {
  return a.result == b.result && std::strcmp(a.text.data(), b.text.data()) == 0 ? 1 : 0;
}

}  // namespace

extern "C" {

SYSCOMMON_API int openssl_pkcs12GetPrivKey(const char *bundle, const char *password, const char *out) {
  const std::string command = format_text(kCommandSize, "openssl pkcs12 %s -in %s ", "-nocerts -nodes",
                                          text_or_empty(bundle)) +
                              password_part(password) + format_text(kCommandSize, " | openssl rsa > %s", text_or_empty(out));
  return extract(__func__, bundle, command, out);
}

SYSCOMMON_API int openssl_pkcs12GetCAcert(const char *bundle, const char *password, const char *out) {
  const std::string command = format_text(kCommandSize, "openssl pkcs12 %s -in %s -out %s", "-nokeys -cacerts",
                                          text_or_empty(bundle), text_or_empty(out)) +
                              password_part(password);
  return extract(__func__, bundle, command, out);
}

SYSCOMMON_API int openssl_pkcs12GetClcert(const char *bundle, const char *password, const char *out) {
  const std::string command = format_text(kCommandSize, "openssl pkcs12 %s -in %s -out %s ", "-nokeys -clcerts",
                                          text_or_empty(bundle), text_or_empty(out)) +
                              password_part(password);
  return extract(__func__, bundle, command, out);
}

SYSCOMMON_API int openssl_pkcs12CheckFile(const char *bundle, const char *password, const char outs[3][128]) {
  if (bundle == nullptr || !syscommon::path_exists(bundle)) return -1;
  if (openssl_pkcs12GetClcert(bundle, password, outs[2]) != 0) return -3;
  if (openssl_pkcs12GetCAcert(bundle, password, outs[0]) != 0) return -4;
  if (openssl_pkcs12GetPrivKey(bundle, password, outs[1]) != 0) return -5;
  return 0;
}

SYSCOMMON_API int openvpn_getCertSubject(const char *cert, char *subject, int size) {
  if (cert == nullptr || !syscommon::path_exists(cert)) return -1;
  auto pipe = open_pipe(format_text(kCommandSize, "openssl x509 -noout -in %s -subject", cert), "r");
  if (!pipe) return -2;
  std::string line;
  for (int c = std::fgetc(pipe.get()); c != EOF && c != '\n'; c = std::fgetc(pipe.get())) line.push_back(char(c));
  if (line.empty()) return -2;
  if (size > 0) syscommon::format_into({subject, static_cast<std::size_t>(size)}, "%s", line.c_str());
  return static_cast<int>(line.size());
}

SYSCOMMON_API int get_csr_file_md5(char *buffer, const char *path, int size) {
  const auto f = open_file(text_or_empty(path), "r");
  if (!f) return 0;
  int lines = 0;
  while (std::fgets(buffer, size, f.get()) != nullptr) ++lines;
  return lines == 2 ? 1 : 0;
}

SYSCOMMON_API int check_csr_pkey_match(const char *csr) {
  const HashFiles h;
  run_command(key_hash_command(h));
  run_command(csr_hash_command(h, csr));
  return read_hash(h.key).result == read_hash(h.csr).result ? 1 : 0;  // the texts are not compared
}

SYSCOMMON_API int check_cer_pkey_match(const char *cert) {
  const HashFiles h;
  for (const std::string &command : {format_text(kCommandSize, "rm %s", h.key.c_str()),
                                     format_text(kCommandSize, "rm %s", h.cert.c_str()), key_hash_command(h),
                                     cert_hash_command(h, cert)}) {
    std::printf("msg = %s\n", command.c_str());
    std::printf("ret = %d\n", run_command(command));
  }
  const Hash key = read_hash(h.key);
  const Hash crt = read_hash(h.cert);
  // The hash lines are shown without their line ends.
  std::printf("key md5 = %.*s\n", static_cast<int>(std::strcspn(key.text.data(), "\n")), key.text.data());
  std::printf("cert md5 = %.*s\n", static_cast<int>(std::strcspn(crt.text.data(), "\n")), crt.text.data());
  return same(key, crt);
}

SYSCOMMON_API int check_cer_csr_match(const char *cert) {
  const HashFiles h;
  run_command(csr_hash_command(h, nullptr));
  run_command(cert_hash_command(h, cert));
  return same(read_hash(h.csr), read_hash(h.cert));
}

SYSCOMMON_API int get_key_length(int kind, const char *cert) {
  if (kind < 0 || kind > 2) return 0;
  const char *file = kind == 2 ? "p12_tmpfile.pem" : text_or_empty(cert);
  auto pipe = open_pipe(format_text(kCommandSize,
                                    "openssl x509 -in %s -text -noout | grep \"Public-Key\" | awk '{ print $2}' | cut -c 2-",
                                    file),
                        "r");
  if (!pipe) return 0;
  std::array<char, 8> head{};  // the first 7 characters of the output
  if (std::fgets(head.data(), static_cast<int>(head.size()), pipe.get()) == nullptr) return 0;
  return syscommon::device_atoi(head.data());
}

SYSCOMMON_API int is_filename_valid(const char *name) {
  if (name == nullptr) return 0;
  int options = REG_EXTENDED;
  return Ssys_CheckStringRegex(name, "^[a-zA-Z0-9_.-]+$", &options) == 0 ? 1 : 0;
}

}  // extern "C"
