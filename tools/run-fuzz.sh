#!/usr/bin/env bash
# A bounded libFuzzer run of the DDP loader (filled in with the DDP reader).
set -euo pipefail
echo "run-fuzz: no fuzz target yet"
