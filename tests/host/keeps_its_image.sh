#!/bin/bash
# The window program keeps what was programmed, and the file before it: keeps_its_image.sh PROGRAM
set -euo pipefail

program=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Programs TEXT into the data area of the image in KEPT, restarts the module, and ends the program
# by SIGNAL. How long a start takes is the machine's affair, so it gets more and more time.
program_and_end() { # TEXT KEPT SIGNAL
    printf '\x1b&E\x30\x0e\x05\x00W%s\x1b&E\x00\x00\x00\x00J' "$1" >"$folder/stream"
    local seconds
    for seconds in 2 5 10 30; do
        "$program" --dir "$2" "$folder/stream" &
        sleep "$seconds"
        kill -"$3" $!
        wait $! || continue  # ended before it had begun
        ! grep -qs "$1" "$2/Orvanel42.bin" || return 0
    done
    echo "$1 is not in $2" >&2
    return 1
}
program_and_end first "$folder/kept" TERM
program_and_end other "$folder/kept" TERM
grep -q first "$folder/kept/Orvanel42.bin.bak"
grep -qx xpos=100 "$folder/kept/simulator.ini"

# A terminal that closes ends it as any other end.
program_and_end other "$folder/hung-up" HUP

# An image that can't be read is not written over.
rm "$folder/kept/Orvanel42.bin"
mkdir "$folder/kept/Orvanel42.bin"
if "$program" --dir "$folder/kept" 2>"$folder/said"; then exit 1; fi
grep -q "Orvanel42.bin: not a plain file" "$folder/said"

# An end that hangs in a save is hurried by a second signal, and the rest is saved all the same.
for seconds in 2 5 10 30; do
    rm -rf "$folder/slow"
    "$program" --dir "$folder/slow" "$folder/stream" 2>"$folder/said" &
    sleep "$seconds"
    if ! mkfifo "$folder/slow/Orvanel42.bin"; then # it had not begun
        kill -KILL $!
        continue
    fi
    kill -TERM $!
    sleep 1
    kill -TERM $! || continue # nothing had been programmed
    if wait $!; then exit 1; fi
    break
done
grep -q "cannot save .*Orvanel42.bin: Interrupted system call" "$folder/said"
grep -qx xpos=100 "$folder/slow/simulator.ini"
