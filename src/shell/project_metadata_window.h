#pragma once

#include "base/user_interaction.h"
#include "project/shared_stuff.h"

#include <QDialog>
#include <map>
#include <string>
#include <vector>

class QLabel;
class QTableWidget;

namespace lumbra::shell {

// The modal "Project Metadata" window: the base properties of the project and the user's own, edited
// on copies until Done.
class ProjectMetadataWindow final : public QDialog {
    Q_OBJECT

public:
    ProjectMetadataWindow(project::SharedStuff& sharedstuff, base::UserInteraction& interaction,
                          QWidget* parent = nullptr);

    [[nodiscard]] QTableWidget* propertiesTable() const noexcept { return m_propertiesTable; }
    [[nodiscard]] const std::vector<std::string>& baseChanged() const noexcept { return m_baseChanged; }

public slots:
    void doneButtonPressed();
    void cancelButtonPressed();
    void newProperty();

private:
    void basePropertyChanged(const std::string& name, const std::string& value);
    void userCellChanged(int row, int column);
    void fillTable();
    // Done stays off, with the reason shown, while a value could not be read back from its file.
    void refreshRefusal();

    project::SharedStuff& m_sharedstuff;
    base::UserInteraction& m_interaction;
    QLabel* m_labelName = nullptr;
    QTableWidget* m_propertiesTable = nullptr;
    QLabel* m_refusalLabel = nullptr;
    QPushButton* m_doneButton = nullptr;
    std::map<std::string, std::string> m_baseProperties;
    std::vector<std::string> m_basePropertiesKeys;
    std::map<std::string, std::string> m_userDefinedProperties;
    std::vector<std::string> m_userDefinedPropertiesKeys;
    std::vector<std::string> m_baseChanged;
    bool m_filling = false;
};

} // namespace lumbra::shell
