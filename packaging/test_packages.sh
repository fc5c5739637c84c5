#!/bin/sh
# Tests the packages in FOLDER: test_packages.sh FOLDER. Prints a line for each promise.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
folder=$(cd "$1" && pwd)

fail() {
    printf 'packages: %s\n' "$*" >&2
    exit 1
}

# Sums and the bill of materials agree with the files, and its relations name its own entries.
(cd "$folder" && sha256sum --quiet --check SHA256SUMS) || fail "SHA256SUMS does not agree with the files"
/usr/bin/python3 - "$folder" <<'END' || fail "the bill of materials is wrong"
import json, pathlib, sys
folder = pathlib.Path(sys.argv[1])
bill = json.loads(next(folder.glob("*.spdx.json")).read_text())
sums = dict(line.split()[::-1] for line in (folder / "SHA256SUMS").read_text().splitlines())
listed = {p["packageFileName"]: p["checksums"][0]["checksumValue"] for p in bill["packages"] if "packageFileName" in p}
shipped = {name: value for name, value in sums.items() if not name.endswith(".json")}
assert listed == shipped, f"listed {listed}, shipped {shipped}"
names = [p["SPDXID"] for p in bill["packages"]]
assert len(names) == len(set(names)), "an identifier is used twice"
unknown = [r for r in bill["relationships"] if not {r["spdxElementId"], r["relatedSpdxElement"]} <= {*names, bill["SPDXID"]}]
assert not unknown, f"relations of unknown entries: {unknown}"
END
echo "sums and bill of materials agree with the files"

lintian --allow-root --fail-on error,warning "$folder"/tovu_*.changes || fail "lintian has complaints"
echo "lintian has no complaints"

# Builds again in a folder of another name and depth.
other=$folder/elsewhere/another-folder
sh "$root/packaging/make_packages.sh" "$other" >"$folder/second_build.log" 2>&1 || fail "the second build failed: $folder/second_build.log"
diff "$folder/SHA256SUMS" "$other/SHA256SUMS" || fail "two builds in different folders differ"
rm -rf "$folder/elsewhere"
echo "two builds in different folders give the same bytes"

# mmdebstrap makes a bare system in a temporary folder, runs the hooks there and removes it.
rm -rf "$folder/bare"
mkdir -p "$folder/bare"
cp "$folder"/*.deb "$root/packaging/bare_system.sh" "$root/docs/plugin-authors.md" "$root/tests/sdk/guide_block.awk" "$folder/bare"
# shellcheck disable=SC2016  # mmdebstrap expands $1
mmdebstrap --quiet --variant=apt --include=cmake,g++,make,pkg-config --customize-hook="copy-in '$folder/bare' /tmp" \
    --customize-hook='chroot "$1" env -i PATH=/usr/sbin:/usr/bin:/sbin:/bin sh /tmp/bare/bare_system.sh' bookworm /dev/null >"$folder/bare_system.log" 2>&1 ||
    { tail -n 30 "$folder/bare_system.log" >&2; fail "the packages fail in a bare system: $folder/bare_system.log"; }
grep '^bare system: ' "$folder/bare_system.log"
