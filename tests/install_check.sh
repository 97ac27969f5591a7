#!/bin/bash
# Installs the build into a scratch prefix and builds a C program the way a management
# program does: through pkg-config, against the installed headers and shared object.
set -euo pipefail
build="$1"
prefix=$(mktemp -d)
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
pc_dir=$(dirname "$(find "$prefix" -name syscommon.pc | head -n1)")
export PKG_CONFIG_PATH="$pc_dir"
cat >"$prefix/prog.c" <<'C'
#include <syscommon/platform.h>
#include <syscommon/shm.h>
int main(void) {
  int module, port;
  return Ssys_UI_port2MdlPort(2, &module, &port) == 1 && port == 2 ? 0 : 1;
}
C
cc -std=c11 -Wall -Werror "$prefix/prog.c" -o "$prefix/prog" $(pkg-config --cflags --libs syscommon)
libdir=$(pkg-config --variable=libdir syscommon)
LD_LIBRARY_PATH="$libdir" "$prefix/prog"
readelf -d "$libdir/libsyscommon.so" | grep -q 'SONAME.*libsyscommon.so.0'
# Only the library's own C names are exported: no C++ symbols leak out.
if nm -D --defined-only "$libdir/libsyscommon.so" | awk '{print $3}' | grep -q '^_Z'; then
  echo "C++ symbols exported:" >&2
  nm -D --defined-only "$libdir/libsyscommon.so" | awk '{print $3}' | grep '^_Z' | head >&2
  exit 1
fi
echo "1 passed, 0 failed"
