#!/usr/bin/env bash
# Builds the project and runs the main job on the bundled samples.
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
cmake -S . -B build/plain -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/plain -j"$(nproc)" --target edi ediprot >/dev/null
exec ./scripts/samples.sh build/plain
