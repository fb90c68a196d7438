#!/usr/bin/env bash
# Times `lumbra-cli convert` of a 100,000-clip, 20-column ALE file to ALE as a whole process, against a
# Python script that reads and writes the same file with the csv module, and prints the peak memory of the
# convert as a multiple of the file's size. Best of 5 runs each.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build="${LUMBRA_BENCH_BUILD:-$root/build-bench}"
runs=5
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DLUMBRA_SHELL=OFF -DBUILD_TESTING=OFF \
    -DLUMBRA_BENCH=ON >/dev/null
cmake --build "$build" --parallel "$(nproc)" --target lumbra-cli lumbra_ale_bench >/dev/null

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
"$build/bench/lumbra_ale_bench" --write-sample "$work/clips.ale"
cat >"$work/convert.py" <<'EOF'
import csv, sys
with open(sys.argv[1], newline="", encoding="utf-8") as f:
    rows = list(csv.reader(f, delimiter="\t"))
with open(sys.argv[2], "w", newline="", encoding="utf-8") as f:
    csv.writer(f, delimiter="\t", lineterminator="\n").writerows(rows)
EOF

# Best wall-clock seconds of `runs` runs of the command, and its peak resident size in kilobytes.
best() {
    local seconds=inf peak=0 line
    for _ in $(seq "$runs"); do
        rm -f "$work/out.ale"
        /usr/bin/time -v -o "$work/time.txt" "$@" >/dev/null
        line=$(grep "Elapsed (wall clock)" "$work/time.txt" | awk '{print $NF}')
        seconds=$(python3 -c "import sys; m, s = sys.argv[1].rsplit(':', 1); t = 60 * float(m) + float(s)
print(min(t, float(sys.argv[2])))" "$line" "$seconds")
        peak=$(grep "Maximum resident set size" "$work/time.txt" | awk '{print $NF}')
    done
    echo "$seconds $peak"
}

size=$(stat -c %s "$work/clips.ale")
read -r lumbra lumbraPeak < <(best "$build/src/cli/lumbra-cli" convert "$work/clips.ale" "$work/out.ale")
read -r python pythonPeak < <(best python3 "$work/convert.py" "$work/clips.ale" "$work/out.ale")
python3 - "$size" "$lumbra" "$lumbraPeak" "$python" "$pythonPeak" "$runs" <<'EOF'
import sys
size, lumbra, lumbra_peak, python, python_peak, runs = sys.argv[1:]
size = int(size)
lumbra, python = float(lumbra), float(python)
print(f"sample: 100000 clips, 20 columns, {size / 1e6:.1f} MB; best of {runs}, whole process")
print(f"  lumbra-cli convert .ale -> .ale  {lumbra:6.2f} s   peak {int(lumbra_peak) / 1024:7.1f} MB"
      f" = {int(lumbra_peak) * 1024 / size:.2f}x the file (target <= 3)")
print(f"  python csv read + write          {python:6.2f} s   peak {int(python_peak) / 1024:7.1f} MB"
      f" = {int(python_peak) * 1024 / size:.2f}x the file")
print(f"speed ratio python/lumbra: {python / lumbra:.1f}x (target >= 10)")
EOF
