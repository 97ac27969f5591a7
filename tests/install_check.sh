#!/bin/bash
# Installs the build into a scratch root and builds a C program the way a management
# program does: through pkg-config, against the installed headers and shared object.
#   install_check.sh BUILD            `cmake --install` into a scratch prefix
#   install_check.sh BUILD package    the Debian packages of `make package`, unpacked
#                                     with `dpkg -x` into a scratch root
# CC, NM and READELF name the build's tools (default cc, nm, readelf); a cross build's
# programs run under the emulator its run-prefix file names.
set -euo pipefail
build="$1"
mode="${2:-install}"
run=()
[ -f "$build/run-prefix" ] && read -r -a run <"$build/run-prefix"
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT
if [ "$mode" = package ]; then
  (cd "$build" && cpack -G DEB -B "$scratch/debs" >/dev/null)
  for want in libsyscommon0 libsyscommon-dev syscommon-tools; do
    deb=$(ls "$scratch"/debs/${want}_*.deb)
    dpkg -x "$deb" "$scratch/root"
  done
  # Each package holds its own part and nothing of the others'.
  lib=$(dpkg-deb -c "$scratch"/debs/libsyscommon0_*.deb)
  dev=$(dpkg-deb -c "$scratch"/debs/libsyscommon-dev_*.deb)
  grep -q 'libsyscommon\.so\.0 ->' <<<"$lib"
  if grep -q -e '\.h$' -e '\.pc$' -e 'libsyscommon\.so ->' <<<"$lib"; then
    echo "libsyscommon0 holds development files" >&2
    exit 1
  fi
  grep -q 'include/syscommon/shm\.h$' <<<"$dev"
  grep -q 'pkgconfig/syscommon\.pc$' <<<"$dev"
  dpkg-deb -f "$scratch"/debs/libsyscommon-dev_*.deb Depends | grep -q libsyscommon0
  "${run[@]}" "$scratch/root/usr/bin/syscommon" --help >/dev/null
  prefix="$scratch/root/usr"
else
  prefix="$scratch"
  cmake --install "$build" --prefix "$prefix" >/dev/null
fi
pc_dir=$(dirname "$(find "$prefix" -name syscommon.pc | head -n1)")
export PKG_CONFIG_PATH="$pc_dir"
cat >"$scratch/prog.c" <<'C'
#include <syscommon/platform.h>
#include <syscommon/shm.h>
int main(void) {
  int module, port;
  return Ssys_UI_port2MdlPort(2, &module, &port) == 1 && port == 2 ? 0 : 1;
}
C
"${CC:-cc}" -std=c11 -Wall -Werror "$scratch/prog.c" -o "$scratch/prog" $(pkg-config --cflags --libs syscommon)
libdir=$(pkg-config --variable=libdir syscommon)
LD_LIBRARY_PATH="$libdir" "${run[@]}" "$scratch/prog"
"${READELF:-readelf}" -d "$libdir/libsyscommon.so" | grep -q 'SONAME.*libsyscommon.so.0'
# Only the library's own C names are exported: no C++ symbols leak out.
if "${NM:-nm}" -D --defined-only "$libdir/libsyscommon.so" | awk '{print $3}' | grep -q '^_Z'; then
  echo "C++ symbols exported:" >&2
  "${NM:-nm}" -D --defined-only "$libdir/libsyscommon.so" | awk '{print $3}' | grep '^_Z' | head >&2
  exit 1
fi
echo "1 passed, 0 failed"
