#!/bin/sh
# Plays a scenario on the real clock, where it has to do and print what it does in module time:
#   realtime.sh EXPECTED PROGRAM [OPTION...] SCENARIO
# EXPECTED is the file with what it prints, - for none.
#
# Nothing is punctual in real time. So a run that has missed a time is played again, ten times at
# most: what the module can't do at all fails in each.
set -eu
expected=$1
shift
out=$(mktemp)
trap 'rm -f "$out"' EXIT

for try in 1 2 3 4 5 6 7 8 9 10; do
    status=0
    "$@" --realtime >"$out" || status=$?
    if [ "$status" -eq 0 ]; then
        [ "$expected" = - ] && exit 0
        diff -u "$expected" "$out" && exit 0
    fi
    echo "try $try failed, with status $status" >&2
done
exit 1
