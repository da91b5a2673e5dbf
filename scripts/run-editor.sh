#!/usr/bin/env bash
# Installs what is missing, builds, and opens the editor in the development
# host on the example programs. Extra arguments go to zuhost.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build
cmake --build build -j"$(nproc)"
exec build/zuhost --dir examples/programs "$@"
