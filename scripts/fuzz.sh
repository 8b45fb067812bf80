#!/usr/bin/env bash
# Builds the fuzz targets with clang and runs each for a fixed time.
#   scripts/fuzz.sh [SECONDS]      (default 45 seconds a target)
# Seeds come from the test data and the shared corpus; findings are saved
# under build/fuzz/findings/ and make the script fail.
set -euo pipefail
cd "$(dirname "$0")/.."
secs=${1:-45}
./scripts/deps.sh
CC=clang CXX=clang++ cmake -S . -B build/fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo \
   -DEDIPROT_BUILD_FUZZERS=ON -DEDIPROT_BUILD_TESTS=OFF -DEDIPROT_BUILD_BENCH=OFF >/dev/null
cmake --build build/fuzz -j"$(nproc)" >/dev/null

work=build/fuzz/run
rm -rf "$work"; mkdir -p "$work" build/fuzz/findings
seed() {  # seed TARGET FILES...
  local dir="$work/corpus-$1"; shift
  mkdir -p "$dir"
  for f in "$@"; do [ -f "$f" ] && cp "$f" "$dir/" || true; done
}
corpus=../shared/corpus
seed edifactread $corpus/edifact/* tests/data/edifact/* samples/*.edi
seed vdaread $corpus/vda/* tests/data/vda/* samples/*.txt
seed makerecord $corpus/vda/*
seed treetext configs/*.tree tests/data/host/*
seed json tests/data/json/* samples/*.json
seed writers tests/data/host/*
for d in fuzz/regressions/*/; do
  [ -d "$d" ] && seed "$(basename "$d")" "$d"*
done

status=0
for t in edifactread vdaread makerecord treetext json writers; do
  echo "== fuzz_$t for ${secs}s"
  dict=()
  [ "$t" = edifactread ] && dict=(-dict=fuzz/edifact.dict)
  if ! ASAN_OPTIONS=detect_leaks=1 build/fuzz/fuzz/fuzz_$t "$work/corpus-$t" "${dict[@]}" \
        -max_total_time="$secs" -max_len=65536 -timeout=10 -rss_limit_mb=4096 \
        -artifact_prefix=build/fuzz/findings/$t- -print_final_stats=1 2>"$work/$t.log"; then
    status=1
    echo "fuzz_$t found a problem:"; tail -n 40 "$work/$t.log"
  fi
  grep -E '^(stat::number_of_executed_units|#[0-9]+.*DONE)' "$work/$t.log" | tail -n 2 || true
  grep -E 'cov: [0-9]+' -o "$work/$t.log" | tail -n 1 || true
done
exit $status
