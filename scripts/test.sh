#!/usr/bin/env bash
# Installs what the build needs, builds everything and runs every test.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
build=${BUILD_DIR:-build}
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo} ${CMAKE_ARGS:-}
cmake --build "$build" --parallel "$(nproc)"
ctest --test-dir "$build" --output-on-failure --parallel "$(nproc)"
