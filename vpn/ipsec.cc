// IPsec algorithm numbers (IANA) turned into the proposal text of the IPsec daemon's
// configuration, e.g. "AES_128-SHA1-MODP2048".
#include <array>
#include <string>
#include <string_view>

#include "syscommon/vpn.h"
#include "util/format.h"

namespace {

template <std::size_t N>
std::size_t entries(const char *const (&)[N]) {
  return N;
}

// An IKE DH group above this number is named "2048" whatever the table holds.
constexpr uint32_t kLastTableGroup = 13;

std::array<char, 64> proposal;  // the result of ipsec_alg_combin

}  // namespace

extern "C" {

const char *const ike_alg_enc[6] = {"", "DES", "", "", "", "3DES"};
const char *const ike_alg_hash[7] = {"", "MD5", "SHA1", "", "SHA2_256", "", "SHA2_512"};
const char *const ike_alg_dh[6] = {"", "768", "1024", "", "", "1536"};
const char *const esp_alg_enc[4] = {"", "", "DES", "3DES"};
const char *const esp_alg_hash[6] = {"", "MD5", "SHA1", "", "", "SHA2_256"};
const char esp_alg_aes[] = "AES";

SYSCOMMON_API const char *ipsec_alg_convert(int esp, int hash, uint32_t number) {
  if (hash != 0) return esp != 0 ? esp_alg_hash[number] : ike_alg_hash[number];  // unchecked, as documented
  if (esp != 0) return number < entries(esp_alg_enc) ? esp_alg_enc[number] : esp_alg_aes;
  return number < entries(ike_alg_enc) ? ike_alg_enc[number] : esp_alg_aes;
}

SYSCOMMON_API const char *ipsec_alg_combin(const IpsecAlgWords *words, int esp) {
  const bool is_esp = esp != 0;
  const char *enc = ipsec_alg_convert(esp, 0, is_esp ? words->esp_enc : words->ike_enc);
  const char *hash = ipsec_alg_convert(esp, 1, is_esp ? words->esp_hash : words->ike_hash);
  std::string text = enc;
  if (std::string_view(enc) == esp_alg_aes)
    text += "_" + std::to_string(is_esp ? words->esp_key_len : words->ike_key_len);
  text += "-";
  text += hash;
  if (!is_esp) text += "-MODP" + std::string(words->ike_dh <= kLastTableGroup ? ike_alg_dh[words->ike_dh] : "2048");
  syscommon::format_into(proposal, "%s", text.c_str());
  return proposal.data();
}

}  // extern "C"
