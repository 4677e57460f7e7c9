#!/usr/bin/env bash
# Runs every fuzz target once over each input of its corpus.
# usage: run-fuzz-corpora.sh FUZZ_BUILD PROGRAMS
#   PROGRAMS  folder of the built programs; the Jet target starts JetImport from there
set -euo pipefail
cd "$(dirname "$0")/.."
build=$1
export JETIMPORT="$2/JetImport"
for corpus in fuzz/corpus/*/; do
    target=fuzz_$(basename "$corpus")
    echo "$target: $(find "$corpus" -type f | wc -l) inputs"
    "$build/fuzz/$target" -runs=0 -timeout=20 "$corpus" > "$build/$target.log" 2>&1 || {
        tail -50 "$build/$target.log"
        exit 1
    }
done
