#!/usr/bin/env bash
# Builds and runs every test: a plain build with warnings as errors, then
# the same suite under AddressSanitizer and UndefinedBehaviorSanitizer with
# LeakSanitizer on (any leak fails the test that made it), then the Python
# package's tests (python/test.sh), then every fuzz target for a short,
# fixed time (any finding fails the run).
set -euo pipefail
cd "$(dirname "$0")/.."
./scripts/deps.sh
jobs=$(nproc)

echo "== plain build, warnings as errors"
cmake -S . -B build/plain -DCMAKE_BUILD_TYPE=RelWithDebInfo -DEDIPROT_WERROR=ON >/dev/null
cmake --build build/plain -j"$jobs"
(cd build/plain && ctest --output-on-failure -j"$jobs")

echo "== sanitizer build: AddressSanitizer, UndefinedBehaviorSanitizer, LeakSanitizer"
cmake -S . -B build/asan -DCMAKE_BUILD_TYPE=Debug -DEDIPROT_WERROR=ON \
      -DEDIPROT_SANITIZE=address,undefined -DEDIPROT_BUILD_BENCH=OFF >/dev/null
cmake --build build/asan -j"$jobs"
(cd build/asan && ASAN_OPTIONS=detect_leaks=1:abort_on_error=0 \
   UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 ctest --output-on-failure -j"$jobs")

echo "== Python package: installed into a fresh venv, then its tests"
./python/test.sh

echo "== fuzzing, ${EDIPROT_FUZZ_SECONDS:-40} s a target"
./scripts/fuzz.sh "${EDIPROT_FUZZ_SECONDS:-40}"
