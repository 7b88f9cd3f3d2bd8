#!/usr/bin/env bash
# Pictures of the window in docs/, in English and Japanese, taken from the simulated device
# with no display. Each language runs with a home folder of its own that is thrown away.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build --target mrvtq5dk-shots
for language in en ja; do
  home=$(mktemp -d)
  HOME=$home XDG_CONFIG_HOME=$home/.config XDG_DATA_HOME=$home/.local/share \
    XDG_DOWNLOAD_DIR=$home/Downloads QT_QPA_PLATFORM=offscreen \
    ./build/tools/window-shots/mrvtq5dk-shots "$language" docs
  rm -rf "$home"
done
