#!/bin/sh
# Runs a command and compares what it prints with a file: prints.sh EXPECTED COMMAND...
set -eu
expected=$1
shift
printed=$(mktemp)
trap 'rm -f "$printed"' EXIT
status=0
"$@" >"$printed" || status=$?
diff -u "$expected" "$printed" || exit 1
[ "$status" -eq 0 ] && exit 0
echo "the command has printed $expected, but its status is $status" >&2
exit 1
