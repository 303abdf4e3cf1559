#!/usr/bin/env bash
# The audio tests built a second time with ThreadSanitizer (build-tsan) and
# run against the private PulseAudio null sink of tools/test-env.sh. Any
# ThreadSanitizer report fails the run. tools/tsan-suppressions.txt holds
# the few reports that come from inside uninstrumented system libraries.
set -euo pipefail
cd "$(dirname "$0")/.."
ROOT=$PWD
BUILD=${TIVORA_TSAN_BUILD:-$ROOT/build-tsan}
JOBS=${TIVORA_JOBS:-$(nproc)}

# No -Werror here: GCC's -Wmaybe-uninitialized misfires at the sanitizer's
# -O1 on code that the normal warnings-as-errors build accepts.
cmake -S . -B "$BUILD" -DTIVORA_TSAN=ON -DTIVORA_BUILD_GUI=OFF -DTIVORA_BUILD_BENCH=OFF \
    -DTIVORA_WERROR=OFF >/dev/null
targets=(tivora-ddp tivora-ddp-play test_jobs_background test_archive_unpack_job test_analysis_loudness
    test_verify_checksums test_export_encoded)
for source in tests/audio/test_audio_*.cpp; do
    targets+=("$(basename "$source" .cpp)")
done
cmake --build "$BUILD" -j"$JOBS" --target "${targets[@]}"

export TSAN_OPTIONS="halt_on_error=1 exitcode=66 second_deadlock_stack=1 suppressions=$ROOT/tools/tsan-suppressions.txt"
source tools/test-env.sh
start_test_env
ctest --test-dir "$BUILD" -L "audio|threads" --output-on-failure
stop_test_env
echo "run-tsan: the audio tests pass under ThreadSanitizer."
