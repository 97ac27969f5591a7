# step: events reported through the log agent stand-in, read back merged and rendered, exported
run() { echo "\$ syscommon $*"; "$SC" "$@"; }
run log send 0 0 6
run log send 13 35 6 admin
run log send 12 36 4 guest
run log send 9 14 5
run log send 30 101 4
# The VPN, firewall and kernel logs come from other agents; two lines of each, as written.
printf '%s\n' '[tunnel1 200102] 0000000a1e1f0c05020072' '[tunnel1 300304] 0000000005200c05020072' \
  >"$SYSCOMMON_ROOT/mnt/log2/vpn_log"
printf '%s\n' \
  'lv[4]id[49445]idx[004]tar[2]proto[0101]ip[6401a8c0]mac[001122334455]port[0d05]ifs[0001]ip[0100000a]mac[aabbccddeeff]port[01bb]ifs[0002]sec[01]min[02]hour[0c]day[05]mon[02]year[0072]flash[1]syslog[0]trap[1]repeat[0003]' \
  'lv[2]id[494fa]idx[000]tar[2]proto[0101]ip[0200000a]mac[001122334466]port[0400]ifs[0001]ip[0100000a]mac[aabbccddeeff]port[0016]ifs[0002]sec[09]min[02]hour[0c]day[05]mon[02]year[0072]flash[0]syslog[0]trap[0]repeat[0000]' \
  >"$SYSCOMMON_ROOT/mnt/log2/firewall_log"
printf '%s\n' '2014-03-05 12:40:00 warning [router] tarn_kernel: kernel: eth1: link down' \
  '2014-03-05 12:40:07 info [router] tarn_kernel: kernel: eth1: link up' >"$SYSCOMMON_ROOT/mnt/log2/kernel_log"
run log show
run log show system --level 0-4
run log export
echo "\$ tar -tzf $SYSCOMMON_ROOT/mnt/ramdisk/TARN_All_LOG.tar.gz"
tar -tzf "$SYSCOMMON_ROOT/mnt/ramdisk/TARN_All_LOG.tar.gz" | sed 's/^/  /'
echo "\$ head -4 TARN_LOG.ini"
head -4 "$SYSCOMMON_ROOT/mnt/ramdisk/TARN_LOG.ini"
