#!/bin/bash
# Lays out a simulated device root: the directories the library names by fixed path, the
# board's kernel entries and flash partitions, and the stand-ins for the device's own
# programs (tools/sim/; the built ones when the build folder is given).
# Usage: mksimroot.sh DIR [BUILD_DIR]
set -eu
root="$1"
build="${2:-}"
here=$(cd "$(dirname "$0")" && pwd)
mkdir -p "$root"
for d in bin dev etc tmp proc/tarn proc/tarnarm11 mnt/ramdisk/socket mnt/ramdisk/vrrp mnt/log1 mnt/log2 \
         mnt/cfg2 usr/quagga/bin lumenP/cli sbin var/run etc/openvpn/rsa mnt/log1/openvpn/server_keys \
         mnt/log1/openvpn/client_keys mnt/ramdisk/openvpn sim/vtysh sim/ifconfig var/db var/sim \
         sys/devices/platform/octeon-gpio lumenP/WebServer proc/bus/usb/001 var/sim/usb; do
  mkdir -p "$root/$d"
done
: >"$root/proc/tarn/ifsInfo"
echo 1 >"$root/mnt/log2/KVR900_BOOTUP_LOG"
# The log agent by bare name (on PATH) and by its full path; conntrack by bare name.
# A cross build's stand-in is started through a script that runs it under the emulator.
if [ -n "$build" ] && [ -x "$build/tools/sim/SendSyslog" ]; then
  for dir in bin sbin; do
    if [ -f "$build/run-prefix" ]; then
      printf '#!/bin/sh\nexec %s %s "$@"\n' "$(cat "$build/run-prefix")" "$build/tools/sim/SendSyslog" \
        >"$root/$dir/SendSyslog"
      chmod 755 "$root/$dir/SendSyslog"
    else
      cp "$build/tools/sim/SendSyslog" "$root/$dir/SendSyslog"
    fi
  done
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
install -m 755 "$here/sim/ethsw_diag" "$here/sim/rl2ctrl" "$root/bin/"
# Configuration parser, SSH server and the USB stick's fdisk/mount/umount.
install -m 755 "$here/sim/tarn_parser" "$root/lumenP/cli/tarn_parser"
install -m 755 "$here/sim/sshd" "$root/sbin/sshd"
install -m 755 "$here/sim/fdisk" "$here/sim/mount" "$here/sim/umount" "$root/bin/"

# Identity EEPROM (1 KiB, erased cells read 0xFF): serial number 1234567 at 32 (little-endian),
# burn-in minutes 2880 at 64, end-of-test flag 1 at 80, serial text at 624.
eeprom="$root/proc/tarn/eeprom"
head -c 1024 /dev/zero | tr '\0' '\377' >"$eeprom"
put() { printf "$2" | dd of="$eeprom" bs=1 seek="$1" conv=notrunc status=none; }
put 32 '\x87\xd6\x12\x00'
put 64 '\x40\x0b\x00\x00'
put 80 '\x01'
put 624 'KV9A2611042'

# GPIO inputs (none active), hardware version 2 (the file does not start with '0'), CPU clock.
echo 0 >"$root/proc/tarn/gpio_get"
: >"$root/proc/tarn/gpio_set"
: >"$root/proc/tarn/gpio_clr"
: >"$root/proc/tarn/wd_reboot"
echo 1 >"$root/proc/tarn/hw_version"
echo 500 >"$root/proc/tarnarm11/cpu_freq"

# Flash partitions as sparse files: boot loader (1 MiB, of which 0xA0000 is the loader),
# kernel (4 MiB), root filesystem (8 MiB).
truncate -s 1M "$root/dev/mtd0"
truncate -s 4M "$root/dev/mtd1"
truncate -s 8M "$root/dev/mtd2"
