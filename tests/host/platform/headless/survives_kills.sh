#!/bin/bash
# A save that is killed leaves the former image or the new one: survives_kills.sh HEADLESS
# strace kills the program at its first call of each kind, at its second, and so on to the end.
set -euo pipefail

headless=$1
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export ASAN_OPTIONS=detect_leaks=0  # which is for a program that nobody traces
head -c 32768 /dev/zero | tr '\0' '\377' >former
# Five bytes into the data area, and a restart, which counts as programmed.
printf 'scenario 1\nsend 1B 26 45 30 0E 05 00 57 "other" 1B 26 45 00 00 00 00 4A\nsettle\n' >stream.scn
"$headless" --image former --save-image new stream.scn
if cmp -s former new; then exit 1; fi

whole() { cmp -s module/Orvanel42.bin former || cmp -s module/Orvanel42.bin new; }

kills=0
for call in openat write fchmod fsync close link unlink rename; do
    for ((at = 1; ; ++at)); do
        rm -rf module
        mkdir module
        cp former module/Orvanel42.bin
        printf '[Orvanel42]\nadr=3\n' >module/simulator.ini
        status=0
        {
            strace -f -qq -o /dev/null -e "inject=$call:signal=KILL:when=$at" \
                "$headless" --dir module stream.scn >said 2>&1 || status=$?
        } 2>last  # the shell tells of it
        if ! whole || ! grep -qx adr=3 module/simulator.ini; then
            echo "torn by a kill at $call number $at" >&2
            exit 1
        fi
        [ $status -ne 0 ] || break
        [ $status -eq 137 ] || { cat said >&2; exit 1; }
        kills=$((kills + 1))
    done
done
echo "$kills kills"
[ $kills -ge 20 ]
