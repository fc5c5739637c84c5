#!/bin/sh
# Operates the studio by mouse and keyboard on an X display without a screen, and checks the files that it writes.
# usage: xvfb_session.sh FOLDER, with the programs tovu and tovu-studio
set -eu
here=$(cd "$(dirname "$0")" && pwd)
programs=$(cd "$1" && pwd)
work=$(mktemp -d "${TMPDIR:-/tmp}/tovu-desktop-XXXXXX")
export HOME="$work" XDG_CACHE_HOME="$work/cache" XDG_STATE_HOME="$work/state"
x_server=
studio=
window=

fail() {
    printf 'test desktop: %s\n' "$*" >&2
    printf 'test desktop: see %s\n' "$work" >&2
    exit 1
}

end_programs() {
    [ -z "$studio" ] || kill "$studio" 2>/dev/null || true
    [ -z "$x_server" ] || kill "$x_server" 2>/dev/null || true
}
trap end_programs EXIT

. "$here/../wait_until.sh"

# Lets the studio write the places of items in its window, a line for each: name, left, top, right, bottom.
write_places() {
    mkdir "$work/elsewhere" "$work/no_scenes"
    cat >"$work/elsewhere/script.txt" <<'SCRIPT'
size 1600 900
wait look.steam
places ../gallery.txt
click look.steam
wait picture
places ../stage.txt
key Ctrl+E
wait export.start
wait frames 3
places ../export.txt
SCRIPT
    (cd "$work/elsewhere" && SDL_VIDEODRIVER=offscreen XDG_STATE_HOME="$work/elsewhere" \
        "$programs/tovu-studio" --scenes "$work/no_scenes" --script script.txt) >"$work/places.log" 2>&1 ||
        fail "the studio does not tell the places: $(cat "$work/places.log")"
}

start_studio() {
    mkfifo "$work/display"
    Xvfb -displayfd 3 -screen 0 1600x900x24 -nolisten tcp 3>"$work/display" >"$work/x_server.log" 2>&1 &
    x_server=$!
    DISPLAY=:$(head -n 1 "$work/display")
    export DISPLAY
    mkdir "$work/scenes"
    cd "$work/scenes"
    SDL_VIDEODRIVER=x11 "$programs/tovu-studio" --scenes "$work/no_scenes" >"$work/studio.log" 2>&1 &
    studio=$!
    wait_until "the window" has_title "TovuSmoke studio"
    window=$(xdotool search --name "TovuSmoke studio" | head -n 1)
    xdotool windowfocus --sync "$window"
    sleep 1
}

has_title() { xdotool search --name "^$1"; }

# Pauses between keys, as a person does. A slow machine needs the pauses.
keys() {
    xdotool key --delay 100 "$@"
    sleep 1
}

type_text() {
    xdotool type --delay 100 "$1"
    sleep 1
}

# click PLACES NAME: clicks the middle of the item NAME.
click() {
    place=$(awk -F '\t' -v name="$2" '$1 == name { printf "%d %d", ($2 + $4) / 2, ($3 + $5) / 2 }' "$work/$1.txt")
    [ -n "$place" ] || fail "there is no $2 in the window"
    # shellcheck disable=SC2086  # two numbers
    xdotool mousemove --window "$window" $place
    sleep 0.3
    xdotool click 1
    sleep 1
}

# set_value SEARCH TEXT: sets the first parameter that the search finds.
set_value() {
    keys ctrl+f ctrl+a
    type_text "$1"
    keys Return ctrl+a
    type_text "$2"
    keys Return
}

pixels() { ffmpeg -v error -i "$1" -f md5 -; }

write_places
start_studio
click gallery look.steam
wait_until "the scene of the look" has_title "steam"
sleep 10 # the smoke appears
set_value "birth rate" 60
wait_until "the typed rate" grep -rq "birth_rate = 60" "$XDG_STATE_HOME" # every edit is autosaved
set_value "life time" 9
keys Escape ctrl+z
click stage B
set_value "birth rate" 5
keys Escape F2
keys ctrl+shift+s ctrl+a
type_text session
keys Return
wait_until "the saved scene" test -f session.toml
keys space End
sleep 5 # the scene runs to its last frame
keys ctrl+e
click export export.still
click export export.start
wait_until "the still" test -f session.png
keys ctrl+q
wait_until "the end of the studio" eval "! kill -0 $studio"
wait "$studio" || fail "the studio ended with an error: $(cat "$work/studio.log")"
studio=

# State A, which was saved, has 60 births per second. The long life was undone.
grep -q '^birth_rate = 60$' session.toml || fail "the typed rate is not in session.toml"
grep -q 'life_time' session.toml && fail "an edit that was undone is in session.toml"
last=$(awk '$1 == "frame_rate" { rate = $3 } $1 == "length" { seconds = $3 } END { print rate * seconds - 1 }' session.toml)
"$programs/tovu" render session.toml --progress none --frames "$last" -o rendered.png >/dev/null
[ "$(pixels session.png)" = "$(pixels rendered.png)" ] || fail "the still differs from the render of frame $last"
printf 'the studio did what a person asked for: 10 acts, a scene and a still\n'
rm -rf "$work"
