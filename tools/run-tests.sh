#!/usr/bin/env bash
# Builds Tivora and runs every test from a fresh Debian machine:
#   1. installs the packages (tools/install-deps.sh),
#   2. builds with warnings as errors, and compiles the Windows code paths
#      for a Windows target (tools/check-windows.sh),
#   3. runs the CTest suite against a private PulseAudio null sink and Xvfb,
#   4. builds the Debian package, checks it, installs it, runs the installed
#      programs and removes it again (tools/test-package.sh),
#   5. builds the threaded tests again with ThreadSanitizer and runs them,
#   6. fuzzes the DDP loader for about a minute.
# Set TIVORA_SKIP_DEPS=1 to skip step 1, TIVORA_QUICK=1 to skip steps 5 and 6.
set -euo pipefail
cd "$(dirname "$0")/.."
ROOT=$PWD
JOBS=$(nproc)

if [ "${TIVORA_SKIP_DEPS:-0}" != 1 ]; then
    tools/install-deps.sh
fi

cmake -S . -B build -DTIVORA_WERROR=ON
cmake --build build -j"$JOBS"
tools/check-windows.sh build

source tools/test-env.sh
start_test_env
ctest --test-dir build --output-on-failure -j"$JOBS"
stop_test_env
"$ROOT/tools/test-package.sh" build

if [ "${TIVORA_QUICK:-0}" != 1 ]; then
    "$ROOT/tools/run-tsan.sh"
    "$ROOT/tools/run-fuzz.sh"
fi
echo "All tests passed."
