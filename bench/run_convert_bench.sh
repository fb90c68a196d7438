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

# Best wall-clock and best processor (user + system) seconds of `runs` runs of the command, and its peak
# resident size in kilobytes. The processor time stays put when other work shares the machine.
best() {
    local wall=inf cpu=inf peak=0
    for _ in $(seq "$runs"); do
        rm -f "$work/out.ale"
        /usr/bin/time -f "%e %U %S %M" -o "$work/time.txt" "$@" >/dev/null
        read -r wall cpu peak < <(awk -v w="$wall" -v c="$cpu" '{ t = $2 + $3;
            printf "%s %s %s\n", ($1 < w || w == "inf") ? $1 : w, (t < c || c == "inf") ? t : c, $4 }' "$work/time.txt")
    done
    echo "$wall $cpu $peak"
}

size=$(stat -c %s "$work/clips.ale")
read -r lumbra lumbraCpu lumbraPeak < <(best "$build/src/cli/lumbra-cli" convert "$work/clips.ale" "$work/out.ale")
read -r python pythonCpu pythonPeak < <(best python3 "$work/convert.py" "$work/clips.ale" "$work/out.ale")
python3 - "$size" "$runs" "$lumbra" "$lumbraCpu" "$lumbraPeak" "$python" "$pythonCpu" "$pythonPeak" <<'EOF'
import sys
size, runs = int(sys.argv[1]), sys.argv[2]
lumbra, lumbra_cpu, python, python_cpu = (float(sys.argv[i]) for i in (3, 4, 6, 7))
lumbra_peak, python_peak = int(sys.argv[5]) * 1024, int(sys.argv[8]) * 1024
print(f"sample: 100000 clips, 20 columns, {size / 1e6:.1f} MB; best of {runs}, whole process")
print(f"                                    wall     processor  peak memory")
print(f"  lumbra-cli convert .ale -> .ale  {lumbra:6.2f} s  {lumbra_cpu:6.2f} s  {lumbra_peak / 1e6:6.1f} MB"
      f" = {lumbra_peak / size:.2f}x the file (target <= 3)")
print(f"  python csv read + write          {python:6.2f} s  {python_cpu:6.2f} s  {python_peak / 1e6:6.1f} MB"
      f" = {python_peak / size:.2f}x the file")
print(f"speed ratio python/lumbra: wall {python / lumbra:.1f}x, processor {python_cpu / lumbra_cpu:.1f}x"
      f" (target >= 10)")
EOF
