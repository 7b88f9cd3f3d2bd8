#!/usr/bin/env bash
# The program's main job on the simulated device: installs what is needed, builds, starts
# the simulator on a pseudo-terminal, lists the device and saves every clip and dive into
# a fresh temporary Downloads folder, then prints where the files are.
# With PORT=/dev/ttyACM0 (say) it talks to a real device on that port instead.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build --parallel "$(nproc)" --target mrvtq5dk-cli qm482-sim > /dev/null

downloads=$(mktemp -d -t mrvtq5dk-downloads.XXXXXX)
port=${PORT:-}
if [ -z "$port" ]; then
  ports=$(mktemp)
  ./build/tools/qm482-sim/qm482-sim > "$ports" &
  simulator=$!
  trap 'kill $simulator 2> /dev/null; rm -f "$ports"' EXIT
  for _ in $(seq 100); do
    port=$(head -n 1 "$ports")
    [ -n "$port" ] && break
    sleep 0.1
  done
  echo "Simulated QM482 on $port"
fi

cli=./build/tools/mrvtq5dk-cli/mrvtq5dk-cli
"$cli" download-voice --all --port "$port" --output "$downloads"
"$cli" download-log --all --port "$port" --output "$downloads" | tail -n 1

echo
echo "Files in $downloads/Mrvtq5dk:"
(cd "$downloads/Mrvtq5dk" && find . -type f -printf '  %-45P %10s bytes\n' | sort)
