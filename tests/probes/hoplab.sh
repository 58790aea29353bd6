#!/usr/bin/env bash
# A routed lab in network namespaces, for hop counts:
#   hoplab.sh up TAG SERVERS    builds it (SERVERS 1..200); exit 77 with the reason where it cannot
#   hoplab.sh down TAG          removes it
#
#   TAG-c 198.18.1.2 -- TAG-r1 -- TAG-r2 --+-- TAG-s  198.18.3.2 .. 198.18.3.(SERVERS+1)   3 hops
#                                          +-- TAG-r3 --+-- TAG-f 198.18.5.2              4 hops
#                                                       +-- 198.18.7.0/24 dropped: never answers
# r1 rate-limits its Time Exceeded answers as busy routers do (a burst of 6, then one
# a second); r2 answers every one; r3 never answers (its limit allows none in the
# first minute). The addresses exist only inside these namespaces.
set -u
action=$1 tag=$2 servers=${3:-1}
names="$tag-c $tag-r1 $tag-r2 $tag-r3 $tag-s $tag-f"
if [ "$action" = down ]; then
    for ns in $names; do ip netns del "$ns" 2>/dev/null; done
    exit 0
fi
skip() { echo "SKIP: $*"; for ns in $names; do ip netns del "$ns" 2>/dev/null; done; exit 77; }
[ "$(id -u)" -eq 0 ] || skip "making network namespaces needs root"
command -v ip >/dev/null || skip "iproute2 is not installed"
[ "$servers" -ge 1 ] && [ "$servers" -le 200 ] || { echo "SERVERS must be 1 to 200" >&2; exit 2; }
for ns in $names; do ip netns add "$ns" 2>/dev/null || skip "network namespaces are not allowed here"; done
within() { local ns=$tag-$1; shift; ip netns exec "$ns" "$@"; }
# link A IF-A ADDR-A B IF-B ADDR-B: a veth pair between two namespaces
link() {
    ip link add "$tag$2" netns "$tag-$1" type veth peer name "$tag$5" netns "$tag-$4" || skip "veth links are not allowed here"
    within "$1" ip addr add "$3/24" dev "$tag$2" && within "$1" ip link set "$tag$2" up
    within "$4" ip addr add "$6/24" dev "$tag$5" && within "$4" ip link set "$tag$5" up
}
link c c 198.18.1.2 r1 a 198.18.1.1
link r1 b 198.18.2.1 r2 a 198.18.2.2
link r2 b 198.18.3.1 s a 198.18.3.2
link r2 c 198.18.4.1 r3 a 198.18.4.2
link r3 b 198.18.5.1 f a 198.18.5.2
for n in $(seq 3 $((servers + 1))); do within s ip addr add "198.18.3.$n/24" dev "${tag}a"; done
for ns in c r1 r2 r3 s f; do within $ns ip link set lo up; done
within c ip route add default via 198.18.1.1
within r1 ip route add default via 198.18.2.2
within r2 ip route add 198.18.1.0/24 via 198.18.2.1
within r2 ip route add 198.18.5.0/24 via 198.18.4.2
within r2 ip route add 198.18.7.0/24 via 198.18.4.2
within r3 ip route add default via 198.18.4.1
within r3 ip route add blackhole 198.18.7.0/24
within s ip route add default via 198.18.3.1
within f ip route add default via 198.18.5.1
for r in r1 r2 r3; do within $r sysctl -qw net.ipv4.ip_forward=1; done
# Bit 11 of the mask is Time Exceeded: limited on r1 and r3, not on r2.
within r1 sysctl -qw net.ipv4.icmp_ratemask=6168 net.ipv4.icmp_ratelimit=1000
within r2 sysctl -qw net.ipv4.icmp_ratemask=4120
within r3 sysctl -qw net.ipv4.icmp_ratemask=6168 net.ipv4.icmp_ratelimit=100000000
exit 0
