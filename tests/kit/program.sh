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
# expect_of COMMAND STATUS OUTPUT ARGUMENT...: OUTPUT is a pattern that all it says has to match.
expect_of() {
    local status=0 said
    said=$("$1" "${@:4}" 2>&1) || status=$?
    # shellcheck disable=SC2053  # the right side is a pattern
    if [ "$status" -ne "$2" ] || [[ $said != $3 ]]; then
        echo "program.sh: $1 ${*:4}: status $status, not $2, or not '$3':" >&2
        echo "$said" >&2
        failed=1
    fi
}
expect() { expect_of "$kit" "$@"; }

expect 0 'orvanel42-kit *' --version
expect 0 '*build*dump*check*diff*Exit status*' --help
expect 2 '*required*'
expect 2 '*FILE is required*' check
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
printf '[normal macro 0]\n#GX\n[font 0]\n' >bad.kit
expect 1 'bad.kit:2:3: error: group G has*bad.kit:3:7*' build bad.kit -o a.bin
cmp -s a.bin b.bin || { echo "program.sh: a fault has cost the old image" >&2; failed=1; }
printf '[normal macro 0]\n#MN 0\n' >loop.kit
expect 1 '*starts itself*' check loop.kit
printf '[power-on macro 0]\n#GD 0,0,250,127\n#MN 9\n' >remarks.kit
expect 1 'remarks.kit:*: warning: power-on macro 0, #GD 0,0,250,127: 250 clamped to 239 ?clamped?*macro 9 is missing ?no-macro?' check remarks.kit
# What only a finger reaches: a switch's second state, a row of a list; and what nothing starts.
cat >touch.kit <<KIT
[font 5]
file = "$examples/device/small.bdf"
[power-on macro 0]
#AF 5
#AK 0,0,40,20,1,2,"S"
#AM 50,0,90,20,0,0,10,"UM|A|B|C"
#MD 1,1,5,5,50
[normal macro 5]
#BA 4,5
[power-on macro 3]
#MN 8
[touch macro 2]
#BA 1,5
[menu macro 12]
#BA 2,5
[touch macro 3]
#BA 3,5
#MN 7
KIT
expect 1 '*power-on macro 3*macro 8 is*touch macro 2*bar 1 is*menu macro 12*bar 2 is*touch macro 3*macro 7 is missing*' \
    check touch.kit
expect 1 '*normal macro 5*bar 4 is*touch macro 3: no key*unreached?' check touch.kit
expect 0 '*unreached?' check --fail-on nothing touch.kit  # by a timer of 5 s
if "$kit" check touch.kit | grep 'bar 3'; then
    echo "program.sh: a bar that some page may have defined is told" >&2
    failed=1
fi
printf '[stream before]\n#GD 0,0,250,127\n[normal macro 0]\n#DL\n' >talks.kit
expect 1 'talks.kit: warning: stream at 0x0000, #GD 0,0,250,127: 250 clamped to 239 ?clamped?' check talks.kit
# What a short image leaves out is erased.
printf '\377\377' >short.bin
expect 0 'short.bin: 32768 bytes, not programmed' dump short.bin
expect 1 '*differs*' diff loop.kit "$examples/panel.kit"

# What can't be read or written is no fault of the source.
expect 2 'none.bin: error: no such file' check none.bin
expect 2 'none.kit: error: no such file' build none.kit -o x.bin
expect 2 'none.kit: error: no such file' diff a.bin none.kit
printf 'include none.kit\n' >include.kit
expect 1 "include.kit:1:9: error: 'none.kit': no such file" check include.kit
expect 2 '*cannot write no/such/a.bin*' build loop.kit -o no/such/a.bin
full() { "$kit" "$@" 2>&1 >/dev/full; }
closed() { "$kit" "$@" 2>&1 >&-; }
for way in full closed; do
    reason='No space left on device'
    [ $way = full ] || reason='Bad file descriptor'
    for line in --help --version 'build --help' commands 'dump a.bin' 'check loop.kit' \
        'diff a.bin loop.kit' 'build loop.kit -o x.bin'; do
        # shellcheck disable=SC2086  # the words of a line
        expect_of $way 2 "orvanel42-kit: error: can't write to standard output: $reason" $line
    done
done
# Who closes a pipe has read enough.
"$kit" commands 2>said | head -n 1 >first || :
[ ! -s said ] || { cat said >&2; failed=1; }

# What is no image is refused before anything is read out of it.
printf 'Hello, 100 \xC2\xB0C\n' >readme.md
expect 2 'readme.md: error: is a text, and no image;*' check readme.md
expect 2 'readme.md: error: is a text*' dump readme.md
expect 2 '*logo.png: error: is a picture, and no image;*' check "$examples/device/logo.png"
expect 2 '*logo.png: error: has a zero byte in it, and so is no text of a kit' build "$examples/device/logo.png" -o x.bin
head -c 5000 a.bin >cut.bin
expect 1 'cut.bin: the file ends at 5000, its image with its CRC at *' check cut.bin
head -c 32768 "$kit" >noise.bin
expect 1 'noise.bin: this is hardly an EEPROM image:*' check noise.bin
expect 1 'noise.bin: this is hardly an EEPROM image:*' dump noise.bin
expect 0 'noise.bin: this is hardly an EEPROM image:*' dump noise.bin -o noise

# No output goes over what the kit is made of, by whatever name.
cp "$examples/device/logo.png" logo.bin
ln logo.bin other.bin
printf '[picture 0]\nfile = logo.bin\n' >part.kit
printf 'include part.kit\n' >source.bin
for line in 'source.bin -o source.bin' 'source.bin -o x.bin -o other.bin' "part.kit -o $folder/./logo.bin"; do
    # shellcheck disable=SC2086
    expect 2 '*would overwrite *, which the kit is made of*' build $line
done
cmp -s logo.bin "$examples/device/logo.png" && [ "$(cat source.bin)" = 'include part.kit' ] ||
    { echo "program.sh: an input is lost" >&2; failed=1; }

# A dump that fails, is ended or is killed leaves nothing that the next one would stumble over.
limited() { (ulimit -f 8 && "$kit" "$@" 2>&1 >/dev/null); }
expect_of limited 2 'orvanel42-kit: error: cannot write into half: File too large' dump a.bin -o half
expect_of limited 2 'orvanel42-kit: error: cannot write x.bin: File too large' build loop.kit -o x.bin
[ ! -e half ] || { echo "program.sh: half a dump is left" >&2; failed=1; }
export ASAN_OPTIONS=detect_leaks=0  # which is for a program that nobody traces
interrupted() { # SYSTEM-CALL SIGNAL WHICH ARGUMENT...
    strace -f -qq -o /dev/null -e "inject=$1:signal=$2:when=$3" "$kit" "${@:4}" 2>&1
}
for call in fsync rename; do
    for at in 1 2 9; do
        expect_of interrupted 137 '*' $call KILL $at dump a.bin -o half
        expect 0 '*' dump a.bin -o half
        diff -r out half >&2 || failed=1
        rm -r half
        expect_of interrupted 143 '*' $call TERM $at dump a.bin -o half
        [ ! -e half ] || [ ! -e half/unfinished-dump ] || { echo "program.sh: ended at $call $at" >&2; failed=1; }
        rm -rf half
    done
done
# What others have put there is no dump half done, whatever its name.
mkdir -p half/unfinished-dump
: >half/mine
expect 2 '*empty*half/mine*' dump a.bin -o half
mv half/mine half/unfinished-dump
expect 2 '*empty*half/unfinished-dump/mine*' dump a.bin -o half
mv half/unfinished-dump/mine half/a.kit
expect 2 '*empty*half/a.kit*' dump a.bin -o half
expect_of interrupted 143 '*' fsync TERM 1 build "$examples/device.kit" -q -o new.bin
cmp -s new.bin a.bin && [ -z "$(find . -name '*.part')" ] || { echo "program.sh: a signal tears a file" >&2; failed=1; }
# What a kill leaves beside the output goes with the next build of it, but not what a living process writes.
expect_of interrupted 137 '*' fsync KILL 1 build loop.kit -q -o new.bin
[ "$(find . -name '*.part' | wc -l)" -eq 1 ] || { echo "program.sh: a kill leaves no part" >&2; failed=1; }
: >"new.bin.$$.part"
expect 0 '' build loop.kit -q -o new.bin
[ "$(find . -name '*.part')" = "./new.bin.$$.part" ] ||
    { echo "program.sh: parts: $(find . -name '*.part' | tr '\n' ' ')" >&2; failed=1; }
rm "new.bin.$$.part"

# The map beside an image goes with that image alone.
printf '[power-on macro 0]\n#GD 0,0,250,9\n' >map.kit
expect 0 'map.bin*' build map.kit -o map.bin --map page.map
expect 1 'map.kit:2:1: warning: power-on macro 0, #GD *' check map.bin --map page.map
expect 2 'page.map: error: is the map of another image*' check a.bin --map page.map
expect 2 'a.bin: error: is no map of an image*' check map.bin --map a.bin >/dev/null
expect 2 '*is for an image*' check map.kit --map page.map
expect 2 '*is the file of -o too*' build map.kit -o map.bin --map map.bin
expect 2 '*--map map.kit would overwrite map.kit*' build map.kit -o map.bin --map map.kit

# The names of a kit, for C and for Python.
expect 0 '*' build "$examples/device.kit" -o a.bin --header device.h --python device.py
cc -std=c99 -Wall -Wextra -Werror -fsyntax-only -include device.h -x c - <<<'int home = DEVICE_PICTURE_HOME;'
[ "$(python3 -c 'import device; print(device.FONT_HUGE, device.KEY_LAMP_UP)')" = "6 7" ]
expect 2 '*--header a.bin is the file of -o too*' build map.kit -o a.bin --header a.bin
expect 2 '*--python map.kit would overwrite map.kit*' build map.kit -o a.bin --python map.kit

# What a terminal would act on is shown instead.
order=$'\e[2J'
printf '[normal macro 0]\n#GX\n' >"$order.kit"
expect 1 '\\x1B\[2J.kit:2:3: error: *' build "$order.kit" -o a.bin
expect 2 '\\x1B\[2J.bin: error: no such file' check "$order.bin"
expect 2 '*cannot write no/\\x1B\[2J.bin*' build "$examples/device.kit" -o "no/$order.bin"
expect 0 '\\x1B\[2J.bin: 32768 bytes*' build "$examples/device.kit" -o "$order.bin"

exit "$failed"
