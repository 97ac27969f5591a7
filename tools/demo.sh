#!/bin/bash
# The demo: a fresh simulated device under the build folder, a private IPC namespace, and
# the steps of tools/demo.d/ run in order (each publishes some state through the library
# and shows it with the `syscommon` tool).
# Usage: tools/demo.sh BUILD_DIR
set -euo pipefail
build=$(cd "${1:-build}" && pwd)
here=$(cd "$(dirname "$0")" && pwd)

if [ -z "${SYSCOMMON_DEMO_INSIDE:-}" ]; then
  root="$build/demo-root"
  rm -rf "$root"
  "$here/mksimroot.sh" "$root" "$build"
  export SYSCOMMON_ROOT="$root" SYSCOMMON_TRACE="$root/trace" SYSCOMMON_DEMO_INSIDE=1
  export PATH="$root/bin:$PATH"
  : >"$SYSCOMMON_TRACE"
  echo "simulated device root: $root"
  if [ "$(id -u)" = 0 ] && unshare --ipc --pid --net --mount --fork --mount-proc true 2>/dev/null; then
    exec unshare --ipc --pid --net --mount --fork --mount-proc "$0" "$build"
  fi
  echo "demo: private namespaces unavailable (need root and unshare); not touching host IPC" >&2
  exit 1
fi

# The tool and the multicast stand-in; a cross build's run under the emulator (run/).
if [ -f "$build/run-prefix" ]; then
  export SC="$build/run/syscommon_tool" MCASTD="$build/run/syscommon_sim_mcastd"
else
  export SC="$build/tools/syscommon" MCASTD="$build/tools/syscommon-sim-mcastd"
fi
for step in "$here"/demo.d/*.sh; do
  echo
  echo "=== $(sed -n 's/^# step: //p' "$step")"
  # shellcheck source=/dev/null
  . "$step"
done
echo
echo "commands the library handed to the shell (SYSCOMMON_TRACE):"
sed 's/^/  /' "$SYSCOMMON_TRACE"
