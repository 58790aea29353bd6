#!/usr/bin/env bash
# Echoes across a router, in three network namespaces made here and removed at the
# end: client - router - server. Checks both socket kinds against a real router's
# "time exceeded", an unreachable network, a silent server and a plain answer;
# then Count Hops through the main window on the server one router away.
# The addresses exist only inside these namespaces.
set -u
probe=$1
hops_probe=${2:-}
skip() { echo "SKIP: $*"; exit 77; }
[ "$(id -u)" -eq 0 ] || skip "making network namespaces needs root"
command -v ip >/dev/null || skip "iproute2 is not installed"

tag=pbx$$
c=$tag-client r=$tag-router s=$tag-server
cleanup() { for ns in $c $r $s; do ip netns del "$ns" 2>/dev/null; done; }
trap cleanup EXIT
for ns in $c $r $s; do ip netns add "$ns" || skip "network namespaces are not allowed here"; done
within() { local ns=$1; shift; ip netns exec "$ns" "$@"; }
ip link add "$tag-c" netns "$c" type veth peer name "$tag-rc" netns "$r" || skip "veth links are not allowed here"
ip link add "$tag-s" netns "$s" type veth peer name "$tag-rs" netns "$r"
within $c ip addr add 198.18.1.2/24 dev "$tag-c"
within $r ip addr add 198.18.1.1/24 dev "$tag-rc"
within $r ip addr add 198.18.2.1/24 dev "$tag-rs"
within $s ip addr add 198.18.2.2/24 dev "$tag-s"
for pair in "$c $tag-c" "$r $tag-rc" "$r $tag-rs" "$s $tag-s"; do set -- $pair; within "$1" ip link set "$2" up; done
for ns in $c $r $s; do within "$ns" ip link set lo up; done
within $c ip route add default via 198.18.1.1
within $s ip route add default via 198.18.2.1
within $r sysctl -qw net.ipv4.ip_forward=1

failures=0
expect() {  # expect WANTED DESTINATION TTL
    local got
    got=$(within $c "$probe" "$2" "$3" 1000)
    if [ "$got" = "$1" ]; then echo "ok   $got"; else echo "FAIL wanted '$1', got '$got'"; failures=$((failures + 1)); fi
}
for kind in ping raw; do
    if [ $kind = ping ]; then range="0 0"; else range="1 0"; fi
    within $c sysctl -qw net.ipv4.ping_group_range="$range"
    within $s sysctl -qw net.ipv4.icmp_echo_ignore_all=0
    expect "1 0 198.18.2.2 $kind" 198.18.2.2 64
    expect "1 11013 198.18.1.1 $kind" 198.18.2.2 1
    expect "1 11002 198.18.1.1 $kind" 198.18.3.3 64
    expect "0 11018 0.0.0.0 $kind" 0.0.0.0 64
    within $s sysctl -qw net.ipv4.icmp_echo_ignore_all=1
    expect "0 11010 0.0.0.0 $kind" 198.18.2.2 64
    within $s sysctl -qw net.ipv4.icmp_echo_ignore_all=0
    if [ -n "$hops_probe" ]; then
        got=$(within $c "$hops_probe" 198.18.2.2 2>/dev/null | head -n 3 | sed 's/time=[0-9]* ms/time=T ms/')
        wanted=$(printf '%s\n' "hops=2" "Trace Route: Hop 1 198.18.1.1 time=T ms." "Trace Route: Hop 2 198.18.2.2 time=T ms.")
        if [ "$got" = "$wanted" ]; then echo "ok   count hops $kind: 2, router first";
        else echo "FAIL count hops $kind: wanted '$wanted', got '$got'"; failures=$((failures + 1)); fi
    fi
done
[ $failures -eq 0 ]
