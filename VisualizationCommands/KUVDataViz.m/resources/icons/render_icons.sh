#!/usr/bin/env bash
# Renders every icon's SVG source to the 16 x 16 PNG beside it. Needs rsvg-convert (package
# librsvg2-bin); only somebody who changes a drawing runs this, the PNG files are checked in.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
for source in *.svg; do
    rsvg-convert --width=16 --height=16 --output="${source%.svg}.png" "$source"
done
