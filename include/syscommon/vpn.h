/* OpenVPN and certificate helpers: pid, state and log files of the OpenVPN instances, the
 * easy-RSA variables file, client configuration files, PKCS#12 splitting, key / request /
 * certificate matching and the IPsec proposal names. The work is done by small text files
 * and by shell commands around the `openssl` command-line tool. */
#ifndef SYSCOMMON_VPN_H
#define SYSCOMMON_VPN_H

#include <stddef.h>
#include <stdint.h>

#include "syscommon/export.h"

SYSCOMMON_BEGIN_DECLS

/* ---- Paths and names ---- */

#define OPENVPN_SERVER_KEY_DIR "/mnt/log1/openvpn/server_keys"
#define OPENVPN_CLIENT_KEY_DIR "/mnt/log1/openvpn/client_keys"
#define OPENVPN_RSA_DIR "/etc/openvpn/rsa"
#define OPENVPN_RUN_DIR "/var/run/"
#define OPENVPN_LOG_DIR "/mnt/ramdisk/openvpn/"
#define OPENVPN_SERVER_NAME "ovpnserver"
#define OPENVPN_CLIENT_NAME "ovpnclient"
/* A log longer than this many bytes is trimmed by openvpn_checkLogUsage. */
#define OPENVPN_LOG_LIMIT 8196

/* ---- Certificate parameters ---- */

typedef struct OpenvpnCertParam {
  uint32_t reserved;
  char key_dir[128];
  uint32_t key_size;      /* bits */
  uint32_t days;          /* validity */
  char country[3];
  char province[64];
  char city[64];
  char org[64];
  char org_unit[64];
  char common_name[64];
  char email[64];
} OpenvpnCertParam;
SYSCOMMON_STATIC_ASSERT(sizeof(OpenvpnCertParam) == 528, "certificate parameters");
SYSCOMMON_STATIC_ASSERT(offsetof(OpenvpnCertParam, key_size) == 132 && offsetof(OpenvpnCertParam, days) == 136,
                        "certificate parameter words");
SYSCOMMON_STATIC_ASSERT(offsetof(OpenvpnCertParam, country) == 140 && offsetof(OpenvpnCertParam, province) == 143 &&
                            offsetof(OpenvpnCertParam, org_unit) == 335 && offsetof(OpenvpnCertParam, email) == 463,
                        "certificate parameter texts");

/* Zeroes `param` and fills the defaults: server key directory, 1024 bits, 3650 days, "US",
 * "NY", "New York", "OpenVPN", "changeme", no common name, "root@example.org". Returns 0. */
SYSCOMMON_API int openvpn_initCertParam(OpenvpnCertParam *param);

/* Writes the easy-RSA variables script `path` (as given) for a certificate authority
 * (kind 1) or a server or client (any other kind). KEY_DIR is always the server key
 * directory, whatever `param` holds; the blank before the line end of the text lines is
 * part of the format. Returns 0, or -1 after "%s() %d file %s open fail\n". */
SYSCOMMON_API int openvpn_setRsaVarsFile(int kind, const char *path, const OpenvpnCertParam *param);

/* ---- Instances: pid, state and log files ---- */

/* The process id in the pid file `path` (as given); prints "PID: %d\n". -1 and
 * "Failed to read process id" when the file is missing or holds no number. `instance` is
 * not used. */
SYSCOMMON_API int openvpn_getPid(const char *path, int instance);
/* The pid of server instance 1 from "/var/run/ovpnserver1.pid"; -1 for any other instance,
 * without looking at a file. */
SYSCOMMON_API int openvpnserver_getStatus(int instance);
/* The state (index into GovpnClientStateStr) from "/var/run/ovpnclient<n>.state"; 0 when
 * the file is missing or holds no number. */
SYSCOMMON_API int openvpnclient_getState(int instance);
/* Trims the log of every running instance (clients 1 and 2, then server 1; running = its
 * pid file can be read, as openvpn_getPid reads it) that is longer than 8196 bytes: an
 * excess of up to 8196 bytes drops its first 39 lines, a larger one its first 199; the
 * rest is copied back over the same file, so the daemon keeps writing to it. */
SYSCOMMON_API void openvpn_checkLogUsage(void);

/* ---- Commands ---- */

/* Removes every file in `dir` (as given) with "rm -f DIR/" and a star. Returns 0. */
SYSCOMMON_API int openvpn_clean_all_certs(const char *dir);
/* Starts the easy-RSA "build-dh" script for `key_size` bits in the background, in
 * "/etc/openvpn/rsa" after sourcing "vars_kvr810". Returns 0. */
SYSCOMMON_API int openvpn_build_dh_params(int key_size);
/* Writes 1 (flag non-zero) or 0 into "/proc/tarnarm11/openvpn_tap". Returns 0. */
SYSCOMMON_API int openvpn_setDevTapProc(int flag);
/* Writes `password` into client `client`'s secret file
 * "/mnt/log1/openvpn/client_keys/ovpnclient<n>.secret" with "echo \"%s\" > %s". The
 * password is placed inside double quotes unchecked: callers validate it. Returns 0. */
SYSCOMMON_API int openvpn_setClientCertPasswd2File(int client, const char *password);
/* Sends `signal` to the first process that "pidof NAME" lists (at most 64 looked at);
 * prints "NOT FOUND." when there is none. Does nothing unless `name` begins with a letter or
 * a digit. */
SYSCOMMON_API void send_signal(const char *name, int signal);

/* ---- Client configuration ---- */

/* The server's settings a client configuration is made from; each text setting is an index
 * into its Govpn*Str table. */
typedef struct OpenvpnServerSettings {
  uint32_t dev_type;  /* GovpnDeviceTypeStr */
  uint32_t protocol;  /* GovpnProtocolStr */
  uint32_t port;      /* 0 = the default, 1194 */
  uint32_t cipher;    /* GovpnCipherStr */
  uint32_t auth;      /* GovpnAuthStr */
  uint32_t comp_lzo;  /* GovpnCompLzoStr; non-zero writes "comp-lzo" */
} OpenvpnServerSettings;
SYSCOMMON_STATIC_ASSERT(sizeof(OpenvpnServerSettings) == 24, "server settings");

/* Writes the client configuration `path` (as given) for a server at `server_address`: the
 * settings as text (an index beyond its table writes an empty text), then the server's CA
 * certificate "/mnt/log1/openvpn/server_keys/ca.crt" between "<ca>" and "</ca>" lines. A
 * port of 0 is first replaced by 1194 in `settings`. A missing CA file leaves the block out
 * ("%s() %d %s open fail\n"). Returns 0, or -1 after "%s() %d config file %s open fail\n". */
SYSCOMMON_API int openvpn_genClientConfigByServer(const char *path, OpenvpnServerSettings *settings, int reserved,
                                                  const char *server_address);

/* ---- PKCS#12 bundles and certificates (through the openssl tool) ---- */

/* Each extracts one part of the bundle `bundle` opened with `password` into `out` (paths as
 * given): the private key, the CA certificates, the client certificate. The password is
 * placed on the command line unquoted: callers validate it. Returns 0; -1 bundle missing;
 * -2 the command failed ("%s() cmd = %s, rv = %d\n"); -3 the output file was not made. */
SYSCOMMON_API int openssl_pkcs12GetPrivKey(const char *bundle, const char *password, const char *out);
SYSCOMMON_API int openssl_pkcs12GetCAcert(const char *bundle, const char *password, const char *out);
SYSCOMMON_API int openssl_pkcs12GetClcert(const char *bundle, const char *password, const char *out);
/* Splits a bundle into outs[0] CA certificate, outs[1] private key, outs[2] client
 * certificate, in the order client certificate, CA certificate, private key, stopping at the
 * first failure. Returns 0; -1 bundle missing; -3 client certificate, -4 CA certificate,
 * -5 private key failed. */
SYSCOMMON_API int openssl_pkcs12CheckFile(const char *bundle, const char *password, const char outs[3][128]);

/* The subject line that "openssl x509 -noout -in CERT -subject" prints, without its newline,
 * cut to size - 1 characters. Returns the line's length; -1 the file is missing; -2 the
 * command failed or printed nothing. */
SYSCOMMON_API int openvpn_getCertSubject(const char *cert, char *subject, int size);

/* Reads the hash file `path` line by line into `buffer` (fgets with `size`): 1 when it holds
 * exactly two lines, else 0. The buffer keeps the last line read (with its newline), and is
 * left as it was when nothing could be read. */
SYSCOMMON_API int get_csr_file_md5(char *buffer, const char *path, int size);
/* Modulus hashes of the private key "/mnt/log1/tarncsr.key" and the request `csr` (null =
 * "/mnt/log1/tarn.csr"): 1 when get_csr_file_md5 gives both files the same result. The texts
 * are not compared: this weaker test is intended. */
SYSCOMMON_API int check_csr_pkey_match(const char *csr);
/* 1 when the private key "/mnt/log1/tarncsr.key" and the certificate `cert` give the same
 * get_csr_file_md5 result and the same hash text. Removes the old hash files first and
 * prints each command ("msg = %s\n"), its status ("ret = %d\n") and both hashes. */
SYSCOMMON_API int check_cer_pkey_match(const char *cert);
/* 1 when the request "/mnt/log1/tarn.csr" and the certificate `cert` give the same
 * get_csr_file_md5 result and the same hash text. */
SYSCOMMON_API int check_cer_csr_match(const char *cert);

/* The public key length in bits of the certificate `cert` (kind 0 or 1) or of
 * "p12_tmpfile.pem" in the working directory (kind 2); 0 on any failure. */
SYSCOMMON_API int get_key_length(int kind, const char *cert);

/* 1 when `name` matches "^[a-zA-Z0-9_.-]+$", else 0 (null is 0). */
SYSCOMMON_API int is_filename_valid(const char *name);

/* ---- Text tables ---- */

SYSCOMMON_API extern const char *const GovpnDeviceTypeStr[2];
SYSCOMMON_API extern const char *const GovpnProtocolStr[2];
SYSCOMMON_API extern const char *const GovpnCipherStr[6];
SYSCOMMON_API extern const char *const GovpnAuthStr[3];
SYSCOMMON_API extern const char *const GovpnCompLzoStr[3];
SYSCOMMON_API extern const char *const GovpnClientAuthStr[2];
SYSCOMMON_API extern const char *const GovpnClientStateStr[2];

/* IPsec algorithm names by IANA number ("" for numbers without a name). */
SYSCOMMON_API extern const char *const ike_alg_enc[6];
SYSCOMMON_API extern const char *const ike_alg_hash[7];
SYSCOMMON_API extern const char *const ike_alg_dh[6];
SYSCOMMON_API extern const char *const esp_alg_enc[4];
SYSCOMMON_API extern const char *const esp_alg_hash[6];
SYSCOMMON_API extern const char esp_alg_aes[];

/* The algorithm words of an IPsec connection record, in the record's order. */
typedef struct IpsecAlgWords {
  uint32_t ike_enc;
  uint32_t esp_enc;
  uint32_t ike_key_len;
  uint32_t esp_key_len;
  uint32_t ike_hash;
  uint32_t esp_hash;
  uint32_t ike_dh;
} IpsecAlgWords;
SYSCOMMON_STATIC_ASSERT(sizeof(IpsecAlgWords) == 28 && offsetof(IpsecAlgWords, ike_dh) == 24, "IPsec words");

/* The name of algorithm `number`: with `hash` 0 an encryption name (the ESP or IKE table by
 * `esp`; any number beyond the table gives "AES"), else a hash name. The hash tables are
 * indexed WITHOUT a bound check, as the IPsec pages have always done: callers pass only
 * numbers below 7 (IKE) or 6 (ESP). */
SYSCOMMON_API const char *ipsec_alg_convert(int esp, int hash, uint32_t number);
/* The proposal text of a connection's IKE (esp 0) or ESP (esp non-zero) algorithms, e.g.
 * "3DES-SHA1-MODP1024", "AES_128-SHA1-MODP2048", "AES_256-SHA2_256", in one static buffer
 * valid until the next call. The hash number is looked up without a bound check (see
 * ipsec_alg_convert), and so is an IKE DH group of 6 to 13 in the 6-entry ike_alg_dh table:
 * callers pass groups 1, 2, 5 or above 13 (which give "2048"). */
SYSCOMMON_API const char *ipsec_alg_combin(const IpsecAlgWords *words, int esp);

SYSCOMMON_END_DECLS

#endif
