// Saving, loading and opening a project of 300 bins of 1,000 clips in 30 groups.
#include "base/console.h"
#include "import/ale_reader.h"
#include "project/bins_tree_loader.h"
#include "project/bins_tree_saver.h"
#include "project/project_loader.h"
#include "project/shared_stuff.h"

#include <benchmark/benchmark.h>
#include <cstdlib>
#include <filesystem>

namespace {

namespace fs = std::filesystem;
using lumbra::project::Bin;
using lumbra::project::BinsTreeEntry;
using lumbra::project::BinsTreeLoader;
using lumbra::project::BinsTreeSaver;
using lumbra::project::SharedStuff;
using lumbra::project::TreeNode;

constexpr int groupCount = 30;
constexpr int binsPerGroup = 10;
constexpr int clipsPerBin = 1000;

std::string binText(int bin) {
    std::string text = "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\n\nColumn\n"
                       "Name\tTape\tStart\tEnd\tScene\tComments\n\nData\n";
    for (int clip = 0; clip < clipsPerBin; ++clip) {
        text += "B" + std::to_string(bin) + "C" + std::to_string(clip) + "\tA" + std::to_string(bin) +
                "\t10:00:00:00\t10:00:05:00\t" + std::to_string(clip % 40) + "\tgood take\n";
    }
    return text;
}

TreeNode makeTree() {
    auto root = std::make_shared<BinsTreeEntry>("root", nullptr);
    for (int g = 0; g < groupCount; ++g) {
        auto group = std::make_shared<BinsTreeEntry>("Group_" + std::to_string(g + 1), nullptr);
        for (int b = 0; b < binsPerGroup; ++b) {
            int number = g * binsPerGroup + b + 1;
            auto table = lumbra::import::parseALEText(binText(number), "bin_" + std::to_string(number)).table;
            std::string id = table->tablename;
            group->children.push_back(std::make_shared<BinsTreeEntry>(
                id, std::make_shared<Bin>(std::move(table), nullptr, nullptr, true)));
        }
        root->children.push_back(std::move(group));
    }
    root->rebuildArray();
    return root;
}

// One tree for every benchmark: making it costs more than what is measured.
TreeNode& sharedTree() {
    static TreeNode tree = makeTree();
    return tree;
}

fs::path scratch(const char* name) {
    return fs::temp_directory_path() / ("lumbra-tree-bench-" + std::string(name));
}

void markAllChanged(BinsTreeEntry& root) {
    for (auto* node : root.flatten())
        node->identity().hasChanged = true;
}

void BM_SaveWholeTree(benchmark::State& state) {
    lumbra::base::PrintCapture quiet;
    auto& tree = sharedTree();
    fs::path base = scratch("save");
    for (auto _ : state) {
        state.PauseTiming();
        fs::remove_all(base);
        markAllChanged(*tree);
        state.ResumeTiming();
        BinsTreeSaver saver(base.string(), *tree);
        benchmark::DoNotOptimize(saver.saveItem(*tree, nullptr));
    }
    fs::remove_all(base);
}
BENCHMARK(BM_SaveWholeTree)->Unit(benchmark::kMillisecond)->Iterations(3);

void BM_SaveUnchangedTree(benchmark::State& state) {
    lumbra::base::PrintCapture quiet;
    auto& tree = sharedTree();
    fs::path base = scratch("unchanged");
    fs::remove_all(base);
    markAllChanged(*tree);
    BinsTreeSaver saver(base.string(), *tree);
    saver.saveItem(*tree, nullptr);
    for (auto _ : state)
        benchmark::DoNotOptimize(saver.saveItem(*tree, nullptr));
    fs::remove_all(base);
}
BENCHMARK(BM_SaveUnchangedTree)->Unit(benchmark::kMillisecond);

void BM_RenameGroupAndSave(benchmark::State& state) {
    lumbra::base::PrintCapture quiet;
    auto& tree = sharedTree();
    fs::path base = scratch("rename");
    fs::remove_all(base);
    markAllChanged(*tree);
    BinsTreeSaver saver(base.string(), *tree);
    saver.saveItem(*tree, nullptr);
    auto& group = *tree->children[0];
    int round = 0;
    for (auto _ : state) {
        group.setName("Renamed " + std::to_string(++round));
        group.hasChanged = true;
        benchmark::DoNotOptimize(saver.saveItem(*tree, nullptr));
    }
    group.setName("Group_1");
    fs::remove_all(base);
}
BENCHMARK(BM_RenameGroupAndSave)->Unit(benchmark::kMillisecond);

void BM_LoadTree(benchmark::State& state) {
    lumbra::base::PrintCapture quiet;
    auto& tree = sharedTree();
    fs::path base = scratch("load");
    fs::remove_all(base);
    markAllChanged(*tree);
    BinsTreeSaver(base.string(), *tree).saveItem(*tree, nullptr);
    for (auto _ : state) {
        auto loaded = BinsTreeLoader(base.string()).load(nullptr, std::nullopt, nullptr);
        benchmark::DoNotOptimize(loaded->toarray.size());
    }
    fs::remove_all(base);
}
BENCHMARK(BM_LoadTree)->Unit(benchmark::kMillisecond)->Iterations(3);

// A project folder of the same size, written once by a project of its own.
const fs::path& savedProject() {
    static const fs::path parent = [] {
        fs::path folder = scratch("project");
        fs::remove_all(folder);
        fs::create_directories(folder);
        SharedStuff project;
        project.currentFolder = folder.string();
        project.projectName = "Film";
        for (int g = 0; g < groupCount; ++g) {
            auto group = std::make_shared<BinsTreeEntry>("Group_" + std::to_string(g + 1), nullptr,
                                                         std::vector<TreeNode>{}, &project);
            for (int b = 0; b < binsPerGroup; ++b) {
                int number = g * binsPerGroup + b + 1;
                auto table =
                    lumbra::import::parseALEText(binText(number), "bin_" + std::to_string(number)).table;
                group->addBin(std::make_shared<Bin>(std::move(table), &project, nullptr, true));
            }
            project.bins->addChild(std::move(group));
        }
        if (!project.save())
            std::abort();
        return folder;
    }();
    return parent;
}

// The whole open: project file, trees, layouts and the closing save, without the windows.
void BM_OpenProject(benchmark::State& state) {
    lumbra::base::PrintCapture quiet;
    const fs::path& parent = savedProject();
    for (auto _ : state) {
        auto project = std::make_unique<SharedStuff>();
        project->currentFolder = parent.string();
        project->projectName = "Film";
        if (lumbra::project::openProject(*project) != lumbra::project::OpenResult::opened)
            state.SkipWithError("the project did not open");
        state.PauseTiming();
        std::size_t clips = 0;
        for (const Bin* bin : project->allBins())
            clips += bin->table() ? bin->table()->data.size() : 0;
        if (clips != std::size_t(groupCount) * binsPerGroup * clipsPerBin)
            state.SkipWithError("the project opened without all its clips");
        project.reset();
        state.ResumeTiming();
    }
    fs::remove_all(parent);
}
BENCHMARK(BM_OpenProject)->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

BENCHMARK_MAIN();
