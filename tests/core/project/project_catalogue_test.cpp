#include "base/console.h"
#include "base/scripted_interaction.h"
#include "core/project/project_test_support.h"
#include "project/project_catalogue.h"

#include <fstream>
#include <gtest/gtest.h>

namespace lumbra::app {
namespace {

namespace fs = std::filesystem;

using project::testing::TempFolder;

void touch(const fs::path& file) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << "x\n";
}

TEST(ListProjects, ListsExactlyTheDirectSubfoldersHoldingTheProjectFile) {
    TempFolder root;
    touch(root.path / "Feature" / "tarelproject");
    touch(root.path / "Short film" / "tarelproject");
    touch(root.path / "Short film" / "_bins_" / "bin_01" / "x.ale");
    touch(root.path / "No project file" / "tarelproject.bak");
    touch(root.path / "Wrong case" / "Tarelproject");
    touch(root.path / ".Hidden" / "tarelproject");
    touch(root.path / "Outer" / "Inner" / "tarelproject");
    touch(root.path / "a plain file");
    touch(root.path / "tarelproject");
    fs::create_directories(root.path / "Empty");
    // A folder named tarelproject inside a project folder is one of its names too.
    fs::create_directories(root.path / "Odd" / "tarelproject");

    EXPECT_EQ(project::listProjects(root.path), (std::vector<std::string>{"Feature", "Odd", "Short film"}));
}

TEST(ListProjects, AMissingFolderListsNothingAndSaysSo) {
    TempFolder root;
    const fs::path missing = root.path / "gone";
    base::PrintCapture capture;
    EXPECT_TRUE(project::listProjects(missing).empty());
    EXPECT_TRUE(capture.contains("ERROR: cannot get projects list from folder " + missing.string()));
}

TEST(ListProjects, AnUnreadableSubfolderIsSkippedAndTheRestListed) {
    TempFolder root;
    touch(root.path / "Open" / "tarelproject");
    touch(root.path / "Closed" / "tarelproject");
    fs::permissions(root.path / "Closed", fs::perms::none);
    std::error_code error;
    const bool readable = fs::directory_iterator(root.path / "Closed", error) != fs::directory_iterator();
    if (readable) {
        fs::permissions(root.path / "Closed", fs::perms::owner_all);
        GTEST_SKIP() << "permissions do not apply to this user";
    }
    base::PrintCapture capture;
    EXPECT_EQ(project::listProjects(root.path), (std::vector<std::string>{"Open"}));
    EXPECT_TRUE(capture.contains("ERROR: cannot list content of folder " + (root.path / "Closed").string()));
    fs::permissions(root.path / "Closed", fs::perms::owner_all);
}

TEST(ProjectCatalogue, EachTypeReadsItsOwnKeyAndFallsBackToHome) {
    TempFolder home;
    TempFolder shared;
    touch(home.path / "At home" / "tarelproject");
    touch(shared.path / "On the server" / "tarelproject");
    base::MemoryUserDefaults defaults;
    defaults.setString("sharedfolder", shared.path.string());
    project::ProjectCatalogue catalogue(defaults, home.path);

    struct Case {
        const char* name;
        int type;
        fs::path folder;
        std::vector<std::string> projects;
    };
    const Case cases[] = {
        {"local unset", 0, home.path, {"At home"}},
        {"shared set", 1, shared.path, {"On the server"}},
        {"external unset", 2, home.path, {"At home"}},
        {"unknown type", 7, home.path, {"At home"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        catalogue.setFolderType(c.type);
        EXPECT_EQ(catalogue.folder(), c.folder);
        EXPECT_EQ(catalogue.availableProjects(), c.projects);
        EXPECT_TRUE(catalogue.canCreateProject());
    }
}

TEST(ProjectCatalogue, SetFolderStoresUnderTheCurrentTypeOnly) {
    TempFolder home;
    TempFolder external;
    touch(external.path / "Drive project" / "tarelproject");
    base::MemoryUserDefaults defaults;
    project::ProjectCatalogue catalogue(defaults, home.path);
    catalogue.setFolderType(2);
    catalogue.setFolder(external.path);
    EXPECT_EQ(defaults.stringValue("externalfolder"), external.path.string());
    EXPECT_FALSE(defaults.stringValue("localfolder"));
    EXPECT_FALSE(defaults.stringValue("sharedfolder"));
    EXPECT_EQ(catalogue.availableProjects(), (std::vector<std::string>{"Drive project"}));
}

TEST(ProjectCatalogue, AMissingFolderListsNothingAndRefusesNewProjects) {
    TempFolder home;
    touch(home.path / "Kept" / "tarelproject");
    base::MemoryUserDefaults defaults;
    defaults.setString("localfolder", (home.path / "unplugged").string());
    project::ProjectCatalogue catalogue(defaults, home.path);
    base::PrintCapture capture;
    catalogue.refresh();
    EXPECT_TRUE(catalogue.availableProjects().empty());
    EXPECT_FALSE(catalogue.canCreateProject());
    // A file where the folder should be is no folder either.
    touch(home.path / "a file");
    catalogue.setFolder(home.path / "a file");
    EXPECT_FALSE(catalogue.canCreateProject());
}

TEST(ProjectCatalogue, SelectionFollowsTheTagAndRefreshClearsIt) {
    TempFolder home;
    touch(home.path / "A" / "tarelproject");
    touch(home.path / "B" / "tarelproject");
    base::MemoryUserDefaults defaults;
    project::ProjectCatalogue catalogue(defaults, home.path);
    catalogue.refresh();
    catalogue.select(1);
    EXPECT_EQ(catalogue.selectedProjectFolder(), home.path / "B");
    catalogue.select(2);
    EXPECT_FALSE(catalogue.selected());
    catalogue.select(0);
    catalogue.refresh();
    EXPECT_FALSE(catalogue.selectedProjectFolder());
}

class CatalogueEditTest : public ::testing::Test {
protected:
    void SetUp() override {
        touch(home.path / "Alpha" / "tarelproject");
        touch(home.path / "Beta" / "tarelproject");
        touch(home.path / "Beta" / "_bins_" / "x.ale");
        catalogue.refresh();
    }

    TempFolder home;
    base::MemoryUserDefaults defaults;
    project::ProjectCatalogue catalogue{defaults, home.path};
    base::ScriptedInteraction interaction;
    base::PrintCapture capture;
};

TEST_F(CatalogueEditTest, DeleteConfirmedRemovesTheWholeFolder) {
    interaction.queueAlert("Confirm");
    EXPECT_TRUE(catalogue.deleteProject(1, interaction));
    ASSERT_EQ(interaction.alerts().size(), 1u);
    EXPECT_EQ(interaction.alerts()[0].title, "Delete Project?");
    EXPECT_EQ(interaction.alerts()[0].text, "Project \"Beta\" will be deleted.");
    EXPECT_EQ(interaction.alerts()[0].buttons, (std::vector<std::string>{"Confirm", "Cancel"}));
    EXPECT_TRUE(capture.contains("removing " + (home.path / "Beta").string()));
    EXPECT_FALSE(fs::exists(home.path / "Beta"));
    EXPECT_EQ(catalogue.availableProjects(), (std::vector<std::string>{"Alpha"}));
}

TEST_F(CatalogueEditTest, DeleteCancelledOrOutOfRangeChangesNothing) {
    interaction.queueAlert("Cancel");
    EXPECT_FALSE(catalogue.deleteProject(0, interaction));
    EXPECT_FALSE(catalogue.deleteProject(5, interaction));
    EXPECT_EQ(interaction.alerts().size(), 1u);
    EXPECT_TRUE(fs::exists(home.path / "Alpha" / "tarelproject"));
    EXPECT_EQ(catalogue.availableProjects().size(), 2u);
}

TEST_F(CatalogueEditTest, RenameMovesTheFolderAndKeepsItsContent) {
    interaction.queueText("Beta 2");
    EXPECT_TRUE(catalogue.renameProject(1, interaction));
    ASSERT_EQ(interaction.textRequests().size(), 1u);
    const base::TextRequest& asked = interaction.textRequests()[0];
    EXPECT_EQ(asked.title, "Rename project");
    EXPECT_EQ(asked.text, "Insert a new name for project \"Beta\"");
    EXPECT_EQ(asked.defaultValue, "Beta");
    EXPECT_EQ(asked.takenNames, (std::vector<std::string>{"Alpha", "Beta"}));
    EXPECT_TRUE(capture.contains("renaming project from \"Beta\" to \"Beta 2\""));
    EXPECT_TRUE(fs::exists(home.path / "Beta 2" / "_bins_" / "x.ale"));
    EXPECT_EQ(catalogue.availableProjects(), (std::vector<std::string>{"Alpha", "Beta 2"}));
}

TEST_F(CatalogueEditTest, RenameRefusesNamesThatWouldMisplaceTheFolder) {
    struct Case {
        const char* name;
        std::string newName;
    };
    const Case cases[] = {
        {"slash", "Sub/Beta"},
        {"colon", "Be:ta"},
        {"empty", ""},
        {"existing folder", "Alpha"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        interaction.queueText(c.newName);
        EXPECT_FALSE(catalogue.renameProject(1, interaction));
        EXPECT_TRUE(capture.contains("Error renaming folder " + (home.path / "Beta").string()));
        EXPECT_EQ(catalogue.availableProjects(), (std::vector<std::string>{"Alpha", "Beta"}));
    }
    interaction.queueText(std::nullopt);
    EXPECT_FALSE(catalogue.renameProject(1, interaction));
    EXPECT_TRUE(fs::exists(home.path / "Beta" / "tarelproject"));
}

} // namespace
} // namespace lumbra::app
