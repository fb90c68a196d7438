#pragma once

#include "base/user_interaction.h"
#include "project/project_catalogue.h"

#include <QMainWindow>

class QAbstractButton;
class QButtonGroup;
class QGridLayout;
class QLabel;
class QPushButton;
class QToolButton;

namespace lumbra::shell {

class AppDelegate;

// The first window: the projects of the local, shared or external folder as a grid of buttons.
class ProjectChooserWindow final : public QMainWindow {
    Q_OBJECT

public:
    // Columns of the project grid.
    static constexpr int kColumns = 3;

    ProjectChooserWindow(AppDelegate& delegate, base::UserDefaults& defaults,
                         base::UserInteraction& interaction, QWidget* parent = nullptr);
    ~ProjectChooserWindow() override;

    [[nodiscard]] const project::ProjectCatalogue& catalogue() const noexcept { return m_catalogue; }
    // The grid's project buttons, in the order of the catalogue.
    [[nodiscard]] QList<QToolButton*> projectButtons() const;

public slots:
    void refresh();

private slots:
    void selectFolderType(int folderType);
    void pathButtonPressed();
    void newProjectButtonPressed();
    void selectProjectWithButton();

private:
    void buildProjectGrid();
    void showProjectMenu(QToolButton* button, const QPoint& position);

    AppDelegate& m_delegate;
    base::UserInteraction& m_interaction;
    project::ProjectCatalogue m_catalogue;
    QButtonGroup* m_folderTypes = nullptr;
    QPushButton* m_pathButton = nullptr;
    QWidget* m_projectsTableView = nullptr;
    QGridLayout* m_grid = nullptr;
    QLabel* m_emptyLabel = nullptr;
    QPushButton* m_newProjectButton = nullptr;
};

} // namespace lumbra::shell
