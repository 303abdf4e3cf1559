#!/usr/bin/env bash
# Builds Tivora and opens the bundled demo disc (generated at build time).
set -euo pipefail
cd "$(dirname "$0")/.."
if [ "${TIVORA_SKIP_DEPS:-0}" != 1 ]; then
    tools/install-deps.sh
fi
cmake -S . -B build
cmake --build build -j"$(nproc)"
if [ -x build/app/tivora ]; then
    exec build/app/tivora build/demo-disc
else
    exec build/tools/tivora-ddp/tivora-ddp info build/demo-disc
fi
