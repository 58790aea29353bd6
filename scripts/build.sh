#!/usr/bin/env bash
# build.sh DIR [cmake options...] [-- TARGET...]: configures Pulsebox into DIR and builds
# everything, or only the targets named after "--".
set -euo pipefail
cd "$(dirname "$0")/.."
dir=$1; shift
options=() targets=()
while [ $# -gt 0 ]; do
    if [ "$1" = -- ]; then shift; targets=("$@"); break; fi
    options+=("$1"); shift
done
launcher=()
if command -v ccache >/dev/null; then
    # In the launcher, not the environment, so a later plain `cmake --build DIR` caches alike:
    # checkouts in other folders share the cache, and compiles that use a precompiled header
    # are cached only with these sloppiness settings.
    launcher=("-DCMAKE_CXX_COMPILER_LAUNCHER=env;CCACHE_BASEDIR=$PWD;CCACHE_NOHASHDIR=1;CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime;ccache")
fi
# -O2 without debug information: a cold build takes about a third less compile time than
# with it (the package strips it anyway); pass -DCMAKE_BUILD_TYPE=RelWithDebInfo to debug.
cmake -S . -B "$dir" -G Ninja -DCMAKE_BUILD_TYPE=Release "-DCMAKE_CXX_FLAGS_RELEASE=-O2 -DNDEBUG" "${launcher[@]}" "${options[@]}" >/dev/null
if [ ${#targets[@]} -gt 0 ]; then
    cmake --build "$dir" --target "${targets[@]}"
else
    cmake --build "$dir"
fi
