#!/usr/bin/env bash
# Installs what is missing, builds everything and runs the whole test suite
# on the offscreen platform. Extra arguments go to the CMake configure step
# (for example -DZU_SANITIZE=ON with a build directory of its own:
# BUILD_DIR=build-asan scripts/run-tests.sh -DZU_SANITIZE=ON).
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BUILD_DIR:-build}"
scripts/install-deps.sh
cmake -S . -B "$build" "$@"
cmake --build "$build" -j"$(nproc)"
cd "$build"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure
