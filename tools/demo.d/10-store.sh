# step: the shared settings store, initialised and given a few values
run() { echo "\$ syscommon $*"; "$SC" "$@"; }
run shm init
run shm set timezone 46
run shm set protocol 2
run shm ring 1 3 4
run shm set led-master 5
run shm set led-coupling 2
run shm set web-max-users 4
run shm set con-max-users 2
run shm set sys-timeout 300
run shm set agent-state 1
run shm mcast-add 0 01:00:5e:00:00:01
run shm mcast-add 10 01:00:5e:7f:ff:fa
run shm show
