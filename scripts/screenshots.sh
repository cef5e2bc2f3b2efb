#!/usr/bin/env bash
# Redraws the README's pictures of each screen into docs/ from a build folder (default build/).
# Usage: scripts/screenshots.sh [build-folder] [big-folder-to-show-scanning]
set -euo pipefail
cd "$(dirname "$0")/.."
build=${1:-build}
cmake --build "$build" --target twinsift_screenshots
"$build/tests/app/twinsift_screenshots" docs "${2:-/usr/share}"
