#!/bin/bash
# Builds and measures:
#   bench/run.sh [options]     the whole program against two peers (bench/run.py --help)
#   bench/run.sh --check       that and the parts, each figure beside its limit; 1 when one is over
#   bench/run.sh parts         the parts alone, against the least that they could cost
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
. "$root/scripts/packages.sh"
install_missing $packages_build $packages_fonts $packages_run $packages_test $packages_bench
build=$root/build-bench
mkdir -p "$build"
if ! { cmake -S "$root" -B "$build" -G Ninja -DNUVID_TESTS=ON -DNUVID_BENCH=ON > "$build/build.log" 2>&1 &&
  cmake --build "$build" --target bench_parts nuvidBuilt >> "$build/build.log" 2>&1; }; then
  tail -n 40 "$build/build.log" >&2
  exit 1
fi
if [ "${1:-}" = parts ]; then
  shift
  exec "$build/bench/bench_parts" --benchmark_repetitions=5 --benchmark_report_aggregates_only=true "$@"
fi
exec python3 "$root/bench/run.py" --program "$build/nuvid" --parts "$build/bench/bench_parts" --media "$build/media" "$@"
