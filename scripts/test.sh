#!/usr/bin/env bash
# Builds and runs the whole test suite twice: a plain debug build, then one under
# the address and undefined-behaviour sanitizers.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc)
cmake -S . -B build/debug -G Ninja -DCMAKE_BUILD_TYPE=Debug
cmake --build build/debug -j "$jobs"
ctest --test-dir build/debug --output-on-failure -j "$jobs"
cmake -S . -B build/sanitize -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTALLOWEN_SANITIZE=ON
cmake --build build/sanitize -j "$jobs"
ASAN_OPTIONS=detect_leaks=1:allow_user_segv_handler=1:handle_sigbus=0 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build/sanitize --output-on-failure -j "$jobs"
