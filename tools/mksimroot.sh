#!/bin/bash
# Lays out a simulated device root: the directories the library names by fixed path and
# the stand-ins for the device's own programs (tools/sim/; the built ones when the build
# folder is given).
# Usage: mksimroot.sh DIR [BUILD_DIR]
set -eu
root="$1"
build="${2:-}"
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$root"
for d in bin dev etc tmp proc/tarn proc/tarnarm11 mnt/ramdisk/socket mnt/ramdisk/vrrp mnt/log1 mnt/log2 \
         mnt/cfg2 usr/quagga/bin lumenP/cli sbin var/run etc/openvpn/rsa mnt/log1/openvpn/server_keys \
         mnt/log1/openvpn/client_keys mnt/ramdisk/openvpn sim/vtysh sim/ifconfig; do
  mkdir -p "$root/$d"
done
: >"$root/proc/tarn/ifsInfo"
echo 1 >"$root/mnt/log2/KVR900_BOOTUP_LOG"
# The log agent by bare name (on PATH) and by its full path; conntrack by bare name.
if [ -n "$build" ] && [ -x "$build/tools/sim/SendSyslog" ]; then
  cp "$build/tools/sim/SendSyslog" "$root/bin/SendSyslog"
  cp "$build/tools/sim/SendSyslog" "$root/sbin/SendSyslog"
fi
cp "$here/sim/conntrack" "$root/bin/conntrack"
: >"$root/proc/tarnarm11/openvpn_tap"
install -m 755 "$here/sim/build-dh" "$root/etc/openvpn/rsa/build-dh"
install -m 644 "$here/sim/vars_kvr810" "$root/etc/openvpn/rsa/vars_kvr810"
# Routing shell and ifconfig stand-ins, answering from files a test or the demo may replace.
install -m 755 "$here/sim/vtysh" "$root/usr/quagga/bin/vtysh"
install -m 755 "$here/sim/ifconfig" "$root/bin/ifconfig"
for f in route ospf ospf-neighbor ospf-interface ospf-db; do cp "$here/sim/data/$f" "$root/sim/vtysh/$f"; done
cp "$here/sim/data/ppp0" "$root/sim/ifconfig/ppp0"
# The LLDP daemon's neighbour file and a VRRP daemon's state file (router 1 on eth0.1: 2).
cp "$here/sim/data/lldpinfo2" "$root/mnt/ramdisk/lldpinfo2"
echo 2 >"$root/mnt/ramdisk/vrrp/eth0.1_1"
