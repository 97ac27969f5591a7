# step: event texts rendered from event and reason ids, as the log pages show them
run() { echo "\$ syscommon $*"; "$SC" "$@"; }
run event render 0 0
run event render 3 31
run event render 13 36 admin
run event render 12 35
run event render 37 110 1/3
run event render 34 105 0309
run event render 42 114 "5 192.168.1.10:5000 -> 10.0.0.1:80"
run event render 42 116 VLAN
run event render 6 13
run event render 22 1 || echo "(exit status $?)"
echo "\$ syscommon event tables   (first lines)"
"$SC" event tables | sed -n '1,8p'
