#include "base/scripted_interaction.h"
#include "core/project/project_test_support.h"
#include "project/project_catalogue.h"

#include <gtest/gtest.h>

namespace lumbra::app {
namespace {

namespace fs = std::filesystem;
using project::testing::Names;
using project::testing::TempFolder;

void touch(const fs::path& file) {
    project::testing::writeFile(file, "x\n");
}

TEST(ListProjects, ListsExactlyTheReadableDirectSubfoldersHoldingTheProjectFile) {
    TempFolder root;
    for (const char* file :
         {"Feature/tarelproject", "Short film/tarelproject", "Short film/_bins_/bin_01/x.ale",
          "No project file/tarelproject.bak", "Wrong case/Tarelproject", ".Hidden/tarelproject",
          "Outer/Inner/tarelproject", "a plain file", "tarelproject", "Closed/tarelproject"})
        touch(root.path / file);
    fs::create_directories(root.path / "Empty");
    // A folder named tarelproject inside a project folder is one of its names too.
    fs::create_directories(root.path / "Odd" / "tarelproject");
    fs::permissions(root.path / "Closed", fs::perms::none);
    project::testing::Unprivileged user;
    base::PrintCapture capture;
    EXPECT_EQ(project::listProjects(root.path), (Names{"Feature", "Odd", "Short film"}));
    EXPECT_TRUE(capture.contains("ERROR: cannot list content of folder " + (root.path / "Closed").string()));
    EXPECT_TRUE(project::listProjects(root.path / "gone").empty());
    EXPECT_TRUE(
        capture.contains("ERROR: cannot get projects list from folder " + (root.path / "gone").string()));
}

TEST(ProjectCatalogue, EachTypeReadsItsOwnKeyAndFallsBackToHome) {
    TempFolder home, shared, external;
    touch(home.path / "At home" / "tarelproject");
    touch(shared.path / "On the server" / "tarelproject");
    touch(external.path / "Drive project" / "tarelproject");
    base::MemoryUserDefaults defaults;
    defaults.setString("sharedfolder", shared.path.string());
    project::ProjectCatalogue catalogue(defaults, home.path);
    const std::vector<std::tuple<int, fs::path, Names>> cases = {{0, home.path, {"At home"}},
                                                                 {1, shared.path, {"On the server"}},
                                                                 {2, home.path, {"At home"}},
                                                                 {7, home.path, {"At home"}}};
    for (const auto& [type, folder, projects] : cases) {
        SCOPED_TRACE(type);
        catalogue.setFolderType(type);
        EXPECT_EQ(catalogue.folder(), folder);
        EXPECT_EQ(catalogue.availableProjects(), projects);
        EXPECT_TRUE(catalogue.canCreateProject());
    }
    // A chosen folder is stored under the current type only.
    catalogue.setFolderType(2);
    catalogue.setFolder(external.path);
    EXPECT_EQ(defaults.stringValue("externalfolder"), external.path.string());
    EXPECT_FALSE(defaults.stringValue("localfolder"));
    EXPECT_EQ(catalogue.availableProjects(), (Names{"Drive project"}));
    // A missing folder, or a file where the folder should be, lists nothing and refuses new projects.
    base::PrintCapture capture;
    for (const fs::path& folder : {home.path / "unplugged", home.path / "At home" / "tarelproject"}) {
        catalogue.setFolder(folder);
        EXPECT_TRUE(catalogue.availableProjects().empty());
        EXPECT_FALSE(catalogue.canCreateProject());
    }
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

TEST_F(CatalogueEditTest, SelectionFollowsTheTagAndRefreshClearsIt) {
    catalogue.select(1);
    EXPECT_EQ(catalogue.selectedProjectFolder(), home.path / "Beta");
    catalogue.select(2);
    EXPECT_FALSE(catalogue.selected());
    catalogue.select(0);
    catalogue.refresh();
    EXPECT_FALSE(catalogue.selectedProjectFolder());
}

TEST_F(CatalogueEditTest, DeleteAsksAndRemovesTheWholeFolder) {
    interaction.queueAlert("Cancel");
    EXPECT_FALSE(catalogue.deleteProject(0, interaction));
    EXPECT_FALSE(catalogue.deleteProject(5, interaction));
    EXPECT_EQ(interaction.alerts().size(), 1u);
    EXPECT_EQ(catalogue.availableProjects().size(), 2u);
    interaction.queueAlert("Confirm");
    EXPECT_TRUE(catalogue.deleteProject(1, interaction));
    ASSERT_EQ(interaction.alerts().size(), 2u);
    EXPECT_EQ(interaction.alerts()[1].title, "Delete Project?");
    EXPECT_EQ(interaction.alerts()[1].text, "Project \"Beta\" will be deleted.");
    EXPECT_EQ(interaction.alerts()[1].buttons, (Names{"Confirm", "Cancel"}));
    EXPECT_TRUE(capture.contains("removing " + (home.path / "Beta").string()));
    EXPECT_FALSE(fs::exists(home.path / "Beta"));
    EXPECT_EQ(catalogue.availableProjects(), (Names{"Alpha"}));
}

TEST_F(CatalogueEditTest, RenameMovesTheFolderAndRefusesNamesThatWouldMisplaceIt) {
    for (const char* refused : {"Sub/Beta", "Be:ta", "", "Alpha"}) {
        SCOPED_TRACE(refused);
        interaction.queueText(refused);
        EXPECT_FALSE(catalogue.renameProject(1, interaction));
        EXPECT_TRUE(capture.contains("Error renaming folder " + (home.path / "Beta").string()));
        EXPECT_EQ(catalogue.availableProjects(), (Names{"Alpha", "Beta"}));
    }
    interaction.queueText(std::nullopt);
    EXPECT_FALSE(catalogue.renameProject(1, interaction));
    interaction.queueText("Beta 2");
    EXPECT_TRUE(catalogue.renameProject(1, interaction));
    const base::TextRequest& asked = interaction.textRequests().back();
    EXPECT_EQ(asked.title, "Rename project");
    EXPECT_EQ(asked.text, "Insert a new name for project \"Beta\"");
    EXPECT_EQ(asked.defaultValue, "Beta");
    EXPECT_EQ(asked.takenNames, (Names{"Alpha", "Beta"}));
    EXPECT_TRUE(capture.contains("renaming project from \"Beta\" to \"Beta 2\""));
    EXPECT_TRUE(fs::exists(home.path / "Beta 2" / "_bins_" / "x.ale"));
    EXPECT_EQ(catalogue.availableProjects(), (Names{"Alpha", "Beta 2"}));
}

} // namespace
} // namespace lumbra::app
