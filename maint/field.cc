// Generic access to configuration record fields through their descriptors: values stored
// from text or raw bytes, and fetched as text or raw bytes.
#include <arpa/inet.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/number.h"
#include "syscommon/maint.h"
#include "syscommon/netstat.h"
#include "util/format.h"

namespace {

enum FieldType : uint32_t {
  kInteger1 = 1,
  kText = 2,
  kIpv4 = 3,
  kMac = 4,
  kRawWord = 7,
  kInteger8 = 8,
  kStoredWord = 9,
  kBits = 10,
  kIpv4Alt = 14,
  kFlagText = 15,
  kInteger17 = 17,
  kInteger18 = 18,
};

bool is_integer(uint32_t type) {
  return type == kInteger1 || type == kInteger8 || type == kInteger17 || type == kInteger18;
}

// Integer fields are 1, 2 or 4 bytes; any other size is handled as 4.
std::size_t int_width(uint32_t size) { return size == 1 || size == 2 ? size : 4; }

uint32_t load_le(const unsigned char *p, std::size_t width) {
  uint32_t v = 0;
  for (std::size_t i = 0; i < width; ++i) v |= static_cast<uint32_t>(p[i]) << (8 * i);
  return v;
}

void store_le(unsigned char *p, std::size_t width, uint32_t v) {
  for (std::size_t i = 0; i < width; ++i) p[i] = static_cast<unsigned char>(v >> (8 * i));
}

// Type 10's storage word: index 1 = 8 bits, 2 = 16 bits, anything else 32 bits.
std::size_t storage_bytes(int index) { return index == CFG_BITS_STORAGE_8 ? 1 : index == CFG_BITS_STORAGE_16 ? 2 : 4; }

struct BitField {
  bool usable;
  unsigned shift;
  uint64_t mask;  // the width's low bits, unshifted
};

BitField bit_field(const CfgFieldDesc &d) {
  const uint32_t width = d.size > 32 ? 32 : d.size;
  if (d.bit_position == 0 || d.bit_position > 32) return {false, 0, 0};
  return {true, d.bit_position - 1, (uint64_t{1} << width) - 1};
}

unsigned char *element(void *base, const CfgFieldDesc &d, int index) {
  return static_cast<unsigned char *>(base) + d.offset + static_cast<std::ptrdiff_t>(index) * d.size;
}

void store_text(unsigned char *field, uint32_t size, const char *text) {
  if (size == 0) return;
  const std::size_t n = ::strnlen(text, size - 1);
  std::memcpy(field, text, n);
  field[n] = '\0';
}

char *raw_result(const unsigned char *field, std::size_t n) {
  std::memcpy(readconfig_msg, field, n < sizeof readconfig_msg ? n : sizeof readconfig_msg);
  return readconfig_msg;
}

}  // namespace

extern "C" {

char readconfig_msg[128];

SYSCOMMON_API int setconfig(void *base, const void *value, const CfgFieldDesc *desc, int text, int index) {
  const CfgFieldDesc &d = *desc;
  const auto *raw = static_cast<const unsigned char *>(value);
  const auto *value_text = static_cast<const char *>(value);
  if (is_integer(d.type)) {
    const std::size_t width = int_width(d.size);
    const uint32_t v = text != 0 ? static_cast<uint32_t>(syscommon::device_atoi(value_text)) : load_le(raw, width);
    store_le(element(base, d, index), width, v);
    return static_cast<int>(v);
  }
  switch (d.type) {
    case kText:
    case kFlagText:
      store_text(element(base, d, index), d.size, value_text);
      return 0;
    case kIpv4:
    case kIpv4Alt: {
      uint32_t addr = 0;
      if (text == 0)
        std::memcpy(&addr, raw, 4);
      else if (value_text[0] != '\0')
        addr = inet_addr(value_text);  // a malformed address stores 255.255.255.255
      std::memcpy(element(base, d, index), &addr, 4);
      return 0;
    }
    case kMac: {
      char copy[128];  // mac_addr rewrites the text it reads
      syscommon::format_into(copy, "%s", value_text);
      uint8_t mac[6];
      mac_addr(copy, mac);
      std::memcpy(element(base, d, index), mac, 6);
      return 0;
    }
    case kRawWord:
      std::memcpy(element(base, d, index), raw, 4);
      return 0;
    case kBits: {
      const BitField f = bit_field(d);
      if (!f.usable) return 0;
      const std::size_t bytes = storage_bytes(index);
      const uint32_t v = text != 0 ? static_cast<uint32_t>(syscommon::device_atoi(value_text)) : load_le(raw, bytes);
      unsigned char *word = static_cast<unsigned char *>(base) + d.offset;
      const uint64_t cleared = load_le(word, bytes) & ~(f.mask << f.shift);
      store_le(word, bytes, static_cast<uint32_t>(cleared + (uint64_t{v} << f.shift)));
      return static_cast<int>(v);
    }
    default:
      return 0;  // not stored: 9 and the types outside the table
  }
}

SYSCOMMON_API char *readconfig(const void *base, const CfgFieldDesc *desc, int text, int index) {
  const CfgFieldDesc &d = *desc;
  if (d.type == kBits) {  // no element index: `index` is the storage width
    const BitField f = bit_field(d);
    const auto *word = static_cast<const unsigned char *>(base) + d.offset;
    const auto v = f.usable ? static_cast<uint32_t>((load_le(word, storage_bytes(index)) >> f.shift) & f.mask) : 0;
    if (text == 0) {
      store_le(reinterpret_cast<unsigned char *>(readconfig_msg), 4, v);
      return readconfig_msg;
    }
    syscommon::format_into(readconfig_msg, "%d", static_cast<int>(v));
    return readconfig_msg;
  }
  auto *field = element(const_cast<void *>(base), d, index);
  if (is_integer(d.type)) {
    const std::size_t width = int_width(d.size);
    if (text == 0) return raw_result(field, width);
    const uint32_t v = load_le(field, width);
    syscommon::format_into(readconfig_msg, "%d", width == 2 ? static_cast<int16_t>(v) : static_cast<int>(v));
    return readconfig_msg;
  }
  switch (d.type) {
    case kText:
      return reinterpret_cast<char *>(field);
    case kFlagText:  // a flag in both modes
      syscommon::format_into(readconfig_msg, "%s", field[0] != 0 ? "1" : "0");
      return readconfig_msg;
    case kIpv4:
    case kIpv4Alt:
      if (text == 0) return raw_result(field, d.size);
      inet_ntop(AF_INET, field, readconfig_msg, sizeof readconfig_msg);
      return readconfig_msg;
    case kMac:
      if (text == 0) return raw_result(field, 6);
      syscommon::format_into(readconfig_msg, "%02x:%02x:%02x:%02x:%02x:%02x", field[0], field[1], field[2], field[3],
                             field[4], field[5]);
      return readconfig_msg;
    case kStoredWord: {
      uint32_t word;
      std::memcpy(&word, field, 4);
      // The record keeps a pointer of the 32-bit device in this word: handed back as one.
      return reinterpret_cast<char *>(static_cast<uintptr_t>(word));  // NOLINT(performance-no-int-to-ptr)
    }
    default:
      readconfig_msg[0] = '\0';  // nothing to read: 7 and the types outside the table
      return readconfig_msg;
  }
}

}  // extern "C"
