// Port naming and the port queries over the hardware description in the identity record.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "syscommon/hw.h"
#include "syscommon/platform.h"
#include "syscommon/util.h"
#include "util/identity.h"

namespace {

constexpr int kFirstTrunk = 10;
constexpr int kLastTrunk = 13;
constexpr int kCpuPort = 14;

char g_port_name[16];

bool physical(int index) { return index >= 0 && index < SHM_PORT_COUNT; }

// Port `index`'s hardware entry; an absent (all-zero) entry outside ports 0..9.
ShmEepromPortInfo port_entry(int index) {
  ShmEepromPortInfo entry{};
  if (physical(index)) shm_sysGetEepromInfoPortInfo(&entry, 0, index);
  return entry;
}

int speed_bits(int index) { return port_entry(index).type & SHM_PORT_TYPE_SPEED_MASK; }

bool fibre(const ShmEepromPortInfo &p) { return (p.type & SHM_PORT_TYPE_FIBER) != 0; }
bool gigabit_fibre(const ShmEepromPortInfo &p) { return (p.type & SHM_PORT_TYPE_SPEED_MASK) == 1 && fibre(p); }

int put_text(char *out, std::string_view text) {
  std::memcpy(out, text.data(), text.size());
  out[text.size()] = '\0';
  return static_cast<int>(text.size());
}

// Builder of the compact port list.
class PortListText {
 public:
  void item(int module, int number, int trunk_below) {
    out_ += module < trunk_below ? "Trk" + std::to_string(number) + ","
                                 : std::to_string(module) + "/" + std::to_string(number) + ",";
    last_module_ = module;
    last_number_ = number;
  }
  // Closes an open range: the trailing comma becomes "-N,".
  void close_range() {
    if (!range_open_) return;
    out_.pop_back();
    out_ += "-" + std::to_string(last_number_) + ",";
    range_open_ = false;
  }
  bool extends(int module, int number) const { return module == last_module_ && number == last_number_ + 1; }
  void extend(int number) {
    range_open_ = true;
    last_number_ = number;
  }
  [[nodiscard]] bool range_open() const { return range_open_; }
  [[nodiscard]] const std::string &text() const { return out_; }

 private:
  std::string out_;
  int last_module_ = 0;
  int last_number_ = 0;
  bool range_open_ = false;
};

}  // namespace

extern "C" {

SYSCOMMON_API int Ssys_port2MdlPort(int index, int *module_out, int *port_out) {
  if (index > 9) return 0;  // only the upper bound is checked
  *module_out = 0;
  *port_out = index;
  return 1;
}

SYSCOMMON_API int Ssys_getModuleMaxPort(int /*module*/) { return SHM_PORT_COUNT; }
SYSCOMMON_API int Ssc_checkModuleActive(int /*module*/) { return 1; }
SYSCOMMON_API int Ssys_portIs10G(int /*index*/) { return 0; }

SYSCOMMON_API int Ssys_checkPortExist(int index) {
  if (!physical(index)) return 0;
  ShmEepromPortInfo p = port_entry(index);
  return p.type != 0 || p.present != 0 ? 1 : 0;
}

SYSCOMMON_API int Ssys_getPortMaxSpeed(int index) { return speed_bits(index); }
SYSCOMMON_API int Ssys_portIsFiber(int index) { return port_entry(index).type & SHM_PORT_TYPE_FIBER; }
SYSCOMMON_API int Ssys_portIsMega(int index) { return speed_bits(index) == 0 ? 1 : 0; }
SYSCOMMON_API int Ssys_portIsGiga(int index) { return speed_bits(index) == 1 ? 1 : 0; }
SYSCOMMON_API int is_cpu_port(int index) { return index == kCpuPort ? 1 : 0; }

SYSCOMMON_API int Scf_checkPortActive(int index) {
  if (index < 0) return 0;
  if (physical(index)) return Ssys_checkPortExist(index) == 1 && get_shm_port_to_trk_id(index) == index ? 1 : 0;
  if (index == kCpuPort) return 1;
  for (int p = 0; p < SHM_PORT_COUNT; ++p)
    if (Ssys_checkPortExist(p) == 1 && get_shm_port_to_trk_id(p) == index) return 1;
  return 0;
}

SYSCOMMON_API int Ssys_getModulePortStr(int index, char *text_out) {
  if (index >= 0 && index <= 7) return std::sprintf(text_out, "%d", index + 1);
  if (index == 8 || index == 9) return std::sprintf(text_out, "G%d", index - 7);
  if (index >= kFirstTrunk && index <= kLastTrunk) return std::sprintf(text_out, "Trk%d", index - 9);
  text_out[0] = '\0';
  return 0;
}

SYSCOMMON_API const char *Get_port_name(int index) {
  std::snprintf(g_port_name, sizeof g_port_name, "%s%d", "PORT", index + 1);
  return g_port_name;
}

SYSCOMMON_API int Ssys_getModulePortDesc(int index, char *text_out) {
  if (!physical(index)) return put_text(text_out, "");
  ShmEepromInfo info = syscommon::identity_record();
  std::span<const ShmEepromPortInfo> ports(info.port);
  const ShmEepromPortInfo &port = ports[index];
  if (gigabit_fibre(port)) {
    auto slot = std::count_if(ports.begin(), ports.begin() + index, fibre);
    if (slot >= SHM_SFP_SLOT_COUNT) return put_text(text_out, "N/A");
    const char *sfp = info.sfp_text[slot];
    std::string_view text(sfp, strnlen(sfp, SHM_SFP_TEXT_LEN - 1));
    return put_text(text_out, text.empty() ? "N/A" : text);
  }
  return put_text(text_out, {port.desc, strnlen(port.desc, SHM_PORT_DESC_LEN)});
}

SYSCOMMON_API int Ssc_port_vid_exist(uint16_t vid, const uint16_t *list, int count) {
  if (count <= 0) return 0;
  std::span<const uint16_t> vids(list, static_cast<std::size_t>(count));
  if (vids.back() < vid) return 0;
  return std::find(vids.begin(), vids.end(), vid) != vids.end() ? 1 : 0;
}

SYSCOMMON_API int cli_lib_convBmp2PortNTrkStr(uint32_t bitmap, char *text_out) {
  PortListText list;
  bool fresh = true;  // the next set port starts a new item
  for (int i = 0; i <= kLastTrunk; ++i) {
    if (Scf_checkPortActive(i) != 1) continue;  // neither printed nor ending a range
    if ((bitmap >> i & 1u) == 0) {
      if (list.range_open()) {
        list.close_range();
        fresh = true;
      }
      continue;
    }
    int module = -1;
    int number = i - 9;
    if (i < kFirstTrunk) {
      int m = 0;
      int p = 0;
      Ssys_UI_port2MdlPort(i, &m, &p);
      module = m + 1;
      number = p + 1;
    }
    if (fresh) {
      list.item(module, number, 1);
      fresh = false;
    } else if (list.extends(module, number)) {
      list.extend(number);
    } else {
      list.close_range();
      list.item(module, number, 0);
    }
  }
  return put_text(text_out, list.text());
}

}  // extern "C"
