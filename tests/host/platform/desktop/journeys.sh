#!/bin/bash
# The window program on a screen of its own, with a window manager, a mouse and a keyboard:
# journeys.sh PROGRAM IMAGE GOLDEN
# IMAGE is the demo's, and GOLDEN the folder of its pictures: what the glass shows tells where a
# journey has come to.
set -Eeuo pipefail
. "$(dirname "$0")/../../../support/waiting.sh"
trap 'echo "journeys: line $LINENO: $BASH_COMMAND" >&2' ERR

program=$1
image=$2
golden=$3
folder=$(mktemp -d)
running=()
trap 'kill "${running[@]}" 2>/dev/null || true; wait; rm -rf "$folder"' EXIT
cd "$folder"

fails() { ! "$@"; }

Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>display 2>screen.log &
running+=($!)
until_it grep -q . display
DISPLAY=:$(cat display)
export DISPLAY QT_QPA_PLATFORM=xcb DBUS_SESSION_BUS_ADDRESS=disabled:
# The thread sanitizer can't see how the toolkit's own threads for X keep apart.
export TSAN_OPTIONS=ignore_noninstrumented_modules=1
openbox >manager.log 2>&1 &
running+=($!)
until_it xdotool get_num_desktops

# The module: the demo's image, no port, and a window in the middle of the screen.
mkdir module
cp "$image" module/Orvanel42.bin
printf '[Orvanel42]\ncom=none\nxpos=300\nypos=200\n' >module/simulator.ini

find_window() {
    window=$(xdotool search --onlyvisible --name '^HD Orvanel42 simulator' | head -n 1)
    [ "$window" ]
}

# Where the window stands and how large it is: X, Y, WIDTH, HEIGHT. The menu bar is what it is higher
# than the skin, which is 292 x 164 dots.
measure() {
    xwininfo -id "$window" >geometry
    X=$(sed -n 's/.*Absolute upper-left X: *//p' geometry)
    Y=$(sed -n 's/.*Absolute upper-left Y: *//p' geometry)
    WIDTH=$(sed -n 's/.*Width: *//p' geometry)
    HEIGHT=$(sed -n 's/.*Height: *//p' geometry)
}

is_large() { # WIDTH HEIGHT of the skin as it is shown
    measure
    [ "$WIDTH" = "$1" ] && [ "$HEIGHT" -ge "$2" ] && [ "$HEIGHT" -lt $(($2 + 60)) ]
}

# The glass as a picture in which set dots are dark; of model 0 the light dots are the set ones.
glass() { # LEFT TOP WIDTH HEIGHT of the glass on the skin, SKIN_HEIGHT
    measure
    import -window root -crop "$3x$4+$((X + $1))+$((Y + HEIGHT - $5 + $2))" +repage seen.png
    convert seen.png -channel R -separate +channel -threshold 50% -negate glass.png
}

same() { [ "$(compare -metric AE "$1" "$2" null: 2>&1)" = 0 ]; }

shows() { # PICTURE
    glass 37 19 240 128 164
    same glass.png "$golden/$1.png"
}

shows_upright() { # PICTURE
    glass 17 37 128 240 292
    convert "$golden/$1.png" -rotate 90 turned.png
    same glass.png turned.png
}

point_at() { # X Y on the glass
    measure
    xdotool mousemove $((X + 37 + $1)) $((Y + HEIGHT - 164 + 19 + $2))
}

press() { # X Y
    point_at "$1" "$2"
    xdotool mousedown 1
    sleep 0.5 # a finger stays a while, or the module may not see it
    xdotool mouseup 1
}

is_open() { xdotool search --onlyvisible --name "$1"; }

is_active() { [ "$(xdotool getactivewindow)" = "$window" ]; }

"$program" --dir module >said 2>told &
module=$!
running+=("$module")
until_it find_window
xdotool windowactivate --sync "$window" windowfocus --sync "$window"

# The mouse is the finger; off the glass it lets go.
until_it shows welcome
press 100 60
until_it shows overview
press 210 110
until_it shows codes
point_at 30 50
xdotool mousedown 1
until_it fails shows codes
measure
xdotool mousemove $((X + 5)) $((Y + HEIGHT - 5))
until_it shows codes
xdotool mouseup 1

# The mouse on the board drags the window.
measure
left=$X
xdotool mousemove $((X + 10)) $((Y + HEIGHT - 8)) mousedown 1
sleep 0.3
xdotool mousemove_relative --sync 40 30
sleep 0.3
xdotool mousemove_relative --sync 40 30 mouseup 1
has_moved() { measure && [ "$X" -gt $((left + 40)) ]; }
until_it has_moved
until_it shows codes

# The menu on the right button, and the keys: larger, turned, without a frame, and back.
until_it is_large 292 164
zooms_by_popup() {
    measure
    xdotool mousemove $((X + 100)) $((Y + HEIGHT - 8)) click 3
    sleep 1 # nothing tells that it is there
    xdotool key v 2
    sleep 1
    is_large 584 328 || ! xdotool key Escape Escape
}
until_it zooms_by_popup
xdotool key ctrl+1
until_it is_large 292 164
xdotool key ctrl+d
until_it is_large 164 292
until_it shows_upright codes
xdotool key ctrl+d
until_it is_large 292 164
until_it shows codes
corner() { # is the colour of the desktop at the window's corner
    measure
    [ "$(import -window root -crop "1x1+$X+$((Y + HEIGHT - 164))" +repage txt:- | grep -c '#000000')" = "$1" ]
}
until_it corner 0
xdotool key ctrl+w
until_it corner 1
until_it shows codes
xdotool key ctrl+w
until_it corner 0

# Cancel brings the colours back that the dialog has shown.
glass 37 19 240 128 164
cp seen.png before.png
has_its_colours() { glass 37 19 240 128 164 && same seen.png before.png; }
xdotool key ctrl+u
until_it is_open 'LCD Custom Type - no standard'
xdotool key alt+n
sleep 0.3
xdotool key alt+t
until_it fails has_its_colours
xdotool key Escape
until_it fails is_open 'LCD Custom Type - no standard'
until_it has_its_colours

# The panel of the ports opens beside the window, which keeps the keys.
xdotool key ctrl+y
until_it is_open 'Out'
until_it is_active

# A second start hands its file over; the first one shows it.
printf '#TA#DL#ZF0#ZL 0,0,"handed over"\r' >file.eep
"$program" --dir module file.eep
until_it fails shows codes

# Closed in the middle of a stream: all is saved.
head -c 3000000 /dev/zero | tr '\0' 'x' >long.eep
"$program" --dir module long.eep
xdotool windowactivate --sync "$window" key alt+F4
wait "$module"
cmp "$image" module/Orvanel42.bin
grep -q '^iopvisible=1' module/simulator.ini
