// Reads and writes a 100,000-clip ALE file, times Python's csv module on the same file in the same
// run, and measures the peak memory of one read and write in a fresh process.
#include "import/ale_reader.h"
#include "import/ale_writer.h"

#include <algorithm>
#include <array>
#include <benchmark/benchmark.h>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <sys/resource.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;
namespace import = lumbra::import;

constexpr int clipCount = 100000;
constexpr int repetitions = 5;

std::string timecode(long frames, int fps) {
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%02ld:%02ld:%02ld:%02ld", frames / (fps * 3600) % 24,
                  frames / (fps * 60) % 60, frames / fps % 60, frames % fps);
    return text.data();
}

// A shoot's worth of clips: 20 columns of the kinds a camera and sound department log, some empty.
void writeSampleFile(const fs::path& path) {
    std::mt19937 random(20261123);
    auto pick = [&](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
    const std::array<const char*, 4> codecs{"ProRes 4444 XQ", "ARRIRAW", "DNxHR HQX", "ProRes 422 HQ"};
    const std::array<const char*, 6> comments{"good take, slight focus buzz at the end",
                                              "NG - boom in shot",
                                              "director's favourite",
                                              "",
                                              "plane noise over the last line, use for picture only",
                                              "circle take"};
    const std::array<const char*, 3> resolutions{"4448x3096", "3840x2160", "4096x2160"};
    std::ofstream out(path, std::ios::binary);
    out << "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\nAUDIO_FORMAT\t48khz\n\nColumn\n"
           "Name\tTape\tStart\tEnd\tDuration\tAuxiliary TC1\tSound TC\tScene\tTake\tCamera\tCamroll\t"
           "Soundroll\tCodec\tResolution\tSource "
           "File\tASC_SOP\tASC_SAT\tLens\tComments\tDescription\n\nData\n";
    long start = 10L * 3600 * 25;
    for (int i = 0; i < clipCount; ++i) {
        int roll = 1 + i / 400;
        char camera = static_cast<char>('A' + pick(3));
        std::array<char, 32> reel{};
        std::snprintf(reel.data(), reel.size(), "%c%03dC%03d", camera, roll, i % 400 + 1);
        std::array<char, 8> rollName{};
        std::snprintf(rollName.data(), rollName.size(), "%c%03d", camera, roll);
        long length = 250 + pick(2500);
        long aux = start + pick(100);
        out << reel.data() << "_" << 230101 + roll % 28 << "_" << pick(9000) + 1000 << '\t' << rollName.data()
            << '\t' << timecode(start, 25) << '\t' << timecode(start + length, 25) << '\t'
            << timecode(length, 25) << '\t' << timecode(aux, 25) << '\t'
            << (pick(5) == 0 ? std::string() : timecode(aux + 3, 25)) << '\t' << 1 + i / 900 << pick(4)
            << '\t' << 1 + pick(12) << '\t' << camera << '\t' << rollName.data() << '\t' << "S"
            << roll / 3 + 1 << '\t' << codecs[pick(4)] << '\t' << resolutions[pick(3)] << '\t' << reel.data()
            << ".mxf" << '\t'
            << (pick(3) == 0 ? "" : "(1.0123 0.9876 1.0000)(0.0012 -0.0034 0.0000)(1.0000 1.0000 0.9800)")
            << '\t' << (pick(3) == 0 ? "" : "0.9500") << '\t' << "Zeiss Supreme " << 18 + pick(8) * 10 << "mm"
            << '\t' << comments[pick(6)] << '\t'
            << (pick(2) == 0 ? "" : "EXT. HARBOUR - NIGHT - wide on the ferry") << '\n';
        start += length + 25 * 30;
    }
}

// Keeps the best time of every benchmark while the console shows them all.
class BestTimeReporter : public benchmark::ConsoleReporter {
public:
    // Colour only on a terminal, so the figures can be piped into a file.
    BestTimeReporter() : ConsoleReporter(::isatty(STDOUT_FILENO) ? OO_Defaults : OO_None) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        for (const auto& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred || run.iterations == 0)
                continue;
            double seconds = run.real_accumulated_time / static_cast<double>(run.iterations);
            auto [it, added] = best.try_emplace(run.run_name.function_name, seconds);
            if (!added)
                it->second = std::min(it->second, seconds);
        }
        ConsoleReporter::ReportRuns(runs);
    }
    std::map<std::string, double> best;
};

template <typename Step> double seconds(Step step) {
    auto t0 = std::chrono::steady_clock::now();
    step();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

void registerBenchmarks(const std::string& path) {
    benchmark::RegisterBenchmark("read readALE(path)",
                                 [path](benchmark::State& state) {
                                     for (auto _ : state) {
                                         import::ReadResult read;
                                         state.SetIterationTime(
                                             seconds([&] { read = import::readALE(path); }));
                                         benchmark::DoNotOptimize(read.table->data.size());
                                     }
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(repetitions)
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(
        "write aleText",
        [path](benchmark::State& state) {
            import::ReadResult read = import::readALE(path);
            for (auto _ : state) {
                std::string text;
                state.SetIterationTime(seconds([&] { text = import::aleText(*read.table, {}, false); }));
                benchmark::DoNotOptimize(text.data());
            }
        })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(repetitions)
        ->Unit(benchmark::kMillisecond);
}

// Best read and write seconds of Python's csv module on the file, measured inside Python.
constexpr const char* pythonScript = R"(import csv, io, sys, time
path, reps = sys.argv[1], int(sys.argv[2])
best_read = best_write = float("inf")
for _ in range(reps):
    t = time.perf_counter()
    with open(path, newline="", encoding="utf-8") as f:
        rows = list(csv.reader(f, delimiter="\t"))
    best_read = min(best_read, time.perf_counter() - t)
    t = time.perf_counter()
    out = io.StringIO()
    csv.writer(out, delimiter="\t", lineterminator="\n").writerows(rows)
    text = out.getvalue()
    best_write = min(best_write, time.perf_counter() - t)
    del rows, out, text
print(best_read, best_write)
)";

std::optional<std::string> runForOutput(const std::string& command) {
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    if (!pipe)
        return std::nullopt;
    std::string output;
    std::array<char, 256> buffer{};
    while (std::fgets(buffer.data(), buffer.size(), pipe.get()))
        output += buffer.data();
    if (::pclose(pipe.release()) != 0)
        return std::nullopt;
    return output;
}

std::optional<std::pair<double, double>> pythonTimes(const fs::path& file, const fs::path& folder) {
    fs::path script = folder / "csv_bench.py";
    std::ofstream(script) << pythonScript;
    auto output = runForOutput("python3 '" + script.string() + "' '" + file.string() + "' " +
                               std::to_string(repetitions));
    std::pair<double, double> times;
    if (!output || std::sscanf(output->c_str(), "%lf %lf", &times.first, &times.second) != 2)
        return std::nullopt;
    return times;
}

long peakKilobytes() {
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss;
}

// One read and one write, nothing else: prints how far the peak resident size rose, in bytes.
int measureMemory(const std::string& path) {
    long before = peakKilobytes();
    {
        import::ReadResult read = import::readALE(path);
        std::string text = import::aleText(*read.table, {}, false);
        benchmark::DoNotOptimize(text.data());
    }
    std::cout << (peakKilobytes() - before) * 1024 << '\n';
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    if (argc == 3 && std::string_view(argv[1]) == "--measure-memory")
        return measureMemory(argv[2]);
    // The sample alone, for profiling the reader outside the benchmark.
    if (argc == 3 && std::string_view(argv[1]) == "--write-sample") {
        writeSampleFile(argv[2]);
        return 0;
    }

    fs::path folder = fs::temp_directory_path() / ("lumbra_ale_bench_" + std::to_string(::getpid()));
    fs::create_directories(folder);
    fs::path file = folder / "clips.ale";
    writeSampleFile(file);
    auto fileSize = static_cast<double>(fs::file_size(file));
    std::cout << "sample: " << clipCount << " clips, 20 columns, " << fileSize / 1e6 << " MB\n";

    benchmark::Initialize(&argc, argv);
    registerBenchmarks(file.string());
    BestTimeReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    auto python = pythonTimes(file, folder);
    auto memory = runForOutput("'" + fs::read_symlink("/proc/self/exe").string() + "' --measure-memory '" +
                               file.string() + "'");
    fs::remove_all(folder);

    double read = reporter.best["read readALE(path)"];
    double write = reporter.best["write aleText"];
    std::printf("\nbest of %d, seconds:      read     write    total\n", repetitions);
    std::printf("  lumbra                %8.3f  %8.3f  %8.3f\n", read, write, read + write);
    if (python) {
        auto [pyRead, pyWrite] = *python;
        std::printf("  python csv module     %8.3f  %8.3f  %8.3f\n", pyRead, pyWrite, pyRead + pyWrite);
        std::printf("speed ratio python/lumbra: read %.1fx, write %.1fx, read+write %.1fx (target >= 3)\n",
                    pyRead / read, pyWrite / write, (pyRead + pyWrite) / (read + write));
    } else {
        std::printf("python csv timing failed (is python3 on the PATH?)\n");
    }
    if (memory) {
        double peak = std::stod(*memory);
        std::printf("peak memory of one read+write: %.1f MB = %.2fx the file size (target < 8)\n", peak / 1e6,
                    peak / fileSize);
    } else {
        std::printf("memory measurement failed\n");
    }
    return python && memory ? 0 : 1;
}
