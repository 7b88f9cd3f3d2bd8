#!/usr/bin/env bash
# The program's main job on a simulated device: installs what is needed, builds, plugs a
# simulated QM482 into a virtual USB bus, and
#  - with a display: opens the window, the device plugged in three seconds later; close
#    the window to end;
#  - without one (or with HEADLESS=1): saves every clip and dive with mrvtq5dk-cli;
# into a fresh temporary Downloads folder, then lists the files saved.
# With PORT=/dev/ttyACM0 (say) the command line talks to a real device on that port.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo > /dev/null
cmake --build build --parallel "$(nproc)" --target Mrvtq5dk mrvtq5dk-cli qm482-sim > /dev/null

sim=$PWD/build/tools/qm482-sim/qm482-sim
cli=$PWD/build/tools/mrvtq5dk-cli/mrvtq5dk-cli
downloads=$(mktemp -d -t mrvtq5dk-downloads.XXXXXX)
# What the demo saves is remembered in a library of its own, never in the diver's: its
# dives stay out of the "Saved from" chooser and out of later exports.
XDG_DATA_HOME=$(mktemp -d -t mrvtq5dk-data.XXXXXX)
export XDG_DATA_HOME

# Every clip, then every dive; the device found on the USB bus unless a port is given.
save_everything() {
  local cli=$1 output=$2
  shift 2
  "$cli" sync --output "$output" "$@"
}

if [ -n "${PORT:-}" ]; then
  save_everything "$cli" "$downloads" --port "$PORT"
elif [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ] && [ -z "${HEADLESS:-}" ]; then
  # The window saves into the Downloads folder of the XDG user folders: point it here.
  config=$(mktemp -d -t mrvtq5dk-config.XXXXXX)
  echo "XDG_DOWNLOAD_DIR=\"$downloads\"" > "$config/user-dirs.dirs"
  echo "The window opens now; the simulated QM482 is plugged in three seconds later."
  echo "Press Save all new once the lists are in; close the window to end."
  XDG_CONFIG_HOME=$config "$sim" --usb --plug-in-after 3000 -- "$PWD/build/app/Mrvtq5dk"
else
  "$sim" --usb -- bash -c "$(declare -f save_everything); save_everything \"\$@\"" _ \
    "$cli" "$downloads"
fi

echo
echo "Files in $downloads/Mrvtq5dk:"
(cd "$downloads/Mrvtq5dk" && find . -type f -printf '  %-45P %10s bytes\n' | sort)
echo "$(find "$downloads/Mrvtq5dk/voice" -name '*.wav' | wc -l) WAV and" \
  "$(find "$downloads/Mrvtq5dk/log" -name '*.csv' | wc -l) CSV files," \
  "$(du -sh "$downloads/Mrvtq5dk" | cut -f1) in all."
