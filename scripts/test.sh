#!/usr/bin/env bash
# Builds and runs the whole test suite twice: an optimised build (the one users
# run, benchmarks included), then a debug one under the address and
# undefined-behaviour sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc)
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DTALLOWEN_BUILD_BENCHMARKS=ON
cmake --build build/release -j "$jobs"
ctest --test-dir build/release --output-on-failure -j "$jobs"
cmake -S . -B build/sanitize -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTALLOWEN_SANITIZE=ON
cmake --build build/sanitize -j "$jobs"
ASAN_OPTIONS=detect_leaks=1:allow_user_segv_handler=1:handle_sigbus=0 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build/sanitize --output-on-failure -j "$jobs"
