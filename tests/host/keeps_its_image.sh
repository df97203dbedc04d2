#!/bin/bash
# The window program keeps what was programmed, and the file before it: keeps_its_image.sh PROGRAM
set -euo pipefail

program=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

program_and_end() { # TEXT: into the data area of the image, with a restart behind it
    printf '\x1b&E\x30\x0e\x05\x00W%s\x1b&E\x00\x00\x00\x00J' "$1" >"$folder/stream"
    timeout --preserve-status -s TERM 2 "$program" --dir "$folder/kept" "$folder/stream"
}
program_and_end first
program_and_end other

# A terminal that closes ends it as any other end.
"$program" --dir "$folder/hung-up" "$folder/stream" &
sleep 2
kill -HUP $!
wait $!
grep -q other "$folder/hung-up/Orvanel42.bin"
grep -q other "$folder/kept/Orvanel42.bin"
grep -q first "$folder/kept/Orvanel42.bin.bak"

# An image that can't be read is not written over.
rm "$folder/kept/Orvanel42.bin"
mkdir "$folder/kept/Orvanel42.bin"
if "$program" --dir "$folder/kept" 2>"$folder/said"; then exit 1; fi
grep -q "Orvanel42.bin: Is a directory" "$folder/said"
