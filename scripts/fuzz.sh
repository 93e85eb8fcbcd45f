#!/usr/bin/env bash
# Builds the libFuzzer targets of fuzz/ with clang and runs each for SECONDS
# (default 60), two at a time, on its corpus in build/fuzz/corpus (seeded from
# generated logs on first use). A crashing input is kept in build/fuzz/findings
# and makes the script fail; replay one with build/fuzz/fuzz/fuzz_CHECK FILE.
#   scripts/fuzz.sh [SECONDS] [CHECK...]   e.g. scripts/fuzz.sh 600 codexFile
set -euo pipefail
cd "$(dirname "$0")/.."
seconds=${1:-60}
[ $# -gt 0 ] && shift
checks=("$@")
[ ${#checks[@]} -gt 0 ] || checks=(claudeCodeFile codexFile importStateText activationsText iso8601Text dayKeyText lineJson)
# Debian's clang, whose runtime holds libFuzzer; another clang first on the PATH may not.
compiler=${TALLOWEN_FUZZ_CXX:-$(command -v /usr/bin/clang++ || command -v clang++)}
launcher=()
command -v ccache >/dev/null && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
cmake -S . -B build/fuzz -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_CXX_COMPILER="$compiler" \
  "${launcher[@]}" -DTALLOWEN_BUILD_FUZZERS=ON -DTALLOWEN_BUILD_TESTS=OFF >/dev/null
cmake --build build/fuzz -j "$(nproc)" --target tallowen_fuzz_seeds "${checks[@]/#/fuzz_}"
build/fuzz/fuzz/tallowen_fuzz_seeds build/fuzz/corpus
mkdir -p build/fuzz/findings

run() {
  local check=$1 log=build/fuzz/$1.log
  if build/fuzz/fuzz/fuzz_"$check" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2560 -print_final_stats=1 \
      -artifact_prefix=build/fuzz/findings/"$check"- build/fuzz/corpus/"$check" >"$log" 2>&1; then
    echo "fuzz $check: $(grep -oE 'number_of_executed_units: [0-9]+' "$log" | tail -1 | cut -d' ' -f2) runs," \
         "$(grep -oE 'fatal overflow stops \(expected\): [0-9]+' "$log" | grep -oE '[0-9]+$') expected overflow stops, no finding"
  else
    echo "fuzz $check: FINDING (see $log and build/fuzz/findings)"
    grep -E 'ERROR|SUMMARY|Test unit written' "$log" || true
    return 1
  fi
}

status=0
pending=0
for check in "${checks[@]}"; do
  run "$check" &
  pending=$((pending + 1))
  if [ "$pending" -ge 2 ]; then
    wait -n || status=1
    pending=$((pending - 1))
  fi
done
while [ "$pending" -gt 0 ]; do
  wait -n || status=1
  pending=$((pending - 1))
done
exit "$status"
