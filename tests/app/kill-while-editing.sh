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

for ((i = 1; i <= times; ++i)); do
    "$program" "$store" 2> /dev/null &
    process=$!
    sleep "0.$(printf '%03d' $((20 + RANDOM % 130)))"
    kill -KILL $process 2> /dev/null || fail "$i" "the program had ended by itself"
    wait $process 2> /dev/null || true
    [ -e "$store" ] || continue
    [ "$(sqlite3 "$store" 'PRAGMA integrity_check')" = ok ] || fail "$i" "the store is damaged"
    tables=$(sqlite3 "$store" "SELECT COUNT(*) FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%'")
    [ "$tables" = 9 ] || fail "$i" "the store has $tables tables"
    # One edit is one cell; the kill may fall between the two cells of one service, never within one.
    torn=$(sqlite3 "$store" "SELECT COUNT(*) FROM Queue WHERE q_Number IS NOT NULL AND typeof(q_Number) <> 'integer'")
    [ "$torn" = 0 ] || fail "$i" "$torn cells are torn"
done
rows=$(sqlite3 "$store" "SELECT COUNT(*) FROM Queue")
[ "$rows" -gt 0 ] || fail "$times" "nothing was ever written"
differing=$(sqlite3 "$store" "SELECT COUNT(*) FROM Queue WHERE q_Name <> q_Number")
echo "$times kills, $rows services, $differing between two edits: every store whole"
