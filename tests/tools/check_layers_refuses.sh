#!/bin/bash
# check_layers_refuses.sh CHECK: plants one fault after the other in a small house, and looks whether
# the check of the layers finds it and says where.
set -euo pipefail
check=$1
house=$(mktemp -d)
trap 'rm -rf "$house"' EXIT

build_house() {
    rm -rf "${house:?}"/*
    mkdir -p "$house"/{tools,cellar,hall,loft/east,loft/west}
    printf '%s\n' '# lowest first' '1 cellar what lies below' '2 hall what stands on it' \
        '3 loft/east one side' '3 loft/west the other' '4 tools the scripts' >"$house/tools/floors"
    echo '#pragma once' >"$house/cellar/coal.h"
    printf '#include "cellar/coal.h"\n' >"$house/hall/chair.h"
    printf '#include "hall/chair.h"\n' >"$house/hall/table.h"
    printf '#include "hall/table.h"\n#include <vector>\n' >"$house/hall/table.cpp"
    printf '#include "hall/chair.h"\n' >"$house/loft/east/lamp.h"
    printf '#include "cellar/coal.h"\n' >"$house/loft/west/bed.h"
}

# expect WORDS...: the check fails, with each of the words in what it prints.
expect() {
    local said
    if said=$("$check" "$house"); then
        echo "not refused: $1"
        exit 1
    fi
    for words in "$@"; do
        grep -qF -- "$words" <<<"$said" && continue
        printf 'expected: %s\nprinted: %s\n' "$words" "$said"
        exit 1
    done
    build_house
}

build_house
"$check" "$house"

echo '#include "hall/chair.h"' >>"$house/cellar/coal.h"
expect 'cellar/coal.h:2: hall/chair.h is in hall, which is above cellar'

echo '#include "loft/west/bed.h"' >>"$house/loft/east/lamp.h"
expect 'loft/east/lamp.h:2: loft/west/bed.h is in loft/west, which is on the floor of loft/east'

# A ring of pairs: what a source includes counts for its header.
echo '#include "hall/table.h"' >"$house/hall/chair.cpp"
expect 'closes a ring: hall/chair -> hall/table -> hall/chair'

sed -i 's/^1 cellar/5 cellar/' "$house/tools/floors"
expect 'floors:3: hall is out of order: floor 2 after 5'

echo '1 shed what nobody built' | cat - "$house/tools/floors" >"$house/floors"
mv "$house/floors" "$house/tools/floors"
expect 'shed is not there'

mkdir "$house/annex"
echo '#include "cellar/coal.h"' >"$house/annex/door.h"
expect 'annex/door.h:1: is on no floor'

printf '#include <mutex>\n#include "chair.h"\n#include "cellar/sand.h"\n' >"$house/hall/table.cpp"
expect 'hall/table.cpp:1: mutex brings in a lock' \
    'hall/table.cpp:2: chair.h is named from the root' \
    'hall/table.cpp:3: cellar/sand.h is not there'

mkdir -p "$house/docs/inside"
"$check" --print "$house" | sed 's/what stands on it/what hangs on it/' >"$house/docs/inside/tour.md"
expect "doesn't print the floors as tools/floors has them"
