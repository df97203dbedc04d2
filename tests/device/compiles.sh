#!/bin/sh
# compiles.sh INCLUDE: the header stands alone, in C and C++, with each compiler and no warning.

set -eu
strict="-Wall -Wextra -Wpedantic -Wconversion -Wsign-conversion -Wshadow -Werror -fsyntax-only"
source='#include "orvanel42.h"'
for language in c:c99 c:c11 c++:c++11 c++:c++20; do
    for compiler in gcc clang; do
        printf '%s\n' "$source" |
            "$compiler" -x "${language%:*}" -std="${language#*:}" $strict -I "$1" -
    done
done
