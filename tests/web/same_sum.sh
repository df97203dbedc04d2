#!/bin/sh
# Random commands in the native firmware and in that for WebAssembly: same_sum.sh NATIVE PROGRAM.wasm COMMANDS
set -eu
native=$("$1" "$3")
wasm=$(node "$(dirname "$0")/../../web/headless.js" "$2" "$3")
[ "$native" = "$wasm" ] && exit 0
echo "native: $native" >&2
echo "wasm:   $wasm" >&2
exit 1
