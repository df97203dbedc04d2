#!/bin/bash
# Completions and man pages list the options that --help lists, no more and no fewer, and likewise what
# comes first with the kit compiler: options_are_listed.sh PACKAGING PROGRAM...
set -euo pipefail

packaging=$1
shift
failed=0

of_help() { # PROGRAM [word]
    # An option begins its line, perhaps behind a letter; so does a subcommand below its heading.
    "$@" --help | awk '/^[^ ].*:$/ { words = /^Subcommands/ } words && /^  [a-z]/ { print $1 }
        match($0, /^ +(-[a-zA-Z],)?--[a-z-]+/) { print substr($0, RSTART, RLENGTH) }' |
        sed -E 's/^ +//; s/^-[a-zA-Z],//'
}

# shellcheck source=/dev/null
source "$packaging/completions/orvanel42.bash"

of_bash() { # NAME
    # They are no calls by a shell: the word to complete comes second, that before it third.
    COMP_CWORD=1
    _orvanel42 "$1" - "$1"
    printf '%s\n' "${COMPREPLY[@]}"
    [ "$1" = orvanel42-kit ] || return 0
    _orvanel42 "$1" '' "$1"
    printf '%s\n' "${COMPREPLY[@]}"
    COMP_CWORD=2
    _orvanel42 "$1" - build
    printf '%s\n' "${COMPREPLY[@]}"
}

of_zsh() { # NAME
    { grep '^local usual=' "$packaging/completions/_orvanel42"
      sed -n "/^$1)/,/;;/p" "$packaging/completions/_orvanel42"; } >block
    grep -oE -- '--[a-z][a-z-]*' block
    sed -nE 's/.*1:what to do:\(([^)]*)\).*/\1/p' block | tr ' ' '\n'
}

of_fish() { # NAME
    awk -v name="$1" '$1 == "for" { listed = $0 " " } $1 == "end" { listed = "" }
        $1 == "complete" && ($3 == name || ($3 == "$program" && index(listed, " " name " ")))' \
        "$packaging/completions/orvanel42.fish" >block
    sed -nE 's/.* -l ([a-z-]+).*/--\1/p' block
    sed -nE "s/.*__fish_use_subcommand .*-a '([^']*)'.*/\1/p" block | tr ' ' '\n'
}

of_man() { # NAME
    local page=$packaging/man/$1.1.md
    grep -oE '\*\*--[a-z-]+\*\*' "$page" | tr -d '*'
    sed -nE "s/^\*\*$1 ([a-z]+)\*\*.*/\1/p" "$page"
}

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
for program; do
    name=${program##*/}
    of_help "$program" | sort -u >help
    for word in $(grep -v -- '^-' help); do
        of_help "$program" "$word"
    done | sort -u - help >options
    for list in bash zsh fish man; do
        "of_$list" "$name" | sort -u >"$list"
        diff -U 0 --label "$name --help" --label "its list for $list" options "$list" >&2 || failed=1
    done
done
[ "$(wc -l <options)" -gt 5 ]  # so that the road to the words is whole
exit "$failed"
