#!/bin/bash
# Lays out a simulated device root: the directories the library names by fixed path.
# Usage: mksimroot.sh DIR
set -eu
root="$1"
mkdir -p "$root"
for d in bin dev etc tmp proc/tarn proc/tarnarm11 mnt/ramdisk/socket mnt/log1 mnt/log2 mnt/cfg2 \
         usr/quagga/bin lumenP/cli sbin var/run; do
  mkdir -p "$root/$d"
done
: >"$root/proc/tarn/ifsInfo"
