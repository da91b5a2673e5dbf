#!/usr/bin/env bash
# Builds the Debian package, unpacks it into a scratch root as installing it
# would lay it out, and runs the unpacked zuhost there on the offscreen
# platform: it must find its module and its vocabulary by itself, run the
# plug-in and exit 0. The build directory is BUILD_DIR (default build).
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BUILD_DIR:-build}"
scripts/build-package.sh
debs=("$build"/zuhost_*.deb)
deb=${debs[0]}
dpkg-deb --field "$deb" Package Version Architecture Depends Recommends

fail() {
    echo "test-package: $*" >&2
    exit 1
}
# The dependencies dpkg-shlibdeps computed, Qt's among them.
dpkg-deb --field "$deb" Depends | grep -q libqt5widgets5 || fail "$deb depends on no Qt library"

root=$(mktemp -d)
trap 'rm -rf "$root"' EXIT
dpkg -x "$deb" "$root"
mkdir "$root/programs"
cp "$root"/usr/share/zuhost/examples/* "$root/programs/"

export QT_QPA_PLATFORM=offscreen
"$root/usr/bin/zuhost" --version
"$root/usr/bin/zuhost" --settings "$root/zuhost.ini" --dir "$root/programs" --quit-after 0 hello \
    2> "$root/errors" || { cat "$root/errors" >&2; fail "the unpacked zuhost failed"; }
cat "$root/errors" >&2
! grep -q 'no vocabulary' "$root/errors" || fail "the unpacked zuhost found no vocabulary"
grep -q '^\[MainWinState\]' "$root/zuhost.ini" || fail "the plug-in reported no window state"
echo "test-package: $deb unpacked and run"
