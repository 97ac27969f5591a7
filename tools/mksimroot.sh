#!/bin/bash
# Lays out a simulated device root: the directories the library names by fixed path, and
# the stand-ins for the device's other programs with their sample data (tools/sim/).
# Usage: mksimroot.sh DIR
set -eu
root="$1"
mkdir -p "$root"
for d in bin dev etc tmp proc/tarn proc/tarnarm11 mnt/ramdisk/socket mnt/ramdisk/vrrp mnt/log1 mnt/log2 \
         mnt/cfg2 usr/quagga/bin lumenP/cli sbin var/run etc/openvpn/rsa mnt/log1/openvpn/server_keys \
         mnt/log1/openvpn/client_keys mnt/ramdisk/openvpn sim/vtysh sim/ifconfig; do
  mkdir -p "$root/$d"
done
: >"$root/proc/tarn/ifsInfo"
sim="$(cd "$(dirname "$0")" && pwd)/sim"
: >"$root/proc/tarnarm11/openvpn_tap"
install -m 755 "$sim/build-dh" "$root/etc/openvpn/rsa/build-dh"
install -m 644 "$sim/vars_kvr810" "$root/etc/openvpn/rsa/vars_kvr810"
# Routing shell and ifconfig stand-ins, answering from files a test or the demo may replace.
install -m 755 "$sim/vtysh" "$root/usr/quagga/bin/vtysh"
install -m 755 "$sim/ifconfig" "$root/bin/ifconfig"
for f in route ospf ospf-neighbor ospf-interface ospf-db; do cp "$sim/data/$f" "$root/sim/vtysh/$f"; done
cp "$sim/data/ppp0" "$root/sim/ifconfig/ppp0"
# The LLDP daemon's neighbour file and a VRRP daemon's state file (router 1 on eth0.1: 2).
cp "$sim/data/lldpinfo2" "$root/mnt/ramdisk/lldpinfo2"
echo 2 >"$root/mnt/ramdisk/vrrp/eth0.1_1"
