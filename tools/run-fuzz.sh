#!/usr/bin/env bash
# A bounded libFuzzer run of the DDP loader: builds fuzz_ddp_load with clang
# (address and undefined-behaviour sanitizers) in build-fuzz, seeds it from
# the test-disc generator and fuzzes for TIVORA_FUZZ_SECONDS (default 60).
# Fails on any crash, leak or sanitizer report; prints executions and coverage.
set -euo pipefail
cd "$(dirname "$0")/.."
ROOT=$PWD
BUILD=${TIVORA_FUZZ_BUILD:-$ROOT/build-fuzz}
SECONDS_TO_RUN=${TIVORA_FUZZ_SECONDS:-60}

CXX=clang++ cmake -S . -B "$BUILD" -DTIVORA_FUZZ=ON -DCMAKE_CXX_COMPILER=clang++ >/dev/null
cmake --build "$BUILD" -j"$(nproc)" --target fuzz_ddp_load

FUZZER=$BUILD/fuzz/fuzz_ddp_load
SEEDS=$BUILD/fuzz-seeds
CORPUS=$BUILD/fuzz-corpus
ARTIFACTS=$BUILD/fuzz-artifacts
rm -rf "$SEEDS"
mkdir -p "$SEEDS" "$CORPUS" "$ARTIFACTS"
TIVORA_FUZZ_SEEDS=$SEEDS "$FUZZER"

# UBSan reports are fatal, leaks are reported at exit; libFuzzer exits non-zero
# for either, and for crashes and timeouts.
export UBSAN_OPTIONS=halt_on_error=1:abort_on_error=1:print_stacktrace=1
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
LOG=$BUILD/fuzz.log
status=0
"$FUZZER" -max_total_time="$SECONDS_TO_RUN" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
    -print_final_stats=1 -artifact_prefix="$ARTIFACTS/" "$CORPUS" "$SEEDS" >"$LOG" 2>&1 || status=$?

if [ $status -ne 0 ] || grep -q -E "ERROR: (AddressSanitizer|LeakSanitizer|libFuzzer)|runtime error:" "$LOG"; then
    tail -n 60 "$LOG"
    echo "run-fuzz: FAILED (status $status); inputs kept in $ARTIFACTS" >&2
    exit 1
fi
runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$LOG" | tail -n 1)
cov=$(grep -o -E 'cov: [0-9]+ ft: [0-9]+' "$LOG" | tail -n 1)
echo "run-fuzz: ${SECONDS_TO_RUN} s, ${runs:-?} executions, ${cov:-no coverage line}, corpus $(ls "$CORPUS" | wc -l) inputs"
