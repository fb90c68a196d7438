#include "tool_panels.h"

#include "chain/chainable_master.h"
#include "chain/picker_popup.h"
#include "db/database_panel.h"
#include "db/db_import.h"
#include "main_window.h"
#include "qt_user_interaction.h"
#include "tables/db_table.h"

namespace lumbra::shell {

namespace {

QWidget* makeDatabasePanel(project::SharedStuff& sharedstuff, QWidget* parent) {
    auto* master = new ChainableMaster(sharedstuff, parent);
    if (auto* window = parent ? qobject_cast<MainWindowViewController*>(parent->window()) : nullptr) {
        QObject::connect(master, &ChainableMaster::closeRequested, window,
                         [window] { window->switchSubcontainer(""); });
    }
    master->start(std::make_unique<DatabasePanel>());
    return master;
}

} // namespace

void registerToolPanels() {
    MainWindowViewController::registerPanel("database", makeDatabasePanel);
    // A database picked from a file belongs to no project yet: its CSV question comes up on its own.
    DBSetter::setDatabaseReader([](const std::string& path) -> std::shared_ptr<tables::DBTable> {
        QtUserInteraction interaction;
        return db::tableFromFile(path, &interaction);
    });
}

} // namespace lumbra::shell
