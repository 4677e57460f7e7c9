#!/usr/bin/env bash
# Prints how many lines of each parser the corpora reach. With --keep, takes the inputs of the last tools/fuzz.sh that reach
# something new into the corpora first.
# Usage: tools/fuzz-coverage.sh [--keep]
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/install-packages.sh
install_packages "${BUILD_PACKAGES[@]}" "${CHECK_PACKAGES[@]}" llvm
if [ "${1:-}" = --keep ]; then
    for runs in build/fuzz/runs/*/; do
        target=$(basename "$runs")
        [ "$target" = jet ] || "build/fuzz/fuzz/fuzz_$target" -merge=1 "fuzz/corpus/$target" "$runs" > /dev/null 2>&1
    done
fi
cmake -S . -B build/coverage -G Ninja -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g1" -DCMAKE_CXX_COMPILER=clang++ \
    -DORVEX_FUZZ=ON -DCMAKE_CXX_FLAGS="-fprofile-instr-generate -fcoverage-mapping" > /dev/null
cmake --build build/coverage | tail -n 1
for target in frame_reader ini delimited bitmap vni_table bus_installation rich_text; do
    program=build/coverage/fuzz/fuzz_$target
    LLVM_PROFILE_FILE=build/coverage/$target.profraw "$program" -runs=0 "fuzz/corpus/$target" > /dev/null 2>&1
    llvm-profdata merge -o "build/coverage/$target.profdata" "build/coverage/$target.profraw"
    echo "$target: $(find "fuzz/corpus/$target" -type f | wc -l) inputs"
    llvm-cov export -summary-only "$program" -instr-profile="build/coverage/$target.profdata" |
        python3 -c '
import json, sys
for file in json.load(sys.stdin)["data"][0]["files"]:
    name = "/".join(file["filename"].split("/")[-2:])
    lines = file["summary"]["lines"]
    if name.split("/")[0] in ("link", "core", "platform", "tickets", "simulator") and name.endswith(".cpp"):
        print("    %-32s %5.1f %% of %d lines" % (name, lines["percent"], lines["count"]))'
done
