#!/usr/bin/env bash
# Renders every svg/<name>.svg in this folder to <name>.png at 24x24.
# Needs rsvg-convert from the Debian/Ubuntu package librsvg2-bin.
# The PNGs are committed, so the build itself never runs this script;
# run it by hand after editing an SVG.
set -euo pipefail

here="$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)"

if ! command -v rsvg-convert >/dev/null 2>&1; then
    echo "render.sh: rsvg-convert not found (install librsvg2-bin)" >&2
    exit 1
fi

shopt -s nullglob
sources=("$here"/svg/*.svg)
if [ ${#sources[@]} -eq 0 ]; then
    echo "render.sh: no SVG files in $here/svg" >&2
    exit 1
fi

for src in "${sources[@]}"; do
    name="$(basename "$src" .svg)"
    rsvg-convert -w 24 -h 24 -f png -o "$here/$name.png" "$src"
    echo "rendered $name.png"
done
