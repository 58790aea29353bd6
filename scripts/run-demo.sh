#!/usr/bin/env bash
# Sets up and builds Pulsebox, starts the demo network (a server list over HTTP
# and simulated Quake 2 servers on loopback addresses) and opens Pulsebox on it.
# Closing Pulsebox stops the demo network.
#   scripts/run-demo.sh [population.cfg]
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
scripts/build.sh build

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
    cat >&2 <<'MSG'
There is no display to open the Pulsebox window on (DISPLAY is not set).
Run it on a desktop session, or under a virtual display:
    xvfb-run -a -s "-screen 0 1280x800x24" scripts/run-demo.sh
MSG
    exit 2
fi

demo=build/demo
mkdir -p "$demo"
# Two favorites, so that Fav Refresh has something to probe.
[ -f "$demo/Pulsebox.fav" ] || printf '127.0.0.12:27910\r\nFavorite Hideout\r\n127.0.0.2\r\nPulse Arena\r\n' > "$demo/Pulsebox.fav"

build/tools/demonet/pulsebox-demonet "$@" > "$demo/demonet.log" 2>&1 &
demonet=$!
trap 'kill "$demonet" 2>/dev/null || true' EXIT
for _ in $(seq 50); do grep -q "List URL" "$demo/demonet.log" 2>/dev/null && break; sleep 0.1; done
if ! kill -0 "$demonet" 2>/dev/null; then
    cat "$demo/demonet.log" >&2
    exit 1
fi
cat "$demo/demonet.log"
url=$(sed -n 's/^List URL: //p' "$demo/demonet.log")
if [ "$url" = "http://127.0.0.1/quake2/gamespy.txt" ]; then
    echo "Press Refresh List (or Fav Refresh for the two favorites)."
else
    echo "Paste $url into 'Location of List', then press Refresh List."
fi
if [ "$(id -u)" -ne 0 ] && ! getcap build/src/pulsebox 2>/dev/null | grep -q cap_net_raw; then
    echo "Pings need ICMP: if every server fails with code 11050, see 'Pings' in README.md."
fi
(cd "$demo" && ../src/pulsebox)
