#!/usr/bin/env bash
# Installs what building Pulsebox needs on Debian bookworm (only what is missing),
# and the packages named as arguments.
set -euo pipefail
packages=(g++ cmake ninja-build ccache qt6-base-dev qt6-base-dev-tools libgl-dev xvfb xauth fonts-liberation iproute2 libcap2-bin python3 openssl "$@")
missing=()
for p in "${packages[@]}"; do
    dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
    as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo)
    echo "Installing: ${missing[*]}" >&2
    "${as_root[@]}" apt-get update -qq
    DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq "${missing[@]}" >/dev/null
fi
