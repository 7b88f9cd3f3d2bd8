#!/usr/bin/env bash
# Fuzzes every parser of outside bytes (the device's replies and records, WAV files read
# back, dive pages on their way to the logbook) for SECONDS each (default 60; 0: no limit)
# or RUNS executions each, whichever ends first, starting from seed corpora written from
# the simulator's contents and the clip writer's WAVs. Builds with clang, libFuzzer and
# AddressSanitizer + UndefinedBehaviorSanitizer into build-fuzz/. Corpora grow in
# build-fuzz/corpus/<target>; a crash leaves its input in build-fuzz/crashes/ and makes
# this script fail. Prints executions per target.
#   scripts/fuzz.sh [SECONDS [RUNS]]
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
runs=${2:--1}
./scripts/install-deps.sh
build=build-fuzz
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
  -DMRVTQ5DK_FUZZ=ON -DMRVTQ5DK_SANITIZER=address -DBUILD_TESTING=OFF > /dev/null
targets=(voice_index_fuzzer record_fuzzer receive_dispatch_fuzzer wave_pcm_fuzzer
  uddf_export_fuzzer)
cmake --build "$build" --parallel "$(nproc)" --target "${targets[@]}" fuzz_seeds > /dev/null

"$build/tests/fuzz/fuzz_seeds" "$build/seeds"
mkdir -p "$build/crashes"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
failed=0
printf '%-26s %8s %12s %10s\n' target seconds executions corpus
for target in "${targets[@]}"; do
  case $target in
    voice_index_fuzzer) seeds=voice_index ;;
    record_fuzzer) seeds=records ;;
    receive_dispatch_fuzzer) seeds=receive_dispatch ;;
    wave_pcm_fuzzer) seeds=wave ;;
    uddf_export_fuzzer) seeds=uddf_export ;;
  esac
  corpus="$build/corpus/$target"
  mkdir -p "$corpus"
  cp -n "$build/seeds/$seeds"/* "$corpus/"
  log="$build/$target.log"
  if ! "$build/tests/fuzz/$target" "$corpus" -max_total_time="$seconds" -runs="$runs" -print_final_stats=1 \
      -artifact_prefix="$build/crashes/$target-" -max_len=16384 > "$log" 2>&1; then
    failed=1
    echo "$target: a crash; its input is in $build/crashes/, the report in $log" >&2
    tail -n 30 "$log" >&2
  fi
  executed=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log")
  took=$(sed -n 's/^Done [0-9]* runs in \([0-9]*\) second.*/\1/p' "$log")
  printf '%-26s %8s %12s %10s\n' "$target" "${took:-$seconds}" "${executed:-?}" \
    "$(ls "$corpus" | wc -l)"
done
exit $failed
