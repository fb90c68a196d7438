#include "new_project_window.h"

#include "app_delegate.h"
#include "main_window.h"
#include "project/setting_values.h"
#include "project/shared_stuff.h"
#include "qt_text.h"
#include "window_geometry.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTimer>
#include <QToolButton>
#include <QVBoxLayout>
#include <algorithm>

namespace lumbra::shell {

namespace {

constexpr int kWarningSeconds = 3;

QComboBox* makePopup(const char* objectName, std::initializer_list<const char*> choices, QWidget* parent) {
    auto* popup = new QComboBox(parent);
    popup->setObjectName(QString::fromLatin1(objectName));
    for (const char* choice : choices) {
        popup->addItem(QString::fromUtf8(choice));
    }
    return popup;
}

// Selects the value, adding it when the popup lacks it.
void selectTitle(QComboBox& popup, const std::string& value) {
    const QString title = toQt(value);
    int index = popup.findText(title);
    if (index < 0) {
        popup.addItem(title);
        index = popup.count() - 1;
    }
    popup.setCurrentIndex(index);
}

QToolButton* makeRowButton(const char* icon, const QString& fallback, const QString& tip, QWidget* parent) {
    auto* button = new QToolButton(parent);
    button->setIcon(QIcon::fromTheme(QString::fromLatin1(icon)));
    if (button->icon().isNull()) {
        button->setText(fallback);
    }
    button->setToolTip(tip);
    button->setAutoRaise(true);
    return button;
}

} // namespace

NewProjectWindow::NewProjectWindow(AppDelegate& delegate, std::filesystem::path folder, QWidget* parent)
    : QDialog(parent), m_delegate(delegate), m_folder(std::move(folder)) {
    setObjectName(QStringLiteral("newprojectwindow"));
    setWindowTitle(tr("New Project"));
    setAttribute(Qt::WA_DeleteOnClose);
    m_fileChooser = [](QWidget* parentWidget) {
        return QFileDialog::getOpenFileName(parentWidget, QStringLiteral("Choose a .ale file"), QString(),
                                            tr("ALE files (*.ale)"));
    };

    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(10);
    auto* where = new QLabel(tr("The project is made in %1").arg(toQt(m_folder.string())), this);
    where->setForegroundRole(QPalette::PlaceholderText);
    where->setWordWrap(true);

    m_projectNameText = new QLineEdit(this);
    m_projectNameText->setObjectName(QStringLiteral("projectNameText"));
    m_projectNameText->setPlaceholderText(tr("Project name"));
    connect(m_projectNameText, &QLineEdit::textEdited, this, &NewProjectWindow::hideWarningLabel);
    m_nameHint = new QLabel(tr("Type a name to create the project"), this);
    m_nameHint->setObjectName(QStringLiteral("nameHint"));
    m_nameHint->setForegroundRole(QPalette::PlaceholderText);
    auto* nameForm = new QFormLayout;
    nameForm->addRow(tr("Name:"), m_projectNameText);
    nameForm->addRow(QString(), m_nameHint);
    layout->addLayout(nameForm);
    layout->addWidget(where);

    auto* settingsBox = new QGroupBox(tr("Settings"), this);
    auto* form = new QFormLayout(settingsBox);
    m_fpsButton = makePopup("fpsButton", {"23.98", "24", "25", "29.96", "30", "50", "60"}, settingsBox);
    m_resButton = makePopup("resButton", {"1080", "720", "PAL", "NTSC", "CUSTOM"}, settingsBox);
    m_soundButton = makePopup("soundButton", {"44.1khz", "48khz"}, settingsBox);
    m_filmCheckbox = new QCheckBox(tr("Film"), settingsBox);
    m_filmCheckbox->setObjectName(QStringLiteral("filmCheckbox"));
    m_filmButton = makePopup("filmButton", {"16mm", "35mm, 4 perf", "35mm, 3 perf"}, settingsBox);
    connect(m_filmCheckbox, &QCheckBox::toggled, m_filmButton, &QWidget::setEnabled);
    auto* film = new QHBoxLayout;
    film->addWidget(m_filmCheckbox);
    film->addWidget(m_filmButton, 1);
    m_tapeidText = new QLineEdit(settingsBox);
    m_tapeidText->setObjectName(QStringLiteral("tapeidText"));
    m_tapeidText->setPlaceholderText(tr("No tape id"));
    connect(m_tapeidText, &QLineEdit::textChanged, this, &NewProjectWindow::refreshRefusal);
    m_archiveOriginalDataCheckbox = new QCheckBox(tr("Archive original data"), settingsBox);
    m_archiveOriginalDataCheckbox->setObjectName(QStringLiteral("archiveOriginalDataCheckbox"));
    form->addRow(tr("FPS:"), m_fpsButton);
    form->addRow(tr("TL Resolution:"), m_resButton);
    form->addRow(tr("Sound:"), m_soundButton);
    form->addRow(tr("Film format:"), film);
    form->addRow(tr("Tape id:"), m_tapeidText);
    form->addRow(QString(), m_archiveOriginalDataCheckbox);

    auto* columnsBox = new QGroupBox(tr("Project base layout"), this);
    auto* columnsLayout = new QVBoxLayout(columnsBox);
    m_columnsTable = new QTableWidget(0, 2, columnsBox);
    m_columnsTable->setObjectName(QStringLiteral("columnsTable"));
    m_columnsTable->setHorizontalHeaderLabels({tr("Column"), QString()});
    m_columnsTable->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_columnsTable->horizontalHeader()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    m_columnsTable->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(m_columnsTable, &QTableWidget::cellChanged, this, &NewProjectWindow::columnNameEdited);
    auto* load =
        new QPushButton(QIcon::fromTheme(QStringLiteral("document-open")), tr("Load from file…"), columnsBox);
    load->setObjectName(QStringLiteral("loadFromFileButton"));
    load->setToolTip(tr("Take the settings and columns of an ALE file"));
    connect(load, &QPushButton::clicked, this, &NewProjectWindow::loadFromFileButtonPressed);
    columnsLayout->addWidget(m_columnsTable, 1);
    auto* loadRow = new QHBoxLayout;
    loadRow->addStretch(1);
    loadRow->addWidget(load);
    columnsLayout->addLayout(loadRow);

    auto* middle = new QHBoxLayout;
    middle->addWidget(settingsBox);
    middle->addWidget(columnsBox, 1);
    layout->addLayout(middle, 1);

    m_warningsLabel = new QLabel(this);
    m_warningsLabel->setObjectName(QStringLiteral("warningsLabel"));
    QPalette warningPalette = m_warningsLabel->palette();
    warningPalette.setColor(QPalette::WindowText, QColor(0xc0, 0x1c, 0x28));
    m_warningsLabel->setPalette(warningPalette);
    m_warningsLabel->hide();
    layout->addWidget(m_warningsLabel);
    m_warningTimer = new QTimer(this);
    m_warningTimer->setSingleShot(true);
    m_warningTimer->setInterval(kWarningSeconds * 1000);
    connect(m_warningTimer, &QTimer::timeout, this, &NewProjectWindow::hideWarningLabel);

    auto* buttons = new QDialogButtonBox(this);
    m_createButton = buttons->addButton(tr("Create"), QDialogButtonBox::AcceptRole);
    m_createButton->setObjectName(QStringLiteral("createButton"));
    m_createButton->setDefault(true);
    m_cancelButton = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    m_cancelButton->setObjectName(QStringLiteral("cancelButton"));
    connect(m_createButton, &QPushButton::clicked, this, &NewProjectWindow::createButtonPressed);
    connect(m_cancelButton, &QPushButton::clicked, this, &NewProjectWindow::cancelButtonPressed);
    layout->addWidget(buttons);
    // Without a name there is nothing to create: the button waits, and says why.
    auto named = [this](const QString& text) {
        refreshRefusal();
        m_createButton->setToolTip(text.isEmpty() ? m_nameHint->text() : QString());
        m_nameHint->setVisible(text.isEmpty());
    };
    connect(m_projectNameText, &QLineEdit::textChanged, this, named);
    named(m_projectNameText->text());

    for (QComboBox* popup : {m_fpsButton, m_resButton, m_soundButton, m_filmButton}) {
        connect(popup, &QComboBox::currentTextChanged, this, &NewProjectWindow::refreshRefusal);
    }
    connect(m_filmCheckbox, &QCheckBox::toggled, this, &NewProjectWindow::refreshRefusal);
    showSettings();
    resize(720, 460);
    rememberGeometry(*this, QStringLiteral("newProject"));
}

NewProjectWindow::~NewProjectWindow() = default;

void NewProjectWindow::showSettings() {
    selectTitle(*m_fpsButton, m_settings.fps);
    selectTitle(*m_resButton, m_settings.tlResolution);
    selectTitle(*m_soundButton, m_settings.sound);
    m_filmCheckbox->setChecked(m_settings.filmFormat.has_value());
    m_filmButton->setEnabled(m_settings.filmFormat.has_value());
    if (m_settings.filmFormat) {
        selectTitle(*m_filmButton, *m_settings.filmFormat);
    }
    m_tapeidText->setText(toQt(m_settings.tapeId));
    m_archiveOriginalDataCheckbox->setChecked(m_settings.archiveOriginalData);
    fillColumnsTable();
}

void NewProjectWindow::refreshRefusal() {
    if (m_createButton == nullptr) {
        return;
    }
    // On a copy: the widgets may be half-way through showing the settings.
    project::NewProjectSettings shown = m_settings;
    gatherSettings(shown);
    const std::optional<std::string> reason = project::unreadableSettingReason(shown);
    // A value its files could not read back is never written: Create waits until it is changed.
    m_createButton->setEnabled(!reason && !m_projectNameText->text().isEmpty());
    if (reason) {
        showWarning(toQt("Cannot create: " + *reason), false);
    } else if (m_warningsLabel->text().startsWith(QStringLiteral("Cannot create: "))) {
        hideWarningLabel();
    }
}

void NewProjectWindow::fillColumnsTable() {
    // Row buttons call in queued, since the rebuild replaces the very button that was pressed.
    m_acceptEditing = false;
    const int columns = static_cast<int>(m_settings.columns.size());
    m_columnsTable->clearContents();
    m_columnsTable->setRowCount(columns + 1);
    for (int row = 0; row <= columns; ++row) {
        auto* buttons = new QWidget(m_columnsTable);
        auto* line = new QHBoxLayout(buttons);
        line->setContentsMargins(0, 0, 0, 0);
        line->setSpacing(0);
        if (row == columns) {
            auto* name = new QTableWidgetItem;
            name->setFlags(Qt::NoItemFlags);
            m_columnsTable->setItem(row, 0, name);
            // The add row is no column: it carries no number.
            m_columnsTable->setVerticalHeaderItem(row, new QTableWidgetItem(QString()));
            QToolButton* add = makeRowButton("list-add", QStringLiteral("+"),
                                             tr("Add a column to the project base layout"), buttons);
            add->setObjectName(QStringLiteral("addColumnButton"));
            connect(
                add, &QToolButton::clicked, this, [this, row] { addColumnButtonPressed(row); },
                Qt::QueuedConnection);
            line->addWidget(add);
        } else {
            m_columnsTable->setVerticalHeaderItem(row, new QTableWidgetItem(QString::number(row + 1)));
            m_columnsTable->setItem(
                row, 0, new QTableWidgetItem(toQt(m_settings.columns[static_cast<std::size_t>(row)])));
            QToolButton* insert = makeRowButton("list-add", QStringLiteral("+"),
                                                tr("Insert a column before this one"), buttons);
            insert->setObjectName(QStringLiteral("insertColumnButton"));
            connect(
                insert, &QToolButton::clicked, this, [this, row] { addColumnButtonPressed(row); },
                Qt::QueuedConnection);
            QToolButton* remove =
                makeRowButton("list-remove", QStringLiteral("−"), tr("Remove this column"), buttons);
            remove->setObjectName(QStringLiteral("removeColumnButton"));
            connect(
                remove, &QToolButton::clicked, this, [this, row] { removeColumnButtonPressed(row); },
                Qt::QueuedConnection);
            line->addWidget(insert);
            line->addWidget(remove);
        }
        m_columnsTable->setCellWidget(row, 1, buttons);
    }
    m_acceptEditing = true;
    refreshRefusal();
}

std::string NewProjectWindow::freeColumnName() const {
    auto taken = [this](const std::string& name) {
        return std::find(m_settings.columns.begin(), m_settings.columns.end(), name) !=
               m_settings.columns.end();
    };
    if (!taken("newcol")) {
        return "newcol";
    }
    int number = 1;
    while (taken("newcol_" + std::to_string(number))) {
        ++number;
    }
    return "newcol_" + std::to_string(number);
}

void NewProjectWindow::addColumnButtonPressed(int row) {
    hideWarningLabel();
    const auto at = std::min(static_cast<std::size_t>(row), m_settings.columns.size());
    m_settings.columns.insert(m_settings.columns.begin() + static_cast<std::ptrdiff_t>(at), freeColumnName());
    fillColumnsTable();
    m_columnsTable->setCurrentCell(static_cast<int>(at), 0);
}

void NewProjectWindow::removeColumnButtonPressed(int row) {
    hideWarningLabel();
    if (row < 0 || row >= static_cast<int>(m_settings.columns.size())) {
        return;
    }
    m_settings.columns.erase(m_settings.columns.begin() + row);
    fillColumnsTable();
}

void NewProjectWindow::columnNameEdited(int row, int column) {
    if (!m_acceptEditing || column != 0 || row >= static_cast<int>(m_settings.columns.size())) {
        return;
    }
    hideWarningLabel();
    std::string& current = m_settings.columns[static_cast<std::size_t>(row)];
    const std::string name = m_columnsTable->item(row, 0)->text().toStdString();
    if (name == current) {
        return;
    }
    if (name.empty() ||
        std::find(m_settings.columns.begin(), m_settings.columns.end(), name) != m_settings.columns.end()) {
        if (!name.empty()) {
            showWarning(toQt("ERROR: a column named " + name + " already exists"), false);
        }
        // The list keeps each column once: the old name comes back.
        m_acceptEditing = false;
        m_columnsTable->item(row, 0)->setText(toQt(current));
        m_acceptEditing = true;
        return;
    }
    current = name;
    refreshRefusal();
}

void NewProjectWindow::loadFromFileButtonPressed() {
    hideWarningLabel();
    const QString path = m_fileChooser(this);
    if (path.isEmpty()) {
        return;
    }
    gatherSettings();
    std::string warning;
    if (!project::settingsFromFile(path.toStdString(), m_settings, &warning)) {
        showWarning(toQt(warning), true);
        return;
    }
    showSettings();
}

void NewProjectWindow::gatherSettings() {
    gatherSettings(m_settings);
}

void NewProjectWindow::gatherSettings(project::NewProjectSettings& into) const {
    into.name = m_projectNameText->text().toStdString();
    into.fps = m_fpsButton->currentText().toStdString();
    into.tlResolution = m_resButton->currentText().toStdString();
    into.sound = m_soundButton->currentText().toStdString();
    into.filmFormat = m_filmCheckbox->isChecked()
                          ? std::optional<std::string>(m_filmButton->currentText().toStdString())
                          : std::nullopt;
    into.tapeId = m_tapeidText->text().toStdString();
    into.archiveOriginalData = m_archiveOriginalDataCheckbox->isChecked();
}

void NewProjectWindow::createButtonPressed() {
    gatherSettings();
    if (!m_createButton->isEnabled()) {
        return;
    }
    const std::string folder = m_folder.string();
    const project::NewProjectCheck check = project::checkNewProject(folder, m_settings);
    if (!check.accepted()) {
        if (!check.warning.empty()) {
            showWarning(toQt(check.warning), false);
        }
        return;
    }
    auto sharedstuff = std::make_unique<project::SharedStuff>(&m_delegate.interaction());
    project::SharedStuff& project = *sharedstuff;
    MainWindowViewController* window = m_delegate.makeProjectWindow(std::move(sharedstuff));
    project::createProject(project, folder, m_settings);
    window->refreshTitle();
    window->reloadBinsLists();
    window->show();
    m_created = true;
    close();
}

void NewProjectWindow::cancelButtonPressed() {
    reject();
}

void NewProjectWindow::reject() {
    // Leaving without a project goes back to the chooser, whichever way the window was closed.
    if (!m_created) {
        m_delegate.openProjectChooser();
    }
    QDialog::reject();
    deleteLater();
}

void NewProjectWindow::hideWarningLabel() {
    m_warningTimer->stop();
    m_warningsLabel->hide();
}

void NewProjectWindow::showWarning(const QString& text, bool hideLater) {
    m_warningsLabel->setText(text);
    m_warningsLabel->show();
    if (hideLater) {
        m_warningTimer->start();
    }
}

} // namespace lumbra::shell
