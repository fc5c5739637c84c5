#!/bin/sh
# Compiles every shared header alone, as C11 and as C++11 and C++20, in 64 and in 32 bits, with each compiler on this
# machine. check_headers.sh INCLUDE_DIR
include_dir=$1
warnings="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-definition -Werror"
failures=0
count=0

# check COMPILER LANGUAGE STANDARD: headers one by one.
check() {
    flags=$warnings
    [ "$2" = c++ ] && flags="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wold-style-cast -Werror"
    for bits in 64 32; do
        for file in "$include_dir"/tovu/*.h; do
            count=$((count + 1))
            # Included, since a header given as the main file may not say `#pragma once` and the like without a warning.
            printf '#include "%s"\n' "$file" |
                "$1" -m$bits -x "$2" -std="$3" $flags -I "$include_dir" -fsyntax-only - || {
                echo "FAILED: $(basename "$file") with $1 -m$bits -std=$3" >&2
                failures=$((failures + 1))
            }
        done
    done
}

for pair in "gcc g++" "clang clang++"; do
    set -- $pair
    if ! command -v "$1" >/dev/null || ! command -v "$2" >/dev/null; then
        echo "$1 and $2 are not both here: not checked with them"
        continue
    fi
    check "$1" c c11
    check "$2" c++ c++11
    check "$2" c++ c++20
done
echo "$count compilations, $failures failed"
[ "$count" -gt 0 ] && [ "$failures" -eq 0 ]
