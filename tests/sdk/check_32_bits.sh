#!/bin/sh
# Builds the smoke and the sample host in 32 bits: what they print must be what they print in 64 bits, the digest of
# every box, corner and colour included.
# check_32_bits.sh BUILD_DIR SOURCE_DIR
set -eu
build=$1
source=$2
work=$build/sdk/32_bits
mkdir -p "$work"

quietly() { "$@" >"$work/log" 2>&1 || { cat "$work/log" >&2; echo "failed: $*" >&2; exit 1; }; }

quietly cmake --preset i686 -S "$source" -B "$work"
quietly cmake --build "$work" --target TovuSmoke tovu_sample_host

for library in "$work/plugins/TovuSmoke.so" "$work/bin/tovu_sample_host"; do
    case $(od -An -tx1 -j4 -N1 "$library") in
        *01*) ;;  # the ELF class of 32-bit files
        *) echo "$library is not of 32 bits" >&2; exit 1 ;;
    esac
done

# Settings that reach births, both drawing paths, forces, turns, curves, sorting and world coordinates.
for settings in "" "use_array=1 sort=1 reference=1" "spawn_type=1 spawn_range_x=80 spawn_range_y=40 turbulence_x=3 sort=1" \
    "gravity=20 wind_force=30 wind_rot_z=40 air_resistance=10 initial_speed_spread=50 life_time=0.7 life_time_spread=60" \
    "use_array=1 rot_follow_path=1 gravity=9 wind_force=7 wind_rot_x=33 opening_angle_x=150 opening_angle_z=200" \
    "rot_start_spread=300 rot_change=77 billboard=1 opening_angle_twist=25 initial_rot_x=10 initial_rot_z=50 turbulence_z=9"; do
    # shellcheck disable=SC2086  # several words are meant
    "$build/bin/tovu_sample_host" "$build/plugins/TovuSmoke.so" $settings >"$work/64"
    # shellcheck disable=SC2086
    "$work/bin/tovu_sample_host" "$work/plugins/TovuSmoke.so" $settings >"$work/32"
    grep -q 'after 100 frames: .*[1-9][0-9]* quads$' "$work/64"
    grep -q '^digest ' "$work/64"
    diff "$work/64" "$work/32"
done
echo "64 and 32 bits agree"
