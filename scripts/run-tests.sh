#!/usr/bin/env bash
# Installs what is missing, builds everything and runs the whole test suite
# on the offscreen platform.
#   scripts/run-tests.sh [--asan] [CMAKE_ARGS...]
# --asan builds with AddressSanitizer and UndefinedBehaviorSanitizer in
# build-asan and stops at the first error or leak. Other arguments go to the
# CMake configure step; BUILD_DIR chooses the build directory.
set -euo pipefail
cd "$(dirname "$0")/.."
build="${BUILD_DIR:-build}"
if [ "${1:-}" = --asan ]; then
    shift
    build="${BUILD_DIR:-build-asan}"
    set -- -DZU_SANITIZE=ON "$@"
    export ASAN_OPTIONS=halt_on_error=1:abort_on_error=1:print_stacktrace=1:detect_leaks=1
    export UBSAN_OPTIONS=halt_on_error=1:abort_on_error=1:print_stacktrace=1
    export LSAN_OPTIONS="suppressions=$PWD/tests/lsan.supp"
fi
scripts/install-deps.sh
cmake -S . -B "$build" "$@"
cmake --build "$build" -j"$(nproc)"
cd "$build"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure
