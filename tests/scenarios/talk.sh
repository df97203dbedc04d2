#!/bin/sh
# Sends lines to a program that answers in JSON and compares the answers with a file, but for the
# version and the pictures that are written: talk.sh LINES EXPECTED COMMAND...
set -eu
lines=$1
expected=$2
shift 2
answers=$(mktemp)
trap 'rm -f "$answers"' EXIT
"$@" <"$lines" >"$answers" || [ $? -le 3 ]
sed -i -e '1s/"version":"[^"]*"/"version":"X"/' -e 's#[^" ]*/\([a-z]*\.actual\.png\)#\1#g' "$answers"
diff -u "$expected" "$answers"
