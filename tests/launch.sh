#!/bin/bash
# Runs one test binary isolated from the host: private IPC, PID, network and mount
# namespaces, a fresh simulated device root in SYSCOMMON_ROOT, a trace file in
# SYSCOMMON_TRACE and the root's bin/ first on PATH for fake programs.
# Without the namespaces the binary still runs, with SYSCOMMON_ISOLATED unset, and every
# test that would touch IPC objects, processes or network settings skips.
set -u
bin="$1"
shift
here=$(cd "$(dirname "$0")" && pwd)
root=$(mktemp -d "${TMPDIR:-/tmp}/syscommon-root.XXXXXX")
trap 'rm -rf "$root"' EXIT
# The build folder holding the binary (the stand-ins are built there too).
build=$(cd "$(dirname "$bin")" && pwd)
while [ "$build" != / ] && [ ! -f "$build/CMakeCache.txt" ]; do build=$(dirname "$build"); done
"$here/../tools/mksimroot.sh" "$root" "$build" || exit 1
# A cross build's binaries run under the emulator its run-prefix file names.
run=()
[ -f "$build/run-prefix" ] && read -r -a run <"$build/run-prefix"

export SYSCOMMON_ROOT="$root"
export SYSCOMMON_TRACE="$root/trace"
export PATH="$root/bin:$PATH"
: >"$SYSCOMMON_TRACE"

if [ "$(id -u)" = 0 ] && unshare --ipc --pid --net --mount --fork --mount-proc true 2>/dev/null; then
  export SYSCOMMON_ISOLATED=1
  unshare --ipc --pid --net --mount --fork --mount-proc \
    /bin/sh -c 'ip link set lo up 2>/dev/null; exec "$0" "$@"' "${run[@]}" "$bin" "$@"
else
  echo "launch.sh: private namespaces unavailable (need root and unshare); isolated tests skip" >&2
  unset SYSCOMMON_ISOLATED
  "${run[@]}" "$bin" "$@"
fi
