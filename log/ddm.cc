// Transceiver (digital diagnostics) warning texts.
#include <cstdio>

#include "syscommon/log.h"

SYSCOMMON_API int get_ddm_msg(const char *code, char *out, size_t size) {
  if (code == nullptr) return 0;
  int kind = 0;
  int index = 0;
  if (std::sscanf(code, "%02d%02d", &kind, &index) < 1) return 0;
  if (index > 7) index -= 8;  // the second module's ports are named like the first's
  const int port = index + 1;
  switch (kind) {
    case 2: return std::snprintf(out, size, "Port G%d low Tx power warning!", port);
    case 3: return std::snprintf(out, size, "Port G%d low Rx power warning!", port);
    case 4: return std::snprintf(out, size, "Port G%d high Tx power warning!", port);
    case 5: return std::snprintf(out, size, "Port G%d high temperature warning!", port);
    default: return 0;
  }
}
