#!/usr/bin/env bash
# Builds the Debian package zuhost_VERSION_ARCH.deb in the build directory
# (BUILD_DIR, default build), reusing what an earlier build left there:
# only zuhost and the module are built, not the tests.
# Extra arguments go to the CMake configure step.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BUILD_DIR:-build}"
# dpkg-shlibdeps computes the package's dependencies; CPack finds the
# binaries to ask it about with file.
scripts/install-deps.sh dpkg-dev file
cmake -S . -B "$build" "$@"
cmake --build "$build" -j"$(nproc)" --target zuhost zusrceditor
rm -f "$build"/zuhost_*.deb
(cd "$build" && cpack -G DEB)
