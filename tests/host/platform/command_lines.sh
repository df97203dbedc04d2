#!/bin/bash
# What the programs say of a command line, all in the same words: command_lines.sh PROGRAM...
set -euo pipefail

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
mkfifo fifo
failed=0

to_full() { "$@" >/dev/full; }

# says STATUS TEXT COMMAND...: TEXT begins what the program says on standard error, after its name.
says() {
    local status=0
    "${@:3}" >out 2>err || status=$?
    if [ "$status" -ne "$1" ] || [[ $(cat err) != "$name: error: $2"* ]]; then
        printf 'command_lines.sh: %s: status %d, not %d, or not "%s":\n%s\n' "${*:3}" "$status" "$1" "$2" "$(cat err)" >&2
        failed=1
    fi
}

for program; do
    name=${program##*/}
    full=2  # the status when standard output can't be written
    case $name in
    orvanel42-kit)
        says 2 "'bild' is no subcommand; is it 'build'?" "$program" bild a.kit --output a.bin
        says 2 "'none' is no subcommand"$'\n' "$program" none
        says 2 "'--output' is no option before the subcommand"$'\n' "$program" --output a.bin build a.kit
        says 2 "'--ouput' is no option of build; is it '--output'?" "$program" build a.kit --ouput=a.bin
        says 2 "'--quiet' is no option of dump"$'\n' "$program" dump a.bin --quiet ;;
    orvanel42-terminal)
        full=1
        says 2 "'--sned' is no option; is it '--send'?" "$program" --sned --file none
        says 2 "'--dri' is no option; is it '--dir'?" "$program" --dri x
        says 2 '--file: none: no such file' "$program" --file none
        says 2 "'42' is one argument too many" "$program" --dir . --send 41 42
        says 1 'no program that takes messages' "$program" --dir . --send 41 --send 42 ;;
    *)
        # A wrong option leaves its value behind, which looks like a file.
        says 2 "'--seral' is no option; is it '--serial'?" "$program" --seral pty
        says 2 "'--seral' is no option; is it '--serial'?" "$program" none --seral pty
        for special in /dev/zero . fifo; do # which would never end, or wait
            says 2 "--image: $special: not a plain file" "$program" --image $special
        done
        says 2 '--image: none: no such file' "$program" --image none
        says 2 "--protocol: 'pln' is neither plain nor pactlink; is it 'plain'?" "$program" --protocol pln ;;
    esac
    if [ "$name" = orvanel42-headless ]; then
        echo time >time.scn
        for line in --commands 'time.scn time.scn'; do
            # shellcheck disable=SC2086  # the words of a line
            says 2 "can't write to standard output: No space left on device" to_full "$program" $line
        done
    fi
    if [ "$name" = orvanel42 ]; then
        says 2 'FILE: none: no such file' "$program" none
        says 2 'FILE: --none: no such file' "$program" -- --none
        : >plain
        says 2 '' "$program" --dir plain
    fi
    says 2 "'--zzzzzz' is no option" "$program" --zzzzzz
    says 2 "'--hlep' is no option" "$program" --hlep=x
    says 2 '' "$program" $'--\e[2J'
    if grep -q $'\e' err; then
        echo "command_lines.sh: $name shows a terminal what it acts on" >&2
        failed=1
    fi
    "$program" --help >help
    if ! grep -q '^Exit status: 0 ' help || grep -n '.\{81\}' help >&2; then
        echo "command_lines.sh: $name --help lists no exit statuses, or has long lines" >&2
        failed=1
    fi
    for option in --help --version; do
        says "$full" "can't write to standard output: No space left on device" to_full "$program" "$option"
    done
done
exit "$failed"
