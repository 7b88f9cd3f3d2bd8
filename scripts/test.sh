#!/usr/bin/env bash
# Installs what the build needs, builds everything and runs every test:
#  1. the plain build and the whole suite;
#  2. the whole suite again under AddressSanitizer + UndefinedBehaviorSanitizer (leaks
#     included);
#  3. the threaded parts (session, voice and log transfers, discovery, the window) under
#     ThreadSanitizer;
#  4. every fuzzer for FUZZ_SECONDS (default 30) from its seed corpus;
#  5. the Debian package built, checked and proven in a fresh Debian root (as root only).
# SANITIZERS=0 stops after the first step, PACKAGE=0 skips the last. Build folders: build,
# build-asan, build-tsan, build-fuzz, build-package.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/install-deps.sh

# A sound output for the playback tests: a sound server of this run's own with a null sink.
if command -v pulseaudio > /dev/null; then
  XDG_RUNTIME_DIR=$(mktemp -d)
  export XDG_RUNTIME_DIR
  trap 'pulseaudio --kill 2> /dev/null || true; rm -rf "$XDG_RUNTIME_DIR"' EXIT
  pulseaudio -D --exit-idle-time=-1 -n --load=module-native-protocol-unix \
    --load="module-null-sink sink_name=null" 2> /dev/null ||
    echo "No sound server started: the playback tests that need an output skip." >&2
fi

configure_and_build() {
  local folder=$1
  shift
  cmake -S . -B "$folder" -G Ninja -DCMAKE_BUILD_TYPE=${BUILD_TYPE:-RelWithDebInfo} "$@" > /dev/null
  cmake --build "$folder" --parallel "$(nproc)"
}

echo "== plain build"
configure_and_build "${BUILD_DIR:-build}" ${CMAKE_ARGS:-}
ctest --test-dir "${BUILD_DIR:-build}" --output-on-failure --parallel "$(nproc)"
[ "${SANITIZERS:-1}" = 0 ] && exit 0

echo "== AddressSanitizer and UndefinedBehaviorSanitizer"
# umockdev's preload comes before the sanitizer's runtime in the end-to-end tests, whose
# test lists are read at build time.
export ASAN_OPTIONS=verify_asan_link_order=0:detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
export LSAN_OPTIONS=suppressions=$PWD/tests/sanitizers/lsan.supp
configure_and_build build-asan -DMRVTQ5DK_SANITIZER=address
ctest --test-dir build-asan --output-on-failure --parallel "$(nproc)"
unset ASAN_OPTIONS UBSAN_OPTIONS LSAN_OPTIONS

echo "== ThreadSanitizer"
tsan_tests=(integration/session_tests integration/voice_transfer_tests
  integration/log_transfer_tests iokit/iokit_discovery_tests app/window_tests)
# The window's tests fork children (start-up refusals): die_after_fork=0 lets them.
cmake -S . -B build-tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo \
  -DMRVTQ5DK_SANITIZER=thread > /dev/null
cmake --build build-tsan --parallel "$(nproc)" --target "${tsan_tests[@]##*/}"
for test in "${tsan_tests[@]}"; do
  suppressions=tests/sanitizers/tsan.supp
  [ "$test" = app/window_tests ] && suppressions=tests/sanitizers/tsan-window.supp
  TSAN_OPTIONS="halt_on_error=1 die_after_fork=0 suppressions=$PWD/$suppressions" \
    "build-tsan/tests/$test" --gtest_brief=1
done

echo "== fuzzing, ${FUZZ_SECONDS:-30} s a target"
./scripts/fuzz.sh "${FUZZ_SECONDS:-30}"

[ "${PACKAGE:-1}" = 0 ] && exit 0
echo "== the Debian package in a fresh Debian root"
if [ "$(id -u)" -eq 0 ]; then
  ./scripts/package-test.sh
else
  echo "Not run: making a Debian root needs root (sudo ./scripts/package-test.sh)." >&2
fi
