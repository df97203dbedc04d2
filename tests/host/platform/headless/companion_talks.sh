#!/bin/bash
# A program and its companion: companion_talks.sh HEADLESS TERMINAL
set -euo pipefail
. "$(dirname "$0")/../../../support/waiting.sh"

headless=$1
terminal=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
printf '\x1b?' >asks.eep
identity='FF FF 48 F0 00 80 00 01 42'
mkdir module
head -c 32768 /dev/zero | tr '\0' '\377' >module/Orvanel42.bin  # or the demo would talk as well
mkfifo commands typed
exec 4<>commands  # open without an end: a scenario that goes on

start() {
    "$headless" --realtime --dir module <&4 >said 2>told &
    running=$!
}

ends_with() { # STATUS TEXT COMMAND...
    local status=0
    "${@:3}" >last 2>&1 || status=$?
    if [ "$status" != "$1" ] || ! grep -qF -- "$2" last; then
        echo "status $status: ${*:3}" >&2
        cat last >&2
        return 1
    fi
}

asks() { "$terminal" --dir module --answers --hex "$@"; }
hears() { [ "$(asks --quiet 1000 "$@")" = "$identity" ]; }

# Nobody there.
ends_with 1 'no program that takes messages runs in module' "$terminal" --dir module --send 41

# Bytes, a file by a path of this folder, and what comes through a pipe; each asks who is there.
start
until_it hears --send '1B "?"'
hears --send 1B --send '"?"'
hears --file asks.eep
[ "$("$terminal" --dir module --hex <asks.eep)" = "$identity" ]
[ "$(asks --quiet 1)" = '' ]

# One program for each folder.
ends_with 2 'module is in use by another program' "$headless" --dir module asks.eep

# Slips of the pen, and nowhere to print to.
ends_with 2 --send "$terminal" --dir module --send 1
ends_with 2 no_such_file "$terminal" --dir module --file no_such_file
ends_with 0 --answers "$terminal" --help
"$terminal" --dir module --send '"x"' >&-
ends_with 1 "can't write" bash -c "'$terminal' --dir module --send '1B 3F' --answers >/dev/full"

# At the keyboard: what is typed here goes to the module, and what is typed in its window comes here.
exec 5<>typed
script -qefc "'$terminal' --dir module" shown <&5 >screen &
talk=$!
types_there() {
    echo 'key A' >&4
    grep -q '<key A>' shown
}
until_it types_there
until_it eval 'printf "\x1b?" >&5; grep -qF "\xFF\xFFH\xF0\x00\x80\x00\x01B" shown'
printf '\x03' >&5
wait "$talk"

# A crash leaves a socket, which is no obstacle; the companion says that its module has gone.
"$terminal" --dir module --answers --quiet 100000 >left 2>&1 &
talk=$!
until_it asks --send ''
kill -KILL "$running"
{ wait "$running" || true; } 2>last  # the shell tells of it
status=0
wait "$talk" || status=$?
[ "$status" = 1 ]
grep -q 'the module has ended' left
ends_with 1 'no program that takes messages' "$terminal" --dir module --send 41
start
until_it hears --send '1B "?"'
kill -TERM "$running"
wait "$running"
