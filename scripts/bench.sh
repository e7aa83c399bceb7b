#!/bin/sh
# Runs the benchmarks of the desktop stub (start-up, command path, hot-plug,
# idle cost, memory) and prints each figure beside its baseline.
#
# Usage: scripts/bench.sh [BUILD_DIR] [Google Benchmark options...]
#   e.g. scripts/bench.sh build --benchmark_filter=Command
# Environment: VANTIX_BENCH_CYCLES (hot-plug cycles, default 1000000),
#   VANTIX_BENCH_IDLE_MS (idle window, default 10000).
# The raw figures go to BUILD_DIR/bench/vantix_bench.json as well.
set -eu

build=${1:-build}
[ $# -gt 0 ] && shift

bench="$build/bench/vantix_bench"
if [ ! -x "$bench" ]; then
    echo "bench: $bench is not built; it needs Google Benchmark (libbenchmark-dev)" >&2
    exit 1
fi

# No display is needed; the offscreen platform keeps Qt from looking for one.
export QT_QPA_PLATFORM=offscreen

start=$(date +%s)
"$bench" --benchmark_color=false \
    --benchmark_out="$build/bench/vantix_bench.json" --benchmark_out_format=json "$@"
echo "bench: finished in $(($(date +%s) - start)) s"
