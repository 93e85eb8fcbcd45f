#!/usr/bin/env bash
# Builds and runs the whole test suite: the C++ engine and the terminal twice,
# an optimised build (the one users run, benchmarks included) and a debug one
# under the address and undefined-behaviour sanitizers; then the Swift package
# (the engine without ICU, TallowenKit and its tests), once plainly and once
# under the address sanitizer, so that memory crossing the C interface is checked.
# Between the two, each fuzz target runs for 20 seconds.
set -euo pipefail
cd "$(dirname "$0")/.."
jobs=$(nproc)
bash scripts/check-layers.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DTALLOWEN_BUILD_BENCHMARKS=ON
cmake --build build/release -j "$jobs"
ctest --test-dir build/release --output-on-failure -j "$jobs"
# Root may write anywhere, so the tests of unwritable folders skip under it:
# run them again as an ordinary user when that user can reach the build.
if [ "$(id -u)" -eq 0 ] && command -v setpriv >/dev/null && id nobody >/dev/null 2>&1; then
  as_nobody=(setpriv --reuid=nobody --regid="$(id -g nobody)" --clear-groups)
  if "${as_nobody[@]}" test -x "$PWD/build/release/tallowen_tests"; then
    scratch=$(mktemp -d)
    chmod 777 "$scratch"
    (cd "$scratch" && TMPDIR="$scratch" "${as_nobody[@]}" "$OLDPWD/build/release/tallowen_tests" \
      --gtest_filter='*ReadOnlySupportFolder*:*UnreadableFile*:*NobodyMayWrite*')
    rm -rf "$scratch"
  fi
fi
cmake -S . -B build/sanitize -G Ninja -DCMAKE_BUILD_TYPE=Debug -DTALLOWEN_SANITIZE=ON
cmake --build build/sanitize -j "$jobs"
ASAN_OPTIONS=detect_leaks=1:allow_user_segv_handler=1:handle_sigbus=0 UBSAN_OPTIONS=print_stacktrace=1 \
  ctest --test-dir build/sanitize --output-on-failure -j "$jobs"
# Each fuzz target of fuzz/ for 20 seconds.
bash scripts/fuzz.sh 20

# The Swift package. Its end-to-end import test compares with `tallowen scan
# --json` from the release build above. LeakSanitizer's reports of the
# toolchain's own libraries are suppressed (mac/Tests/lsan-suppressions.txt).
# The project's machines keep the toolchain in /opt/swift.
command -v swift >/dev/null || [ ! -x /opt/swift/usr/bin/swift ] || export PATH="/opt/swift/usr/bin:$PATH"
if command -v swift >/dev/null; then
  export TALLOWEN_EXE="$PWD/build/release/tallowen"
  # Only a Mac compiles the app; here every Swift file must at least parse and hold no placeholder.
  bash mac/check-sources.sh
  swift build -j "$jobs"
  swift test -j "$jobs"
  LSAN_OPTIONS="suppressions=$PWD/mac/Tests/lsan-suppressions.txt" swift test -j "$jobs" --sanitize=address
else
  echo "test.sh: no swift on PATH (/opt/swift/usr/bin on the project's machines); the Swift package was not tested" >&2
  exit 1
fi

