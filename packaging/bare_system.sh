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

# Lists all files except those of apt, dpkg and logs.
list_files() {
    find / -xdev \( -path /tmp -o -path /proc -o -path /sys -o -path /dev -o -path /run -o -path /var/cache/apt \
        -o -path /var/lib/apt -o -path /var/lib/dpkg -o -path /var/log \) -prune -o -print | sort
}

list_files >"$HOME/before"
# The packages that tovu recommends, without their own recommendations, and the shells with completion.
others="ffmpeg python3-numpy python3-pil fish zsh"
# shellcheck disable=SC2086  # a list of names, split on purpose
apt-get install -y --no-install-recommends "$here"/*.deb $others
# shellcheck disable=SC2086
apt-mark auto $others
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
say "rendered a look and a shipped scene as a video, and baked a wind image"

tovu-studio --help
printf 'wait picture\npicture studio.png\n' >still.txt
SDL_VIDEODRIVER=offscreen tovu-studio --script still.txt steam.toml
test -s studio.png
say "the studio prints its help and shows the look"

zgrep -q 'Time of a single picture' /usr/share/man/man1/tovu-render.1.gz
zgrep -q 'scene or look file' /usr/share/man/man1/tovu-studio.1.gz
cd /usr/share/doc/tovu
grep -o '(docs/[^)#]*' README.md | cut -c 2- | xargs ls
cd "$HOME"
say "manual pages have the options of the commands, and the documents that README.md names are there"

bash -c '. /usr/share/bash-completion/completions/tovu
    COMP_WORDS=(tovu render --plug) COMP_CWORD=2
    _tovu_complete tovu
    [[ ${COMPREPLY[*]} == "--plugin --plugin-timeout" ]]'
# shellcheck disable=SC2016  # zsh expands $1
timeout 60 zsh -fc 'zmodload zsh/zpty
    zpty shell zsh -fi
    zpty -w shell "autoload -U compinit && compinit -u"
    zpty -w -n shell "tovu render --plugin-t"$1
    zpty -r shell printed "*--plugin-timeout*"' zsh "$(printf '\t')"
fish -c 'complete -C "tovu render --plugin-t"' | grep '^--plugin-timeout'
say "bash, zsh and fish complete an option of the command"

# Runs the guide's commands unchanged. ~/tovu in the guide is the installed tree.
ln -s /usr "$HOME/tovu"
ln -s /usr/bin/tovu "$HOME/tovu-source/tovu"
block() { awk -v language="$1" -v n="$2" -f "$here/guide_block.awk" "$here/plugin-authors.md"; }
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
# Without the options apt keeps what the bare system's own packages recommend or suggest.
apt-get autoremove --purge -y -o APT::AutoRemove::RecommendsImportant=false -o APT::AutoRemove::SuggestsImportant=false
list_files >"$HOME/after"
diff "$HOME/before" "$HOME/after"
say "purged, and no file is left"
