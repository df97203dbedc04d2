#!/bin/bash
# The kit compiler as a shell sees it: tests/kit/program.sh PROGRAM EXAMPLES
# What it prints, how it ends, and which files it leaves alone.

set -euo pipefail
kit=$1
examples=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"

failed=0
# expect STATUS OUTPUT ARGUMENT...: OUTPUT is a pattern that all it says has to match.
expect() {
    local status=0 said
    said=$("$kit" "${@:3}" 2>&1) || status=$?
    # shellcheck disable=SC2053  # the right side is a pattern
    if [ "$status" -ne "$1" ] || [[ $said != $2 ]]; then
        echo "program.sh: ${*:3}: status $status, not $1, or not '$2':" >&2
        echo "$said" >&2
        failed=1
    fi
}

expect 0 'orvanel42-kit *' --version
expect 0 '*build*dump*check*diff*Exit status*' --help
expect 2 '*required*'
expect 0 '*#AT x1,y1,x2,y2,down code,up code,text'$'\n''*#DL'$'\n''*#ZL x,y,text'$'\n''*' commands
expect 2 '*ends in neither*' build "$examples/device.kit" -o device.hex
expect 2 '*0 to 65535*' build "$examples/device.kit" -o a.bin --crc 0x10000

expect 0 'a.eep: *a.bin: 32768 bytes*CRC*' build "$examples/device.kit" -o a.eep -o a.bin
expect 0 '' build -q "$examples/device.kit" -o b.bin
expect 0 '' diff a.eep b.bin
expect 0 '' check "$examples/device.kit"
expect 0 '*font 1 *picture 19 *normal macro 0 *' dump a.bin -o out
cmp -s a.bin b.bin || { echo "program.sh: two builds differ" >&2; failed=1; }
expect 0 '' build -q out/a.kit -o c.bin
expect 0 '' diff a.bin c.bin
expect 2 '*empty*' dump a.bin -o out

# A fault keeps the old file.
printf '[normal macro 0]\n#GX\n' >bad.kit
expect 1 'bad.kit:2:3: error: group G has*' build bad.kit -o a.bin
cmp -s a.bin b.bin || { echo "program.sh: a fault has cost the old image" >&2; failed=1; }
printf '[normal macro 0]\n#MN 0\n' >loop.kit
expect 1 '*starts itself' check loop.kit
printf '[power-on macro 0]\n#GD 0,0,250,127\n#MN 9\n' >remarks.kit
expect 1 '*power-on macro 0 at 0x0E30, #GD 0,0,250,127: 250 clamped to 239*macro 9 is missing' check remarks.kit
expect 1 '*differs*' diff loop.kit "$examples/panel.kit"
expect 2 'none.bin: error: no such file' check none.bin
expect 2 '*cannot write no/such/a.bin*' build loop.kit -o no/such/a.bin

exit "$failed"
