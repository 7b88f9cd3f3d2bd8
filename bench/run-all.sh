#!/usr/bin/env bash
# Every benchmark, one after the other, figures on stdout. Installs and builds what they
# need first. About 14 minutes (ui_bench writes 600 MB and takes 4 of them); with --slow
# also the 960 B/s rows (a 9600-baud line, over 36 minutes more) and plug-in to everything
# saved (about 31 minutes more).
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build --parallel "$(nproc)" --target transfer_bench codec_bench plugin_bench \
  sync_bench ui_bench > /dev/null

bench=./build/bench
echo "== clips and listings through the session ($(nproc) cores, $(uname -r))"
"$bench/transfer_bench" --dives 100 11520 1000000 0
"$bench/transfer_bench" --dives 20 --blocks 64 1000000
"$bench/transfer_bench" --dives 100 --listing-only 1000000 0
"$bench/transfer_bench" --dives 1100 --listing-only 1000000 0
if [ "${1:-}" = --slow ]; then "$bench/transfer_bench" --dives 10 960; fi
echo "== parsers and writers"
"$bench/codec_bench"
echo "== plug-in and idle cost of the window"
"$bench/plugin_bench" --runs 5 --idle 60
echo "== the window's UI thread with a big library"
"$bench/ui_bench"
if [ "${1:-}" = --slow ]; then
  echo "== plug-in to everything saved: save all new against item by item"
  "$bench/sync_bench"
fi
