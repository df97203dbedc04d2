#!/bin/bash
# The window program under Wayland: wayland.sh PROGRAM TERMINAL
set -Eeuo pipefail
. "$(dirname "$0")/../support/waiting.sh"
trap 'echo "wayland: line $LINENO: $BASH_COMMAND" >&2' ERR

program=$1
terminal=$2
folder=$(mktemp -d)
running=()
trap 'kill "${running[@]}" 2>/dev/null || true; wait; rm -rf "$folder"' EXIT
cd "$folder"
export XDG_RUNTIME_DIR=$folder DBUS_SESSION_BUS_ADDRESS=disabled: QT_QPA_PLATFORM=wayland
# The thread sanitizer can't see how the toolkit's own threads for Wayland keep apart.
export TSAN_OPTIONS=ignore_noninstrumented_modules=1
# Nor is what its libraries for Wayland leave behind any of ours.
export ASAN_OPTIONS=detect_leaks=0

start_compositor() { # NAME OPTION...
    weston --socket="$1" --no-config --width=1024 --height=768 "${@:2}" >"$1.log" 2>&1 &
    compositor=$!
    running+=("$compositor")
    until_it test -S "$1"
    export WAYLAND_DISPLAY=$1
}

# The image is empty, or the demo would play.
start_program() { # DIR [FILE]
    mkdir "$1"
    head -c 32768 /dev/zero | tr '\0' '\377' >"$1/Orvanel42.bin"
    "$program" --dir "$@" >said 2>told &
    module=$!
    running+=("$module")
}

fails() { ! "$@"; }

# The compositor goes away: what was programmed is saved, and the settings. A word goes into the data
# area of the image, and a restart; who hears an answer after that knows that all is done.
start_compositor headless --backend=headless-backend.so
start_program killed
asks() { "$terminal" --dir killed --answers --hex --quiet 1000 --send "$1"; }
hears() { [ "$(asks '1B "?"')" = 'FF FF 48 F0 00 80 00 01 42' ]; }
until_it hears
asks '1B "&E" 30 0E 05 00 "Wfirst" 1B "&E" 00 00 00 00 "J"'
until_it hears
kill -KILL "$compositor"
status=0
wait "$module" || status=$?
[ "$status" != 0 ]
grep -q first killed/Orvanel42.bin
grep -qx xpos=100 killed/simulator.ini
