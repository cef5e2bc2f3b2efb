#!/usr/bin/env bash
# Renders the preferences window (both tabs) and the preview window into docs/, offscreen.
# Usage: scripts/widget-shots.sh [build-dir]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
cmake --build "$build" --target widget_shots >/dev/null
QT_QPA_PLATFORM=offscreen "$build/tests/shots/widget_shots" docs
ls docs/preferences-general.png docs/preferences-about.png docs/preview-image.png
