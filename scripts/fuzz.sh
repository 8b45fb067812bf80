#!/usr/bin/env bash
# Builds the fuzz targets with clang (libFuzzer, ASan, UBSan) and runs each
# for a fixed time.
#   scripts/fuzz.sh [SECONDS] [TARGET...]   (default 40 seconds, all targets)
#   FUZZ_WORK=build/fuzz/run2 scripts/fuzz.sh ...   (a second run beside one)
#   FUZZ_BUILD=build/fuzz2 scripts/fuzz.sh ...      (another build folder)
# Seeds: the test data, the corpus under tests/data/corpus, fuzz/seeds/ and every earlier
# finding under fuzz/regressions/.  A crash, leak, sanitizer report,
# timeout or out-of-memory is saved under build/fuzz/findings/ (the
# findings folder of FUZZ_BUILD), printed,
# and makes the script exit with 1 (after the other targets have run).
# Each target prints its executions, inputs a second and its coverage
# (cov: edges).
set -euo pipefail
cd "$(dirname "$0")/.."
secs=${1:-40}
shift || true
targets=("$@")
[ ${#targets[@]} -eq 0 ] && targets=(edifactread configread vdaread makerecord treetext json writers libread)

./scripts/deps.sh
if ! command -v clang++ >/dev/null ||
   ! ls /usr/lib/llvm-*/lib/clang/*/lib/linux/libclang_rt.fuzzer-x86_64.a >/dev/null 2>&1; then
  echo "fuzz.sh: needs clang with its libFuzzer runtime (Debian: clang, libclang-rt-dev)" >&2
  exit 2
fi
build=${FUZZ_BUILD:-build/fuzz}
CC=clang CXX=clang++ cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
   -DEDIPROT_BUILD_FUZZERS=ON -DEDIPROT_BUILD_TESTS=OFF -DEDIPROT_BUILD_BENCH=OFF >/dev/null
cmake --build "$build" -j2 --target "${targets[@]/#/fuzz_}" >/dev/null

# FUZZ_WORK names another work folder, so that two runs can share the build.
work=${FUZZ_WORK:-$build/run}
findings=$build/findings
rm -rf "$work"; mkdir -p "$work/tmp" "$findings"
seed() {  # seed TARGET FILES...
  local dir="$work/corpus-$1"; shift
  mkdir -p "$dir"
  local f
  for f in "$@"; do [ -f "$f" ] && cp "$f" "$dir/" || true; done
}
corpus=tests/data/corpus
seed edifactread $corpus/edifact/* tests/data/edifact/* tests/data/edifact-out/*.edi
seed configread fuzz/seeds/configread/*
seed vdaread $corpus/vda/* samples/*.txt
seed makerecord
awk '{ f = sprintf("'"$work"'/corpus-makerecord/line%03d", NR); sub(/\r$/, ""); printf "%s", $0 > f; close(f) }' \
    samples/*.txt
seed treetext configs/*.tree tests/data/host/conf/* tests/data/edifact-out/*.tree
seed json fuzz/seeds/json/*
seed writers fuzz/seeds/writers/*
seed libread fuzz/seeds/libread/*.edi tests/data/edifact/*
# The libread seeds once more behind some mode bytes (fuzz/fuzzentries.h):
# raw, without keep_going, servconf, two configurations, none, and the
# whole read with some of them.
for f in fuzz/seeds/libread/*.edi tests/data/edifact/*; do
  for m in 129 130 132 136 140 176 182 189; do
    { printf "\\$(printf %o "$m")"; cat "$f"; } >"$work/corpus-libread/$m-$(basename "$f")"
  done
done
for d in fuzz/regressions/*/; do
  [ -d "$d" ] && seed "$(basename "$d")" "$d"*
done

# Module messages on stderr are expected and only slow a run: libFuzzer
# closes stderr for the target (close_fd_mask=2) and keeps its own output
# and the sanitizer reports.  UBSan stops at its first report.
export TMPDIR="$PWD/$work/tmp"
# malloc_context_size=0: no stack is recorded per allocation, which is
# most of a read's cost under ASan; a leak is still found, and a finding
# is rerun by hand with the default options to see where it was allocated.
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:malloc_context_size=0
export UBSAN_OPTIONS=halt_on_error=1:print_stacktrace=1

status=0
for t in "${targets[@]}"; do
  log="$work/$t.log"
  dict=()
  maxlen=65536
  case $t in
    # An interchange of 2 KB holds every kind of segment and loop the small
    # configuration has; longer ones only slow the target down.
    edifactread) dict=(-dict=fuzz/edifact.dict); maxlen=2048 ;;
    # The library's read does more per input than the module's (working
    # copies, findings, a second read): inputs of at most 1 KB keep the
    # target above 1,000 inputs a second.
    libread) dict=(-dict=fuzz/edifact.dict); maxlen=1024 ;;
    treetext|writers) dict=(-dict=fuzz/tree.dict) ;;
    configread) cat fuzz/tree.dict fuzz/edifact.dict >"$work/configread.dict"
                dict=(-dict="$work/configread.dict") ;;
  esac
  rc=0
  "$build/fuzz/fuzz_$t" "$work/corpus-$t" "${dict[@]}" \
      -max_total_time="$secs" -max_len="$maxlen" -timeout=10 -rss_limit_mb=2048 \
      -close_fd_mask=2 -artifact_prefix="$findings/$t-" -print_final_stats=1 \
      >"$log" 2>&1 || rc=$?
  execs=$(grep -o 'stat::number_of_executed_units: [0-9]*' "$log" | tail -n 1 | grep -o '[0-9]*$' || true)
  cov=$(grep -o 'cov: [0-9]*' "$log" | tail -n 1 | grep -o '[0-9]*$' || true)
  rate=$(grep -oE 'stat::average_exec_per_sec: *[0-9]+' "$log" | tail -n 1 | grep -o '[0-9]*$' || true)
  if [ "$rc" -ne 0 ] || grep -qE '^(==[0-9]+==ERROR|SUMMARY: )|runtime error:' "$log"; then
    status=1
    echo "fuzz_$t: FINDING (exit $rc), ${execs:-?} executions, cov: ${cov:-?} edges"
    grep -E 'ERROR|SUMMARY|runtime error|fuzz entry|Test unit written|^    #[0-9]' "$log" | head -n 40 || true
    echo "  full log: $log"
  else
    echo "fuzz_$t: ${execs:-?} executions (${rate:-?} a second), cov: ${cov:-?} edges, no findings"
  fi
done
exit $status
