#!/usr/bin/env bash
# Hop counts of many servers at once, across the routed lab of hoplab.sh (made here,
# removed at the end): true counts through a router that rate-limits its answers,
# a router that never answers, a server that never answers, Cancel, and the
# budget per router. The addresses exist only inside the lab's namespaces.
set -u
finder=$1 hops_probe=$2
lab=$(dirname "$0")/hoplab.sh
tag=pbh$$
trap '"$lab" down $tag' EXIT
"$lab" up $tag 12 || exit $?
client() { ip netns exec "$tag-c" "$@"; }
expired() {  # probes whose time-to-live ran out at router $1 so far
    ip netns exec "$tag-$1" awk '/^Ip:/ { if (++n == 1) { for (i = 1; i <= NF; i++) if ($i == "InHdrErrors") c = i } else print $c }' /proc/net/snmp
}
failures=0
check() {  # check WHAT WANTED GOT
    if [ "$2" = "$3" ]; then echo "ok   $1"; else echo "FAIL $1: wanted '$2', got '$3'"; failures=$((failures + 1)); fi
}

# The window's Count Hops with Fast Refresh on, behind the silent router (first, while
# the rate-limited router still has answers to give).
got=$(client "$hops_probe" --fast 198.18.5.2 2>/dev/null | sed 's/time=[0-9]* ms/time=T ms/')
check "window: the silent router is no hop" "$(printf '%s\n' hops=4 'Trace Route: Hop 1 198.18.1.1 time=T ms.' \
    'Trace Route: Hop 2 198.18.2.2 time=T ms.' 'Trace Route: Hop 4 198.18.5.2 time=T ms.')" "$got"

# Twelve servers three hops away, one four hops away behind the silent router, one that
# never answers; at most 5 probes a second with one time-to-live.
servers=$(for n in $(seq 2 13); do printf '198.18.3.%s ' "$n"; done)
r1=$(expired r1) r2=$(expired r2)
out=$(client "$finder" --budget 5 --timeout 500 $servers 198.18.5.2 198.18.7.7)
echo "$out"
for s in $servers; do
    check "$s: 3 hops, its own answer last" 1 "$(echo "$out" | grep -c "^$s done=1 hops=3 route=.*2:198.18.2.2,3:$s\$")"
done
check "behind the silent router: 4 hops, no line for hop 3" 1 \
    "$(echo "$out" | grep -c '^198.18.5.2 done=1 hops=4 route=\(1:198.18.1.1,\)\?2:198.18.2.2,4:198.18.5.2$')"
check "a server that never answers: no count" 1 "$(echo "$out" | grep -c '^198.18.7.7 done=1 hops=0 ')"
answered=$(echo "$out" | grep -c 'route=1:198.18.1.1')
[ "$answered" -lt 14 ] && echo "ok   the first router rate-limited: $answered of 14 first hops answered" ||
    { echo "FAIL the first router answered every probe"; failures=$((failures + 1)); }
check "each server's first probe sent once" 14 $(($(expired r1) - r1))
check "each server's second probe sent once" 14 $(($(expired r2) - r2))
ms=$(echo "$out" | sed -n 's/^probes=.* ms=//p')
[ "${ms:-0}" -ge 2000 ] && echo "ok   14 probes a time-to-live at 5 a second took $ms ms" ||
    { echo "FAIL 14 probes a time-to-live at 5 a second took only ${ms:-?} ms"; failures=$((failures + 1)); }

# The same through a ping socket (routers' answers on its error queue) instead of a raw one.
client sysctl -qw net.ipv4.ping_group_range="0 0"
out=$(client "$finder" --timeout 500 198.18.5.2 198.18.3.2)
check "ping socket: 4 hops behind the silent router" 1 "$(echo "$out" | grep -c '^198.18.5.2 done=1 hops=4 route=.*2:198.18.2.2,4:198.18.5.2$')"
check "ping socket: 3 hops" 1 "$(echo "$out" | grep -c '^198.18.3.2 done=1 hops=3 route=.*2:198.18.2.2,3:198.18.3.2$')"
client sysctl -qw net.ipv4.ping_group_range="1 0"

# Cancel stops at once: the silent server's search is left unfinished.
out=$(client "$finder" --cancel-after 300 198.18.7.7 198.18.3.2)
check "cancelled: the silent server unfinished" 1 "$(echo "$out" | grep -c '^198.18.7.7 done=0 hops=0 ')"
ms=$(echo "$out" | sed -n 's/^probes=.* ms=//p')
[ "${ms:-9999}" -lt 1500 ] && echo "ok   cancelled after $ms ms" || { echo "FAIL cancel took ${ms:-?} ms"; failures=$((failures + 1)); }
[ $failures -eq 0 ]
