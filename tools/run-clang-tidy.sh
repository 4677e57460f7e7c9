#!/usr/bin/env bash
# Runs clang-tidy, with the checks of .clang-tidy, on the sources that are no windows; fails on any finding.
# usage: run-clang-tidy.sh BUILD
#   BUILD  a folder that cmake has configured with compile commands
set -euo pipefail
cd "$(dirname "$0")/.."
commands=$(mktemp -d)
trap 'rm -r "$commands"' EXIT
# What only gcc knows goes, and so does its precompiled header.
python3 - "$1/compile_commands.json" "$commands" > "$commands/files" << 'END'
import json
import pathlib
import re
import sys

root = pathlib.Path.cwd()
entries = []
for entry in json.load(open(sys.argv[1])):
    path = pathlib.Path(entry["file"])
    if "_autogen" in entry["file"] or not path.is_relative_to(root) or "QtWidgets" in entry["command"]:
        continue
    if path.relative_to(root).parts[0] in {"tests", "benchmarks"}:
        continue
    command = re.sub(r"^.*?/ccache ", "", entry["command"])
    entry["command"] = re.sub(r" -fcoroutines| -fpch-preprocess| -Winvalid-pch| -Wno-maybe-uninitialized| -include \S+", "", command)
    entries.append(entry)
    print(path.relative_to(root))
json.dump(entries, open(f"{sys.argv[2]}/compile_commands.json", "w"))
END
# The largest share of the work is reading the toolkit's headers: several files a run save nothing.
xargs -P "$(nproc)" -n 1 clang-tidy-16 -p "$commands" --quiet < "$commands/files" 2> /dev/null
echo "$(wc -l < "$commands/files") sources have no findings"
