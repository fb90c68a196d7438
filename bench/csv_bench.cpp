// Imports a 100,000-row CSV file as a bin's table and times Python's csv module on the same file in the
// same run.
#include "import/csv_parser.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
namespace import = lumbra::import;
namespace base = lumbra::base;

constexpr int rowCount = 100000;
constexpr int repetitions = 5;

// A spreadsheet's export of a shoot: 16 columns, a header, some values in quotes, some empty, CRLF.
void writeSampleFile(const fs::path& path) {
    std::mt19937 random(20261123);
    auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    const std::array<const char*, 5> comments{"\"good take\"", "NG - boom in shot", "",
                                              "\"director's favourite\"", "circle take"};
    std::ofstream out(path, std::ios::binary);
    out << "Name,Tape,Start,End,Duration,Scene,Take,Camera,Camroll,Soundroll,Codec,Resolution,Source "
           "File,Lens,"
           "Comments,Description\r\n";
    for (int i = 0; i < rowCount; ++i) {
        std::array<char, 512> line{};
        int roll = 1 + i / 400;
        char camera = static_cast<char>('A' + pick(3));
        int seconds = 36000 + i * 40;
        std::snprintf(
            line.data(), line.size(),
            "%c%03dC%03d_230101_%04d,%c%03d,%02d:%02d:%02d:%02d,%02d:%02d:%02d:%02d,00:00:%02d:%02d,%d%c,%d,"
            "%c,%c%03d,S%03d,ProRes 4444 XQ,%s,%c%03dC%03d.mxf,Zeiss Supreme %dmm,%s,%s\r\n",
            camera, roll, i % 400 + 1, pick(9000), camera, roll, seconds / 3600 % 24, seconds / 60 % 60,
            seconds % 60, pick(25), (seconds + 30) / 3600 % 24, (seconds + 30) / 60 % 60, (seconds + 30) % 60,
            pick(25), pick(60), pick(25), 1 + i / 900, "ABC"[pick(3)], 1 + pick(12), camera, camera, roll,
            roll / 3 + 1, pick(2) ? "3840x2160" : "4448x3096", camera, roll, i % 400 + 1, 18 + pick(8) * 10,
            comments[static_cast<std::size_t>(pick(5))],
            pick(2) ? "EXT. HARBOUR - NIGHT - wide on the ferry" : "");
        out << line.data();
    }
}

double bestImport = std::numeric_limits<double>::infinity();

void registerBenchmark(const std::string& path) {
    benchmark::RegisterBenchmark(
        "import CSV as a bin's table",
        [path](benchmark::State& state) {
            const base::CsvOptions options;
            for (auto _ : state) {
                auto t0 = std::chrono::steady_clock::now();
                auto table = import::readCSVAsALETable(path, &options, nullptr, nullptr);
                double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
                state.SetIterationTime(seconds);
                bestImport = std::min(bestImport, seconds);
                if (table.table->data.size() != static_cast<std::size_t>(rowCount))
                    state.SkipWithError("wrong row count");
            }
        })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(repetitions)
        ->Unit(benchmark::kMillisecond);
}

// Best seconds of Python's csv module reading every row of the file, measured inside Python.
constexpr const char* pythonScript = R"(import csv, sys, time
path, reps = sys.argv[1], int(sys.argv[2])
best = float("inf")
for _ in range(reps):
    t = time.perf_counter()
    with open(path, newline="", encoding="utf-8") as f:
        rows = list(csv.reader(f))
    best = min(best, time.perf_counter() - t)
    del rows
print(best)
)";

std::optional<double> pythonSeconds(const fs::path& file, const fs::path& folder) {
    fs::path script = folder / "csv_bench.py";
    std::ofstream(script) << pythonScript;
    std::string command =
        "python3 '" + script.string() + "' '" + file.string() + "' " + std::to_string(repetitions);
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    double seconds = 0;
    if (!pipe || std::fscanf(pipe.get(), "%lf", &seconds) != 1)
        return std::nullopt;
    return seconds;
}

} // namespace

int main(int argc, char** argv) {
    fs::path folder = fs::temp_directory_path() / ("lumbra_csv_bench_" + std::to_string(::getpid()));
    fs::create_directories(folder);
    fs::path file = folder / "clips.csv";
    writeSampleFile(file);
    std::cout << "sample: " << rowCount << " rows, 16 columns, "
              << static_cast<double>(fs::file_size(file)) / 1e6 << " MB\n";

    benchmark::Initialize(&argc, argv);
    registerBenchmark(file.string());
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();

    auto python = pythonSeconds(file, folder);
    fs::remove_all(folder);
    std::printf("\nbest of %d, seconds:\n  lumbra CSV import      %8.3f\n", repetitions, bestImport);
    if (!python) {
        std::printf("python csv timing failed (is python3 on the PATH?)\n");
        return 1;
    }
    std::printf("  python csv module read %8.3f\nspeed ratio python/lumbra: %.1fx (target >= 3)\n", *python,
                *python / bestImport);
    return 0;
}
