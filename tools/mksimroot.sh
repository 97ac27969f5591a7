#!/bin/bash
# Lays out a simulated device root: the directories the library names by fixed path, the
# board's kernel entries and flash partitions, and the stand-ins for the device's other
# programs (tools/sim/).
# Usage: mksimroot.sh DIR
set -eu
root="$1"
mkdir -p "$root"
for d in bin dev etc tmp proc/tarn proc/tarnarm11 mnt/ramdisk/socket mnt/log1 mnt/log2 mnt/cfg2 \
         usr/quagga/bin lumenP/cli sbin var/run etc/openvpn/rsa mnt/log1/openvpn/server_keys \
         mnt/log1/openvpn/client_keys mnt/ramdisk/openvpn var/db var/sim sys/devices/platform/octeon-gpio; do
  mkdir -p "$root/$d"
done
: >"$root/proc/tarn/ifsInfo"
sim="$(cd "$(dirname "$0")" && pwd)/sim"
: >"$root/proc/tarnarm11/openvpn_tap"
install -m 755 "$sim/build-dh" "$root/etc/openvpn/rsa/build-dh"
install -m 644 "$sim/vars_kvr810" "$root/etc/openvpn/rsa/vars_kvr810"
install -m 755 "$sim/ethsw_diag" "$sim/rl2ctrl" "$root/bin/"

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
