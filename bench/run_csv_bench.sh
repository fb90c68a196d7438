#!/usr/bin/env bash
# Builds the CSV import benchmark in release mode and prints its figures against Python's csv module, then the
# peak memory of converting a large single-column CSV file to ALE, as a ratio to the file's size.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="$root/build-bench"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DLUMBRA_SHELL=OFF -DBUILD_TESTING=OFF \
    -DLUMBRA_BENCH=ON >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target lumbra_csv_bench lumbra-cli
"$build/bench/lumbra_csv_bench" "$@"

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
python3 -c "
import sys
with open(sys.argv[1], 'w') as f:
    f.write('Name\n')
    for i in range(450000):
        f.write('clip_%08d_' % i + 'x' * 100 + '\n')
" "$folder/one_column.csv"
/usr/bin/time -f '%M' -o "$folder/peak" "$build/src/cli/lumbra-cli" convert "$folder/one_column.csv" \
    "$folder/out.ale" >/dev/null
bytes=$(stat -c %s "$folder/one_column.csv")
awk -v kb="$(cat "$folder/peak")" -v bytes="$bytes" 'BEGIN {
    printf "peak memory of convert, one-column CSV of %.1f MB: %.0f MB, %.1fx the file (target <= 3.5)\n",
        bytes / 1e6, kb * 1024 / 1e6, kb * 1024 / bytes }'
