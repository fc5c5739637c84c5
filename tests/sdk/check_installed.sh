#!/bin/sh
# Does what an author of plug-ins does: types the commands of the guide as they stand, in an empty home folder, and builds
# the samples against the installed tree alone. check_installed.sh BUILD_DIR SOURCE_DIR COMPILE_FLAGS
set -eu
build=$1
source=$2
flags=$3
work=$build/sdk/installed
HOME=$work/home
export HOME
prefix=$HOME/tovu
rm -rf "$work"
mkdir -p "$HOME/tovu-source/build"

fail() {
    echo "$*" >&2
    exit 1
}
quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log" >&2; fail "failed: $*"; }; }

# The eight entry points, and no other symbol. expect_entry_points LIBRARY
expect_entry_points() {
    exported=$(nm -D --defined-only "$1" | awk '{ print $3 }' | sort | tr '\n' ' ')
    [ "$exported" = "PLUGIN_CHANGED_CALLBACK PLUGIN_CLEANUP_FUNCTION PLUGIN_DISPATCHER_CALLBACK PLUGIN_EXEC_ACTION \
PLUGIN_INIT PLUGIN_INIT_FUNCTION PLUGIN_NEW_GEOM PLUGIN_RENDER_OPENGL " ] || fail "$1 exports: $exported"
}
# Builds against the installed tree. build_against_prefix SOURCE NAME FLAGS [CMAKE_OPTION]
build_against_prefix() {
    quietly cmake -S "$1" -B "$work/$2" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Debug \
        "-DCMAKE_C_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror $3" \
        "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror $3" ${4:+"$4"}
    quietly cmake --build "$work/$2"
}

# The n-th block of a language in the guide. block LANGUAGE N
guide=$source/docs/plugin-authors.md
block() { awk -v language="$1" -v n="$2" -f "$source/tests/sdk/guide_block.awk" "$guide"; }
# Types a block of commands into a shell that stops at the first failure. type_commands N
type_commands() {
    block sh "$1" >"$work/commands"
    [ -s "$work/commands" ] || fail "$guide has no block $1 of commands"
    quietly sh -eu "$work/commands"
}

# The source tree as the guide's reader has it, built already.
ln -s "$build" "$HOME/tovu-source/build/release"
cat >"$HOME/tovu-source/tovu" <<END
#!/bin/sh
[ "\$1" = build ] || exec "$build/bin/tovu" "\$@"
END
chmod +x "$HOME/tovu-source/tovu"
type_commands 1

cd "$prefix/include/tovu"
installed=$(echo *)
cd "$build/sdk/include/tovu"
[ "$installed" = "$(echo *)" ] || fail "installed headers: $installed"
expect_entry_points "$prefix/lib/tovu/plugins/TovuSmoke.so"
# The installed command finds plug-ins, looks and pictures in the installed tree.
quietly "$prefix/bin/tovu" hash --frames 0 "$prefix/lib/tovu/scenes/gather_word.toml" "$prefix/lib/tovu/scenes/first.toml"
quietly "$prefix/bin/tovu" bake vortex -o "$work/vortex.png"

CFLAGS="-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror"
CXXFLAGS=$CFLAGS
export CFLAGS CXXFLAGS
cd "$HOME/swirl"
block c 1 >swirl.c
block cmake 1 >CMakeLists.txt
block toml 1 >swirl.toml
for n in 2 3 4 5 6; do type_commands $n; done
expect_entry_points build/Swirl.so
expect_entry_points Swirl.so
expect_entry_points gather/TovuGather.so
readelf -d build/Swirl.so Swirl.so | grep -c 'NEEDED.*libm' | grep -qx 2 || fail "Swirl.so is not linked with libm"
grep -q '^CMAKE_BUILD_TYPE:[A-Z]*=Release' build/CMakeCache.txt || fail "the guide's build sets no build type"
[ -s swirl.mp4 ] || fail "the guide's scene was not rendered"
unset CFLAGS CXXFLAGS
# The guide's code is C and C++.
for n in 1 2; do
    block c $n >"$work/block.c"
    for language in c c++; do
        quietly cc -x $language -Wall -Wextra -Wpedantic -Werror -I"$prefix/include" -fsyntax-only "$work/block.c"
    done
done

for bits in 64 32; do
    toolchain=
    [ $bits = 64 ] || toolchain=-DCMAKE_TOOLCHAIN_FILE=$source/cmake/i686-linux-gnu.cmake
    build_against_prefix "$HOME/swirl" swirl$bits "" "$toolchain"
    expect_entry_points "$work/swirl$bits/Swirl.so"
    for sample in gather probe spiral; do
        build_against_prefix "$prefix/share/tovu/samples/$sample" $sample$bits "" "$toolchain"
        for library in "$work/$sample$bits"/*.so; do expect_entry_points "$library"; done
    done
done
build_against_prefix "$prefix/share/tovu/samples/host" host "$flags"
"$work/host/tovu_sample_host" "$prefix/lib/tovu/plugins/TovuSmoke.so" | grep -q '^after 100 frames: .* 59 quads$' ||
    fail "the sample host did not run the installed plug-in"
"$work/host/tovu_sample_host" "$work/probe64/TovuProbe.so" >"$work/log"
tail -n 1 "$work/log" | grep -q '^TovuProbe: PASS: 27 of 35 checks ran, 0 failed' || fail "the probe finds: $(cat "$work/log")"

if grep -rIl -e "$source/" -e "$build/" "$prefix/include" "$prefix/lib/cmake" "$prefix/share"; then
    fail "these installed files name the folders they came from"
fi
echo "built against the installed tree"
