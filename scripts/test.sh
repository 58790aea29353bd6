#!/usr/bin/env bash
# Sets up, builds and runs every test: a plain build, then the tests again under
# AddressSanitizer and UndefinedBehaviorSanitizer, the Debian package check and a fuzz
# smoke run (each target built, its seed corpus replayed, then 2 s of fuzzing; the long
# run is scripts/fuzz.sh 600).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
# The package check's and the fuzz run's tools install while the builds run: apt waits on
# the network and the disk, the builds on the processors. Their own set-up steps find them
# installed then (or, where this failed, try again and say why).
tools_log=$(mktemp)
scripts/setup.sh lintian appstream man-db dpkg-dev desktop-file-utils help2man clang > "$tools_log" 2>&1 &
tools_install=$!
export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

# Each stage says when it starts, in seconds since the command began.
stage() { echo "== [${SECONDS} s] $*"; }
stage "plain build"
scripts/build.sh build
ctest --test-dir build --output-on-failure -j "$(nproc)"
# The sanitizer build holds only the tests and what they run; -O1 keeps the instrumented
# tests quick and -g1 (line tables only) keeps its links small, yet reports show file:line.
stage "AddressSanitizer + UndefinedBehaviorSanitizer build"
scripts/build.sh build-asan -DPULSEBOX_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug "-DCMAKE_CXX_FLAGS_DEBUG=-O1 -g1" \
    -- pulsebox_tests
ctest --test-dir build-asan --output-on-failure -j "$(nproc)"
wait "$tools_install" || cat "$tools_log"
rm -f "$tools_log"
stage "Debian package: build, install, check, remove"
scripts/package-check.sh build
stage "fuzz targets (clang; skipped where it cannot be had)"
scripts/fuzz.sh 2
stage "all done"
