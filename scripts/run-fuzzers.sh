#!/usr/bin/env bash
# Runs every libFuzzer target in a build folder for the given number of seconds,
# each on a scratch copy of its seed corpus (fuzz/corpus/<family>), and fails at
# the first target that finds a crash, a hang or a sanitizer report.
set -euo pipefail
dir=$(cd "$1" && pwd)
seconds=${2:-60}
root=$(cd "$(dirname "$0")/.." && pwd)
found=0
for target in "$dir"/fuzz_*; do
  [ -x "$target" ] || continue
  found=1
  family=$(basename "$target"); family=${family#fuzz_}
  work=$(mktemp -d)
  cp -r "$root/fuzz/corpus/$family/." "$work/" 2>/dev/null || true
  echo "== $(basename "$target"): ${seconds}s"
  status=0
  (cd "$work" && "$target" -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -print_final_stats=1 \
    "$work" >"$work.log" 2>&1) || status=$?
  grep -E 'Done [0-9]+ runs|ERROR|SUMMARY|Test unit written' "$work.log" || true
  if [ "$status" -ne 0 ]; then
    tail -40 "$work.log"; echo "$(basename "$target") failed"; rm -rf "$work" "$work.log"; exit 1
  fi
  rm -rf "$work" "$work.log"
done
[ $found -eq 1 ] || { echo "no fuzz targets in $dir"; exit 1; }
