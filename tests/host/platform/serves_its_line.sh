#!/bin/bash
# A program talks on the line that --serial or the settings name: serves_its_line.sh PROGRAM [OPTION...]
set -euo pipefail

program=("$@")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
mkfifo "$folder/commands"
exec 4<>"$folder/commands"  # open without an end: a scenario that goes on

settings() { # LINE...
    printf '%s\n' '[Orvanel42]' protocol=0 baud=9600 "$@" >"$folder/simulator.ini"
}

start() { # OPTION...
    "${program[@]}" --dir "$folder" "$@" >"$folder/said" 2>"$folder/told" <&4 &
    running=$!
}

end() {
    kill -TERM "$running"
    wait "$running"
}

# Waits until the command succeeds, a minute at most.
until_it() { # COMMAND...
    local i
    for ((i = 0; i < 600; ++i)); do
        ! "$@" 2>"$folder/last" || return 0
        sleep 0.1
    done
    echo "never: $*" >&2
    cat "$folder/last" "$folder/told" >&2
    return 1
}

# Asks what stands at the other end of descriptor 3 who it is. While the module has its reset it
# hears nothing.
answers() {
    printf '\x1b?' >&3
    timeout 1 head -c 9 <&3 | cmp - <(printf '\xff\xff\x48\xf0\x00\x80\x00\x01\x42')
}

# A pseudo terminal, its name, and a link that goes with it. None of it is saved.
settings
start --serial "pty:$folder/line"
until_it test -e "$folder/line"
exec 3<>"$folder/line"
until_it answers
grep -qx "serial $(readlink "$folder/line")" "$folder/said"
end
[ ! -L "$folder/line" ]
grep -qx com=none "$folder/simulator.ini"
grep -qx baud=9600 "$folder/simulator.ini"

# The protocol of this run alone. What is sent as soon as the line is there arrives, and no demo wipes it.
printf '%s\n' '[Orvanel42]' protocol=1 >"$folder/simulator.ini"
start --serial "pty:$folder/line" --protocol plain
until_it test -e "$folder/line"
exec 3<>"$folder/line"
printf '\x1b?' >&3
timeout 120 head -c 9 <&3 | cmp - <(printf '\xff\xff\x48\xf0\x00\x80\x00\x01\x42')
end
grep -qx protocol=1 "$folder/simulator.ini"
[ ! -e "$folder/Orvanel42.bin" ]

# A TCP port.
settings
start --serial tcp:0
until_it grep -q '^serial 127.0.0.1:' "$folder/said"
exec 3<>"/dev/tcp/127.0.0.1/$(sed -n 's/^serial 127.0.0.1://p' "$folder/said")"
until_it answers
exec 3<&-
end

# What the settings name; and a file of the user's that is in the way.
settings com=2 '[Ports]' COM2=pty
start
until_it test -e "$folder/COM2"
exec 3<>"$folder/COM2"
until_it answers
end
[ ! -L "$folder/COM2" ]
grep -qx com=2 "$folder/simulator.ini"
echo mine >"$folder/COM2"
start
until_it grep -q "COM2: something of that name is there already" "$folder/told"
end
grep -qx mine "$folder/COM2"

# A slip of the pen.
status=0
"${program[@]}" --serial pyt 2>"$folder/told" || status=$?
[ "$status" = 2 ]
grep -q '"pyt"' "$folder/told"
