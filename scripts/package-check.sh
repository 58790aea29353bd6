#!/usr/bin/env bash
# CI: makes the Debian package from the plain build in BUILD_DIR, checks it with
# lintian (no errors, no warnings) and its AppStream metadata with appstreamcli,
# installs it with apt, checks the desktop entry, the ping capability, the manual
# pages and the query tool as an ordinary user, starts the installed program on
# the offscreen platform for a moment (it must open and close cleanly) and
# removes the package again.
# Needs root or password-less sudo; skipped with a message otherwise.
#   scripts/package-check.sh [BUILD_DIR]     (default: build)
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build}

as_root=()
if [ "$(id -u)" -ne 0 ]; then
    if command -v sudo >/dev/null && sudo -n true 2>/dev/null; then
        as_root=(sudo -n)
    else
        echo "SKIPPED package check: installing a package needs root or password-less sudo here."
        exit 0
    fi
fi
if dpkg-query -W -f='${Status}' pulsebox 2>/dev/null | grep -q "ok installed"; then
    echo "SKIPPED package check: a pulsebox package is installed already; not replacing it."
    exit 0
fi

started=$(date +%s)
scripts/setup.sh lintian appstream man-db
deb=$(scripts/package.sh "$dir" | tail -n 1)
version=$(dpkg-deb --field "$deb" Version)
echo "package: $deb ($(du -k "$deb" | cut -f1) KiB)"
dpkg-deb --info "$deb" | sed -n 's/^ Depends: /depends: /p'

# Errors and warnings fail; pedantic and informational tags are shown. The
# tags the package accepts, and why, are in the README's Install section.
lintian --fail-on error,warning --display-info --pedantic "$deb"
echo "lintian: no errors, no warnings"

home=$(mktemp -d)
cleanup() {
    "${as_root[@]}" apt-get remove -y -qq pulsebox >/dev/null 2>&1 || true
    rm -rf "$home"
}
trap cleanup EXIT

# Some images tell dpkg to leave out manual pages; these must be there to be checked.
DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq \
    -o DPkg::Options::=--path-include=/usr/share/man/man1/pulsebox* "$(realpath "$deb")" >/dev/null
desktop-file-validate /usr/share/applications/pulsebox.desktop
# --no-net: the check never sends anything off this machine.
appstreamcli validate --no-net /usr/share/metainfo/org.pulsebox.pulsebox.metainfo.xml
for size in 16 32 48 256; do
    test -s "/usr/share/icons/hicolor/${size}x${size}/apps/pulsebox.png"
done
for program in /usr/bin/pulsebox /usr/bin/pulsebox-query; do
    caps=$(getcap "$program")
    echo "getcap: $caps"
    case "$caps" in
        *cap_net_raw*) ;;
        *) echo "FAILED: $program has no cap_net_raw" >&2; exit 1 ;;
    esac
    if [ -u "$program" ]; then
        echo "FAILED: $program is setuid" >&2
        exit 1
    fi
done
for page in pulsebox pulsebox-query pulsebox-demonet; do
    shown=$(MANPAGER=cat MANWIDTH=80 man "$page" 2>/dev/null) || true
    if ! grep -q "^NAME" <<<"$shown"; then
        echo "FAILED: man $page shows no manual page" >&2
        exit 1
    fi
done
# The query tool, capability and all, as an ordinary user would start it.
said=$("${as_root[@]}" runuser -u nobody -- /usr/bin/pulsebox-query --version)
echo "as nobody: $said"
if [ "$said" != "pulsebox-query ${version%-*}" ]; then
    echo "FAILED: /usr/bin/pulsebox-query --version said \"$said\", not \"pulsebox-query ${version%-*}\"" >&2
    exit 1
fi

# The installed program, started as a user would: it shows its window, then a
# SIGTERM closes it like the window's close button; it must end with status 0.
(cd "$home" && HOME=$home QT_QPA_PLATFORM=offscreen exec /usr/bin/pulsebox) > "$home/out.log" 2>&1 &
pid=$!
sleep 4
if ! kill -0 "$pid" 2>/dev/null; then
    wait "$pid" || true
    cat "$home/out.log" >&2
    echo "FAILED: the installed pulsebox ended by itself at start-up" >&2
    exit 1
fi
kill -TERM "$pid"
status=0
for _ in $(seq 100); do kill -0 "$pid" 2>/dev/null || break; sleep 0.1; done
if kill -0 "$pid" 2>/dev/null; then
    kill -KILL "$pid"
    echo "FAILED: the installed pulsebox did not close within 10 s" >&2
    exit 1
fi
wait "$pid" || status=$?
cat "$home/out.log"
if [ "$status" -ne 0 ]; then
    echo "FAILED: the installed pulsebox closed with status $status" >&2
    exit 1
fi

"${as_root[@]}" apt-get remove -y -qq pulsebox >/dev/null
if [ -e /usr/bin/pulsebox ]; then
    echo "FAILED: /usr/bin/pulsebox is still there after removal" >&2
    exit 1
fi
echo "package check passed in $(($(date +%s) - started)) s: lintian clean, metadata valid, installed," \
     "capabilities set, manual pages shown, query tool run as nobody, started and closed, removed"
