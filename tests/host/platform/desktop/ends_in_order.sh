#!/bin/bash
# The window program ends in order on a signal, and not on one that nohup keeps from it:
# ends_in_order.sh PROGRAM
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
trap '' HUP
"$1" --dir "$folder" &
program=$!
# It catches SIGTERM (bit 14) once it has begun.
until caught=$(sed -n 's/^SigCgt:[[:space:]]*//p' "/proc/$program/status") &&
    ((16#$caught >> 14 & 1)); do
    sleep 0.1
done
sleep 1
((!(16#$caught & 1)))  # SIGHUP
kill -HUP "$program"
kill -TERM "$program"
wait "$program"
