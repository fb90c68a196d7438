#pragma once

#include "project/project_creation.h"

#include <QDialog>
#include <filesystem>
#include <functional>
#include <memory>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class QTimer;

namespace lumbra::shell {

class AppDelegate;

// The window that makes a project in the chooser's folder: name, base columns and settings, then Create.
class NewProjectWindow final : public QDialog {
    Q_OBJECT

public:
    // Asks for the .ale file of "Load from file"; an empty path is a cancel.
    using FileChooser = std::function<QString(QWidget* parent)>;

    NewProjectWindow(AppDelegate& delegate, std::filesystem::path folder, QWidget* parent = nullptr);
    ~NewProjectWindow() override;

    // Tests pass their own chooser instead of the desktop's file dialog.
    void setFileChooser(FileChooser chooser) { m_fileChooser = std::move(chooser); }
    [[nodiscard]] const project::NewProjectSettings& settings() const noexcept { return m_settings; }

public slots:
    void loadFromFileButtonPressed();
    void createButtonPressed();
    void cancelButtonPressed();
    void hideWarningLabel();
    void reject() override;

private:
    void addColumnButtonPressed(int row);
    void removeColumnButtonPressed(int row);
    void columnNameEdited(int row, int column);
    void fillColumnsTable();
    void showSettings();
    void showWarning(const QString& text, bool hideLater);
    [[nodiscard]] std::string freeColumnName() const;
    void gatherSettings();
    void gatherSettings(project::NewProjectSettings& into) const;
    // Create stays off, with the reason shown, while a value could not be read back from its file.
    void refreshRefusal();

    AppDelegate& m_delegate;
    std::filesystem::path m_folder;
    project::NewProjectSettings m_settings;
    FileChooser m_fileChooser;
    QLineEdit* m_projectNameText = nullptr;
    QTableWidget* m_columnsTable = nullptr;
    QPushButton* m_createButton = nullptr;
    QPushButton* m_cancelButton = nullptr;
    QLabel* m_warningsLabel = nullptr;
    QLabel* m_nameHint = nullptr;
    QCheckBox* m_archiveOriginalDataCheckbox = nullptr;
    QLineEdit* m_tapeidText = nullptr;
    QComboBox* m_fpsButton = nullptr;
    QComboBox* m_soundButton = nullptr;
    QComboBox* m_resButton = nullptr;
    QComboBox* m_filmButton = nullptr;
    QCheckBox* m_filmCheckbox = nullptr;
    QTimer* m_warningTimer = nullptr;
    bool m_acceptEditing = true;
    bool m_created = false;
};

} // namespace lumbra::shell
