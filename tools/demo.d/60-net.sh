# step: local-socket messaging: datagrams for the main daemon seen on its wexe socket
run() { echo "\$ syscommon $*"; "$SC" "$@"; }
echo "\$ syscommon net listen socket/lumen168-wexe-socket --count 2 &"
"$SC" net listen socket/lumen168-wexe-socket --count 2 &
listener=$!
for _ in $(seq 50); do
  [ -S "$SYSCOMMON_ROOT/mnt/ramdisk/socket/lumen168-wexe-socket" ] && break
  sleep 0.1
done
run net send socket/lumen168-socket --type 1 --cmd 137 --hex 0102030405060708 --record-size 4
run net send socket/lumen168-socket --type 7 --cmd 20 --offset 104 --seq 9 --hex 00000001
wait "$listener"
