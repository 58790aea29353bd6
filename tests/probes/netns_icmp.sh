#!/usr/bin/env bash
# Echoes across the routed lab of hoplab.sh (made here, removed at the end). Checks
# both socket kinds against a real router's "time exceeded", an unreachable network,
# a silent server and a plain answer; then Count Hops through the main window on the
# server three hops away. The addresses exist only inside the lab's namespaces.
set -u
probe=$1
hops_probe=${2:-}
lab=$(dirname "$0")/hoplab.sh
tag=pbx$$
trap '"$lab" down $tag' EXIT
"$lab" up $tag 1 || exit $?
within() { local ns=$tag-$1; shift; ip netns exec "$ns" "$@"; }

failures=0
expect() {  # expect WANTED DESTINATION TTL
    local got
    got=$(within c "$probe" "$2" "$3" 1000)
    if [ "$got" = "$1" ]; then echo "ok   $got"; else echo "FAIL wanted '$1', got '$got'"; failures=$((failures + 1)); fi
}
for kind in ping raw; do
    if [ $kind = ping ]; then range="0 0"; else range="1 0"; fi
    within c sysctl -qw net.ipv4.ping_group_range="$range"
    expect "1 0 198.18.3.2 $kind" 198.18.3.2 64
    expect "1 11013 198.18.1.1 $kind" 198.18.3.2 1
    expect "1 11002 198.18.2.2 $kind" 198.18.9.9 64  # the second router has no route there
    expect "0 11018 0.0.0.0 $kind" 0.0.0.0 64
    within s sysctl -qw net.ipv4.icmp_echo_ignore_all=1
    expect "0 11010 0.0.0.0 $kind" 198.18.3.2 64
    within s sysctl -qw net.ipv4.icmp_echo_ignore_all=0
    if [ -n "$hops_probe" ]; then
        got=$(within c "$hops_probe" 198.18.3.2 2>/dev/null | head -n 4 | sed 's/time=[0-9]* ms/time=T ms/')
        wanted=$(printf '%s\n' "hops=3" "Trace Route: Hop 1 198.18.1.1 time=T ms." "Trace Route: Hop 2 198.18.2.2 time=T ms." \
            "Trace Route: Hop 3 198.18.3.2 time=T ms.")
        if [ "$got" = "$wanted" ]; then echo "ok   count hops $kind: 3, routers first";
        else echo "FAIL count hops $kind: wanted '$wanted', got '$got'"; failures=$((failures + 1)); fi
    fi
done
[ $failures -eq 0 ]
