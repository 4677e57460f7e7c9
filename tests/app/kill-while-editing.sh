#!/usr/bin/env bash
# Kills the editing program at random moments, again and again on one store, and looks at the store after each time.
# usage: kill-while-editing.sh EDIT_ROWS TIMES
set -euo pipefail
program=$1
times=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
store=$folder/Harbinet.mdb

fail() {
    echo "after $1 kills: $2" >&2
    exit 1
}

# Looks at one value of the store. usage: expect WHAT-IS-WRONG-ELSE QUERY VALUE
expect() {
    local found
    found=$(sqlite3 "$store" "$2")
    [ "$found" = "$3" ] || fail "$i" "$1: $found"
}

for ((i = 1; i <= times; ++i)); do
    exec 3< <(exec "$program" "$store" 2> /dev/null)
    process=$!
    # However slow the machine is: it is writing from here on.
    read -r -t 100 -u 3 word && [ "$word" = writing ] || fail "$i" "the program wrote nothing"
    sleep "0.$(printf '%03d' $((RANDOM % 60)))"
    kill -KILL $process 2> /dev/null || fail "$i" "the program had ended by itself"
    wait $process 2> /dev/null || true
    exec 3<&-
    [ "$(sqlite3 "$store" 'PRAGMA integrity_check')" = ok ] || fail "$i" "the store is damaged"
    tables=$(sqlite3 "$store" "SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%'")
    [ "$tables" = 9 ] || fail "$i" "the store has $tables tables"
    # One edit is one cell, and one replacement is whole; the kill may fall between two of them, never within one.
    expect "torn cells" "SELECT COUNT(*) FROM Queue WHERE q_Number IS NOT NULL AND typeof(q_Number) <> 'integer'" 0
    expect "a store half emptied" "SELECT (SELECT COUNT(*) FROM Queue) > 0 <> ((SELECT COUNT(*) FROM Display) = 15)" 0
    expect "half a scan plan" "SELECT COUNT(*) IN (0, 10, 15) AND COUNT(*) = IFNULL(MAX([Order]), 0) FROM ScanPlan" 1
    expect "half the directions" "SELECT COUNT(*) IN (0, 25) AND COUNT(DISTINCT Dir_Id) < 2 FROM [Info-Direction]" 1
done
rows=$(sqlite3 "$store" "SELECT COUNT(*) FROM Queue")
plans=$(sqlite3 "$store" "SELECT seq FROM sqlite_sequence WHERE name = 'ScanPlan'")
[ "$rows" -gt 0 ] && [ "${plans:-0}" -gt 0 ] || fail "$times" "nothing was ever written"
differing=$(sqlite3 "$store" "SELECT COUNT(*) FROM Queue WHERE q_Name <> q_Number")
echo "$times kills, $rows services, $plans plan entries made in all, $differing between two edits: every store whole"
