#!/bin/sh
# Compiles every shared header alone, as C11, C++11 and C++20, in 64 and in 32 bits, with gcc and, where it is installed,
# clang. check_headers.sh INCLUDE_DIR
include_dir=$1
warnings="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror -fsyntax-only"
failures=0
count=0

# check COMPILER LANGUAGE STANDARD WARNING: the compiler may bring options.
check() {
    for file in "$include_dir"/tovu/*.h; do
        count=$((count + 1))
        # Included, since a main file may not say `#pragma once` without a warning.
        printf '#include "%s"\n' "$file" | $1 -x "$2" -std="$3" $warnings "$4" -I "$include_dir" - || {
            echo "FAILED: $(basename "$file") with $1 -std=$3" >&2
            failures=$((failures + 1))
        }
    done
}
# check_both C_COMPILER C++_COMPILER
check_both() {
    check "$1" c c11 -Wold-style-definition
    check "$2" c++ c++11 -Wold-style-cast
    check "$2" c++ c++20 -Wold-style-cast
}
check_both gcc g++
check_both i686-linux-gnu-gcc i686-linux-gnu-g++
if command -v clang >/dev/null && command -v clang++ >/dev/null; then
    check_both clang clang++
    check_both "clang --target=i686-linux-gnu" "clang++ --target=i686-linux-gnu"
fi
echo "$count compilations, $failures failed"
[ "$count" -gt 0 ] && [ "$failures" -eq 0 ]
