# waiting.sh: for tests in the shell, which source it: to wait for something, and to be refused.

# Waits until the command succeeds, a minute at most; then shows what it said, and the file `told`
# if there is one, which is for what a program in the background says.
until_it() { # COMMAND...
    local i
    for ((i = 0; i < 600; ++i)); do
        ! "$@" >last 2>&1 || return 0
        sleep 0.1
    done
    echo "never: $*" >&2
    cat last >&2
    [ ! -e told ] || cat told >&2
    return 1
}

# A command that has to end with status 2 and to say the text.
refuses() { # TEXT COMMAND...
    local status=0
    "${@:2}" >last 2>&1 || status=$?
    if [ "$status" != 2 ] || ! grep -qF -- "$1" last; then
        echo "status $status: ${*:2}" >&2
        cat last >&2
        return 1
    fi
}
