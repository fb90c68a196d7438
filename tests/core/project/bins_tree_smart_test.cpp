#include "core/project/project_test_support.h"
#include "project/bins_tree_loader.h"
#include "project/bins_tree_saver.h"

#include <gtest/gtest.h>

using namespace lumbra::project;
using namespace lumbra::project::testing;

namespace {

// A smart table that records what the tree asks of it.
class FakeSmartTable : public lumbra::tables::ALETable, public SmartTableLink {
public:
    [[nodiscard]] bool hasDomain() const override { return !domain.empty(); }
    [[nodiscard]] bool domainHolds(const BinsTreeEntry& node) const override {
        return std::find(domain.begin(), domain.end(), &node) != domain.end();
    }
    void reEvaluate(const lumbra::tables::EntryPtr&) override { ++rowsTested; }
    void reEvaluateAll(Bin& bin) override { binsTested.push_back(&bin); }
    void resolveDomain(BinsTreeEntry& bins) override {
        for (const auto& uuid : domainUuids) {
            if (auto* node = bins.entryByUuid(uuid))
                domain.push_back(node);
        }
    }

    std::vector<const BinsTreeEntry*> domain;
    std::vector<std::string> domainUuids;
    int rowsTested = 0;
    std::vector<Bin*> binsTested;
};

FakeSmartTable& fake(Bin& bin) {
    return dynamic_cast<FakeSmartTable&>(*bin.table());
}

TreeNode makeSmartLeaf(const std::string& id, int rows, BinsHost* host = nullptr) {
    auto table = std::make_unique<FakeSmartTable>();
    table->tablename = id;
    for (int i = 0; i < rows; ++i)
        table->data.push_back(std::make_shared<lumbra::tables::ALEEntry>());
    return std::make_shared<BinsTreeEntry>(id, std::make_shared<Bin>(std::move(table), host, nullptr, true));
}

// A project whose smart bins files are written and read by a stand-in.
class SmartHost : public RecordingHost {
public:
    bool writeSmartbinFile(Bin& bin, const std::string& folder, lumbra::base::Notifications*) override {
        written.push_back(folder);
        writeFile(fs::path(folder) / (bin.displayName() + ".smartbin"),
                  "title\t" + bin.table()->tablename + "\n");
        return true;
    }
    bool readSmartbinFile(Bin& bin, const std::string& path, lumbra::base::Notifications*) override {
        auto table = std::make_unique<FakeSmartTable>();
        table->tablename = "smartbin_01";
        table->domainUuids = domainUuids;
        bin.setTable(std::move(table));
        read.push_back(path);
        return true;
    }
    std::vector<std::string> written;
    std::vector<std::string> read;
    std::vector<std::string> domainUuids;
};

} // namespace

TEST(SmartBinsInTree, MovesRetestWhatTheDomainsAndTheSmartBinsCover) {
    SmartHost host;
    auto inDomain = makeGroup("in"), elsewhere = makeGroup("elsewhere"), folder = makeGroup("folder");
    auto moving = makeLeaf("moving");
    auto outside = makeGroup("out", {moving});
    host.bins->children = {inDomain, outside, elsewhere};
    host.bins->rebuildArray();
    auto smart = makeSmartLeaf("smartbin_01", 2), second = makeSmartLeaf("smartbin_02", 1);
    fake(*smart->bin).domain = {inDomain.get()};
    host.smartbins->children = {smart, second, folder};
    host.smartbins->rebuildArray();

    host.bins->moveItems({moving.get()}, elsewhere.get(), -1, &host);
    EXPECT_TRUE(fake(*smart->bin).binsTested.empty());
    host.bins->moveItems({moving.get()}, inDomain.get(), -1, &host);
    EXPECT_EQ(fake(*smart->bin).binsTested, (std::vector<Bin*>{moving->bin.get()}));
    // A node the domain names itself is covered wherever it goes.
    fake(*smart->bin).domain.push_back(outside.get());
    host.bins->moveItems({outside.get()}, inDomain.get(), -1, &host);
    EXPECT_EQ(fake(*smart->bin).binsTested.size(), 1u);
    EXPECT_EQ(host.tagTreeRebuilds, 0);

    // Every row of every smart bin of the tree is tested by each smart bin when smart bins move.
    host.smartbins->moveItems({smart.get()}, folder.get(), -1, &host);
    EXPECT_TRUE(folder->isChild(smart.get()));
    EXPECT_EQ(fake(*smart->bin).rowsTested, 3);
    EXPECT_EQ(fake(*second->bin).rowsTested, 3);
    EXPECT_EQ(host.tagTreeRebuilds, 1);
}

TEST(SmartBinsInTree, SmartBinFilesGoThroughTheProject) {
    TempFolder dir;
    SmartHost host;
    auto domainGroup = makeGroup("Group_01");
    host.bins->children = {domainGroup};
    host.domainUuids = {domainGroup->nodeUuid(), "UNKNOWN"};
    auto leaf = makeSmartLeaf("smartbin_01", 4, &host);
    leaf->bin->setDisplayName("Selects");
    auto root = makeGroup("smartbins", {leaf});
    BinsTreeSaver saver(dir.str(), *root);
    ASSERT_TRUE(saver.saveItem(*root, nullptr));
    std::string folder = *saver.folderOf(*leaf);
    EXPECT_EQ(host.written, (std::vector<std::string>{folder}));
    // A smart bin's rows belong to other bins: no table file of its own.
    EXPECT_EQ(listTree(folder), (std::set<std::string>{"lumbra_details", "Selects.smartbin"}));

    auto loaded = SmartbinsTreeLoader(dir.str()).load(&host, std::nullopt, nullptr);
    EXPECT_EQ(host.read, (std::vector<std::string>{folder + "/Selects.smartbin"}));
    ASSERT_EQ(namesOf(loaded->toarray), (Names{"Selects"}));
    EXPECT_EQ(fake(*loaded->toarray[0]).domain, (std::vector<const BinsTreeEntry*>{domainGroup.get()}));

    // Without a project a smart bin is not written.
    auto alone = makeSmartLeaf("smartbin_01", 1);
    EXPECT_FALSE(alone->bin->save(dir.str(), false, nullptr));
    EXPECT_TRUE(alone->bin->hasChanged);
}
