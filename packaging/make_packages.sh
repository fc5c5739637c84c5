#!/bin/sh
# Makes all packages of the current commit: make_packages.sh FOLDER. The commit's files are built in FOLDER/source, and the
# results in FOLDER depend on the commit and the installed compiler only.
set -eu
root=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$1"
folder=$(cd "$1" && pwd)
source=$folder/source
version=$(sed -n 's/^project(TovuSmoke VERSION \([0-9.]*\).*/\1/p' "$root/CMakeLists.txt")
SOURCE_DATE_EPOCH=$(git -C "$root" log -1 --format=%ct)
LC_ALL=C.UTF-8
TZ=UTC
export SOURCE_DATE_EPOCH LC_ALL TZ
umask 022

rm -rf "$source" "$folder"/*.deb "$folder"/*.tar.gz "$folder"/*.spdx.json "$folder/SHA256SUMS"
mkdir "$source"
git -C "$root" archive HEAD | tar -x -C "$source"
cp -r "$source/packaging/debian" "$source/debian"
cd "$source"
cat >debian/changelog <<END
tovu ($version) unstable; urgency=medium

  * Version $version. CHANGELOG.md says what changed.

 -- $(sed -n 's/^Maintainer: //p' debian/control)  $(date -R -d "@$SOURCE_DATE_EPOCH")
END
DEB_BUILD_OPTIONS="noautodbgsym ${DEB_BUILD_OPTIONS:-}" dpkg-buildpackage --build=binary --no-sign

# archive PLATFORM BUILD_FOLDER: makes an archive of the plug-in, the SDK and the documents, for use without packages.
archive() {
    name=tovusmoke-$version-$1
    for component in Plugins SDK Docs; do
        cmake --install "$2" --strip --prefix "$source/archive/$name" --component $component
    done
    tar -C "$source/archive" --sort=name --owner=0 --group=0 --numeric-owner --mtime="@$SOURCE_DATE_EPOCH" \
        --mode=go=rX,u+rw -c "$name" | gzip -9n >"$folder/$name.tar.gz"
}
archive "linux-$(uname -m)" build/release
# archive_of PLATFORM PRESET: builds the plug-in for another platform and makes its archive.
archive_of() {
    cmake --preset "$2" -DTOVU_BUILD_TESTS=OFF
    cmake --build "build/$2" --target TovuSmoke
    archive "$1" "build/$2"
}
archive_of linux-aarch64 arm64
archive_of windows-x86_64 windows
archive_of windows-i686 windows32

cd "$folder"
/usr/bin/python3 "$root/packaging/bill_of_materials.py" "$version" "$(sh "$source/cmake/commit.sh")" ./*.deb ./*.tar.gz \
    >"tovusmoke-$version.spdx.json"
sha256sum -- *.deb *.tar.gz *.spdx.json >SHA256SUMS
