# step: the road of a web login (lockout, password, session, idle ageing) and a console login in the login records
run() { echo "\$ syscommon $*"; "$SC" "$@"; }
# A refused command is part of the demonstration: show its message and go on.
try() { run "$@" || echo "(refused, exit $?)"; }
# The library's own diagnostic lines start with a carriage return, as on the device.
crlf() { tr -d '\r'; }
run accounts add alice Alice_pw1 config
run lockout config on 3 5
run password policy --min 8 --rules on --digit on --case on --special on
echo "-- three wrong passwords for alice, then the right one"
for _ in 1 2 3; do run lockout attempt alice fail; done
try lockout check alice
run lockout show alice
run lockout clear alice
run lockout check alice
try password check 'Alice pw1'
run password check 'Alice_pw1'
echo "-- the login succeeds: a web session is opened and each request verifies it"
run lockout attempt alice ok
run session max web 2 | crlf | grep -v -e '^Init csrf' -e '^$'
run session open 305419896 --user 2 --protocol 1 --login-token 48879 | crlf
run session verify 305419896
run session list
echo "-- 31 s without a request: the next verify ages the session out"
sleep 31
try session verify 305419896 | crlf
run session list
echo "-- the login result reported to the log agent, read back and rendered"
run log login 13 17 alice 4
run log show system | grep -e alice -e '^date' | head -3
echo "-- a console login, recorded in the login records kept by the main daemon (stand-in)"
echo "\$ syscommon loginrecord serve --seconds 60 &"
"$SC" loginrecord serve --seconds 60 >"$SYSCOMMON_ROOT/mgmtd.out" &
mgmtd=$!
for _ in $(seq 50); do
  [ -S "$SYSCOMMON_ROOT/mnt/ramdisk/socket/lumen168-wexe-socket" ] && break
  sleep 0.1
done
run session max console 2
run session console-open 1 alice 7001 | crlf
run loginrecord record alice fail ttyS0
run loginrecord record alice ok ttyS0
run session list
run loginrecord show alice
kill "$mgmtd"
wait "$mgmtd"
echo "main daemon stand-in stopped; what it served:"
sed 's/^/  /' "$SYSCOMMON_ROOT/mgmtd.out"
