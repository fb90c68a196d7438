#include "bin_save_dialogs.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QRadioButton>

namespace lumbra::shell {

namespace {

// The save panel of the desktop's own style, so that our options can sit under its file list.
QFileDialog* makePanel(QWidget* parent, const QString& title, const QString& name, const QString& suffix) {
    auto* panel = new QFileDialog(parent, title);
    panel->setObjectName(QStringLiteral("binSavePanel"));
    panel->setOption(QFileDialog::DontUseNativeDialog);
    panel->setAcceptMode(QFileDialog::AcceptSave);
    panel->setFileMode(QFileDialog::AnyFile);
    panel->setDefaultSuffix(suffix);
    panel->setNameFilter(QStringLiteral("%1 files (*.%2)").arg(suffix.toUpper(), suffix));
    panel->selectFile(name + QLatin1Char('.') + suffix);
    return panel;
}

// A row of options under the panel's own fields.
void addOptionsRow(QFileDialog& panel, QWidget* row) {
    if (auto* grid = qobject_cast<QGridLayout*>(panel.layout())) {
        grid->addWidget(row, grid->rowCount(), 0, 1, grid->columnCount());
    }
}

void finish(QFileDialog& panel, BinSaveChoice& choice) {
    if (panel.exec() != QDialog::Accepted) {
        choice.cancelled = true;
        return;
    }
    const QStringList files = panel.selectedFiles();
    if (!files.isEmpty() && !files.front().isEmpty()) {
        choice.path = files.front();
    }
}

} // namespace

BinSaveChoice askAleSavePath(QWidget* parent, const QString& name, bool showFilmFormat, bool filmFormat) {
    BinSaveChoice choice;
    std::unique_ptr<QFileDialog> panel(
        makePanel(parent, QObject::tr("Select a .ale file to save"), name, QStringLiteral("ale")));
    QCheckBox* film = nullptr;
    if (showFilmFormat) {
        film = new QCheckBox(QObject::tr("Export Film Format"));
        film->setObjectName(QStringLiteral("filmFormatCheckbox"));
        film->setChecked(filmFormat);
        addOptionsRow(*panel, film);
    }
    finish(*panel, choice);
    if (film != nullptr) {
        choice.filmFormat = film->isChecked();
    }
    return choice;
}

BinSaveChoice askCsvSavePath(QWidget* parent, const QString& name, const QString& separatorTitle) {
    BinSaveChoice choice;
    std::unique_ptr<QFileDialog> panel(
        makePanel(parent, QObject::tr("Select a .csv file to save"), name, QStringLiteral("csv")));
    auto* row = new QWidget;
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(new QLabel(QObject::tr("separator:")));
    auto* group = new QButtonGroup(row);
    for (const QString& title : {QStringLiteral(","), QStringLiteral(";"), QStringLiteral("TAB")}) {
        auto* button = new QRadioButton(title);
        button->setObjectName(QStringLiteral("separator") +
                              (title == QLatin1String(",")   ? QStringLiteral("Comma")
                               : title == QLatin1String(";") ? QStringLiteral("Semicolon")
                                                             : QStringLiteral("Tab")));
        button->setChecked(title == separatorTitle);
        group->addButton(button);
        layout->addWidget(button);
    }
    layout->addSpacing(16);
    auto* headers = new QCheckBox(QObject::tr("Export Headers"));
    headers->setObjectName(QStringLiteral("exportHeadersCheckbox"));
    headers->setChecked(true);
    layout->addWidget(headers);
    layout->addStretch(1);
    addOptionsRow(*panel, row);
    finish(*panel, choice);
    if (QAbstractButton* pressed = group->checkedButton()) {
        choice.separatorTitle = pressed->text();
    }
    choice.exportHeaders = headers->isChecked();
    return choice;
}

} // namespace lumbra::shell
