#!/usr/bin/env bash
# Builds `tallowen` in Release, generates three home folders with
# ../shared/bench/gen_corpus.py and times `tallowen import` on them, the files
# in the page cache. Prints one table (Markdown) with the machine it ran on.
#
#   bash bench/run.sh                  the full corpora: about 3,000 logs and 1.2 GB,
#                                      one log of 1 GB, a Cursor database of 500,000 rows
#   SCALE=0.25 bash bench/run.sh       the same shapes, a quarter of the size
#
# SHARED_DIR: the folder holding bench/gen_corpus.py (default: ../shared beside
# the repository). BENCH_DIR: where the corpora and data folders go (default:
# build/bench in the repository); corpora already there are reused. RUNS: runs
# per figure, the fastest is kept (default 3).
set -euo pipefail

repo="$(cd "$(dirname "$0")/.." && pwd)"
generator="${SHARED_DIR:-$(dirname "$0")/../../shared}/bench/gen_corpus.py"
scale="${SCALE:-1}"
runs="${RUNS:-3}"
work="${BENCH_DIR:-$repo/build/bench}"
[ -f "$generator" ] || { echo "bench: $generator not found (set SHARED_DIR)" >&2; exit 1; }
mkdir -p "$work"

cmake -S "$repo" -B "$repo/build/release" -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build "$repo/build/release" --target tallowen >/dev/null
exe="$repo/build/release/tallowen"

scaled() { python3 -c "import sys; print(max(1, round(float(sys.argv[1]) * float(sys.argv[2]))))" "$1" "$scale"; }
claude_mb=$(scaled 1000)
codex_mb=$(scaled 200)
big_mb=$(scaled 1000)
conversations=$(scaled 30000)

# Generates a corpus once: $1 its folder, then the generator's options.
corpus() {
  local home="$1"
  shift
  local marker="$home/.corpus $*"
  [ -f "$marker" ] && return
  rm -rf "$home"
  echo "bench: generating $home ($*)" >&2
  python3 "$generator" --home "$home" "$@" >&2
  touch "$marker"
}

real="$work/real-$scale"
corpus "$real" --claude-mb "$claude_mb" --codex-mb "$codex_mb" --cursor-conversations 0
cursor="$work/cursor-$scale"
corpus "$cursor" --claude-mb 0 --codex-mb 0 --cursor-conversations "$conversations"
# One long log: the generated sessions of the first corpus, one after another.
big="$work/big-$scale"
big_log="$big/.claude/projects/one/long-session.jsonl"
if [ ! -f "$big/.done" ]; then
  rm -rf "$big"
  mkdir -p "$(dirname "$big_log")"
  python3 - "$real/.claude/projects" "$big_log" "$((big_mb * 1000000))" <<'EOF'
import os, sys
source, target, wanted = sys.argv[1], sys.argv[2], int(sys.argv[3])
logs = sorted(os.path.join(folder, name) for folder, _, names in os.walk(source) for name in names)
written = 0
with open(target, "wb") as out:
    while written < wanted:
        for log in logs:
            with open(log, "rb") as f:
                written += out.write(f.read())
            if written >= wanted:
                break
EOF
  touch "$big/.done"
fi

# Puts a folder's files in the page cache.
warm() { find "$1" -type f -exec cat {} + >/dev/null; }

# Runs the command given; prints "<wall seconds> <cpu seconds> <peak resident KB>".
measure() {
  python3 - "$@" <<'EOF'
import os, subprocess, sys, time
start = time.perf_counter()
child = subprocess.Popen(sys.argv[1:], stdout=subprocess.DEVNULL, env=dict(os.environ, TZ="Europe/Paris"))
_, status, usage = os.wait4(child.pid, 0)
wall = time.perf_counter() - start
if status != 0:
    sys.exit(f"bench: {' '.join(sys.argv[1:])} failed")
peak_kilobytes = usage.ru_maxrss // 1024 if sys.platform == "darwin" else usage.ru_maxrss
print(f"{wall:.4f} {usage.ru_utime + usage.ru_stime:.3f} {peak_kilobytes}")
EOF
}

# The fastest of $runs runs of the command $2 ("import" or "scan") on home $3
# and data folder $4; $1 says what to do before each run: "cold" empties the
# data folder, "append" adds one reply to one log, "same" changes nothing.
best_run() {
  local before="$1" command="$2" home="$3" data="$4" best="" line
  for _ in $(seq "$runs"); do
    case "$before" in
      cold) rm -rf "$data" ;;
      append) printf '%s\n' "$append_line" >>"$append_log" ;;
    esac
    line=$(measure "$exe" "$command" --home "$home" --data "$data")
    if [ -z "$best" ] || [ "$(printf '%s\n%s\n' "$line" "$best" | sort -g | sed -n 1p)" = "$line" ]; then
      best="$line"
    fi
  done
  echo "$best"
}

row() {
  local name="$1" figures="$2" size_mb="$3"
  read -r wall cpu rss <<<"$figures"
  awk -v name="$name" -v wall="$wall" -v cpu="$cpu" -v rss="$rss" -v mb="$size_mb" 'BEGIN {
    rate = (mb > 0 && wall > 0) ? sprintf("%.2f GB/s", mb / 1000 / wall) : ""
    printf "| %s | %.3f s | %.2f s | %.0f MB | %s |\n", name, wall, cpu, rss / 1024, rate }'
}

# Megabytes of logs and databases under a folder.
size_mb() {
  python3 - "$1" <<'EOF'
import os, sys
print(round(sum(os.path.getsize(os.path.join(folder, name)) for folder, _, names in os.walk(sys.argv[1])
                for name in names if name.endswith((".jsonl", ".vscdb"))) / 1e6))
EOF
}
count_logs() { find "$1" -name '*.jsonl' | wc -l | tr -d ' '; }
load() { uptime | sed 's/.*average[s]*: //'; }

load_before=$(load)
warm "$real"
real_mb=$(size_mb "$real")
cold=$(best_run cold import "$real" "$work/data-real")
same=$(best_run same import "$real" "$work/data-real")
append_log=$(find "$real/.claude/projects" -name '*.jsonl' | sort | sed -n 1p)
append_line=$(grep -m1 '"type":"assistant"' "$append_log")
appended=$(best_run append import "$real" "$work/data-real")
append_mb=$(awk -v b="$(wc -c <"$append_log")" 'BEGIN { printf "%.1f", b / 1e6 }')

warm "$big"
big_cold=$(best_run cold import "$big" "$work/data-big")

warm "$cursor"
cursor_mb=$(size_mb "$cursor")
database="$cursor/Library/Application Support/Cursor/User/globalStorage/state.vscdb"
rows=$(python3 -c "import sqlite3, sys; print(sqlite3.connect(sys.argv[1]).execute(sys.argv[2]).fetchone()[0])" \
  "$database" "SELECT count(*) FROM cursorDiskKV")
cursor_cold=$(best_run cold scan "$cursor" "$work/data-cursor")
cursor_same=$(best_run same scan "$cursor" "$work/data-cursor")

if [ -r /proc/cpuinfo ]; then
  cpu_name=$(awk -F': ' '/^model name/ { print $2; exit }' /proc/cpuinfo)
else
  cpu_name=$(sysctl -n machdep.cpu.brand_string 2>/dev/null || uname -m)
fi
echo
echo "Machine: $cpu_name, $(getconf _NPROCESSORS_ONLN) cores, $(uname -sr)."
echo "Load average before: $load_before; after: $(load)."
echo "Release build, files in the page cache, best of $runs runs, TZ=Europe/Paris."
echo
echo "| run | wall | CPU | peak memory | rate |"
echo "|---|---|---|---|---|"
row "\`import\`, cold: $(count_logs "$real") logs, $real_mb MB, empty data folder" "$cold" "$real_mb"
row "\`import\`, nothing changed" "$same" 0
row "\`import\`, one log of $append_mb MB appended to" "$appended" 0
row "\`import\`, cold: one log of $(size_mb "$big") MB" "$big_cold" "$(size_mb "$big")"
row "\`scan\`, Cursor cold: $rows rows, $cursor_mb MB" "$cursor_cold" 0
row "\`scan\`, Cursor unchanged" "$cursor_same" 0
