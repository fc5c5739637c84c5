#!/bin/sh
# Fails if plug-ins or hosts built with an earlier release would not work with this build, and says what has changed.
# check_abi.sh DESCRIPTION INCLUDE_DIR PLUGIN COMPILER_32 COMPILER_64: DESCRIPTION is a file in abi/.
# Additions are fine: functions, constants, types, and fields at the end of records that only the smoke allocates.
set -eu
stored=$1
shift
current=$(mktemp)
trap 'rm -f "$current"' EXIT
"$(dirname "$0")/describe_abi.sh" "$@" >"$current"

awk '
    function key(    name) { name = $2; sub(/\[.*/, "", name); return $1 " " name }
    NR == FNR { now[key()] = $0; next }
    /^#/ { next }
    { rows++; was[key()] = $0 }
    $1 == "size" && ($2 == "Particle" || $2 == "ParticleExchangeBlock") {
        split(now[key()], size)
        if (size[3] >= $3 && size[4] >= $4) next
    }
    !(key() in now) { print "gone:    " $0; changes++; next }
    now[key()] != $0 { print "was:     " $0 "\nis now:  " now[key()]; changes++ }
    END {
        for (row in now) if (row ~ /^export / && !(row in was)) { print "added:   " row; changes++ }
        if (rows == 0) { print "the description is empty"; changes++ }
        if (changes) print changes " changes break plug-ins or hosts in use"
        exit changes > 0
    }' "$current" "$stored"
