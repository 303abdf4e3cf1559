#!/usr/bin/env bash
# Bounded libFuzzer runs of the DDP loader, built with clang (address and
# undefined-behaviour sanitizers) in build-fuzz and seeded from the test-disc
# generator:
#   fuzz_ddp_load    the files from memory, half of the time;
#   fuzz_ddp_folder  the files written into a real folder (names, pipes,
#                    links, sparse giants), 1/6;
#   fuzz_ddp_zip     a ZIP archive holding the DDP (damage, links, names
#                    leaving it, bombs), the rest.
# TIVORA_FUZZ_SECONDS (default 60) is the whole budget. Fails on any crash,
# hang, leak or sanitizer report; prints executions and coverage per target.
set -euo pipefail
cd "$(dirname "$0")/.."
ROOT=$PWD
BUILD=${TIVORA_FUZZ_BUILD:-$ROOT/build-fuzz}
BUDGET=${TIVORA_FUZZ_SECONDS:-60}

CXX=clang++ cmake -S . -B "$BUILD" -DTIVORA_FUZZ=ON -DCMAKE_CXX_COMPILER=clang++ >/dev/null
cmake --build "$BUILD" -j"$(nproc)" --target fuzz_ddp_load fuzz_ddp_folder fuzz_ddp_zip

# UBSan reports are fatal, leaks are reported at exit; libFuzzer exits non-zero
# for either, and for crashes and timeouts.
export UBSAN_OPTIONS=halt_on_error=1:abort_on_error=1:print_stacktrace=1
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1

fuzz() { # target, seconds
    local target=$1 seconds=$2
    local fuzzer=$BUILD/fuzz/$target
    local seeds=$BUILD/$target-seeds corpus=$BUILD/$target-corpus
    local artifacts=$BUILD/$target-artifacts log=$BUILD/$target.log
    rm -rf "$seeds"
    mkdir -p "$seeds" "$corpus" "$artifacts"
    TIVORA_FUZZ_SEEDS=$seeds "$fuzzer" >/dev/null
    local status=0
    "$fuzzer" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len=65536 \
        -print_final_stats=1 -artifact_prefix="$artifacts/" "$corpus" "$seeds" >"$log" 2>&1 ||
        status=$?
    if [ $status -ne 0 ] || grep -q -E "ERROR: (AddressSanitizer|LeakSanitizer|libFuzzer)|runtime error:" "$log"; then
        tail -n 60 "$log"
        echo "run-fuzz: $target FAILED (status $status); inputs kept in $artifacts" >&2
        exit 1
    fi
    local runs cov
    runs=$(sed -n 's/^stat::number_of_executed_units: *//p' "$log" | tail -n 1)
    cov=$(grep -o -E 'cov: [0-9]+ ft: [0-9]+' "$log" | tail -n 1)
    echo "run-fuzz: $target ${seconds} s, ${runs:-?} executions, ${cov:-no coverage line}, corpus $(ls "$corpus" | wc -l) inputs"
}

fuzz fuzz_ddp_load $((BUDGET / 2))
fuzz fuzz_ddp_folder $((BUDGET / 6))
fuzz fuzz_ddp_zip $((BUDGET - BUDGET / 2 - BUDGET / 6))
