#!/bin/sh
# Runs as root in a bare Debian 12 with a compiler and CMake; the packages and the guide for authors are in this folder.
# Installs the packages, does what their users do, and removes them.
set -eu
here=$(cd "$(dirname "$0")" && pwd)
HOME=$here/home
XDG_CACHE_HOME=$HOME/.cache  # the OpenGL driver looks up the home folder elsewhere
DEBIAN_FRONTEND=noninteractive
export HOME XDG_CACHE_HOME DEBIAN_FRONTEND
mkdir -p "$HOME/swirl" "$HOME/tovu-source"

say() { printf 'bare system: %s\n' "$*"; }

# All files but those of apt, dpkg and logs.
list_files() {
    find / -xdev \( -path /tmp -o -path /proc -o -path /sys -o -path /dev -o -path /run -o -path /var/cache/apt \
        -o -path /var/lib/apt -o -path /var/lib/dpkg -o -path /var/log \) -prune -o -print | sort
}

list_files >"$HOME/before"
# What the command recommends, without what that recommends in turn.
recommended="ffmpeg python3-numpy python3-pil python3-scipy"
# shellcheck disable=SC2086  # a list of names, split on purpose
apt-get install -y --no-install-recommends "$here"/*.deb $recommended
# shellcheck disable=SC2086
apt-mark auto $recommended
say "installed $(tovu --version)"

cd "$HOME"
cat >steam.toml <<'END'
frame_rate = 25
size = [320, 180]
[[container]]
name = "cup"
look = "steam"
END
tovu render steam.toml --at 2 -o steam.png
tovu render /usr/lib/tovu/scenes/gather_word.toml --size 320x180 --frames 0-2 -o word.mp4
tovu bake vortex -o vortex.png
tovu-studio --help
say "rendered a look, a shipped scene as a video, baked a wind image, and the studio prints its help"

zgrep -q 'Time of a single picture' /usr/share/man/man1/tovu-render.1.gz
bash -c '. /usr/share/bash-completion/completions/tovu
    COMP_WORDS=(tovu render --plug) COMP_CWORD=2
    _tovu_complete tovu
    [[ ${COMPREPLY[*]} == "--plugin --plugin-timeout" ]]'
say "manual pages and completion have the options of the commands"

# The guide's commands as they stand: its ~/tovu is the installed tree.
ln -s /usr "$HOME/tovu"
ln -s /usr/bin/tovu "$HOME/tovu-source/tovu"
block() { awk -v fence="\`\`\`$1" -v wanted="$2" '
    $0 == fence { n++; inside = 1; next } /^```/ { inside = 0 } inside && n == wanted' "$here/plugin-authors.md"; }
cd "$HOME/swirl"
block c 1 >swirl.c
block cmake 1 >CMakeLists.txt
block toml 1 >swirl.toml
for n in 2 3 4 5 6; do
    block sh $n >commands
    sh -eux commands
done
test -s swirl.mp4
say "built the guide's plug-in and a sample, and rendered with them"

cd /
apt-get purge -y tovu tovu-studio libtovusmoke-dev tovu-doc
apt-get autoremove --purge -y
list_files >"$HOME/after"
diff "$HOME/before" "$HOME/after"
say "purged, and no file is left"
