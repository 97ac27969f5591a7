#!/bin/bash
# Lays out a simulated device root: the directories the library names by fixed path, and
# the stand-ins for the device's other programs (tools/sim/).
# Usage: mksimroot.sh DIR
set -eu
root="$1"
mkdir -p "$root"
for d in bin dev etc tmp proc/tarn proc/tarnarm11 mnt/ramdisk/socket mnt/log1 mnt/log2 mnt/cfg2 \
         usr/quagga/bin lumenP/cli sbin var/run etc/openvpn/rsa mnt/log1/openvpn/server_keys \
         mnt/log1/openvpn/client_keys mnt/ramdisk/openvpn; do
  mkdir -p "$root/$d"
done
: >"$root/proc/tarn/ifsInfo"
sim="$(cd "$(dirname "$0")" && pwd)/sim"
: >"$root/proc/tarnarm11/openvpn_tap"
install -m 755 "$sim/build-dh" "$root/etc/openvpn/rsa/build-dh"
install -m 644 "$sim/vars_kvr810" "$root/etc/openvpn/rsa/vars_kvr810"
