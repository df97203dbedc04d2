#!/bin/sh
# Runs a scenario that fails and compares what it tells with a file: misses.sh EXPECTED COMMAND...
set -eu
expected=$1
shift
told=$(mktemp)
trap 'rm -f "$told"' EXIT
status=0
"$@" 2>"$told" || status=$?
sed -i -E "s#[^ ]*/([a-z]*\.(actual|diff)\.png)#\1#" "$told"  # wherever they were written
diff -u "$expected" "$told" || exit 1
[ "$status" -eq 1 ] && exit 0
echo "the status is $status, not 1" >&2
exit 1
