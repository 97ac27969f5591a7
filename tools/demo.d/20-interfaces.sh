# step: the interface picture: WAN, VLAN interfaces, a bridge, a zone bridge, the port VLAN plan and a trunk
run() { echo "\$ syscommon $*"; "$SC" "$@"; }
run ifs set-wan 0 2 10.0.0.2/24 10.0.0.1
run ifs set-vlan 0 1 lan1 192.168.1.254/24 1/1-1/4
run ifs set-vlan 1 10 office 192.168.10.1/24 1/5-1/6,1/8
run ifs set-vlan 2 20 lab 192.168.20.1/24 1/7
run ifs set-port 1/1 1
run ifs set-port 1/2 1
run ifs set-port 1/3 1
run ifs set-port 1/4 1
run ifs set-port 1/5 10
run ifs set-port 1/6 10
run ifs set-port 1/7 20 1
run ifs set-port 1/8 10
run ifs set-port 1/9 2
run ifs set-port 1/10 2
run ifs set-trunk Trk1 1/5-1/6
run ifs set-bridge 0 8001 plant 172.16.0.1/16 on
run ifs set-zone 0 8100 cells 172.20.0.1/24 on 10:office-cell 20:lab-cell
run ifs show
run ifs lookup vid 10
run ifs lookup name LAN1
run ifs lookup name lan
run ifs lookup name BRG
run ifs lookup name eth0.20
run ifs lookup ip 192.168.20.1
echo "\$ cat \$SYSCOMMON_ROOT/proc/tarn/ifsInfo"
cat "$SYSCOMMON_ROOT/proc/tarn/ifsInfo"
