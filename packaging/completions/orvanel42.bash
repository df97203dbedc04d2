# Completion of the four programs for bash.

_orvanel42() {
    local word=$2 before=$3
    local program=${1##*/} options=
    case $program in
    orvanel42) options="--dir --image --mem --serial --protocol --new-instance --help --version" ;;
    orvanel42-headless)
        options="--dir --image --map --mem --kit --save-image --realtime --serial --protocol --update
            --json --update-missing --out --junit --trace --trace-json --trace-layers --strict --jobs --commands --help --version" ;;
    orvanel42-terminal) options="--dir --send --hex --file --answers --quiet --help --version" ;;
    orvanel42-kit)
        options="--output --map --header --python --image-length --crc --stream-length --fail-on --quiet --help --version"
        if [ "$COMP_CWORD" -eq 1 ]; then
            mapfile -t COMPREPLY < <(compgen -W "build dump check diff commands --help --version" -- "$word")
            return
        fi ;;
    esac
    case $before in
    --dir | --out) mapfile -t COMPREPLY < <(compgen -d -- "$word") ;;
    --mem) mapfile -t COMPREPLY < <(compgen -W "32 64" -- "$word") ;;
    --protocol) mapfile -t COMPREPLY < <(compgen -W "plain pactlink" -- "$word") ;;
    --serial) mapfile -t COMPREPLY < <(compgen -W "pty tcp: stdio" -- "$word"
                                       compgen -f -- "$word") ;;
    *)
        if [[ $word == -* ]]; then
            mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
        else
            mapfile -t COMPREPLY < <(compgen -f -- "$word")
        fi ;;
    esac
}
complete -o filenames -F _orvanel42 orvanel42 orvanel42-headless orvanel42-kit orvanel42-terminal
