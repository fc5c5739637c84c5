#!/bin/sh
# Checks the Windows build of a plug-in with Wine. check.sh CHECK SOURCE_DIR BUILD_DIR TOOLCHAIN_FILE
# Ends with status 77 where Wine for 32-bit programs would be needed and is not there.
set -eu
check=$1
source=$2
build=$3
toolchain=$4
plugin=$build/plugins/TovuSmoke.dll
work=$build/tests/windows/$check
prefix=${toolchain##*/}
prefix=${prefix%.cmake}
wine=/usr/lib/wine/wine64
case $prefix in i686*) wine=/usr/lib/wine/wine ;; esac
WINEPREFIX=$build/wine
export WINEPREFIX
rm -rf "$work"
mkdir -p "$work"

fail() {
    printf "%s\n" "$*" >&2
    exit 1
}
needs_wine() { [ -x $wine ] || { echo "not run: $check in Wine, since $wine is not there"; exit 77; }; }
# run PROGRAM [ARGUMENT...]: standard output goes to $work/out, standard error to $work/err.
run() { WINEDEBUG=-all $wine "$@" >"$work/out" 2>"$work/err" || fail "$* failed: $(cat "$work/err")"; }
digest() { tr -d '\r' <"$work/out" | sed -n 's/^digest //p'; }

# The eight entry points under their plain names, and no library but those of every Windows. expect_plugin LIBRARY
expect_plugin() {
    "$prefix-objdump" -p "$1" >"$work/dump"
    exports=$(sed -n 's/^\t\[ *[0-9]*\] \([^ ]*\)$/\1/p' "$work/dump" | sort | tr '\n' ' ')
    [ "$exports" = "PLUGIN_CHANGED_CALLBACK PLUGIN_CLEANUP_FUNCTION PLUGIN_DISPATCHER_CALLBACK PLUGIN_EXEC_ACTION \
PLUGIN_INIT PLUGIN_INIT_FUNCTION PLUGIN_NEW_GEOM PLUGIN_RENDER_OPENGL " ] || fail "$1 exports: $exports"
    libraries=$(sed -n 's/^\tDLL Name: //p' "$work/dump" | sort | tr '\n' ' ')
    [ "$libraries" = "KERNEL32.dll msvcrt.dll " ] || fail "$1 needs: $libraries"
}

check_exports() { expect_plugin "$plugin"; }

# The stored digests are those of Linux. A host may be called anything.
check_digests() {
    needs_wine
    cp "$build/bin/tovu_sample_host.exe" "$work/renderer.exe"
    for host in "$build/bin/tovu_sample_host.exe" "$work/renderer.exe"; do
        while read -r stored settings; do
            # shellcheck disable=SC2086  # words, split on purpose
            run "$host" "$plugin" $settings
            [ "$(digest)" = "$stored" ] || fail "$host $settings: digest $(digest) instead of $stored"
        done <"$source/tests/sdk/host_digests.txt"
    done
}

check_host_functions() {
    needs_wine
    read -r stored <"$source/tests/sdk/host_digests.txt"
    run "$build/bin/launcher.exe" "$build/lib/host_library.dll" "$plugin"
    [ "$(digest)" = "$stored" ] || fail "host in a library: digest $(digest) instead of $stored"

    run "$build/bin/host_without_rand.exe" "$plugin"
    grep -q '^after 100 frames: .* 59 quads' "$work/out" || fail "host without rand: $(tail -n 2 "$work/out")"
    [ "$(digest)" != "$stored" ] || fail "host without rand: the digest is that of glibc's numbers"

    WINEDEBUG=warn+debugstr $wine "$build/bin/host_incomplete.exe" "$plugin" >"$work/out" 2>"$work/err" || true
    grep -q '^host: .*TovuSmoke.dll: error 1114' "$work/err" || fail "loaded without two of the host's functions"
    for name in pelEventEnd ormixGL_glHint; do
        grep -q "^[^ ].*TovuSmoke.dll: no module of this process exports '$name'" "$work/err" ||
            fail "standard error does not name $name: $(cat "$work/err")"
        grep -q "OutputDebugString.*$name" "$work/err" || fail "the debugger's output does not name $name"
    done
    [ "$(grep -c "^[^:]*:[^:]*: no module" "$work/err")" = 2 ] || fail "not two functions are named: $(cat "$work/err")"
}

# block LANGUAGE N: of the guide for authors.
block() { awk -v language="$1" -v n="$2" -f "$source/tests/sdk/guide_block.awk" "$source/docs/plugin-authors.md"; }

# The guide's plug-in, built with the guide's commands, and the samples, built against the installed tree alone.
check_sdk() {
    HOME=$work
    export HOME
    cmake --install "$build" --prefix "$work/tovu" >"$work/log"
    expect_plugin "$work/tovu/lib/tovu/plugins/TovuSmoke.dll"
    mkdir "$work/swirl"
    cd "$work/swirl"
    block c 1 >swirl.c
    block cmake 1 >CMakeLists.txt
    for n in 7 8; do
        block sh $n | sed "s/x86_64-w64-mingw32/$prefix/" >../commands
        grep -q "$prefix" ../commands || fail "block $n of the guide's commands builds nothing for Windows"
        sh -eu ../commands >"$work/log" 2>&1 || fail "the guide's commands: $(cat "$work/log")"
    done
    expect_plugin build-windows/Swirl.dll
    expect_plugin Swirl.dll
    for sample in gather host probe spiral; do
        { cmake -S "$work/tovu/share/tovu/samples/$sample" -B "$work/$sample" -G Ninja \
            -DCMAKE_TOOLCHAIN_FILE="$toolchain" -DCMAKE_PREFIX_PATH="$work/tovu" \
            "-DCMAKE_C_FLAGS=-Wall -Wextra -Werror" "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Werror" &&
            cmake --build "$work/$sample"; } >"$work/log" 2>&1 || fail "$sample: $(cat "$work/log")"
    done
    expect_plugin "$work/gather/TovuGather.dll"
    expect_plugin "$work/probe/TovuProbe.dll"
    expect_plugin "$work/spiral/TovuSpiral.dll"
    needs_wine
    run "$work/host/tovu_sample_host.exe" "$work/probe/TovuProbe.dll"
    tr -d '\r' <"$work/out" | tail -n 1 | grep -q '^TovuProbe: PASS: 27 of 35 checks ran, 0 failed' ||
        fail "the probe finds: $(cat "$work/out" "$work/err")"
    for plugin in swirl/Swirl gather/TovuGather spiral/TovuSpiral; do
        run "$work/host/tovu_sample_host.exe" "$work/$plugin.dll"
    done
}

"check_$check"
echo "$prefix: $check checked"
