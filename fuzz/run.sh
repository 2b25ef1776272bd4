#!/usr/bin/env bash
# Builds the fuzz targets (clang, libFuzzer, AddressSanitizer+UBSan) and runs one of them on one
# core: the definition loader by default, the message reader and parser with FUZZ_TARGET=messages.
#
#   fuzz/run.sh [SECONDS] [libFuzzer options...]      default: 900 seconds
#   FUZZ_TARGET=messages fuzz/run.sh 600
#
# It starts from the committed seeds (fuzz/corpus/definition) and keeps what it learns in
# build/fuzz/corpus. Inputs are cut to 4 KiB, which keeps it near 1,300 runs a second on a busy
# two-core machine (the whole bundled default runs at a quarter of that): pass -max_len=40000 to
# mutate whole defaults. An input that crashes it is written to build/fuzz/crashes/: once fixed, copy
# it to fuzz/crashes/definition/ under a name that says what it tripped on, so that the tests
# replay it from then on (FuzzCorpusTest).
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=${1:-900}
shift || true

target=${FUZZ_TARGET:-definition}
./setup.sh --fuzz
mkdir -p "build/fuzz/corpus/$target" build/fuzz/crashes
# No fill of new blocks, a small quarantine and no allocation stacks: several times the speed. Run
# a crash input again without these options for the full report.
export ASAN_OPTIONS=${ASAN_OPTIONS:-max_malloc_fill_size=0:quarantine_size_mb=4:malloc_context_size=0}
seeds=("fuzz/corpus/$target")
if [ -d "fuzz/corpus/$target-found" ]; then seeds+=("fuzz/corpus/$target-found"); fi
nice "build/fuzz/fuzz/vantrelia_fuzz_$target" "build/fuzz/corpus/$target" "${seeds[@]}" \
  -artifact_prefix=build/fuzz/crashes/ -max_total_time="$seconds" -max_len=4096 -print_final_stats=1 "$@"
