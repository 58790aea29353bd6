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
# Pings need ICMP: a ping socket (when net.ipv4.ping_group_range holds one of the
# user's groups) or a raw socket (root, or the cap_net_raw file capability, which
# every build replaces and so has to be given again, as Debian's ping gets it).
ping_sockets_allowed() {
    local low high group
    read -r low high < /proc/sys/net/ipv4/ping_group_range || return 1
    for group in $(id -G); do
        [ "$group" -ge "$low" ] && [ "$group" -le "$high" ] && return 0
    done
    return 1
}
if ! ping_sockets_allowed && ! /usr/sbin/getcap build/src/pulsebox 2>/dev/null | grep -q cap_net_raw; then
    echo "Giving build/src/pulsebox the cap_net_raw capability (like Debian's ping; never setuid) so that it can ping."
    as_root=()
    if [ "$(id -u)" -ne 0 ]; then
        as_root=(sudo -n)
        [ -t 0 ] && as_root=(sudo)  # at a terminal sudo may ask for the password
        command -v sudo >/dev/null || as_root=(false)
    fi
    if ! "${as_root[@]}" /usr/sbin/setcap cap_net_raw+ep build/src/pulsebox \
        || ! /usr/sbin/getcap build/src/pulsebox | grep -q cap_net_raw; then
        [ "$(id -u)" -eq 0 ] || cat >&2 <<'MSG'
Pulsebox cannot ping from this account: ping sockets are closed to your groups
(net.ipv4.ping_group_range) and the program could not be given cap_net_raw (no sudo,
or no file capabilities on this file system). Every server then fails its ping with
code 11050 and is left out, so the list stays empty. To allow pings, run as root:
    setcap cap_net_raw+ep build/src/pulsebox          (then start this script again)
or  sysctl -w net.ipv4.ping_group_range="0 2147483647" (takes effect at once)
MSG
    fi
fi
(cd "$demo" && ../src/pulsebox)
