// Address arithmetic: MAC text, mask forms, fixed-width decimal and dotted quads.
#include <arpa/inet.h>

#include <bit>
#include <cctype>
#include <cstring>

#include "netstat/internal.h"
#include "syscommon/netstat.h"
#include "util/format.h"

namespace syscommon::netstat {

std::string dotted(uint32_t ip) {
  const auto *b = reinterpret_cast<const uint8_t *>(&ip);
  return format_text(16, "%d.%d.%d.%d", b[0], b[1], b[2], b[3]);
}

uint32_t parse_address(const char *text) { return inet_addr(text); }

void copy_text(std::span<char> dst, const char *text) {
  if (dst.empty()) return;
  const std::size_t n = ::strnlen(text, dst.size() - 1);
  std::memcpy(dst.data(), text, n);
  dst[n] = '\0';
}

}  // namespace syscommon::netstat

int mac_addr(char *text, uint8_t mac[6]) {
  std::memset(mac, 0, 6);
  int digits = 0;
  for (char *p = text; *p != '\0'; ++p) {
    const int c = std::tolower(static_cast<unsigned char>(*p));
    int value = -1;
    if (c >= '0' && c <= '9') value = c - '0';
    if (c >= 'a' && c <= 'f') value = c - 'a' + 10;
    // The caller's text is rewritten as it is read: letters lowered, digits by value.
    *p = static_cast<char>(value >= 0 ? value : c);
    if (value < 0 || digits >= 12) continue;
    mac[digits / 2] = static_cast<uint8_t>(mac[digits / 2] | (digits % 2 == 0 ? value << 4 : value));
    ++digits;
  }
  return 1;
}

int Mask2Number(uint32_t mask) {
  const uint32_t host = ntohl(mask);
  return host == 0 ? 0 : 32 - std::countr_zero(host);
}

uint32_t Number2Mask(int bits) {
  if (bits <= 0) return 0;
  if (bits >= 32) return 0xffffffffu;
  return htonl(~0u << (32 - bits));
}

int CheckMask(uint32_t mask) {
  const uint32_t inverse = ~ntohl(mask);
  // The host part is a run of ones from the bottom exactly when adding one to it clears it.
  return (inverse & (inverse + 1)) == 0 ? 1 : 0;
}

int dec2str(int value, int width, char *out) {
  std::memset(out, 0, 4);
  if (width < 1 || width > 3) return 0;
  int v = value & 0xff;
  for (int i = width - 1; i >= 0; --i, v /= 10) out[i] = static_cast<char>('0' + v % 10);
  return 0;
}

char *IP2Dot(uint32_t ip) {
  static char buffer[16];
  syscommon::netstat::copy_text(buffer, syscommon::netstat::dotted(ip).c_str());
  return buffer;
}
