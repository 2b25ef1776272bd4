#!/usr/bin/env bash
# Sets up this machine for Vantrelia and builds it. Safe to run again at any time.
#
#   ./setup.sh          install what the build needs, configure and build (build/release)
#   ./setup.sh --test   the same, then an AddressSanitizer+UBSan build (build/asan), and all
#                       tests in both builds
#   ./setup.sh --fuzz   the same as without options, then clang and libFuzzer as well, and the fuzz
#                       targets in build/fuzz (fuzz/run.sh runs them; the tests never need clang)
set -euo pipefail
cd "$(dirname "$0")"

run_tests=false
build_fuzz=false
case "${1:-}" in
  --test) run_tests=true ;;
  --fuzz) build_fuzz=true ;;
  "") ;;
  *) echo "usage: ./setup.sh [--test | --fuzz]" >&2; exit 1 ;;
esac

packages=(
  g++ cmake make pkg-config
  libboost-regex-dev libboost-thread-dev
  libyaml-cpp-dev nlohmann-json3-dev libcli11-dev
  libgtest-dev libgmock-dev libbenchmark-dev
)
if $build_fuzz; then packages+=(clang libclang-rt-dev); fi
missing=()
for package in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed" || missing+=("$package")
done
if ((${#missing[@]})); then
  echo "== installing: ${missing[*]}"
  sudo=""
  if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
  $sudo apt-get update
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${missing[@]}"
fi

jobs=$(nproc 2>/dev/null || echo 2)

echo "== build/release"
cmake -S . -B build/release -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build/release -j "$jobs"

if $run_tests; then
  echo "== tests (release)"
  ctest --test-dir build/release --output-on-failure -j "$jobs"

  echo "== build/asan"
  cmake -S . -B build/asan -DCMAKE_BUILD_TYPE=Debug -DVANTRELIA_SANITIZE=ON -DVANTRELIA_BENCHMARKS=OFF >/dev/null
  cmake --build build/asan -j "$jobs"
  echo "== tests (AddressSanitizer + UndefinedBehaviorSanitizer)"
  ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:malloc_context_size=8 UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1 \
    ctest --test-dir build/asan --output-on-failure -j "$jobs"
fi

if $build_fuzz; then
  echo "== build/fuzz (clang, libFuzzer, AddressSanitizer+UBSan)"
  CC=clang CXX=clang++ cmake -S . -B build/fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DVANTRELIA_FUZZ=ON \
    -DVANTRELIA_BENCHMARKS=OFF >/dev/null
  cmake --build build/fuzz -j "$jobs" --target vantrelia_fuzz_definition vantrelia_fuzz_messages
fi
