#!/usr/bin/env bash
# fuzz.sh [SECONDS [TARGET...]]: builds the libFuzzer targets with clang into build-fuzz,
# replays each seed corpus in fuzz/corpus/, then runs each target (or only the TARGETs
# named, e.g. master_answer) for a bounded time (default 15 s each, at most 2,000,000
# runs) and prints the executions per second. New inputs the fuzzer finds go to
# build-fuzz/found/, never into the repository; a crash leaves its input there and fails
# the script.
# Skips (status 0) when clang cannot be had, so scripts/test.sh can call it anywhere.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-15}
shift $(( $# > 0 ))
runs=2000000

if ! command -v clang++ >/dev/null; then
    as_root=()
    [ "$(id -u)" -eq 0 ] || as_root=(sudo -n)
    if [ "$(id -u)" -eq 0 ] || sudo -n true 2>/dev/null; then
        echo "Installing: clang"
        "${as_root[@]}" apt-get update -qq
        DEBIAN_FRONTEND=noninteractive "${as_root[@]}" apt-get install -y -qq clang >/dev/null || true
    fi
fi
if ! command -v clang++ >/dev/null || ! echo 'extern "C" int LLVMFuzzerTestOneInput(const char *, unsigned long) { return 0; }' \
        | clang++ -x c++ -fsanitize=fuzzer - -o /dev/null 2>/dev/null; then
    echo "fuzz: skipped, clang with libFuzzer is not available here"
    exit 0
fi

CXX=clang++ scripts/build.sh build-fuzz -DPULSEBOX_FUZZ=ON -- fuzz_targets

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
status=0
printf '%-18s %8s %10s %10s\n' target seeds runs exec/s
names=("$@")
[ ${#names[@]} -gt 0 ] || names=($(ls fuzz/corpus))
for name in "${names[@]}"; do
    corpus=fuzz/corpus/$name
    [ -d "$corpus" ] || { echo "fuzz: no target $name (see fuzz/corpus/)"; status=1; continue; }
    target=build-fuzz/fuzz/fuzz_$name
    found=build-fuzz/found/$name
    mkdir -p "$found"
    log=build-fuzz/found/$name.log
    # The seeds first, one by one: each must pass as it is.
    if ! "$target" -runs=0 -artifact_prefix="$found/" "$corpus" >"$log" 2>&1; then
        echo "fuzz: $name fails on its own seed corpus (see $log)"; status=1; continue
    fi
    if ! "$target" -runs=$runs -max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$found/" \
            "$found" "$corpus" >"$log" 2>&1; then
        echo "fuzz: $name found a failure: $(ls "$found"/crash-* "$found"/leak-* "$found"/timeout-* 2>/dev/null | head -1) (see $log)"
        status=1; continue
    fi
    done_runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
    speed=$(sed -n 's/^stat::average_exec_per_sec: *//p' "$log")
    printf '%-18s %8s %10s %10s\n' "$name" "$(ls "$corpus" | wc -l)" "$done_runs" "$speed"
done
exit $status
