#!/bin/bash
# What a device sends as soon as the line is there arrives: hears_from_the_start.sh HEADLESS TRIES
set -euo pipefail
. "$(dirname "$0")/../../../support/waiting.sh"

headless=$1
tries=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
printf '%s\n' 'scenario 1' 'protocol 0' 'wait 600000' >plain.scn
who='\xff\xff\x48\xf0\x00\x80\x00\x01\x42'

for ((i = 0; i < tries; ++i)); do
    "$headless" --realtime --serial pty:line plain.scn >said 2>told &
    running=$!
    until [ -e line ]; do sleep 0.001; done
    sleep "0.0$((RANDOM % 6))$((RANDOM % 10))"
    exec 3<>line
    printf '\x1b?\x1b?\x1b?' >&3
    if ! timeout 60 head -c 27 <&3 | cmp - <(printf "$who$who$who"); then
        echo "try $i" >&2
        exit 1
    fi
    exec 3<&-
    kill -TERM "$running"
    wait "$running" || true  # a scenario that is stopped has failed
done
