# step: OpenVPN and certificates: a bundle made with openssl is split, checked and used for a client configuration
run() { echo "\$ syscommon $*"; "$SC" "$@"; }
pki="$SYSCOMMON_ROOT/tmp/pki"
mkdir -p "$pki"
(
  cd "$pki"
  openssl req -x509 -newkey rsa:2048 -nodes -keyout ca.key -out ca.crt -days 30 -subj /CN=DemoCA
  openssl req -newkey rsa:2048 -nodes -keyout gw.key -out gw.csr -subj "/C=US/O=Plant/CN=gateway"
  openssl x509 -req -in gw.csr -CA ca.crt -CAkey ca.key -CAcreateserial -out gw.crt -days 30
  openssl pkcs12 -export -inkey gw.key -in gw.crt -certfile ca.crt -passout pass:demo -out gw.p12
) >/dev/null 2>&1
echo "(made a CA, a gateway key, request and certificate, and a PKCS#12 bundle with openssl in $pki)"
run cert split "$pki/gw.p12" demo "$pki"
run cert subject "$pki/client.crt"
run cert check "$pki/gw.key" "$pki/gw.csr" "$pki/client.crt" | grep -v '^msg\|^ret\|md5 ='
cp "$pki/ca.crt" "$SYSCOMMON_ROOT/mnt/log1/openvpn/server_keys/ca.crt"
run vpn client-config "$pki/client.ovpn" --server 198.51.100.7 --comp yes
sed -n '1,14p' "$pki/client.ovpn"
echo "  ... (the CA certificate follows up to </ca>)"
echo 4242 >"$SYSCOMMON_ROOT/var/run/ovpnserver1.pid"
echo 1 >"$SYSCOMMON_ROOT/var/run/ovpnclient1.state"
head -c 20000 /dev/zero | tr '\0' 'x' | fold -w 99 >"$SYSCOMMON_ROOT/mnt/ramdisk/openvpn/ovpnserver1.log"
run vpn status
run vpn trim-logs
run vpn status
run ipsec proposal ike 5 2 --dh 2
run ipsec proposal ike 7 2 --keylen 128 --dh 14
run ipsec proposal esp 12 5 --keylen 256
