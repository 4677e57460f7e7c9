#!/usr/bin/env bash
# Makes the pictures of README and manual anew: walks the program through a whole installation, from an empty folder through
# every window, on the simulated bus, and keeps what it looks like in docs/tour.
# usage: make-tour.sh [BUILD]
#   BUILD  the folder of a build with tests, build/release if it is not given
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build/release}
mkdir -p docs/tour
rm -f docs/tour/*.png
ORVEX_TOUR=$PWD/docs/tour QT_QPA_PLATFORM="offscreen:configfile=$PWD/tests/support/laptop.json" TMPDIR=/tmp LC_ALL=C.UTF-8 "$build/tests/app/test_app" --gtest_filter='TourTest.*'
ls docs/tour
