#!/usr/bin/env bash
# build.sh DIR [cmake options...]: configures and builds Pulsebox into DIR.
set -euo pipefail
cd "$(dirname "$0")/.."
dir=$1; shift
launcher=()
if command -v ccache >/dev/null; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    export CCACHE_BASEDIR=$PWD CCACHE_NOHASHDIR=1  # checkouts in other folders share the cache
fi
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo "${launcher[@]}" "$@" >/dev/null
cmake --build "$dir"
