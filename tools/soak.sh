#!/usr/bin/env bash
# Loads and initializes the demonstration hall on a faulty line for some minutes, under AddressSanitizer and UBSan, and prints
# outcomes, memory and descriptors. Ends with 1 if something grows.
# Usage: tools/soak.sh [MINUTES]
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/install-packages.sh
install_packages "${BUILD_PACKAGES[@]}" "${CHECK_PACKAGES[@]}"
cmake --preset sanitize > /dev/null
cmake --build --preset sanitize --target soak MakeDemo | tail -n 1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
build/sanitize/bin/MakeDemo "$folder/Harbinet.mdb" data/demo/demo.sql
ASAN_OPTIONS=detect_leaks=1:quarantine_size_mb=8 UBSAN_OPTIONS=print_stacktrace=1 build/sanitize/bin/soak "$folder/Harbinet.mdb" "${1:-15}"
