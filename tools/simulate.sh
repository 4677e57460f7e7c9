#!/usr/bin/env bash
# Simulates halls for some minutes on all cores, each core with worlds of its own, and repeats what breaks a law.
# Usage: tools/simulate.sh MINUTES [FIRST_SEED]
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/install-packages.sh
install_packages "${BUILD_PACKAGES[@]}"
minutes=${1:?minutes}
seed=${2:-$(date +%s)000}
cmake --preset release > /dev/null
cmake --build --preset release --target simulation | tail -n 1
running=()
for core in $(seq "$(nproc)"); do
    build/release/bin/simulation --seed "$((seed + core * 100000000))" --seconds "$((minutes * 60))" --acts 60 &
    running+=($!)
done
status=0
for one in "${running[@]}"; do wait "$one" || status=1; done
exit $status
