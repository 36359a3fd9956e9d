#!/usr/bin/env bash
# Runs every libFuzzer target in a build folder for the given number of seconds,
# each on a scratch copy of its seed corpus (fuzz/corpus/<family>), and fails
# when any of them finds a crash, a sanitizer report, a leak, a hang or runaway
# memory. Every target runs even after one has failed; the inputs that failed
# are kept in <build folder>/artifacts/<family>/ for reproduction:
#   <build folder>/fuzz_<family> <build folder>/artifacts/<family>/crash-...
#
# Usage: run-fuzzers.sh <build folder> [seconds per target]
set -euo pipefail
dir=$(cd "$1" && pwd)
seconds=${2:-60}
root=$(cd "$(dirname "$0")/.." && pwd)

# Leaks are reported by LeakSanitizer at the end of an input whose allocations
# outlive it (libFuzzer's -detect_leaks); a caller's environment must not turn
# that off, so these settings come last. UBSan aborts at the first report (the
# targets are built with -fno-sanitize-recover) and prints where.
export ASAN_OPTIONS="${ASAN_OPTIONS:+$ASAN_OPTIONS:}detect_leaks=1:abort_on_error=0:symbolize=1"
export UBSAN_OPTIONS="${UBSAN_OPTIONS:+$UBSAN_OPTIONS:}halt_on_error=1:print_stacktrace=1"

# A hang: any one input running longer than this many seconds (ordinary inputs
# take milliseconds, even instrumented). The whole run is bounded too, in case
# the fuzzer itself stops answering.
per_input=10
overall=$((seconds + 300))

# One target per seed corpus: a corpus without its target fails, a target
# without a corpus (left over from an older tree) is not run.
found=0
failed=()
for corpus in "$root"/fuzz/corpus/*/; do
  family=$(basename "$corpus")
  target="$dir/fuzz_$family"
  found=1
  [ -x "$target" ] || { echo "fuzz_$family: not built in $dir"; failed+=("$family"); continue; }
  work=$(mktemp -d)
  artifacts="$dir/artifacts/$family"
  rm -rf "$artifacts"
  mkdir -p "$artifacts"
  cp -r "$corpus." "$work/"
  echo "== fuzz_$family: ${seconds}s"
  status=0
  timeout -k 10 "$overall" "$target" -max_total_time="$seconds" -timeout="$per_input" -detect_leaks=1 \
    -rss_limit_mb=2048 -print_final_stats=1 -artifact_prefix="$artifacts/" "$work" >"$work.log" 2>&1 || status=$?
  grep -E 'Done [0-9]+ runs|Slowest unit|ERROR|SUMMARY|Test unit written' \
    "$work.log" || true
  if [ "$status" -ne 0 ]; then
    [ "$status" -eq 124 ] && echo "fuzz_$family did not finish within ${overall}s"
    tail -60 "$work.log"
    echo "fuzz_$family failed (exit status $status); inputs kept in $artifacts"
    failed+=("$family")
  fi
  rmdir "$artifacts" "$dir/artifacts" 2>/dev/null || true  # only when empty
  rm -rf "$work" "$work.log"
done
[ $found -eq 1 ] || { echo "no seed corpora in $root/fuzz/corpus"; exit 1; }
if [ ${#failed[@]} -gt 0 ]; then
  echo "failed: ${failed[*]}"
  exit 1
fi
echo "all fuzz targets ran ${seconds}s without a finding"
