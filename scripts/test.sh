#!/usr/bin/env bash
# Sets up, builds and runs every test: a plain build, then one under
# AddressSanitizer and UndefinedBehaviorSanitizer.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/setup.sh
export QT_QPA_PLATFORM=offscreen
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export LSAN_OPTIONS=suppressions=$PWD/tests/lsan.supp:print_suppressions=0
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

echo "== plain build"
scripts/build.sh build
ctest --test-dir build --output-on-failure
echo "== AddressSanitizer + UndefinedBehaviorSanitizer build"
scripts/build.sh build-asan -DPULSEBOX_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug
ctest --test-dir build-asan --output-on-failure
echo "== Debian package: build, install, check, remove"
scripts/package-check.sh build
echo "== fuzz targets (clang; skipped where it cannot be had)"
scripts/fuzz.sh 10
