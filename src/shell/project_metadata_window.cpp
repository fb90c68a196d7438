#include "project_metadata_window.h"

#include "project/setting_values.h"
#include "qt_text.h"
#include "window_geometry.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

namespace lumbra::shell {

namespace {

constexpr const char* kNoFilmFormat = "None";

// The choices of each base property with a popup; "Tape" is free text.
std::vector<std::string> choicesOf(const std::string& property) {
    if (property == "FPS") {
        return {"23.98", "24", "25", "29.96", "30", "50", "60"};
    }
    if (property == "TL Resolution") {
        return {"1080", "720", "PAL", "NTSC", "CUSTOM"};
    }
    if (property == "Sound") {
        return {"44.1khz", "48khz"};
    }
    if (property == "Film Format") {
        return {kNoFilmFormat, "16mm", "35mm, 4 perf", "35mm, 3 perf"};
    }
    return {};
}

} // namespace

ProjectMetadataWindow::ProjectMetadataWindow(project::SharedStuff& sharedstuff,
                                             base::UserInteraction& interaction, QWidget* parent)
    : QDialog(parent), m_sharedstuff(sharedstuff), m_interaction(interaction) {
    setObjectName(QStringLiteral("projectmetadatawindow"));
    setWindowTitle(QStringLiteral("Project Metadata"));
    setModal(true);

    const std::string film = sharedstuff.film_format.value_or(std::string());
    m_baseProperties = {{"FPS", sharedstuff.fps.value_or(std::string())},
                        {"TL Resolution", sharedstuff.tlResolution.value_or(std::string())},
                        {"Tape", sharedstuff.tapeId.value_or(std::string())},
                        {"Sound", sharedstuff.sound.value_or(std::string())},
                        {"Film Format", film.empty() ? kNoFilmFormat : film}};
    m_basePropertiesKeys = {"FPS", "TL Resolution", "Tape", "Sound", "Film Format"};
    m_userDefinedProperties = sharedstuff.userDefinedProperties;
    for (const auto& [key, value] : m_userDefinedProperties) {
        m_userDefinedPropertiesKeys.push_back(key);
    }

    auto* layout = new QVBoxLayout(this);
    m_labelName = new QLabel(toQt(sharedstuff.projectName.value_or(std::string())), this);
    m_labelName->setObjectName(QStringLiteral("labelName"));
    QFont nameFont = m_labelName->font();
    nameFont.setBold(true);
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.3);
    m_labelName->setFont(nameFont);
    layout->addWidget(m_labelName);

    m_propertiesTable = new QTableWidget(0, 2, this);
    m_propertiesTable->setObjectName(QStringLiteral("propertiesTable"));
    m_propertiesTable->setHorizontalHeaderLabels({QStringLiteral("property"), QStringLiteral("value")});
    m_propertiesTable->verticalHeader()->hide();
    m_propertiesTable->horizontalHeader()->setStretchLastSection(true);
    m_propertiesTable->horizontalHeader()->resizeSection(0, 180);
    m_propertiesTable->setSelectionMode(QAbstractItemView::SingleSelection);
    connect(m_propertiesTable, &QTableWidget::cellChanged, this, &ProjectMetadataWindow::userCellChanged);
    layout->addWidget(m_propertiesTable, 1);
    m_refusalLabel = new QLabel(this);
    m_refusalLabel->setObjectName(QStringLiteral("refusalLabel"));
    m_refusalLabel->setWordWrap(true);
    QPalette refusalPalette = m_refusalLabel->palette();
    refusalPalette.setColor(QPalette::WindowText, QColor(0xc0, 0x1c, 0x28));
    m_refusalLabel->setPalette(refusalPalette);
    m_refusalLabel->hide();
    layout->addWidget(m_refusalLabel);

    auto* buttons = new QDialogButtonBox(this);
    m_doneButton = buttons->addButton(tr("Done"), QDialogButtonBox::AcceptRole);
    m_doneButton->setObjectName(QStringLiteral("doneButton"));
    m_doneButton->setDefault(true);
    QPushButton* cancel = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cancelButton"));
    connect(m_doneButton, &QPushButton::clicked, this, &ProjectMetadataWindow::doneButtonPressed);
    connect(cancel, &QPushButton::clicked, this, &ProjectMetadataWindow::cancelButtonPressed);
    layout->addWidget(buttons);

    fillTable();
    refreshRefusal();
    resize(520, 420);
    rememberGeometry(*this, QStringLiteral("projectMetadata"));
}

void ProjectMetadataWindow::refreshRefusal() {
    std::optional<std::string> reason = project::unreadablePropertiesReason(m_userDefinedProperties);
    for (const std::string& name : m_basePropertiesKeys) {
        if (reason) {
            break;
        }
        const auto kind = name == "FPS" ? project::SettingKind::frameRate : project::SettingKind::heading;
        reason = project::unreadableValueReason("the value of " + name, m_baseProperties[name], kind);
    }
    // A value its files could not read back is never written: Done waits until it is changed.
    m_doneButton->setEnabled(!reason);
    m_refusalLabel->setText(reason ? toQt("Cannot save: " + *reason) : QString());
    m_refusalLabel->setVisible(reason.has_value());
}

void ProjectMetadataWindow::fillTable() {
    m_filling = true;
    const int baseRows = static_cast<int>(m_basePropertiesKeys.size());
    const int userRows = static_cast<int>(m_userDefinedPropertiesKeys.size());
    m_propertiesTable->clearContents();
    m_propertiesTable->setRowCount(baseRows + userRows + 1);
    for (int row = 0; row < baseRows; ++row) {
        const std::string& name = m_basePropertiesKeys[static_cast<std::size_t>(row)];
        auto* nameItem = new QTableWidgetItem(toQt(name));
        nameItem->setFlags(Qt::ItemIsEnabled);
        QFont font = nameItem->font();
        font.setBold(true);
        nameItem->setFont(font);
        m_propertiesTable->setItem(row, 0, nameItem);
        const std::vector<std::string> choices = choicesOf(name);
        const QString value = toQt(m_baseProperties[name]);
        if (choices.empty()) {
            auto* field = new QLineEdit(value, m_propertiesTable);
            field->setObjectName(toQt(name));
            field->setFrame(false);
            connect(field, &QLineEdit::textEdited, this,
                    [this, name](const QString& text) { basePropertyChanged(name, text.toStdString()); });
            m_propertiesTable->setCellWidget(row, 1, field);
            continue;
        }
        auto* popup = new QComboBox(m_propertiesTable);
        popup->setObjectName(toQt(name));
        for (const std::string& choice : choices) {
            popup->addItem(toQt(choice));
        }
        // A value from elsewhere that is not a choice stays selectable, as the project holds it.
        if (!value.isEmpty() && popup->findText(value) < 0) {
            popup->addItem(value);
        }
        popup->setCurrentIndex(value.isEmpty() ? -1 : popup->findText(value));
        connect(popup, &QComboBox::textActivated, this,
                [this, name](const QString& text) { basePropertyChanged(name, text.toStdString()); });
        m_propertiesTable->setCellWidget(row, 1, popup);
    }
    for (int i = 0; i < userRows; ++i) {
        const std::string& key = m_userDefinedPropertiesKeys[static_cast<std::size_t>(i)];
        m_propertiesTable->setItem(baseRows + i, 0, new QTableWidgetItem(toQt(key)));
        m_propertiesTable->setItem(baseRows + i, 1, new QTableWidgetItem(toQt(m_userDefinedProperties[key])));
    }
    auto* add = new QPushButton(tr("New Property"), m_propertiesTable);
    add->setObjectName(QStringLiteral("newPropertyButton"));
    add->setIcon(QIcon::fromTheme(QStringLiteral("list-add")));
    connect(add, &QPushButton::clicked, this, &ProjectMetadataWindow::newProperty);
    const int last = baseRows + userRows;
    auto* blank = new QTableWidgetItem;
    blank->setFlags(Qt::NoItemFlags);
    m_propertiesTable->setItem(last, 1, blank);
    m_propertiesTable->setCellWidget(last, 0, add);
    m_filling = false;
}

void ProjectMetadataWindow::basePropertyChanged(const std::string& name, const std::string& value) {
    m_baseProperties[name] = value;
    if (std::find(m_baseChanged.begin(), m_baseChanged.end(), name) == m_baseChanged.end()) {
        m_baseChanged.push_back(name);
    }
    refreshRefusal();
}

void ProjectMetadataWindow::userCellChanged(int row, int column) {
    const int index = row - static_cast<int>(m_basePropertiesKeys.size());
    if (m_filling || index < 0 || index >= static_cast<int>(m_userDefinedPropertiesKeys.size())) {
        return;
    }
    std::string& key = m_userDefinedPropertiesKeys[static_cast<std::size_t>(index)];
    const std::string text = m_propertiesTable->item(row, column)->text().toStdString();
    if (column == 1) {
        m_userDefinedProperties[key] = text;
        refreshRefusal();
        return;
    }
    if (text == key) {
        return;
    }
    // A name that is empty or already used gives way to the old one.
    if (text.empty() || m_userDefinedProperties.count(text) != 0) {
        m_filling = true;
        m_propertiesTable->item(row, column)->setText(toQt(key));
        m_filling = false;
        return;
    }
    auto node = m_userDefinedProperties.extract(key);
    node.key() = text;
    m_userDefinedProperties.insert(std::move(node));
    key = text;
    refreshRefusal();
}

void ProjectMetadataWindow::newProperty() {
    int number = 1;
    while (m_userDefinedProperties.count("Custom Prop " + std::to_string(number)) != 0) {
        ++number;
    }
    const std::string key = "Custom Prop " + std::to_string(number);
    m_userDefinedProperties[key] = std::string();
    m_userDefinedPropertiesKeys.push_back(key);
    fillTable();
    const int row = static_cast<int>(m_basePropertiesKeys.size() + m_userDefinedPropertiesKeys.size()) - 1;
    m_propertiesTable->setCurrentCell(row, 1);
}

void ProjectMetadataWindow::doneButtonPressed() {
    if (!m_doneButton->isEnabled()) {
        return;
    }
    if (!m_baseChanged.empty()) {
        std::string text = "You edited some base properties of the project:\n";
        for (const std::string& name : m_baseChanged) {
            text += name + "\n";
        }
        text += "\n\nAre you sure you want to save?";
        const base::AlertAnswer answer = m_interaction.alert(
            {"Save Project Metadata?", text, base::AlertStyle::Warning, {"Confirm", "Cancel"}, false});
        if (answer.button != 0) {
            return;
        }
    }
    for (const std::string& name : m_baseChanged) {
        const std::string& value = m_baseProperties[name];
        if (name == "FPS") {
            m_sharedstuff.fps = value;
        } else if (name == "TL Resolution") {
            m_sharedstuff.tlResolution = value;
        } else if (name == "Sound") {
            m_sharedstuff.sound = value;
        } else if (name == "Film Format") {
            // "None" is how the window shows a project without a film format.
            m_sharedstuff.film_format = value == kNoFilmFormat ? std::string() : value;
        } else if (name == "Tape") {
            m_sharedstuff.tapeId = value;
        }
    }
    m_sharedstuff.userDefinedProperties = m_userDefinedProperties;
    accept();
}

void ProjectMetadataWindow::cancelButtonPressed() {
    reject();
}

} // namespace lumbra::shell
