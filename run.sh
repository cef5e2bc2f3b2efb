#!/usr/bin/env bash
# Installs what is missing, builds, and starts Twinsift.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh run
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTWINSIFT_BUILD_TESTS=OFF >/dev/null
cmake --build build --target twinsift
exec build/app/twinsift "$@"
