#!/bin/sh
# Runs a command and compares what it prints with a file: prints.sh EXPECTED COMMAND...
set -eu
expected=$1
shift
"$@" | diff -u "$expected" - && exit 0
echo "the command has failed or printed something else than $expected" >&2
exit 1
