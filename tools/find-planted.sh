#!/usr/bin/env bash
# Shows that the simulation can find bugs: plants each one of tests/simulation/planted into a copy of the last commit and
# simulates until a law is broken, ten minutes at most for each. A patch that does not apply any more is an error.
# Usage: tools/find-planted.sh [NAME...]
set -euo pipefail
cd "$(dirname "$0")/.."
. tools/install-packages.sh
install_packages "${BUILD_PACKAGES[@]}"
longest=600

work=build/planted
rm -rf "$work/source"
mkdir -p "$work"
git clone -q . "$work/source"
cmake -S "$work/source" -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O2 -DNDEBUG" \
    -DORVEX_WINDOWS=OFF -DORVEX_BENCHMARKS=OFF > /dev/null
build() { cmake --build "$work/build" --target simulation > "$work/build.log" || { cat "$work/build.log"; exit 2; }; }

patches=("$@")
[ $# -gt 0 ] || for patch in tests/simulation/planted/*.patch; do patches+=("$(basename "$patch" .patch)"); done
missed=0
for name in "${patches[@]}"; do
    patch=$PWD/tests/simulation/planted/$name.patch
    git -C "$work/source" checkout -q -- .
    git -C "$work/source" apply "$patch" || { echo "$name: the patch does not apply; renew it"; exit 2; }
    build
    begun=$SECONDS
    if "$work/build/bin/simulation" --seconds $longest --acts 60 > "$work/$name.log" 2>&1; then
        echo "$name: NOT FOUND in $longest s"
        missed=$((missed + 1))
    else
        echo "$name: found in $((SECONDS - begun)) s: $(grep -m 1 '^seed' "$work/$name.log" || tail -n 1 "$work/$name.log")"
    fi
done
exit $((missed > 0))
