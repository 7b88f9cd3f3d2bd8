#!/usr/bin/env bash
# Builds a release with the distribution's hardening flags and writes the diver's Debian
# package, build-package/mrvtq5dk_<version>_amd64.deb, then checks it as the distribution
# would: lintian on the package, desktop-file-validate on the desktop entry and
# appstreamcli on the metainfo. What lintian or appstreamcli warns of fails the script, as
# any error does.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh

folder=build-package
export DEB_BUILD_MAINT_OPTIONS=hardening=+all
CXXFLAGS="$(dpkg-buildflags --get CXXFLAGS) $(dpkg-buildflags --get CPPFLAGS)" \
LDFLAGS="$(dpkg-buildflags --get LDFLAGS)" \
  cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=Release -DBUILD_TESTING=OFF > /dev/null
cmake --build "$folder" --parallel "$(nproc)" --target Mrvtq5dk mrvtq5dk-cli mrvtq5dk_compressed_docs
rm -f "$folder"/*.deb
(cd "$folder" && cpack -G DEB > /dev/null)
deb=$(ls "$folder"/mrvtq5dk_*_amd64.deb)

contents=$(mktemp -d)
trap 'rm -rf "$contents"' EXIT
dpkg-deb -x "$deb" "$contents"
desktop-file-validate "$contents/usr/share/applications/mrvtq5dk.desktop"
appstreamcli validate --no-net "$contents"/usr/share/metainfo/*.metainfo.xml
lintian --fail-on error,warning "$deb"

echo "$deb: $(du -k "$deb" | cut -f1) KiB"
dpkg-deb --field "$deb" Depends Recommends
