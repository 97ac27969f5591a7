# step: local accounts under the authority rules, and the time-zone list
run() { echo "\$ syscommon $*"; "$SC" "$@"; }
# A refused command is part of the demonstration: show its message and go on.
try() { run "$@" || echo "(refused, exit $?)"; }
run accounts add admin s3cret admin
run accounts add operator op-pass config
run accounts add guest guest1
try accounts add user pw admin
try accounts remove admin
try accounts set admin authority user
run accounts set guest authority user
run accounts set operator password n3w-pass
run accounts add admin2 pw2 admin
run accounts remove admin
run accounts list
run tz find +08:00
run tz find -05:00
run tz find cairo
try tz find +13:00
