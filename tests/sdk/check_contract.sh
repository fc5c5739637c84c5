#!/bin/sh
# Compares docs/contract.md and the sample host with the shared headers. The document's prototypes and tables of offsets
# are compiled after the headers, in 64 and in 32 bits. The document lists every function of the headers, and the sample
# host exports every function that plug-ins import. check_contract.sh INCLUDE_DIR CONTRACT_MD SAMPLE_HOST
include_dir=$1
contract=$2
sample_host=$3
work=$(mktemp -d) || exit 1
trap 'rm -rf "$work"' EXIT
failures=0

for header in "$include_dir"/tovu/*.h; do echo "#include <tovu/$(basename "$header")>"; done >"$work/contract.c"
echo "#include <assert.h>" >>"$work/contract.c"

# Everything in ```c blocks; a prototype that differs from the header's does not compile.
awk '/^```c$/ { inside = 1; next } /^```/ { inside = 0 } inside' "$contract" >"$work/prototypes"
cat "$work/prototypes" >>"$work/contract.c"

# Rows "| 32-bit | 64-bit | `field` |" below a heading "### `Type`", and "| 'CODE' | value |".
awk -F'|' '
    /^### / { type = ""; if (match($0, /`[A-Za-z]+`/)) type = substr($0, RSTART + 1, RLENGTH - 2) }
    type != "" && $2 ~ /^ [0-9]+ $/ {
        field = $4; gsub(/[` ]/, "", field)
        printf "static_assert(offsetof(%s, %s) == (sizeof(void *) == 4 ? %d : %d), \"%s.%s\");\n", type, field, $2, $3, type, field
    }
    $3 ~ /^ 0x[0-9A-F]+ $/ && match($2, /[A-Z0-9]+/) {
        code = substr($2, RSTART, RLENGTH)
        printf "static_assert(((uint32_t)%s << 24 | %s << 16 | %s << 8 | %s) == %s, \"%s\");\n", \
            "\047" substr(code, 1, 1) "\047", "\047" substr(code, 2, 1) "\047", "\047" substr(code, 3, 1) "\047", \
            "\047" substr(code, 4, 1) "\047", $3, code
    }' "$contract" >"$work/tables"
cat "$work/tables" >>"$work/contract.c"

for compiler in gcc i686-linux-gnu-gcc; do
    $compiler -std=c11 -Wall -Wextra -Werror -I "$include_dir" -fsyntax-only "$work/contract.c" || failures=$((failures + 1))
done

nm -D --defined-only "$sample_host" | awk '{ print $3 }' >"$work/exported"

for name in $(cat "$include_dir"/tovu/*.h | grep -oE '\b(PLUGIN_[A-Z_]+|(pel|_api__|ormixGL_)[A-Za-z0-9_]+) *\(' | tr -d ' (' | sort -u); do
    grep -qE "\b$name\(" "$work/prototypes" || {
        echo "$name is declared in the headers and not in the contract" >&2
        failures=$((failures + 1))
    }
    case $name in PLUGIN_*) continue ;; esac
    grep -qx "$name" "$work/exported" || {
        echo "$name is declared in the headers and not exported by $sample_host" >&2
        failures=$((failures + 1))
    }
done

prototypes=$(grep -c ');$' "$work/prototypes")
rows=$(wc -l <"$work/tables")
echo "$prototypes prototypes and $rows rows compared, $failures failures"
[ "$prototypes" -gt 0 ] && [ "$rows" -gt 0 ] && [ "$failures" -eq 0 ]
