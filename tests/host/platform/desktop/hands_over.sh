#!/bin/bash
# A second start hands its file to the window that is there: hands_over.sh PROGRAM TERMINAL HEADLESS
set -euo pipefail
. "$(dirname "$0")/../../../support/waiting.sh"

program=$1
terminal=$2
headless=$3
folder=$(mktemp -d)
running=()
trap 'kill "${running[@]}" 2>/dev/null || true; rm -rf "$folder"' EXIT
cd "$folder"
for module in first second; do
    mkdir $module
    head -c 32768 /dev/zero | tr '\0' '\377' >$module/Orvanel42.bin  # or the demo would talk as well
done
mkdir 'a "folder"'
printf '\x1b?' >'a "folder"/asks ü.eep'
part=$(printf 'x%.0s' {1..130})
long=$part/$part
mkdir -p "$long"
touch "$long/file"

hears() { # FOLDER [OPTION...]
    [ "$("$terminal" --dir "$1" --answers --hex --quiet 1000 "${@:2}")" = 'FF FF 48 F0 00 80 00 01 42' ]
}

"$program" --dir first &
running+=($!)
until_it hears first --send '1B "?"'

# From another folder; the first one's settings stay as they are.
(cd 'a "folder"' && "$program" --serial tcp:0 --dir ../first 'asks ü.eep')
hears first
"$program" --dir first
"$headless" </dev/null --dir third
refuses 'first is in use by another program' "$program" --new-instance --dir first
refuses 'first is in use by another program' "$headless" --dir first
refuses '--dir' "$program" --new-instance
refuses 'the path is too long' "$program" --dir first "$long/file"

# A program that has been stopped is told of by its number, also where so many have asked that it lets
# in nobody any more; and it goes on where it was.
kill -STOP "${running[0]}"
asking=()
for i in {1..20}; do
    timeout 120 "$terminal" --dir first --send 41 2>"asked$i" &
    asking+=($!)
done
refuses "(process ${running[0]}), which doesn't answer" timeout 120 "$program" --dir first
for i in {1..20}; do
    status=0
    wait "${asking[i - 1]}" || status=$?
    [ "$status" = 1 ]
    grep -qF "(process ${running[0]}) doesn't answer" "asked$i"
done
kill -CONT "${running[0]}"
until_it hears first --send '1B "?"'

# Another module beside it, and a file named in quotes. A program without a window takes nothing over.
"$program" --new-instance --dir second "'a \"folder\"/asks ü.eep'" &
running+=($!)
until_it hears second
kill -TERM "${running[@]}"
wait "${running[@]}"
running=()
"$headless" --realtime --serial tcp:0 --dir second >said 2>&1 &
running+=($!)
until_it "$terminal" --dir second --send 41
refuses 'a program without a window' "$program" --dir second
kill -TERM "${running[@]}"
wait "${running[@]}"
running=()
