#!/bin/sh
# Prints the binary interface between hosts and plug-ins, a row for each size, field, constant, function and export.
# Nothing is run, so the compilers may be those of other platforms.
# describe_abi.sh INCLUDE_DIR PLUGIN COMPILER_32 COMPILER_64
set -eu
include_dir=$1
plugin=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

echo "# The binary interface of a release, made by describe_abi.sh. It never changes; each release adds its own file."
echo "# Sizes and offsets are for 4-byte and for 8-byte pointers."

# The headers without comments.
cat "$include_dir"/tovu/*.h | "$4" -fpreprocessed -dD -E -P -w -x c - >"$work/declarations"

# One assembly line for each row: the compiler writes the number behind the text.
{
    for header in "$include_dir"/tovu/*.h; do echo "#include <tovu/$(basename "$header")>"; done
    cat <<'END'
#include <stddef.h>
#define ROW(text, value) __asm__("\n@" text " %c0" : : "i"(value))
void rows(void) {
END
    awk '
        /^typedef struct/ { type = $3; printf "ROW(\"size %s\", sizeof(%s));\n", type, type }
        /^}/ { type = "" }
        type != "" && match($0, /[a-z0-9_]+(\[[0-9]+\])?;$/) {
            field = substr($0, RSTART, RLENGTH - 1)
            kind = substr($0, 1, RSTART - 1)
            gsub(/^ +| +$/, "", kind)
            name = field
            sub(/\[.*/, "", name)
            printf "ROW(\"field %s.%s %s\", offsetof(%s, %s));\n", type, field, kind, type, name
        }
        /^#define (TOVU|GL)_[A-Z0-9_]+ [0-9I]/ { printf "ROW(\"constant %s\", %s);\n", $2, $2 }
    ' "$work/declarations"
    grep -o 'TOVU_[A-Z_]* = ' "$work/declarations" | sed 's/\(.*\) = /ROW("constant \1", \1);/'
    echo '}'
} >"$work/rows.c"

# rows COMPILER BITS
rows() {
    "$1" -std=c11 -S -I "$include_dir" -aux-info "$work/functions" -o "$work/rows.s" "$work/rows.c"
    sed -n 's/^@//p' "$work/rows.s" >"$work/rows$2"
}
rows "$3" 32
rows "$4" 64

paste -d ' ' "$work/rows32" "$work/rows64" | awk '
    $1 == "constant" { print $1, $2, $3; next }
    { half = NF / 2; narrow = $half; $half = $half " " $NF; NF = half; print }'

sed -n 's/^.* extern \(.*[ *]\)\(\(PLUGIN_\|pel\|_api__\|ormixGL_\)[A-Za-z0-9_]*\) \((.*)\);.*$/function \2 \1\4/p' \
    "$work/functions"

case $plugin in
    *.dll) "${4%gcc}objdump" -p "$plugin" | sed -n 's/^\t\[ *[0-9]*\] \([^ ]*\)$/export \1/p' ;;
    *) "${4%gcc}nm" -D --defined-only "$plugin" | sed 's/^.* /export /' ;;
esac | sort
