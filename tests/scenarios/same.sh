#!/bin/sh
# Runs a scenario by the native program and by the one for WebAssembly, and compares all that they leave:
# what they print, the trace with each answer, the image, the pictures of what was missed, and the status:
# same.sh FOLDER NATIVE PROGRAM.wasm [OPTION...] SCENARIO
set -eu
left=$1 native=$2 wasm=$3
shift 3
runner=$(dirname "$0")/../../web/headless.js

# Both write to the same names, which their messages tell.
run() { # NAME COMMAND...
    name=$1
    shift
    rm -rf "${left:?}/$name" "$left/now"
    mkdir -p "$left/now"
    status=0
    "$@" >"$left/now/printed" 2>"$left/now/told" || status=$?
    echo "$status" >"$left/now/status"
    mv "$left/now" "$left/$name"
}

set -- --out "$left/now" --trace-json "$left/now/trace" --save-image "$left/now/image" "$@"
run native "$native" "$@"
run wasm node "$runner" "$wasm" "$@"
diff -ru "$left/native" "$left/wasm"
