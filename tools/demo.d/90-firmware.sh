# step: a firmware upload on the simulated flash: the services stopped, the image checked and written, read back, and the unit restarted through the watchdog
run() { echo "\$ syscommon $*"; "$SC" "$@"; }
R="$SYSCOMMON_ROOT"
# The device's ps (busybox) lists every process of the namespace, PID in the first five
# columns: the services below are found and stopped by name.
ln -sf "$(command -v busybox)" "$R/bin/ps"
services() { "$R/bin/ps" | grep -cE '(snmpd|dhcpd|lldpd) 600'; }
for s in snmpd dhcpd lldpd; do cp /bin/sleep "$R/bin/$s"; ("$R/bin/$s" 600 &); done
sleep 0.2
echo "services running: $(services)"
head -c 3000000 /dev/urandom >"$R/tmp/kernel.bin"
head -c 1500001 /dev/urandom >"$R/tmp/rootfs.bin"
run hw show
run fw version
run fw pack "$R/tmp/kernel.bin" "$R/tmp/rootfs.bin" "$R/mnt/ramdisk/fwUpload" --id 1264990512 --version 5.1.2.0 --built 26112301
run fw check "$R/mnt/ramdisk/fwUpload" --id 7 || echo "(refused, as it should be: exit status $?)"
run fw write "$R/mnt/ramdisk/fwUpload" --id 1264990512 | fold -w 120
echo "services still running: $(services)"
run fw version
echo "warm-start cause recorded: $(cat "$R/mnt/log2/WARM_START_LOG")"
echo "watchdog entry: $(cat "$R/proc/tarn/wd_reboot")"
