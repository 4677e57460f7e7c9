#!/usr/bin/env bash
# Runs clang-tidy, with the checks of .clang-tidy, on the sources that are no windows; fails on any finding.
# usage: run-clang-tidy.sh BUILD
#   BUILD  a folder that cmake has configured with compile commands
set -euo pipefail
cd "$(dirname "$0")/.."
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT
# What only gcc knows goes, and each target gets its precompiled header in clang's form.
python3 - "$1/compile_commands.json" "$work" << 'END'
import json
import pathlib
import re
import sys

root = pathlib.Path.cwd()
work = pathlib.Path(sys.argv[2])
entries = []
headers = {}
for entry in json.load(open(sys.argv[1])):
    path = pathlib.Path(entry["file"])
    if "_autogen" in entry["file"] or not path.is_relative_to(root) or "QtWidgets" in entry["command"]:
        continue
    if path.relative_to(root).parts[0] in {"build", "tests", "benchmarks"}:
        continue
    command = re.sub(r"^(.*?/ccache )?\S+", "clang++-16", entry["command"])
    command = re.sub(r" -fcoroutines| -fpch-preprocess| -Winvalid-pch| -Wno-maybe-uninitialized", "", command)
    if precompiled := re.search(r" -include (\S+)", command):
        header = precompiled[1]
        compiled = headers.setdefault(header, (work / f"{len(headers)}.pch", re.sub(r" -include .*", "", command)))[0]
        command = command.replace(precompiled[0], f" -include-pch {compiled}")
    entry["command"] = command
    entries.append(entry)
json.dump(entries, open(work / "compile_commands.json", "w"))
(work / "sources").write_text("".join(f"{entry['file']}\n" for entry in entries))
(work / "headers").write_text("".join(f"{command} -Wno-pragma-system-header-outside-header -x c++-header {header} -o {compiled}\n"
                                      for header, (compiled, command) in headers.items()))
END
xargs -P "$(nproc)" -d '\n' -n 1 sh -c < "$work/headers"
xargs -P "$(nproc)" -n 1 clang-tidy-16 -p "$work" --quiet < "$work/sources" 2> /dev/null
echo "$(wc -l < "$work/sources") sources have no findings"
