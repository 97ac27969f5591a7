// PKCS#12 splitting, subjects, key lengths and key/request/certificate matching against
// keys, requests, certificates and bundles made with the real openssl tool in the
// simulated root.
#include <unistd.h>

#include <filesystem>
#include <string>

#include "support/test_support.h"
#include "syscommon/vpn.h"

namespace {

using syscommon::testing::read_file;
using syscommon::testing::sim_path;
using syscommon::testing::stdout_of;
using syscommon::testing::write_file;

std::string dir() { return sim_path("/tmp/pki"); }
std::string at(const std::string &name) { return dir() + "/" + name; }

class CertificatesTest : public ::testing::Test {
 protected:
  // One CA; a client key, request and CA-signed certificate; an unrelated key, request and
  // self-signed certificate; the client's bundle with password "secret".
  static void SetUpTestSuite() {
    if (!syscommon::testing::isolated()) return;
    const std::string d = dir();
    const std::string script =
        "set -e; mkdir -p " + d + "; cd " + d +
        "; openssl req -x509 -newkey rsa:2048 -nodes -keyout ca.key -out ca.crt -days 30 -subj /CN=TestCA"
        "; openssl req -newkey rsa:2048 -nodes -keyout client.key -out client.csr -subj /C=US/O=Plant/CN=client1"
        "; openssl x509 -req -in client.csr -CA ca.crt -CAkey ca.key -CAcreateserial -out client.crt -days 30"
        "; openssl req -x509 -newkey rsa:1024 -nodes -keyout other.key -out other.crt -days 30 -subj /CN=other"
        "; openssl req -new -key other.key -out other.csr -subj /CN=other"
        "; openssl pkcs12 -export -inkey client.key -in client.crt -certfile ca.crt -passout pass:secret -out client.p12"
        "; head -c 3000 /dev/urandom > corrupt.p12 2>/dev/null";
    ASSERT_EQ(std::system(("(" + script + ") > /dev/null 2>&1").c_str()), 0);
  }
  void SetUp() override { SYSCOMMON_REQUIRE_ISOLATION(); }

  static std::string modulus(const std::string &cmd) {
    const auto r = syscommon::testing::run_program("/bin/sh", {"-c", cmd + " 2>/dev/null"});
    return r.out;
  }
};

TEST_F(CertificatesTest, BundleIsSplitInOrderAndEachFailureHasItsCode) {
  char outs[3][128];
  for (int i = 0; i < 3; ++i) std::snprintf(outs[i], sizeof outs[i], "%s/out%d.pem", dir().c_str(), i);
  syscommon::testing::clear_trace();
  EXPECT_EQ(openssl_pkcs12CheckFile(at("client.p12").c_str(), "secret", outs), 0);
  const auto trace = syscommon::testing::trace_lines();
  ASSERT_EQ(trace.size(), 3u);
  EXPECT_EQ(trace[0], "openssl pkcs12 -nokeys -clcerts -in " + at("client.p12") + " -out " + outs[2] +
                          "  -passin pass:secret -passout pass:");
  EXPECT_EQ(trace[1], "openssl pkcs12 -nokeys -cacerts -in " + at("client.p12") + " -out " + outs[0] +
                          " -passin pass:secret -passout pass:");
  EXPECT_EQ(trace[2], "openssl pkcs12 -nocerts -nodes -in " + at("client.p12") +
                          "  -passin pass:secret -passout pass: | openssl rsa > " + outs[1]);
  // The parts are the client's key and certificate and the CA's certificate.
  EXPECT_EQ(modulus("openssl rsa -noout -modulus -in " + std::string(outs[1])),
            modulus("openssl rsa -noout -modulus -in " + at("client.key")));
  EXPECT_NE(read_file(outs[2]).find("subject=C = US, O = Plant, CN = client1"), std::string::npos);
  EXPECT_NE(read_file(outs[0]).find("subject=CN = TestCA"), std::string::npos);

  EXPECT_EQ(openssl_pkcs12CheckFile(at("missing.p12").c_str(), "secret", outs), -1);
  std::string printed = stdout_of([&] { EXPECT_EQ(openssl_pkcs12CheckFile(at("client.p12").c_str(), "wrong", outs), -3); });
  EXPECT_EQ(printed.rfind("openssl_pkcs12GetClcert() cmd = openssl pkcs12 -nokeys -clcerts -in ", 0), 0u) << printed;
  EXPECT_EQ(openssl_pkcs12CheckFile(at("corrupt.p12").c_str(), "secret", outs), -3);
  for (auto *get : {openssl_pkcs12GetPrivKey, openssl_pkcs12GetCAcert, openssl_pkcs12GetClcert}) {
    EXPECT_EQ(get(at("missing.p12").c_str(), "secret", outs[0]), -1);
    stdout_of([&] { EXPECT_EQ(get(at("client.p12").c_str(), "wrong", outs[0]), -2); });
  }
  // A command that succeeds without making its output file.
  syscommon::testing::write_stub("openssl", "exit 0\n");
  EXPECT_EQ(openssl_pkcs12GetCAcert(at("client.p12").c_str(), "secret", at("never.pem").c_str()), -3);
  ::unlink(sim_path("/bin/openssl").c_str());
}

TEST_F(CertificatesTest, SubjectAndKeyLengthFromTheCertificate) {
  char subject[128] = "";
  EXPECT_EQ(openvpn_getCertSubject(at("client.crt").c_str(), subject, sizeof subject), 39);
  EXPECT_STREQ(subject, "subject=C = US, O = Plant, CN = client1");  // today's openssl form
  char cut[9] = "";
  EXPECT_EQ(openvpn_getCertSubject(at("client.crt").c_str(), cut, sizeof cut), 39);
  EXPECT_STREQ(cut, "subject=");
  EXPECT_EQ(openvpn_getCertSubject(at("missing.crt").c_str(), subject, sizeof subject), -1);
  EXPECT_EQ(openvpn_getCertSubject(at("client.key").c_str(), subject, sizeof subject), -2);

  EXPECT_EQ(get_key_length(0, at("client.crt").c_str()), 2048);
  EXPECT_EQ(get_key_length(1, at("other.crt").c_str()), 1024);
  EXPECT_EQ(get_key_length(1, at("client.key").c_str()), 0);
  EXPECT_EQ(get_key_length(3, at("client.crt").c_str()), 0);
  // Kind 2 reads the bundle upload's temporary file in the working directory.
  const std::string here = std::filesystem::current_path().string();
  ASSERT_EQ(chdir(dir().c_str()), 0);
  write_file("p12_tmpfile.pem", read_file(at("other.crt")));
  EXPECT_EQ(get_key_length(2, "ignored"), 1024);
  ASSERT_EQ(chdir(here.c_str()), 0);
}

TEST_F(CertificatesTest, KeyRequestAndCertificateMatching) {
  auto install = [](const char *key, const char *csr) {
    write_file(sim_path("/mnt/log1/tarncsr.key"), read_file(at(key)));
    write_file(sim_path("/mnt/log1/tarn.csr"), read_file(at(csr)));
  };
  install("client.key", "client.csr");
  const std::string printed = stdout_of([&] { EXPECT_EQ(check_cer_pkey_match(at("client.crt").c_str()), 1); });
  EXPECT_NE(printed.find("msg = openssl rsa -noout -modulus -in " + sim_path("/mnt/log1") +
                         "/tarncsr.key | openssl md5 > " + sim_path("/mnt/ramdisk/privatekeymd5") + "\nret = 0\n"),
            std::string::npos)
      << printed;
  EXPECT_NE(printed.find("key md5 = MD5(stdin)= "), std::string::npos) << printed;
  stdout_of([&] { EXPECT_EQ(check_cer_pkey_match(at("other.crt").c_str()), 0); });
  EXPECT_EQ(check_cer_csr_match(at("client.crt").c_str()), 1);
  EXPECT_EQ(check_cer_csr_match(at("ca.crt").c_str()), 0);

  // Today's "openssl md5" prints one line ("MD5(stdin)= ..."), where the device's printed two:
  // every hash file gives 0, so the weaker request/key test says "match" for any pair.
  EXPECT_EQ(check_csr_pkey_match(nullptr), 1);
  install("client.key", "other.csr");
  EXPECT_EQ(check_csr_pkey_match(nullptr), 1);
  EXPECT_EQ(check_csr_pkey_match(at("client.csr").c_str()), 1);
  char line[64] = "untouched";
  EXPECT_EQ(get_csr_file_md5(line, sim_path("/mnt/ramdisk/csrmd5").c_str(), sizeof line), 0);
  EXPECT_EQ(std::string(line).rfind("MD5(stdin)= ", 0), 0u);
  // The two-line form the function was written for; the buffer keeps the last line.
  write_file(at("two-lines"), "header\n0123abcd\n");
  EXPECT_EQ(get_csr_file_md5(line, at("two-lines").c_str(), sizeof line), 1);
  EXPECT_STREQ(line, "0123abcd\n");
  std::strcpy(line, "untouched");
  EXPECT_EQ(get_csr_file_md5(line, at("missing").c_str(), sizeof line), 0);
  EXPECT_STREQ(line, "untouched");
}

}  // namespace
