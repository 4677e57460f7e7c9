#!/usr/bin/env bash
# Looks whether built programs are hardened: position independent, all symbols bound at the start and read-only from
# then on, stack protector, checked copies, control-flow marks where the machine has them.
# usage: check-hardening.sh PROGRAM...
set -euo pipefail
failed=0
for program in "$@"; do
    # Whole readings: grep -q would end them early, which pipefail takes for a failure.
    need() { grep -E "$2" <<< "$3" > /dev/null || { echo "$program: no $1" >&2; failed=1; }; }
    head=$(readelf -W -h -d -l "$program")
    symbols=$(readelf -W --dyn-syms "$program")
    need "position independent code (PIE)" 'Type: +DYN' "$head"
    need "PIE mark" 'FLAGS_1.*PIE' "$head"
    need "binding at the start (BIND_NOW)" 'BIND_NOW|FLAGS_1.*NOW' "$head"
    need "read-only relocations (RELRO)" 'GNU_RELRO' "$head"
    need "stack protector" '__stack_chk_fail' "$symbols"
    need "checked copies (FORTIFY_SOURCE)" '__[a-z]+_chk@' "$symbols"
    # The mark of the whole file is missing where the C library's own start-up code has none, as in Debian 12: look at
    # the program's code itself.
    if [ "$(uname -m)" = x86_64 ]; then
        marks=$(objdump -d --no-show-raw-insn "$program" | grep -c endbr64 || true)
        [ "$marks" -gt 20 ] || { echo "$program: no marks of indirect calls (cf-protection)" >&2; failed=1; }
    fi
done
[ $failed -eq 0 ] && echo "$# programs are hardened"
