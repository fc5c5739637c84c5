#!/bin/sh
# Fails if plug-ins or hosts built with an earlier release would not work with this build, and says what has changed.
# check_abi.sh DESCRIPTION INCLUDE_DIR PLUGIN COMPILER_32 COMPILER_64: DESCRIPTION is a file in abi/.
# Additions are fine: functions that the plug-in does not call, constants, types, and fields at the end of records that
# only the smoke allocates.
set -eu
stored=$1
shift
current=$(mktemp)
trap 'rm -f "$current"' EXIT
"$(dirname "$0")/describe_abi.sh" "$@" >"$current"
# What the plug-in calls. On Windows it asks for all functions that its headers declare.
case $2 in *.so) "${4%gcc}nm" -D --undefined-only "$2" | sed -nE 's/^ *U ((pel|_api__|ormixGL_).*)/import \1/p' >>"$current" ;; esac

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
        for (row in now) if (sub(/^import /, "function ", row) && !(row in was)) { print "hosts in use lack: " row; changes++ }
        if (rows == 0) { print "the description is empty"; changes++ }
        if (changes) print changes " changes break plug-ins or hosts in use"
        exit changes > 0
    }' "$current" "$stored"
