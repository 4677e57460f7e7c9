#!/usr/bin/env bash
# Fuzzes every target for a share of some minutes, two at a time, from a copy of its corpus.
# Usage: tools/fuzz.sh MINUTES [TARGET...]
# What is found lies in build/fuzz/found. New inputs stay in build/fuzz/runs/TARGET; tools/fuzz-coverage.sh --keep takes
# those that reach something new into the corpus.
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/install-packages.sh
install_packages "${BUILD_PACKAGES[@]}" "${CHECK_PACKAGES[@]}"
minutes=${1:?minutes}
shift
targets=("$@")
[ $# -gt 0 ] || for corpus in fuzz/corpus/*/; do targets+=("$(basename "$corpus")"); done
cmake --preset fuzz > /dev/null
cmake --build --preset fuzz | tail -n 1
export JETIMPORT=$PWD/build/release/bin/JetImport
[[ " ${targets[*]} " != *" jet "* ]] || cmake --build --preset release --target JetImport | tail -n 1
# Where memory came from matters only for what is found, and is found again with more of it. What an input has freed need not
# stay apart for longer than its run.
export ASAN_OPTIONS=malloc_context_size=2:quarantine_size_mb=2:thread_local_quarantine_size_kb=64
seconds=$((minutes * 60 * 2 / (${#targets[@]} + ${#targets[@]} % 2)))
mkdir -p build/fuzz/found
status=0

fuzz() {
    local target=$1 runs=build/fuzz/runs/$1 dictionary=fuzz/dictionaries/$1.dict
    rm -rf "$runs"
    mkdir -p "$runs"
    local options=(-max_total_time="$seconds" -timeout=20 -print_final_stats=1 -artifact_prefix="build/fuzz/found/$target-")
    [ ! -f "$dictionary" ] || options+=(-dict="$dictionary")
    [ "$target" = jet ] || options+=(-max_len=512)
    local found=0
    "build/fuzz/fuzz/fuzz_$target" "${options[@]}" "$runs" "fuzz/corpus/$target" > "build/fuzz/$target.log" 2>&1 || found=1
    local executed rate
    executed=$(sed -n 's/^stat::number_of_executed_units: *//p' "build/fuzz/$target.log")
    rate=$(sed -n 's/^stat::average_exec_per_sec: *//p' "build/fuzz/$target.log")
    printf '%-14s %10s runs, %6s a second, %4s new inputs%s\n' "$target" "${executed:-?}" "${rate:-?}" \
        "$(find "$runs" -type f | wc -l)" "$([ $found = 0 ] || echo ", FOUND something: build/fuzz/$target.log")"
    return $found
}

for ((i = 0; i < ${#targets[@]}; i += 2)); do
    fuzz "${targets[i]}" &
    first=$!
    [ $((i + 1)) -ge ${#targets[@]} ] || fuzz "${targets[i + 1]}" || status=1
    wait $first || status=1
done
exit $status
