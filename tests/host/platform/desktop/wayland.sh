#!/bin/bash
# The window program under Wayland: wayland.sh PROGRAM TERMINAL
set -Eeuo pipefail
. "$(dirname "$0")/../../../support/waiting.sh"
trap 'echo "wayland: line $LINENO: $BASH_COMMAND" >&2' ERR

# For the clicks the compositor has to run in a window of X, which not every build of it can.
for tool in weston Xvfb xdotool import convert; do
    command -v $tool >/dev/null || { echo "wayland: skipped, since $tool is missing"; exit 77; }
done
if ! find /usr/lib /usr/lib64 /usr/local/lib -name x11-backend.so 2>/dev/null | grep -q .; then
    echo "wayland: skipped, since weston has no X11 backend"
    exit 77
fi

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

# A compositor in a window of a screen of its own, since the one above has neither mouse nor keyboard.
Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>display 2>screen.log &
running+=($!)
until_it grep -q . display
DISPLAY=:$(cat display)
export DISPLAY
start_compositor window --backend=x11-backend.so --use-pixman
start_program larger

# Where the empty glass is: WIDTHxHEIGHT+X+Y. Nothing else has its colour.
glass() {
    import -window root seen.png
    convert seen.png -fill black +opaque '#0000E6' -format '%@\n' info:
}
glass_is() { # PATTERN
    glass >box
    grep -qx "$1" box
}
click() { # X Y, seen from the glass
    local x y
    IFS=+ read -r _ x y <box
    # The compositor knows moves alone, and may begin anywhere. In the corner both pointers meet.
    xdotool mousemove 0 0
    sleep 0.5
    xdotool mousemove $((x + $1)) $((y + $2))
    sleep 0.5
    xdotool click 1
}
wide=240x128+403+360 # in the middle of all that the compositor's panel leaves, below title and menu
small='240x128+.*'

# The button of the title that makes it as large as the screen, and a second time gives it back.
grows() {
    if glass_is "$small"; then
        click 218 -53
        sleep 1
    fi
    glass_is "$wide"
}
until_it grows
# Another size in a window that has to keep its own; it gets the one that fits when it may.
xdotool key ctrl+3
until_it glass_is '720x384+185+234'
xdotool key super+shift+m
until_it fails glass_is '720x384+185+234'
glass_is '720x384+.*'
xdotool key ctrl+1
until_it glass_is "$small"
xdotool key super+shift+m
until_it glass_is "$wide"
kill -TERM "$module"
status=0
wait "$module" || status=$?
[ "$status" = 0 ] || { cat told >&2; exit 1; }
