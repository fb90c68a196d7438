#!/usr/bin/env bash
# Builds the CSV import benchmark in release mode and prints its figures against Python's csv module.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build-bench"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DLUMBRA_SHELL=OFF -DBUILD_TESTING=OFF \
    -DLUMBRA_BENCH=ON >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target lumbra_csv_bench
"$build/bench/lumbra_csv_bench" "$@"
