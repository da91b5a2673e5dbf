#!/usr/bin/env bash
# Installs what is missing, builds, and opens the editor in the development
# host on a copy of the example programs, so that trying it never changes
# the tracked files. The copy is made on first use and kept afterwards
# (ZU_EXAMPLES overrides where). Needs a display. Extra arguments go to zuhost.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
cmake -S . -B build
cmake --build build -j"$(nproc)"
examples="${ZU_EXAMPLES:-${XDG_DATA_HOME:-$HOME/.local/share}/zuhost/examples}"
if [ ! -d "$examples" ]; then
    mkdir -p "$examples"
    cp -p examples/programs/* "$examples/"
    echo "Copied the example programs to $examples"
fi
exec build/zuhost --dir "$examples" "$@"
