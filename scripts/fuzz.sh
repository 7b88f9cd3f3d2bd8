#!/usr/bin/env bash
# Fuzzes every parser of outside bytes (the device's replies and records, WAV files read
# back, dive pages on their way to the logbook) for SECONDS each (default 60; 0: no limit)
# or RUNS executions each, whichever ends first, starting from the corpora kept in
# tests/fuzz/corpus/<target> (the simulator's replies, records and pages, the clip writer's
# WAVs and their variants, and what a million executions of each target added, minimised).
# Builds with clang, libFuzzer and AddressSanitizer + UndefinedBehaviorSanitizer into
# build-fuzz/. FUZZ_SANITIZER=undefined builds with UndefinedBehaviorSanitizer alone, into
# build-fuzz-undefined/: for long runs of the export's property, which ASan's allocator
# slows thirtyfold (the page decoder under it is fuzzed with ASan by record_fuzzer).
# FUZZ_TARGETS="a b" runs only those targets. Corpora grow in <build>/corpus/<target>; a
# crash leaves its input in <build>/crashes/ and makes this script fail. Prints the
# seconds, executions and corpus size per target.
#   scripts/fuzz.sh [SECONDS [RUNS]]
# What a long run found is kept by merging it, minimised, into the kept corpus:
#   build-fuzz/tests/fuzz/T -merge=1 tests/fuzz/corpus/T build-fuzz/corpus/T
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
runs=${2:--1}
./scripts/install-deps.sh
sanitizer=${FUZZ_SANITIZER:-address}
build=build-fuzz
[ "$sanitizer" = address ] || build=build-fuzz-$sanitizer
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER=clang++ \
  -DMRVTQ5DK_FUZZ=ON -DMRVTQ5DK_SANITIZER="$sanitizer" -DBUILD_TESTING=OFF > /dev/null
targets=(${FUZZ_TARGETS:-voice_index_fuzzer record_fuzzer receive_dispatch_fuzzer wave_pcm_fuzzer
  uddf_export_fuzzer})
cmake --build "$build" --parallel "$(nproc)" --target "${targets[@]}" > /dev/null

mkdir -p "$build/crashes"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1 UBSAN_OPTIONS=print_stacktrace=1
failed=0
printf '%-26s %8s %12s %10s\n' target seconds executions corpus
for target in "${targets[@]}"; do
  corpus="$build/corpus/$target"
  mkdir -p "$corpus"
  cp -n "tests/fuzz/corpus/$target"/* "$corpus/"
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
