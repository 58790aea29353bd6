#!/usr/bin/env bash
# build.sh DIR [cmake options...]: configures and builds Pulsebox into DIR.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=$1; shift
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "$@" >/dev/null
cmake --build "$dir"
