#!/usr/bin/env bash
# Drives the station on a virtual display through its first use: open the demonstration database, look at its four tabs,
# load every printer, look at the ticket form; then initialize all objects from the main window, look at the bus monitor and the
# test console, and leave. Leaves screenshots in FOLDER/screenshots and fails if a printer was not loaded.
# usage: drive-demo.sh FOLDER
#   FOLDER  program folder with Orvex, Harbinet.mdb and Tallora.ini; the bus simulator runs and writes FOLDER/bus.txt
set -euo pipefail
demo=$1
pictures=$demo/screenshots
rm -rf "$pictures"
mkdir -p "$pictures"

# A display of our own, whose number the server chooses.
exec 3< <(exec Xvfb -displayfd 1 -screen 0 1280x800x24 -noreset -nolisten tcp 2> /dev/null)
server=$!
read -r number <&3
export DISPLAY=:$number
openbox > /dev/null 2>&1 &
manager=$!
for _ in $(seq 100); do
    xprop -root _NET_SUPPORTING_WM_CHECK 2> /dev/null | grep -q "window id" && break
    sleep 0.1
done
"$demo/Orvex" > "$demo/station.txt" 2>&1 &
station=$!
trap 'kill $station $manager $server 2> /dev/null || true' EXIT

fail() {
    import -window root "$pictures/failed.png" || true
    echo "The demonstration stopped: $1. See $pictures/failed.png and $demo/station.txt" >&2
    exit 1
}

# Waits until a window with that title has the keyboard.
await_window() {
    for _ in $(seq 300); do
        kill -0 $station 2> /dev/null || fail "the station ended while \"$1\" was awaited"
        [ "$(xdotool getactivewindow getwindowname 2> /dev/null || true)" = "$1" ] && return 0
        sleep 0.1
    done
    fail "no window \"$1\""
}

# The window has had time to draw once two pictures of it are the same.
picture() {
    local before="" after
    for _ in $(seq 50); do
        import -window root "$pictures/$1.png"
        after=$(md5sum < "$pictures/$1.png")
        [ "$after" = "$before" ] && break
        before=$after
        sleep 0.2
    done
}

await_window "Open"
picture 1-open
xdotool key Return
await_window "Setup Queue System - Harbinet.mdb"
picture 2-database
for tab in 2-scan-plan 3-main-display 4-hub-assignment; do
    xdotool key "alt+${tab%%-*}"
    picture "2-${tab#*-}"
done
xdotool key alt+1
xdotool key alt+c
sleep 0.3
xdotool key Down Right
picture 3-menu
xdotool key Return
sleep 1
import -window root "$pictures/4-loading.png"
await_window "Orvex"
picture 5-done
xdotool key Return
await_window "Setup Queue System - Harbinet.mdb"
# The designer, for printers on the DB9 port, with the form of the demonstration.
for keys in alt+c "Down Right" "Down Right" "Down Right"; do
    # shellcheck disable=SC2086 # several keys in a word
    xdotool key $keys
    sleep 0.3
done
xdotool key Return
await_window "Ticket Design"
picture 6-ticket-design
xdotool key alt+F4
await_window "Setup Queue System - Harbinet.mdb"
xdotool key alt+c
sleep 0.3
xdotool key m
await_window "KTL-Queue Management System"
picture 7-main
xdotool key alt+s
sleep 0.3
xdotool key n
sleep 1.5
import -window root "$pictures/7-initializing.png"
# The run says on the line what it does last: the members of the hubs.
hubs=$(sqlite3 "$demo/Harbinet.mdb" "SELECT COUNT(*) FROM Display WHERE d_On AND d_Type = 3")
for _ in $(seq 300); do
    [ "$(grep -c "member list" "$demo/transcript.txt" || true)" -ge "$hubs" ] && break
    sleep 0.1
done
sleep 3
picture 7-initialized
xdotool key alt+m
sleep 0.3
xdotool key b
await_window "Bus Monitor"
picture 8-bus-monitor
xdotool key alt+F4
await_window "KTL-Queue Management System"
# From the run switch to the button of the test console.
for _ in $(seq 8); do xdotool key Tab; done
xdotool key space
await_window "Test"
picture 9-test-console
xdotool key alt+F4
await_window "KTL-Queue Management System"
xdotool key alt+F4
for _ in $(seq 100); do
    kill -0 $station 2> /dev/null || break
    sleep 0.1
done
kill -0 $station 2> /dev/null && fail "the station did not end"

printers=$(sqlite3 "$demo/Harbinet.mdb" "SELECT COUNT(*) FROM Display WHERE d_On AND d_Type = 1")
loaded=$(grep -c "finished loading" "$demo/bus.txt" || true)
echo
echo "Printers in the database: $printers, loaded: $loaded"
echo "Screenshots: $pictures"
echo "Bus transcript: $demo/transcript.txt"
[ "$printers" = "$loaded" ] || fail "not every printer was loaded"
