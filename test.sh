#!/usr/bin/env bash
# Installs what is missing, builds with warnings as errors, and runs every test through ctest: once
# in an optimised build and once under AddressSanitizer and UndefinedBehaviorSanitizer; then builds
# the Release configuration, makes and checks its Debian package, and starts the real program under
# Xvfb for a smoke test.
set -euo pipefail
cd "$(dirname "$0")"
scripts/install-deps.sh test
jobs=$(nproc)

cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DTWINSIFT_WERROR=ON -DTWINSIFT_BUILD_TESTS=ON >/dev/null
cmake --build build -j "$jobs"
ctest --test-dir build --no-tests=error --output-on-failure -j "$jobs"

cmake -S . -B build-asan -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTWINSIFT_WERROR=ON -DTWINSIFT_SANITIZE=ON -DTWINSIFT_BUILD_TESTS=ON >/dev/null
cmake --build build-asan -j "$jobs"
ASAN_OPTIONS=detect_leaks=0 UBSAN_OPTIONS=print_stacktrace=1 \
    ctest --test-dir build-asan --no-tests=error --output-on-failure -j "$jobs"

# The configuration a distribution builds (-O3, no tests), so that warnings only the optimiser finds
# fail here too; its Debian package is checked as well.
cmake -S . -B build-release -G Ninja -DCMAKE_BUILD_TYPE=Release -DTWINSIFT_WERROR=ON -DTWINSIFT_BUILD_TESTS=OFF >/dev/null
cmake --build build-release -j "$jobs"
rm -f build-release/twinsift_*.deb
(cd build-release && cpack -G DEB >/dev/null)
scripts/check-package.sh build-release/twinsift_*.deb

scripts/smoke-test.sh build/app/twinsift
