#!/bin/bash
# What the module was programmed with outlives every end of the program, and so does the file before
# it: keeps_its_image.sh PROGRAM TERMINAL [OPTION...]
set -euo pipefail
. "$(dirname "$0")/../../support/waiting.sh"

program=$1
terminal=$2
options=("${@:3}")
folder=$(mktemp -d)
running=
trap 'kill -KILL $running 2>/dev/null || true; rm -rf "$folder"' EXIT
cd "$folder"
mkfifo commands
exec 4<>commands # a scenario that goes on, for a program that reads one
head -c 32768 /dev/zero | tr '\0' '\377' >blank # or the demo would talk as well

hears() { # FOLDER [OPTION...]
    [ "$("$terminal" --dir "$1" --answers --hex --quiet 1000 --send '1B "?"')" = 'FF FF 48 F0 00 80 00 01 42' ]
}
start() { # FOLDER
    mkdir -p "$1"
    [ -e "$1/Orvanel42.bin" ] || cp blank "$1/Orvanel42.bin"
    "$program" "${options[@]}" --dir "$1" <&4 >said 2>told &
    running=$!
    until_it hears "$1"
}
ends_by() { # SIGNAL
    kill "-$1" $running
    wait $running
}
writes() { # FOLDER TEXT: five bytes into the data area
    "$terminal" --dir "$1" --send "1B \"&E\" 30 0E 05 00 \"W$2\""
}
programs() { # FOLDER TEXT
    writes "$1" "$2"
    "$terminal" --dir "$1" --send '1B "&E" 00 00 00 00 "J"'
    until_it hears "$1"
}
holds() { grep -q "$2" "$1/Orvanel42.bin"; } # FOLDER TEXT

# A kill costs nothing that a restart has made whole, and the backup is of before the run.
start kept
programs kept first
until_it holds kept first
programs kept other
until_it holds kept other
ends_by KILL || true
cmp kept/Orvanel42.bin.bak blank

# What isn't made whole by a restart waits for the end in order.
start kept
programs kept third
until_it holds kept third
writes kept open!
until_it hears kept
sleep 2
holds kept third
ends_by TERM
holds kept open!
grep -q other kept/Orvanel42.bin.bak
grep -qx xpos=100 kept/simulator.ini

# A terminal that closes ends it as any other end.
start hung-up
programs hung-up first
ends_by HUP
holds hung-up first

# An image that can't be read is not written over.
rm kept/Orvanel42.bin
mkdir kept/Orvanel42.bin
if "$program" "${options[@]}" --dir kept 2>told; then exit 1; fi
grep -q "Orvanel42.bin: not a plain file" told

# An end that hangs in a save is hurried by a further signal, and the rest is saved all the same.
start slow
programs slow first
until_it holds slow first
rm slow/Orvanel42.bin
mkfifo slow/Orvanel42.bin
while kill -TERM $running 2>/dev/null; do
    sleep 0.5
done
if wait $running; then exit 1; fi
grep -q "cannot save .*Orvanel42.bin: Interrupted system call" told
grep -qx xpos=100 slow/simulator.ini
