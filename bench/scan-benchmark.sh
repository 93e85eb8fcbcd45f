#!/usr/bin/env bash
# Times `tallowen scan` on a generated home folder: a cold run (empty data
# folder, every log read) and a warm one (nothing changed, every log reused),
# with wall time and peak resident memory for each.
#
#   bench/scan-benchmark.sh                 500 MB of Claude Code logs, 100 MB of Codex logs
#   CLAUDE_MB=50 CODEX_MB=10 bench/scan-benchmark.sh
#
# SHARED_DIR: the folder holding bench/gen_corpus.py (default: ../shared beside the repository).
# BENCH_DIR: where the corpus and data folder go (default: a new temporary folder,
# removed at the end); a corpus already there is reused.
set -euo pipefail

repo="$(cd "$(dirname "$0")/.." && pwd)"
shared="${SHARED_DIR:-$repo/../shared}"
generator="$shared/bench/gen_corpus.py"
claude_mb="${CLAUDE_MB:-500}"
codex_mb="${CODEX_MB:-100}"
[ -f "$generator" ] || { echo "scan-benchmark: $generator not found (set SHARED_DIR)" >&2; exit 1; }

if [ -n "${BENCH_DIR:-}" ]; then
  work="$BENCH_DIR"
  mkdir -p "$work"
else
  work="$(mktemp -d)"
  trap 'rm -rf "$work"' EXIT
fi
home="$work/home"
data="$work/data"

cmake -S "$repo" -B "$repo/build/release" -G Ninja -DCMAKE_BUILD_TYPE=Release -DTALLOWEN_BUILD_BENCHMARKS=ON >/dev/null
cmake --build "$repo/build/release" -j2 --target tallowen >/dev/null
exe="$repo/build/release/tallowen"

corpus_marker="$home/.corpus-$claude_mb-$codex_mb"
if [ ! -f "$corpus_marker" ]; then
  rm -rf "$home"
  echo "generating the corpus: $claude_mb MB Claude Code, $codex_mb MB Codex, in $home"
  python3 "$generator" --home "$home" --claude-mb "$claude_mb" --codex-mb "$codex_mb"
  touch "$corpus_marker"
fi
files=$(find "$home/.claude" "$home/.codex" -name '*.jsonl' | wc -l)
bytes=$(find "$home/.claude" "$home/.codex" -name '*.jsonl' -printf '%s\n' | awk '{ s += $1 } END { print s }')
echo "corpus: $files log files, $((bytes / 1000000)) MB"

# Prints "<seconds> s <kilobytes> KB" for one scan.
measure() {
  if [ -x /usr/bin/time ]; then
    local report="$work/time.txt"
    TZ=Europe/Paris /usr/bin/time -f '%e s %M KB' -o "$report" "$exe" scan --home "$home" --data "$data" >/dev/null
    cat "$report"
  else
    # Without GNU time: wall time from bash, peak memory (VmHWM) polled from /proc.
    local start end peak=0 value pid
    start=$(date +%s.%N)
    TZ=Europe/Paris "$exe" scan --home "$home" --data "$data" >/dev/null &
    pid=$!
    while kill -0 "$pid" 2>/dev/null; do
      value=$(awk '/^VmHWM:/ { print $2 }' "/proc/$pid/status" 2>/dev/null || true)
      [ -n "$value" ] && peak=$value
      sleep 0.02
    done
    wait "$pid"
    end=$(date +%s.%N)
    awk -v start="$start" -v end="$end" -v peak="$peak" 'BEGIN { printf "%.2f s %s KB\n", end - start, peak }'
  fi
}

rm -rf "$data"
echo "cold scan (empty data folder): $(measure)"
echo "warm scan (nothing changed):   $(measure)"
