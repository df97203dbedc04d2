#!/bin/bash
# What a program finds in its folder, or is named, is written over only where that is meant, and what
# others do to the folder meanwhile costs no image: guards_its_files.sh HEADLESS TERMINAL
set -euo pipefail
. "$(dirname "$0")/../../../support/waiting.sh"

headless=$1
terminal=$2
folder=$(mktemp -d)
running=()
trap 'kill -KILL "${running[@]}" 2>/dev/null || true; rm -rf "$folder"' EXIT
cd "$folder"
mkfifo commands
exec 4<>commands # a scenario that goes on
head -c 32768 /dev/zero | tr '\0' '\377' >blank
echo precious >precious
write='1B "&E" 30 0E 05 00 "Wfirst"'
restart='1B "&E" 00 00 00 00 "J"'
printf 'scenario 1\nsend %s %s\nsettle\n' "$write" "$restart" >stream.scn
echo 'scenario 1' >nothing.scn

fresh() { # makes a folder `module` with an empty image
    rm -rf module
    mkdir module
    cp blank module/Orvanel42.bin
}
hears() { # OPTION...
    [ "$("$terminal" --dir module --answers --hex --quiet 1000 "$@" --send '1B "?"')" = 'FF FF 48 F0 00 80 00 01 42' ]
}
start() {
    "$headless" --realtime --dir module <&4 >said 2>told &
    running=($!)
    until_it hears
}
programs() {
    "$terminal" --dir module --send "$write" --send "$restart"
    until_it hears
}
ends_with() { # STATUS
    local status=0
    kill -TERM "${running[0]}"
    wait "${running[0]}" || status=$?
    [ "$status" = "$1" ]
}
holds() { grep -q "$2" "$1"; }

# A lock file, settings or an image that lead elsewhere, or are somebody's.
not_ours='is something else than a lock file'
for lead in 'ln -s ../precious' 'ln ../precious' 'cp ../precious' 'ln -s ../nothing'; do
    fresh
    (cd module && $lead Orvanel42.lock)
    refuses "$not_ours" "$headless" --dir module nothing.scn
done
[ ! -e nothing ]
for name in simulator.ini Orvanel42.bin; do
    fresh
    ln -sf ../precious module/$name
    refuses 'is a link to ../precious' "$headless" --dir module stream.scn
done
grep -qx precious precious
fresh
printf '/run/a-socket\n123\n' >module/Orvanel42.lock # of a program that was killed
printf '[Orvanel42]\nadr=3\n' >ini
ln -s ../ini module/simulator.ini
"$headless" --dir module stream.scn
grep -qx xpos=100 ini

# Parts of files that killed programs have left.
fresh
true &
dead=$!
wait $dead
touch module/{simulator.ini,Orvanel42.bin,Orvanel42.bin.bak}.$dead.part module/Orvanel42.bin.$$.part
"$headless" --dir module nothing.scn
[ "$(cd module && echo *.part)" = Orvanel42.bin.$$.part ]

# An image that is longer than the memory.
long() { cat blank blank >"$1"; }
fresh
long module/Orvanel42.bin
"$headless" --dir module stream.scn 2>told
grep -q 'of 65536 bytes only the first 32768 are used.*renamed to module/Orvanel42.bin.1$' told
cmp <(long /dev/stdout) module/Orvanel42.bin.1
holds module/Orvanel42.bin first
[ "$(stat -c %s module/Orvanel42.bin)" = 32768 ]
long x
touch x.1
"$headless" --image x --save-image x stream.scn 2>told
grep -q 'renamed to x.2$' told
cmp <(long /dev/stdout) x.2
cmp x module/Orvanel42.bin
long y
"$headless" --save-image y stream.scn 2>told
grep -q 'y was longer .* is now y.1$' told
# A limit for files is told, and ends nothing by its signal.
limited() { (ulimit -f 8 && "$headless" "$@"); }
refuses 'cannot save z: File too large' limited --save-image z stream.scn

# An output that is an input, or another output.
cp stream.scn kept.scn
for option in --trace --trace-json --junit --save-image; do
    refuses "$option: ./stream.scn is the file of SCENARIO" "$headless" $option ./stream.scn stream.scn
    for name in simulator.ini Orvanel42.lock; do
        refuses 'is the file of --dir' "$headless" --dir module $option module/$name stream.scn
    done
    refuses 'is the file of --kit' "$headless" --kit precious $option precious stream.scn
    for line in 'open precious' 'feed "precious"' 'drop ./precious 1 1'; do
        printf 'scenario 1\nsend %s %s\nsettle\n%s\n' "$write" "$restart" "$line" >naming.scn
        refuses "$option: precious is a file of naming.scn, line 4" "$headless" $option precious naming.scn
        # Of one that comes from a pipe the lines are known too late, but for what is written at its end.
        refuses precious "$headless" $option precious < <(cat naming.scn)
    done
    grep -qx precious precious
done
for option in --trace --trace-json --junit; do # what they have written they may write over
    "$headless" $option former stream.scn
    "$headless" $option former - <stream.scn
    cp former kept
    # But not over one that a line from a pipe turns out to name.
    for line in 'open former' 'feed former' 'include former' 'open former.kit'; do
        printf 'include "former"\n' >former.kit
        printf '%s\n' "$line" >naming.scn
        refuses "$option too: name another one" "$headless" $option former - <naming.scn
        cmp former kept
    done
    [ -z "$(find . -maxdepth 1 -name '*.part')" ]
    rm former
done
# What is read for a file that a line names: what that includes, and what a kit is made of.
printf 'kit 1\ninclude middle.kit\n' >page.kit
printf 'include part.kit\n' >middle.kit
printf '[normal macro 0]\ntext "x"\n' >part.kit
cp "$(dirname "$0")/../../../../examples/device/logo.png" logo.png
printf '[picture 0]\nfile = logo.png\n' >>part.kit
printf '\xEF\xBB\xBFopen page.kit\n' >opens.scn
printf 'include opens.scn\ninclude includes.scn\n' >includes.scn
for output in part.kit middle.kit logo.png; do
    cp $output kept
    for scenario in opens.scn includes.scn; do
        refuses "$output is a file of opens.scn, line 1" "$headless" --trace $output $scenario
        refuses "$output, which page.kit is made of" "$headless" --save-image $output - <$scenario
    done
    refuses "$output is a file of the kit page.kit" "$headless" --kit page.kit --trace $output nothing.scn
    cmp $output kept
done
refuses 'is the file of --trace too' "$headless" --trace t --junit "$folder/t" stream.scn
cmp stream.scn kept.scn

# The lock file is gone, but the folder is locked as well.
fresh
start
rm module/Orvanel42.lock
refuses 'module is in use by another program' "$headless" --dir module nothing.scn
ends_with 0

# That gives the folder to nobody else: the image to keep is still the one from before this run.
fresh
start
programs
until_it holds module/Orvanel42.bin first
rm module/Orvanel42.lock
printf 'send 1B "&E" 30 0E 06 00 "Wsecond" %s\n' "$restart" >&4
until_it holds module/Orvanel42.bin second
saved=$(stat -c %i module/Orvanel42.bin)
ends_with 0
[ "$(stat -c %i module/Orvanel42.bin)" = "$saved" ] # the end has nothing left to save
cmp module/Orvanel42.bin.bak blank

# The folder is gone: it is made again, with what its user had written.
fresh
printf '[Orvanel42]\nadr=3\n' >module/simulator.ini
start
programs
until_it holds module/Orvanel42.bin first
rm -rf module
ends_with 0
holds module/Orvanel42.bin first
grep -qx adr=3 module/simulator.ini

# The next one of its name is nobody's, and has an image: that is kept as any former one.
fresh
start
programs
until_it holds module/Orvanel42.bin first
fresh
ends_with 0
holds module/Orvanel42.bin first
cmp module/Orvanel42.bin.bak blank

# The folder is gone, and the next one of its name is another program's.
fresh
start
programs
until_it holds module/Orvanel42.bin first
first=${running[0]}
fresh
start
running=("$first" "${running[@]}")
ends_with 2
holds module/Orvanel42.bin.1 first
cmp module/Orvanel42.bin blank
kill -TERM "${running[1]}"
wait "${running[1]}"
