#!/bin/sh
# Runs a scenario without a trace, and with one and all hints, and compares all that it leaves: what it
# prints, the image, the pictures of what was missed, the status. Warnings and hints alone come along:
# unchanged.sh FOLDER HEADLESS [OPTION...] SCENARIO
set -eu
left=$1 headless=$2
shift 2

# Both write to the same names, which their messages tell.
run() { # NAME OPTION...
    name=$1
    shift
    rm -rf "${left:?}/$name" "$left/now"
    mkdir -p "$left/now"
    status=0
    "$headless" --out "$left/now" --save-image "$left/now/image" "$@" \
        >"$left/now/printed" 2>"$left/told" || status=$?
    # With nothing else that is wrong a warning or hint makes the status 1.
    if grep -Eqv ': (warning|hint): |: and [0-9]* more$' "$left/told" || [ ! -s "$left/told" ]; then
        echo "$status" >"$left/now/status"
    elif [ "$status" -ne 1 ]; then
        echo "unchanged.sh: warnings and hints, and status $status" >&2
        exit 1
    else
        echo 0 >"$left/now/status"
    fi
    grep -Ev ': (warning|hint): |: and [0-9]* more$' "$left/told" >"$left/now/told" || :
    rm "$left/told"
    mv "$left/now" "$left/$name"
}

run plain "$@"
run traced --trace-json "$left/trace" --strict=hints "$@"
[ -s "$left/trace" ]
diff -ru "$left/plain" "$left/traced"
