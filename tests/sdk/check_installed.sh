#!/bin/sh
# What a plug-in author does: installs, then builds the samples and the guide's plug-in against nothing but the installed
# tree, in an empty folder. check_installed.sh BUILD_DIR SOURCE_DIR COMPILE_FLAGS
set -eu
build=$1
source=$2
flags=$3
work=$build/sdk/installed
prefix=$work/prefix
rm -rf "$work"
mkdir -p "$work/swirl"

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
# Nothing of this source tree or of the build tree. build_against_prefix SOURCE NAME FLAGS
build_against_prefix() {
    quietly cmake -S "$1" -B "$work/$2" -G Ninja -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Debug \
        "-DCMAKE_C_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror $3" \
        "-DCMAKE_CXX_FLAGS=-Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror $3"
    quietly cmake --build "$work/$2"
}

quietly cmake --install "$build" --prefix "$prefix"
cd "$prefix/include/tovu"
installed=$(echo *)
cd "$build/sdk/include/tovu"
[ "$installed" = "$(echo *)" ] || fail "installed headers: $installed"
expect_entry_points "$prefix/lib/tovu/plugins/TovuSmoke.so"

# The first C and the first CMake block of the guide, as it tells its reader to save them.
guide=$prefix/share/doc/tovu/plugin-authors.md
awk '/^```c$/ { n++; inside = 1; next } /^```/ { inside = 0 } inside && n == 1' "$guide" >"$work/swirl/swirl.c"
awk '/^```c$/ { n++; inside = 1; next } /^```/ { inside = 0 } inside && n == 2' "$guide" >"$work/swirl/spawn.c"
awk '/^```cmake$/ { inside = 1; next } /^```/ { inside = 0 } inside' "$guide" >"$work/swirl/CMakeLists.txt"

for bits in 64 32; do
    build_against_prefix "$work/swirl" swirl$bits "-m$bits"
    expect_entry_points "$work/swirl$bits/Swirl.so"
    for sample in gather spiral; do
        build_against_prefix "$prefix/share/tovu/samples/$sample" $sample$bits "-m$bits"
        for library in "$work/$sample$bits"/*.so; do expect_entry_points "$library"; done
    done
done
build_against_prefix "$prefix/share/tovu/samples/host" host "$flags"
"$work/host/tovu_sample_host" "$prefix/lib/tovu/plugins/TovuSmoke.so" | grep -q '^after 100 frames: .* 59 quads$' ||
    fail "the sample host did not run the installed plug-in"

# Without CMake.
PKG_CONFIG_PATH=$prefix/lib/pkgconfig
export PKG_CONFIG_PATH
# shellcheck disable=SC2046  # several words are meant
quietly cc -fPIC -Wall -Wextra -Wpedantic -Werror $(pkg-config --cflags tovusmoke) "$work/swirl/swirl.c" \
    $(pkg-config --libs tovusmoke) -o "$work/Swirl.so"
expect_entry_points "$work/Swirl.so"
# shellcheck disable=SC2046
quietly cc -Wall -Wextra -Wpedantic -Werror -fsyntax-only $(pkg-config --cflags tovusmoke) "$work/swirl/spawn.c"

if grep -rIl -e "$source/" -e "$build/" "$prefix/include" "$prefix/lib/cmake" "$prefix/lib/pkgconfig" "$prefix/share"; then
    fail "these installed files name the folders they came from"
fi
echo "built against the installed tree"
