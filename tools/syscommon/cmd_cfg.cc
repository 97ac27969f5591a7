// syscommon cfg / ssh / usb: the configuration archive exported, checked before it is
// unpacked, imported; fields of a saved record read and written through a descriptor file;
// the SSH service; the backup onto the USB stick.
#include <sys/stat.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

#include "platform/host.h"
#include "syscommon/log.h"
#include "syscommon/maint.h"
#include "tools/syscommon/command.h"

namespace syscommon::tool {
namespace {

constexpr const char *kArchive = "/mnt/ramdisk/TARN_CFG.ini";
constexpr const char *kStaging = "/mnt/ramdisk/cfg_tmp";
constexpr uint32_t kToEnd = 0xFFFFFFFF;

std::string event_text(uint32_t id) {
  for (const SlogDescEntry &e : event_desc_table)
    if (e.id == id) return e.text;
  return "?";
}

long long size_of(const std::string &path) {
  struct stat st {};
  return ::stat(path.c_str(), &st) == 0 ? static_cast<long long>(st.st_size) : -1;
}

// ---- cfg export / check / import

int cmd_export(const Args &a) {
  expect_args(a, 0, 0);
  std::fflush(stdout);
  if (make_configuration_file() != 1) {
    std::printf("export failed\n");
    return 1;
  }
  const std::string archive = rooted(kArchive);
  std::printf("archive %s (%lld bytes), checksum list:\n", archive.c_str(), size_of(archive));
  std::ifstream sums(rooted(std::string(kStaging) + "/CFG_SUM"));
  for (std::string line; std::getline(sums, line);) std::printf("  %s\n", line.c_str());
  return 0;
}

// A member name as an unpack from "/" writes it: no leading "/" or "./".
std::string unpacked_name(std::string name) {
  while (name.starts_with("/") || name.starts_with("./")) name.erase(0, name.starts_with("/") ? 1 : 2);
  return name;
}

// One shell word, whatever the text holds (member names come from an untrusted archive).
std::string quoted(const std::string &text) {
  std::string out = "'";
  for (const char c : text) out += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return out + "'";
}

// True when an unpack from "/" keeps `name` inside the staging directory.
bool inside(const std::string &name, const std::string &staging) {
  return name.starts_with(staging) && name.find("/../") == std::string::npos && !name.ends_with("/..");
}

// Standard output of a tar run over the archive, or false when tar fails.
bool tar_output(const std::string &options, const std::string &archive, const std::string &member, std::string &out) {
  std::string cmd = "tar " + options + " " + quoted(archive) + (member.empty() ? "" : " " + quoted(member)) +
                    " 2>/dev/null";
  Pipe pipe(popen(cmd.c_str(), "r"));
  if (!pipe) return false;
  char buf[4096];
  out.clear();
  for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, pipe.get())) > 0;) out.append(buf, n);
  return pipe.close() == 0;
}

// The member's checksum as the import check computes it, read straight out of the archive.
bool member_sum(const std::string &archive, const std::string &member, uint32_t &sum) {
  std::string cmd = "tar -xzOf " + quoted(archive) + " " + quoted(member) + " 2>/dev/null";
  Pipe pipe(popen(cmd.c_str(), "r"));
  if (!pipe) return false;
  file_check_sum_tmp(pipe.get(), kToEnd, &sum);
  return pipe.close() == 0;
}

// Lists every member with its verdict before anything is unpacked: the CFG_SUM entries
// with their sums, members the list leaves unchecked, and members that an unpack from "/"
// would write outside the staging directory. Exit 0 only when nothing is flagged.
int cmd_check(const Args &a) {
  expect_args(a, 0, 1);
  const std::string archive = a.empty() ? rooted(kArchive) : a[0];
  if (a.size() == 1) check_text(archive, "FILE", 4096);
  std::string listing;
  if (size_of(archive) < 0) {
    std::printf("%s: no such archive\n", archive.c_str());
    return 1;
  }
  if (!tar_output("-tzf", archive, "", listing)) {
    std::printf("%s: not a gzip-compressed tar archive; the import check would fail (event 19)\n", archive.c_str());
    return 1;
  }
  const std::string staging = unpacked_name(rooted(kStaging)) + "/";
  std::map<std::string, std::string> members;  // unpacked name -> name in the archive
  for (std::size_t at = 0; at < listing.size();) {
    std::size_t end = listing.find('\n', at);
    if (end == std::string::npos) end = listing.size();
    const std::string name = listing.substr(at, end - at);
    if (!name.empty()) members[unpacked_name(name)] = name;
    at = end + 1;
  }
  int flagged = 0;
  bool import_passes = true;
  std::string sums;
  const auto list = members.find(staging + "CFG_SUM");
  if (list == members.end() || !tar_output("-xzOf", archive, list->second, sums)) {
    std::printf("no %sCFG_SUM in the archive: the import check would fail\n", staging.c_str());
    ++flagged;
    import_passes = false;
  }
  std::map<std::string, bool> listed;
  std::printf("%-64s %-8s %s\n", "member", "sum+1", "verdict");
  for (std::size_t at = 0; at < sums.size();) {
    std::size_t end = sums.find('\n', at);
    if (end == std::string::npos) end = sums.size();
    const std::string line = sums.substr(at, end - at);
    at = end + 1;
    char path[256];
    unsigned stored = 0;
    if (std::sscanf(line.c_str(), "%255s %x", path, &stored) != 2) {
      std::printf("CFG_SUM line '%s': not a path and a sum: FAILS the check\n", line.c_str());
      ++flagged, import_passes = false;
      continue;
    }
    const std::string name = unpacked_name(path);
    listed[name] = true;
    const auto m = members.find(name);
    uint32_t sum = 0;
    const char *verdict = "ok";
    if (!inside(name, staging)) {
      verdict = "OUTSIDE the staging directory: the check reads a device file";
      ++flagged;
    } else if (m == members.end()) {
      verdict = "MISSING from the archive";
      ++flagged, import_passes = false;
    } else if (!member_sum(archive, m->second, sum) || sum + 1 != stored) {
      verdict = "DIFFERS";
      ++flagged, import_passes = false;
    }
    std::printf("%-64s %08x %s\n", name.c_str(), stored, verdict);
  }
  if (sums.empty() && list != members.end()) {
    std::printf("CFG_SUM lists no file: nothing is checked\n");
    ++flagged;
  }
  for (const auto &[name, stored_as] : members) {
    if (listed.contains(name) || name.ends_with("/")) continue;
    if (!inside(name, staging)) {
      std::printf("%-64s %-8s OUTSIDE the staging directory: unpacking from / writes /%s\n", stored_as.c_str(), "",
                  name.c_str());
      ++flagged;
    } else if (name == staging + "CFG_SUM") {
      std::printf("%-64s %-8s the checksum list\n", name.c_str(), "");
    } else if (name.starts_with(staging + "log1/")) {
      std::printf("%-64s %-8s log copy, not checked\n", name.c_str(), "");
    } else {
      std::printf("%-64s %-8s not listed in CFG_SUM: unpacked unchecked\n", name.c_str(), "");
      ++flagged;
    }
  }
  std::printf("import check: %s; %d member%s flagged\n",
              import_passes ? "would pass (event 21)" : "would FAIL (event 19)", flagged, flagged == 1 ? "" : "s");
  return flagged == 0 ? 0 : 1;
}

int cmd_import(const Args &a) {
  const Options o = parse_options(a, {"--apply"});
  expect_args(o.positional, 0, 0);
  const std::string *apply = o.get("--apply");
  if (apply != nullptr && *apply != "full" && *apply != "partial")
    throw UsageError{"--apply must be full or partial, not '" + *apply + "'"};
  int error = 0;
  std::fflush(stdout);
  config_Upgrade(&error);
  const int event = error != 0 ? 19 : 21;
  std::printf("\nchecksum check %s; event %d (%s) reported\n", error != 0 ? "FAILED" : "passed", event,
              event_text(static_cast<uint32_t>(event)).c_str());
  if (error != 0) return 1;
  if (apply == nullptr) return 0;
  std::fflush(stdout);
  if (*apply == "full") {
    const int status = configCli_Upgrade(&error);
    std::printf("configuration parser, full import: exit status %d\n", status);
    return error != 0 ? 1 : 0;
  }
  const int rc = configPartialCli_Upgrade();
  std::printf("configuration parser, partial import: %s\n", rc == 0 ? "applied" : "failed");
  return rc == 0 ? 0 : 1;
}

// ---- cfg field get / set

// DESCRIPTOR-FILE: one field a line, "NAME TYPE SIZE OFFSET [BIT-POSITION [STORAGE-BITS]]",
// '#' starts a comment.
struct NamedField {
  CfgFieldDesc desc{};
  int storage_bits = 32;
};

NamedField find_field(const std::string &path, const std::string &wanted) {
  std::ifstream in(path);
  if (!in) throw UsageError{"cannot read descriptor file '" + path + "'"};
  int line_no = 0;
  for (std::string line; std::getline(in, line);) {
    ++line_no;
    if (const auto hash = line.find('#'); hash != std::string::npos) line.resize(hash);
    char name[64];
    unsigned type = 0, size = 0, offset = 0, position = 0, storage = 32;
    const int n = std::sscanf(line.c_str(), "%63s %u %u %u %u %u", name, &type, &size, &offset, &position, &storage);
    if (n <= 0) continue;
    if (n < 4) throw UsageError{path + ":" + std::to_string(line_no) + ": expected NAME TYPE SIZE OFFSET"};
    if (wanted != name) continue;
    NamedField f;
    f.desc.type = type;
    f.desc.size = size;
    f.desc.offset = offset;
    f.desc.bit_position = position;
    f.storage_bits = static_cast<int>(storage);
    if (type < 1 || type > 18) throw UsageError{"field '" + wanted + "' has type " + std::to_string(type) + ", not 1 to 18"};
    if (type == 10 && (position < 1 || position > 32 || size < 1 || size > 32 ||
                       (storage != 8 && storage != 16 && storage != 32)))
      throw UsageError{"bit field '" + wanted + "' needs a width 1..32, a position 1..32 and storage 8, 16 or 32"};
    return f;
  }
  throw UsageError{"no field '" + wanted + "' in '" + path + "'"};
}

std::vector<char> read_record(const std::string &path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw UsageError{"cannot read record file '" + path + "'"};
  return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

// The value of the field as the management programs show it.
std::string shown(const std::vector<char> &record, const NamedField &f, int index) {
  switch (f.desc.type) {
    case 7: {
      uint32_t w;
      std::memcpy(&w, record.data() + f.desc.offset, 4);
      char text[32];
      std::snprintf(text, sizeof text, "0x%08" PRIx32 " (raw word)", w);
      return text;
    }
    case 9: {
      const auto w = reinterpret_cast<uintptr_t>(readconfig(record.data(), &f.desc, 1, index));
      char text[48];
      std::snprintf(text, sizeof text, "0x%08" PRIxPTR " (stored word)", w);
      return text;
    }
    default:
      return readconfig(record.data(), &f.desc, 1, index);
  }
}

// Bytes of the record that reading or writing the field touches.
uint64_t touched_bytes(const NamedField &f) {
  switch (f.desc.type) {
    case 10: return static_cast<uint64_t>(f.storage_bits / 8);
    case 4: return 6;
    case 3: case 14: return std::max<uint64_t>(4, f.desc.size);
    case 2: case 15: return f.desc.size;
    case 1: case 8: case 17: case 18: return f.desc.size == 1 || f.desc.size == 2 ? f.desc.size : 4;
    default: return 4;
  }
}

int cmd_field(const Args &a) {
  const Options o = parse_options(a, {"--index"});
  const Args &p = o.positional;
  if (p.empty() || (p[0] != "get" && p[0] != "set")) throw UsageError{"expected get or set"};
  const bool set = p[0] == "set";
  expect_args(p, set ? 5 : 4, set ? 5 : 4);
  const NamedField f = find_field(p[1], p[3]);
  const int index = f.desc.type == 10 ? (f.storage_bits == 8 ? 1 : f.storage_bits == 16 ? 2 : 4)
                    : o.get("--index") != nullptr ? static_cast<int>(parse_number(*o.get("--index"), "--index", 0, 4095))
                                                  : 0;
  std::vector<char> record = read_record(p[2]);
  const uint64_t element = f.desc.type == 10 ? 0 : static_cast<uint64_t>(index) * f.desc.size;
  if (f.desc.offset + element + touched_bytes(f) > record.size())
    throw UsageError{"field '" + p[3] + "' lies past the end of the " + std::to_string(record.size()) + "-byte record"};
  if (set) {
    const std::string &value = p[4];
    for (const char c : value)
      if (static_cast<unsigned char>(c) < 0x20 || c == 0x7f) throw UsageError{"VALUE may hold no control character"};
    if (f.desc.type == 9) throw UsageError{"type 9 fields cannot be set"};
    if (f.desc.type == 7) throw UsageError{"type 7 fields take raw words; the tool sets text fields"};
    setconfig(record.data(), value.c_str(), &f.desc, 1, index);
    std::ofstream out(p[2], std::ios::binary | std::ios::trunc);
    out.write(record.data(), static_cast<std::streamsize>(record.size()));
    if (!out) {
      std::printf("cannot write '%s'\n", p[2].c_str());
      return 1;
    }
  }
  std::printf("%s = %s\n", p[3].c_str(), shown(record, f, index).c_str());
  return 0;
}

// ---- ssh

int cmd_ssh_set(const Args &a) {
  expect_args(a, 3, 3);
  if (a[0] != "on" && a[0] != "off") throw UsageError{"expected on or off, not '" + a[0] + "'"};
  const int port = static_cast<int>(parse_number(a[1], "PORT", 1, 65535));
  const int idle = static_cast<int>(parse_number(a[2], "IDLE", 0, 35791394));
  std::fflush(stdout);
  uiMgmt_setSSH(a[0] == "on" ? 1 : 0, port, idle);
  std::printf("sshd stopped, SSH console sessions removed\n");
  if (a[0] == "off") return 0;
  std::ifstream conf(rooted("/etc/sshd_config"));
  std::printf("%s:\n", rooted("/etc/sshd_config").c_str());
  for (std::string line; std::getline(conf, line);) std::printf("  %s\n", line.c_str());
  std::printf("sshd started on port %d\n", port);
  return 0;
}

// ---- usb

void show_stick() {
  const std::string dir = rooted("/mnt/ramdisk/usb_tarn/tarn");
  std::fflush(stdout);
  if (size_of(dir) < 0) {
    std::printf("no stick mounted at %s\n", rooted("/mnt/ramdisk/usb_tarn").c_str());
    return;
  }
  std::printf("%s:\n", dir.c_str());
  std::string cmd = "cd " + quoted(dir) + " && find . -type f | sort";
  Pipe pipe(popen(cmd.c_str(), "r"));
  char line[512];
  while (pipe && std::fgets(line, sizeof line, pipe.get()) != nullptr) {
    line[std::strcspn(line, "\n")] = '\0';
    std::printf("  %-28s %lld bytes\n", line + 2, size_of(dir + "/" + (line + 2)));
  }
}

int cmd_usb_attach(const Args &a) {
  expect_args(a, 0, 0);
  std::fflush(stdout);
  xbk02_run(0);
  std::printf("\n");
  show_stick();
  return size_of(rooted("/mnt/ramdisk/usb_tarn/tarn")) < 0 ? 1 : 0;
}

int cmd_usb_detach(const Args &a) {
  expect_args(a, 0, 0);
  std::fflush(stdout);
  xbk02_run(1);
  show_stick();
  return 0;
}

int cmd_usb_backup(const Args &a) {
  expect_args(a, 0, 0);
  std::fflush(stdout);
  if (size_of(rooted(kArchive)) < 0 && make_configuration_file() != 1) return 1;
  copy_configure_file_to_usb();
  copy_configure_file_to_usb_date();
  std::printf("event 20 (%s) reported\n", event_text(20).c_str());
  show_stick();
  return 0;
}

int cmd_usb_logs(const Args &a) {
  expect_args(a, 0, 0);
  std::fflush(stdout);
  SytemLogMake();
  FirewallLogMake();
  IPSecLogMake();
  copy_log_file_to_usb();
  show_stick();
  return 0;
}

const Registration cfg_reg{{"cfg",
                            "Configuration archive: export, check before unpacking, import; record fields.",
                            {
                                {"export", "", "pack /mnt/cfg2 and /mnt/log1 into the archive and show CFG_SUM",
                                 cmd_export},
                                {"check", "[FILE]",
                                 "list the archive's members with their sums and verdicts, unpacking nothing\n"
                                 "Flags sums that differ, listed files that are missing, members CFG_SUM\n"
                                 "leaves unchecked and members an unpack from / writes outside the staging\n"
                                 "directory. Exit 1 when anything is flagged.",
                                 cmd_check},
                                {"import", "[--apply full|partial]",
                                 "unpack the archive from / and check it (event 19 or 21)\n"
                                 "--apply then hands it to the configuration parser.",
                                 cmd_import},
                                {"field", "get|set DESCRIPTOR-FILE RECORD-FILE NAME [VALUE] [--index N]",
                                 "read or write a field of a saved record through a named descriptor\n"
                                 "DESCRIPTOR-FILE lines: NAME TYPE SIZE OFFSET [BIT-POSITION [STORAGE-BITS]]\n"
                                 "('#' comments); --index picks an array element.",
                                 cmd_field},
                            }}};

const Registration ssh_reg{{"ssh",
                            "SSH service: configuration file and restart.",
                            {
                                {"set", "on|off PORT IDLE",
                                 "stop sshd and its console sessions; when on, rewrite /etc/sshd_config\n"
                                 "(IDLE minutes, 0 for no limit) and start sshd on PORT",
                                 cmd_ssh_set},
                            }}};

const Registration usb_reg{{"usb",
                            "USB configuration backup stick.",
                            {
                                {"attach", "", "find the stick with fdisk and mount it", cmd_usb_attach},
                                {"detach", "", "unmount the stick and remove the mount point", cmd_usb_detach},
                                {"backup", "",
                                 "copy the configuration archive (exported first when missing) as Sys.ini,\n"
                                 "the address-named copy and the dated copy in His_ini",
                                 cmd_usb_backup},
                                {"logs", "", "export the system, firewall and VPN logs and move them to the stick",
                                 cmd_usb_logs},
                            }}};

}  // namespace
}  // namespace syscommon::tool
