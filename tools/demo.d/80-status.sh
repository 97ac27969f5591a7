# step: network status through the stand-ins: real interfaces, the routing shell's routes and OSPF tables, a PIM-SM daemon, LLDP neighbours and a configuration diff
run() { echo "\$ syscommon $*"; "$SC" "$@"; }
# Real interfaces in the demo's own network namespace for the WAN (VLAN 2) and two VLANs.
for iface in "eth0.2 10.0.0.2/24" "eth0.1 192.168.1.254/24" "eth0.10 192.168.10.1/24"; do
  set -- $iface
  ip link add "$1" type veth peer name "p-$1"
  ip addr add "$2" broadcast + dev "$1"
  ip link set "$1" up
done
run if show
echo "(the routing shell stand-in answers from \$SYSCOMMON_ROOT/sim/vtysh/)"
run route show
run route show ospf
run ospf id
run ospf neighbors
run ospf db
run ospf interfaces
# A PIM-SM daemon stand-in answering from text records.
mkdir -p "$SYSCOMMON_ROOT/sim/pim"
printf '192.168.10.2 192\n' >"$SYSCOMMON_ROOT/sim/pim/bsr"
printf '224.0.0.0 240.0.0.0 192.168.10.2 192 150\n239.1.0.0 255.255.0.0 192.168.30.1 10 150\n' \
  >"$SYSCOMMON_ROOT/sim/pim/rp"
printf '192.168.10.2 eth0.10 3600 105 1\n' >"$SYSCOMMON_ROOT/sim/pim/neighbor"
"$MCASTD" pim "$SYSCOMMON_ROOT/sim/pim" >/dev/null &
mcastd=$!
for _ in $(seq 50); do [ -S "$SYSCOMMON_ROOT/mnt/ramdisk/UI2PIM" ] && break; sleep 0.1; done
run pim bsr
run pim rp
run pim neighbors
kill "$mcastd"
wait "$mcastd" 2>/dev/null || true
run lldp show
printf 'lan1 1 192.168.1.254/24\noffice 10 192.168.10.1/24\nlab 20 192.168.20.1/24\n' >"$SYSCOMMON_ROOT/tmp/vlan.old"
printf 'lan1 1 192.168.1.254/16\noffices 10 192.168.10.1/24\nlab 21 192.168.20.1/24\n' >"$SYSCOMMON_ROOT/tmp/vlan.new"
run diff vlan "$SYSCOMMON_ROOT/tmp/vlan.old" "$SYSCOMMON_ROOT/tmp/vlan.new"
