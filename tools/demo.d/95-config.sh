# step: configuration export and import with the real tar and gzip: the archive checked before unpacking and imported; one byte tampered, flagged and refused (event 19, read back from the log); SSH restarted; the archive backed up onto a USB stick
run() { echo "\$ syscommon $*"; "$SC" "$@"; }
try() { run "$@" || echo "(refused, exit $?)"; }
R="$SYSCOMMON_ROOT"
printf 'hostname=router\nvlan 1 name=lan\n' >"$R/mnt/cfg2/system.cfg"
printf 'zone=lan,wan\n' >"$R/mnt/cfg2/zone.cfg"
head -c 300 /dev/urandom | gzip >"$R/mnt/cfg2/certs.gzip"
echo "booted" >"$R/mnt/log1/boot.log"
run cfg export
run cfg check
run cfg import
echo "-- one byte of the packed zone.cfg changed, the archive packed again from /"
staging="$R/mnt/ramdisk/cfg_tmp"
printf 'X' | dd of="$staging/zone.cfg.gzip" bs=1 seek=30 conv=notrunc status=none
(cd / && tar -czf "$R/mnt/ramdisk/TARN_CFG.ini" "${staging#/}")
try cfg check
try cfg import
sleep 0.3
echo "-- the event log, newest first:"
"$SC" log show system | head -2
# With no sshd running, kill prints its usage on standard error: dropped here.
run ssh set on 2222 10 2>/dev/null
echo "sshd stand-in started with: $(cat "$R/tmp/sshd.args")"
echo "-- a USB stick (a directory the mount stand-in binds) and eth0 ending in 01:02:03"
mkdir -p "$R/var/sim/usb/sda1"
ip link add veth-usb type veth peer name eth0 && ip link set eth0 address 00:90:e8:01:02:03
run usb attach
run usb backup | grep -v '^$'
run usb detach
echo "on the stick: $(cd "$R/var/sim/usb/sda1" && find . -type f | sort | tr '\n' ' ')"
