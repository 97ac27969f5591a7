#!/bin/bash
# Runs every libFuzzer program of a fuzz build for a bounded time, each isolated by the
# test launcher, and prints executions and findings per target. New inputs go to a scratch
# corpus (the committed seeds are only read); findings are kept in BUILD/fuzz-findings.
# Usage: run.sh BUILD [SECONDS [TARGET...]]   (all targets when none is named)
# Exit status 1 when anything was found.
set -u
build=$(cd "$1" && pwd)
seconds="${2:-60}"
shift $(($# < 2 ? $# : 2))
here=$(cd "$(dirname "$0")" && pwd)
# Simulated roots in memory: targets that write their input where a reader looks run faster.
if [ -z "${TMPDIR:-}" ] && [ -w /dev/shm ]; then export TMPDIR=/dev/shm; fi
findings="$build/fuzz-findings"
mkdir -p "$findings"
total_found=0
printf '%-18s %14s %9s\n' target executions findings
bins=()
if [ $# -gt 0 ]; then
  for name in "$@"; do bins+=("$build/fuzz/fuzz_$name"); done
else
  bins=("$build"/fuzz/fuzz_*)
fi
for bin in "${bins[@]}"; do
  [ -x "$bin" ] || { echo "no fuzz target ${bin##*/}" >&2; total_found=$((total_found + 1)); continue; }
  name=${bin##*/fuzz_}
  scratch="$build/fuzz-corpus/$name"
  mkdir -p "$scratch" "$findings/$name"
  log="$build/fuzz-$name.log"
  # Bounded twice: libFuzzer's own total time, and a hard stop a minute beyond it.
  timeout -k 10 $((seconds + 60)) "$here/../tests/launch.sh" "$bin" -max_total_time="$seconds" \
    -timeout=10 -rss_limit_mb=2048 -close_fd_mask=1 -print_final_stats=1 -artifact_prefix="$findings/$name/" \
    "$scratch" "$here/corpus/$name" >"$log" 2>&1
  execs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n1)
  found=$(find "$findings/$name" -type f | wc -l)
  total_found=$((total_found + found))
  printf '%-18s %14s %9s\n' "$name" "${execs:-?}" "$found"
  [ "$found" = 0 ] || echo "  see $log and $findings/$name/"
done
[ "$total_found" = 0 ]
