#!/bin/bash
# A program ends in order on a signal, and not on one that nohup keeps from it:
# ends_in_order.sh PROGRAM [OPTION...]
set -euo pipefail

program=("$@")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# Whether it catches signal NUMBER.
catches() { # NUMBER
    local caught
    caught=$(sed -n 's/^SigCgt:[[:space:]]*//p' "/proc/$running/status")
    ((16#$caught >> ($1 - 1) & 1))
}

start() {
    "${program[@]}" --dir "$folder" &
    running=$!
    until catches 15; do
        sleep 0.1
    done
}

start
until catches 1; do
    sleep 0.1
done
kill -HUP "$running"
wait "$running"

trap '' HUP
start
sleep 1
if catches 1; then
    echo "catches a SIGHUP that nohup ignores" >&2
    exit 1
fi
kill -HUP "$running"
kill -TERM "$running"
wait "$running"
