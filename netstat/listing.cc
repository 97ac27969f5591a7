// Routing-shell listings saved to a scratch file and counted with wc, as the table readers
// size their arrays by the line count before reading.
#include <cstdio>

#include "netstat/internal.h"
#include "util/format.h"

namespace syscommon::netstat {

std::string vtysh_command(const std::string &show) { return rooted("/usr/quagga/bin/vtysh") + " -c \"" + show + "\""; }

SavedListing save_listing(const std::string &command, const char *tmp, const char *len) {
  const std::string tmp_path = rooted(tmp), len_path = rooted(len);
  run_command(command + " > " + tmp_path);
  run_command(format_text(512, "wc -l %s > %s", tmp_path.c_str(), len_path.c_str()));
  SavedListing out;
  if (File count = open_file(len_path, "r"); !count) {
    out.lines = -1;
  } else if (std::fscanf(count.get(), "%d", &out.lines) != 1) {
    out.lines = -2;
  }
  if (out.lines >= 0) out.file = open_file(tmp_path, "r");
  return out;
}

}  // namespace syscommon::netstat
