#!/bin/sh
# Runs the benchmarks of the desktop stub (start-up, command path, hot-plug,
# idle cost, memory, control channel) and prints each figure beside its
# baseline, then compares the figures with the recorded run (bench/recorded.json)
# and warns about each one worse than its record by more than its noise.
# Then the Python client's group (bench/python_bench.py): its round trip and
# events per second beside a bare Python socket's.
#
# Usage: scripts/bench.sh [BUILD_DIR] [--record] [Google Benchmark options...]
#   e.g. scripts/bench.sh build --benchmark_filter=Command
#   --record  writes this run's figures into bench/recorded.json (a filtered
#             run leaves the other figures as they were).
# Environment: VANTIX_BENCH_CYCLES (hot-plug cycles, default 1000000),
#   VANTIX_BENCH_IDLE_MS (idle window, default 10000), VANTIX_BENCH_EVENTS
#   (events per burst, default 200000); VANTIX_BENCH_PY_* for the Python
#   group (bench/python_bench.py), PYTHON (default /usr/bin/python3). A
#   --benchmark_filter without "Python" in it leaves the Python group out.
# The raw figures go to BUILD_DIR/bench/vantix_bench.json as well.
set -eu

here=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-build}
[ $# -gt 0 ] && shift

record=
python_group=yes
for arg do
    shift
    if [ "$arg" = --record ]; then
        record=--vantix-bench-record
    else
        case $arg in
        --benchmark_filter=*Python*) ;;
        --benchmark_filter=*) python_group= ;;
        esac
        set -- "$@" "$arg"
    fi
done

bench="$build/bench/vantix_bench"
if [ ! -x "$bench" ]; then
    echo "bench: $bench is not built; it needs Google Benchmark (libbenchmark-dev)" >&2
    exit 1
fi

# No display is needed; the offscreen platform keeps Qt from looking for one.
export QT_QPA_PLATFORM=offscreen

# Every start serves the control protocol in XDG_RUNTIME_DIR/vantix. A login
# session's runtime folder is a tmpfs; without one, the run gets a private
# folder in memory, as the session would give it, rather than the disk.
if [ -z "${XDG_RUNTIME_DIR:-}" ]; then
    shm=/dev/shm
    [ -d "$shm" ] || shm=${TMPDIR:-/tmp}
    XDG_RUNTIME_DIR=$(mktemp -d "$shm/vantix-bench-runtime.XXXXXX")
    export XDG_RUNTIME_DIR
    trap 'rm -rf "$XDG_RUNTIME_DIR"' EXIT
fi

start=$(date +%s)
"$bench" --benchmark_color=false \
    --benchmark_out="$build/bench/vantix_bench.json" --benchmark_out_format=json \
    --vantix-bench-recorded="$here/bench/recorded.json" $record "$@"

python_status=0
if [ -n "$python_group" ]; then
    echo
    "${PYTHON:-/usr/bin/python3}" "$here/bench/python_bench.py" "$build" || python_status=$?
fi

# Neither the library nor a plain application of it may pull in QtGui (and with it X11, GL, fonts).
echo
for binary in "$build"/libs/libVantix/libVantix.so "$build/apps/vantix-sim/vantix-sim" \
    "$build/bench/vantix_bench_readme"; do
    if ldd "$binary" | grep -q 'libQt5Gui'; then
        echo "ldd: $(basename "$binary") links libQt5Gui"
    else
        echo "ldd: $(basename "$binary") links no libQt5Gui ($(ldd "$binary" | grep -o 'libQt5[A-Za-z]*' | sort -u | tr '\n' ' '| sed 's/ $//'))"
    fi
done
echo "bench: finished in $(($(date +%s) - start)) s"
if [ "$python_status" -ne 0 ]; then
    echo "bench: the Python group failed (status $python_status)" >&2
    exit "$python_status"
fi
