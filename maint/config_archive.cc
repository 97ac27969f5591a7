// Configuration export and import: the archive of the configuration directory with its
// checksum list, the import check, the command-line parser's imports, the log-export file
// and the stored password.
#include <sys/stat.h>

#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "maint/config_paths.h"
#include "platform/host.h"
#include "platform/number.h"
#include "syscommon/log.h"
#include "syscommon/maint.h"
#include "syscommon/util.h"
#include "util/format.h"

namespace {

using syscommon::format_text;
using syscommon::maint::kConfigArchive;
using syscommon::maint::kConfigEventArgument;
using syscommon::maint::kRamdisk;
using syscommon::rooted;
using syscommon::run_command;

constexpr std::size_t kCommand = 4096;
constexpr const char *kConfigDir = "/mnt/cfg2";
constexpr const char *kLogDir = "/mnt/log1";
constexpr const char *kStaging = "/mnt/ramdisk/cfg_tmp";
constexpr const char *kSumList = "/mnt/ramdisk/cfg_tmp/CFG_SUM";
constexpr const char *kListing = "/mnt/ramdisk/CFG_FILE_NAME";
constexpr const char *kCliError = "/mnt/ramdisk/CLI_IMPORT_ERROR";
constexpr const char *kParser = "/lumenP/cli/tarn_parser";
constexpr const char *kPasswordFile = "/mnt/ramdisk/cfg/password.CFG";
constexpr const char *kLogExport = "/TARN_LOG.ini";
constexpr uint32_t kToEnd = 0xFFFFFFFF;

constexpr int kEventImportFail = 19;
constexpr int kEventImportSuccess = 21;

// The stream checksum of a whole file, the value CFG_SUM stores less 1.
uint32_t whole_file_sum(std::FILE *f) {
  uint32_t sum = 0;
  file_check_sum_tmp(f, kToEnd, &sum);
  return sum;
}

// Packs one configuration file of the staging directory and appends its CFG_SUM line;
// false when the packed file cannot be opened.
bool pack_entry(const std::string &name) {
  const std::string staging = rooted(kStaging);
  const bool packed = !std::string_view(name).ends_with("gzip");
  const std::string device_target = packed ? format_text(kCommand, "%s/%s.%s", kStaging, name.c_str(), "gzip")
                                           : format_text(kCommand, "%s/%s", kStaging, name.c_str());
  const std::string target = rooted(device_target);
  if (packed)
    run_command(format_text(kCommand, "tar %s %s %s/%s > /dev/null 2>&1", "-zcf", target.c_str(), staging.c_str(),
                            name.c_str()));
  auto file = syscommon::open_file(target, "r");
  if (!file) {
    std::printf("%s fopen error\n", device_target.c_str());
    return false;
  }
  const uint32_t sum = whole_file_sum(file.get());
  run_command(format_text(kCommand, "echo %s %x >> %s\n", target.c_str(), sum + 1, rooted(kSumList).c_str()));
  if (packed) run_command(format_text(kCommand, "rm -r %s/%s 2> /dev/null", staging.c_str(), name.c_str()));
  return true;
}

int parser_run(const char *options) {
  return run_command(format_text(kCommand, "%s %s", rooted(kParser).c_str(), options));
}

}  // namespace

extern "C" {

SYSCOMMON_API int make_configuration_file(void) {
  const std::string archive = rooted(kConfigArchive), staging = rooted(kStaging), listing = rooted(kListing);
  run_command(format_text(kCommand, "rm %s 2> /dev/null", archive.c_str()));
  run_command(format_text(kCommand, "rm -r %s 2> /dev/null", staging.c_str()));
  run_command(format_text(kCommand, "cp -rf %s %s 2> /dev/null", rooted(kConfigDir).c_str(), staging.c_str()));
  run_command(format_text(kCommand, "rm %s 2> /dev/null", rooted(kSumList).c_str()));
  run_command(format_text(kCommand, "ls %s > %s", staging.c_str(), listing.c_str()));
  auto names = syscommon::open_file(listing, "r");
  if (!names) {
    std::printf("%s fopen error\n", kListing);
    return -1;
  }
  char line[128];
  while (std::fgets(line, sizeof line, names.get()) != nullptr) {
    Ssys_stripspace(line);
    Ssys_stripCR(line);
    if (line[0] == '\0') continue;
    if (!pack_entry(line)) return -1;
  }
  run_command(format_text(kCommand, "cp -rf %s %s 2> /dev/null", rooted(kLogDir).c_str(), staging.c_str()));
  run_command(format_text(kCommand, "tar %s %s %s > /dev/null 2>&1", "-zcf", archive.c_str(), staging.c_str()));
  return 1;
}

SYSCOMMON_API int check_upconfig_checksum(void) {
  auto list = syscommon::open_file(rooted(kSumList), "r");
  if (!list) {
    std::printf("check_upconfig_checksum fopen error");
    return -1;
  }
  char line[256];
  while (std::fgets(line, sizeof line, list.get()) != nullptr) {
    char path[256];
    int used = 0;
    // A line without a path and a value ("%255s %x") cannot match anything.
    if (std::sscanf(line, "%255s %n", path, &used) != 1) return -1;
    char *stop = nullptr;
    const uint32_t stored = syscommon::device_strtoul(line + used, &stop, 16);
    if (stop == line + used) return -1;
    auto file = syscommon::open_file(path, "r");
    if (!file) {
      std::printf("%s fopen error\n", path);
      return -1;
    }
    // Only a regular file has a sum: a device such as /dev/zero would be read without end
    // and a FIFO would wait for a writer, so anything else counts as a sum that differs.
    struct stat st {};
    if (fstat(fileno(file.get()), &st) != 0 || !S_ISREG(st.st_mode)) return -1;
    if (whole_file_sum(file.get()) + 1 != stored) return -1;
  }
  return 1;
}

SYSCOMMON_API int config_Upgrade(int *error) {
  // Not rooted: the member names already carry the root the archive was packed under.
  syscommon::change_directory("/");
  run_command(format_text(kCommand, "tar %s %s > /dev/null 2>&1", "-zxf", rooted(kConfigArchive).c_str()));
  if (check_upconfig_checksum() != 1) {
    if (error != nullptr) *error = 1;
    return call_SendSyslog_to_log(kEventImportFail, 0, kConfigEventArgument);
  }
  return call_SendSyslog_to_log(kEventImportSuccess, 0, kConfigEventArgument);
}

SYSCOMMON_API int configCli_Upgrade(int *error) {
  run_command(format_text(kCommand, "rm %s > /dev/null 2>&1", rooted(kCliError).c_str()));
  const int status = syscommon::exit_status(
      parser_run(format_text(kCommand, "-i -c %s > /dev/null", rooted(kConfigArchive).c_str()).c_str()));
  if (status != 0 && error != nullptr) *error = 1;
  return status;
}

SYSCOMMON_API int configPartialCli_Upgrade(void) {
  if (parser_run(format_text(kCommand, "-z -c %s >/dev/null", rooted(kConfigArchive).c_str()).c_str()) != 0) {
    parser_run("-z -s -1 & > /dev/null");
    return -1;
  }
  parser_run("-z -s 5 & > /dev/null");
  return 0;
}

SYSCOMMON_API int make_log_file(void) {
  const std::string device_path = format_text(kCommand, "%s%s", kRamdisk, kLogExport);
  const std::string path = rooted(device_path);
  run_command(path);  // runs the export file as a command; does nothing useful, kept
  auto file = syscommon::open_file(path, "w+");
  if (!file) {
    std::printf("%s fopen error\n", device_path.c_str());
    return -1;
  }
  return 0;
}

SYSCOMMON_API int Get_PW(char *text, int /*size*/) {
  auto file = syscommon::open_file(rooted(kPasswordFile), "r");
  if (!file) {
    std::printf("fopen %s error\n", "/mnt/ramdisk/fwUpload");  // names the upload file, kept
    std::memcpy(text, "NULL", 5);
    return -1;
  }
  char token[128] = {};
  std::size_t n = 0;
  for (int c = std::fgetc(file.get()); c != EOF && n + 1 < sizeof token; c = std::fgetc(file.get())) {
    if (std::isalnum(c) == 0 && c != '=') break;
    token[n++] = static_cast<char>(c);
  }
  // The first four characters are the key prefix ("pwd=").
  const char *password = n > 4 ? token + 4 : "";
  const std::size_t length = std::strlen(password);
  std::memcpy(text, password, length + 1);
  return static_cast<int>(length);
}

}  // extern "C"
