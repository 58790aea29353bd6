#!/usr/bin/env bash
# pulsebox-query against qstat on one loopback population, side by side in one run:
# N simulated servers (one in five silent), each program with its defaults:
# pulsebox-query finds them through a loopback master, qstat reads them from a list
# file (its master query takes only the first datagram of an answer, 100 servers
# here). Prints wall times, answers heard and the ratio.
#   bench/query_bench.sh BUILD_DIR [SERVERS] [ROUNDS]
# Everything stays on 127.0.0.0/8. qstat is Debian's package qstat (quakestat).
set -euo pipefail
build=${1:?usage: bench/query_bench.sh BUILD_DIR [SERVERS] [ROUNDS]}
servers=${2:-1000}
rounds=${3:-3}
query=$build/tools/query/pulsebox-query
demonet=$build/tools/demonet/pulsebox-demonet
for program in "$query" "$demonet"; do
    [ -x "$program" ] || { echo "query_bench: build $program first" >&2; exit 2; }
done
command -v quakestat >/dev/null || { echo "query_bench: install qstat (apt-get install qstat)" >&2; exit 2; }

work=$(mktemp -d)
demo_pid=
cleanup() { [ -n "$demo_pid" ] && kill "$demo_pid" 2>/dev/null; rm -rf "$work"; }
trap cleanup EXIT

master_port=27990
{
    echo "http|0"
    echo "master|$master_port"
    for ((i = 0; i < servers; i++)); do
        protocol=34
        [ $((i % 5)) -eq 4 ] && protocol=silent
        echo "server|127.0.$((60 + i / 200)).$((1 + i % 200)):27910|$protocol|0|Lab $i|q2dm1|8|Lab$i:1:20"
    done
} > "$work/population.cfg"
grep "^server" "$work/population.cfg" | cut -d'|' -f2 | sed 's/^/Q2S /' > "$work/qstat.list"
"$demonet" "$work/population.cfg" > "$work/demonet.out" 2>&1 &
demo_pid=$!
for _ in $(seq 50); do grep -q "Master URL" "$work/demonet.out" && break; sleep 0.1; done
grep -q "Master URL" "$work/demonet.out" || { cat "$work/demonet.out" >&2; exit 1; }

seconds() { local start=$1 end=$2; echo "scale=2; ($end - $start) / 1000000000" | bc; }
echo "servers: $servers ($((servers / 5)) silent), master 127.0.0.1:$master_port"
for ((round = 1; round <= rounds; round++)); do
    start=$(date +%s%N)
    "$query" --master "127.0.0.1:$master_port" > "$work/pulsebox.rows" 2> "$work/pulsebox.err" || true
    end=$(date +%s%N)
    ours=$(seconds "$start" "$end")
    start=$(date +%s%N)
    quakestat -f "$work/qstat.list" -nh > "$work/qstat.rows" 2>&1 || true
    end=$(date +%s%N)
    theirs=$(seconds "$start" "$end")
    heard=$(grep -vc " - No " "$work/pulsebox.rows" || true)
    qstat_heard=$(grep -vc -e "no response" -e "TIMEOUT" -e "DOWN" "$work/qstat.rows" || true)
    echo "round $round: pulsebox-query ${ours} s ($heard answering), qstat ${theirs} s ($qstat_heard answering), $(echo "scale=1; $theirs / $ours" | bc) times faster"
done
# Without ICMP (an unprivileged user on a machine whose ping sockets are closed):
# round trips come from the game's ping and ack.
if [ "$(id -u)" -eq 0 ] && command -v setpriv >/dev/null; then
    start=$(date +%s%N)
    setpriv --reuid=nobody --regid=nogroup --clear-groups "$query" --master "127.0.0.1:$master_port" --json \
        > "$work/nobody.json" 2> /dev/null || true
    end=$(date +%s%N)
    echo "without ICMP (as nobody): pulsebox-query $(seconds "$start" "$end") s," \
         "$(grep -c '"rttSource": "ack"' "$work/nobody.json" || true) servers timed by ping/ack," \
         "$(grep -c '"rttSource": "query"' "$work/nobody.json" || true) by their first answer"
fi
