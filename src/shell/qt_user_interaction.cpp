#include "qt_user_interaction.h"

#include "base/console.h"
#include "import/csv_import_options_selector.h"
#include "qt_text.h"

#include <QApplication>
#include <QCheckBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace lumbra::shell {

namespace {

QMessageBox::Icon iconFor(base::AlertStyle style) {
    switch (style) {
    case base::AlertStyle::Warning:
        return QMessageBox::Warning;
    case base::AlertStyle::Critical:
        return QMessageBox::Critical;
    case base::AlertStyle::Informational:
        break;
    }
    return QMessageBox::Information;
}

// Buttons keep the caller's meaning: the first accepts, a "Cancel" rejects, the others are alternatives.
QMessageBox::ButtonRole roleFor(const std::string& title, std::size_t index) {
    if (title == "Cancel") {
        return QMessageBox::RejectRole;
    }
    return index == 0 ? QMessageBox::AcceptRole : QMessageBox::DestructiveRole;
}

// A name prompt that will not confirm a name already in use.
class NameDialog final : public QDialog {
public:
    NameDialog(const base::TextRequest& request, QWidget* parent) : QDialog(parent) {
        setWindowTitle(toQt(request.title));
        auto* layout = new QVBoxLayout(this);
        auto* label = new QLabel(toQt(request.text), this);
        label->setWordWrap(true);
        m_edit = new QLineEdit(toQt(request.defaultValue), this);
        m_edit->selectAll();
        m_hint = new QLabel(tr("This name is already in use."), this);
        m_hint->setForegroundRole(QPalette::PlaceholderText);
        m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
        layout->addWidget(label);
        layout->addWidget(m_edit);
        layout->addWidget(m_hint);
        layout->addWidget(m_buttons);
        setMinimumWidth(360);
        for (const std::string& name : request.takenNames) {
            m_taken.insert(toQt(name));
        }
        connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
        connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
        connect(m_edit, &QLineEdit::textChanged, this, [this] { updateState(); });
        updateState();
    }

    [[nodiscard]] QString value() const { return m_edit->text(); }

private:
    void updateState() {
        const bool taken = m_taken.contains(m_edit->text());
        m_hint->setVisible(taken);
        m_buttons->button(QDialogButtonBox::Ok)->setEnabled(!taken);
    }

    QLineEdit* m_edit = nullptr;
    QLabel* m_hint = nullptr;
    QDialogButtonBox* m_buttons = nullptr;
    QSet<QString> m_taken;
};

} // namespace

QtUserInteraction::QtUserInteraction(QObject* parent) : QObject(parent) {
}

base::AlertAnswer QtUserInteraction::alert(const base::AlertRequest& request) {
    QMessageBox box(QApplication::activeWindow());
    box.setIcon(iconFor(request.style));
    box.setWindowTitle(QApplication::applicationDisplayName());
    box.setText(toQt(request.title));
    box.setInformativeText(toQt(request.text));
    std::vector<std::string> titles = request.buttons;
    if (titles.empty()) {
        titles.push_back("OK");
    }
    std::vector<QAbstractButton*> buttons;
    for (std::size_t i = 0; i < titles.size(); ++i) {
        buttons.push_back(box.addButton(toQt(titles[i]), roleFor(titles[i], i)));
    }
    box.setDefaultButton(qobject_cast<QPushButton*>(buttons.front()));
    const auto cancel = std::find(titles.begin(), titles.end(), "Cancel");
    box.setEscapeButton(cancel != titles.end() ? buttons[static_cast<std::size_t>(cancel - titles.begin())]
                                               : buttons.back());
    QCheckBox* applyToAll = nullptr;
    if (request.showApplyToAll) {
        applyToAll = new QCheckBox(tr("Apply to all"), &box);
        box.setCheckBox(applyToAll);
    }
    box.exec();
    const auto pressed = std::find(buttons.begin(), buttons.end(), box.clickedButton());
    const int index = pressed == buttons.end() ? static_cast<int>(buttons.size()) - 1
                                               : static_cast<int>(pressed - buttons.begin());
    return {index, applyToAll != nullptr && applyToAll->isChecked()};
}

std::optional<std::string> QtUserInteraction::askText(const base::TextRequest& request) {
    NameDialog dialog(request, QApplication::activeWindow());
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    return dialog.value().toStdString();
}

std::optional<std::filesystem::path> QtUserInteraction::chooseFolder(const base::FolderRequest& request) {
    QFileDialog dialog(QApplication::activeWindow(), toQt(request.title),
                       QString::fromStdString(request.startFolder.string()));
    dialog.setFileMode(QFileDialog::Directory);
    dialog.setOption(QFileDialog::ShowDirsOnly);
    // Qt's own dialog, so the reason for the question can stand under the folder list.
    dialog.setOption(QFileDialog::DontUseNativeDialog);
    if (!request.message.empty()) {
        if (auto* grid = qobject_cast<QGridLayout*>(dialog.layout())) {
            auto* label = new QLabel(toQt(request.message), &dialog);
            label->setWordWrap(true);
            grid->addWidget(label, grid->rowCount(), 0, 1, grid->columnCount());
        }
    }
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) {
        return std::nullopt;
    }
    return std::filesystem::path(dialog.selectedFiles().constFirst().toStdString());
}

base::CsvOptions QtUserInteraction::askCsvOptions(const std::string& text, const base::CsvOptions& initial) {
    CsvImportOptionsSelector sheet(text, initial, QApplication::activeWindow());
    sheet.exec();
    return sheet.options();
} // namespace lumbra::shell

void QtUserInteraction::addLog(const std::string& text, bool notify, const std::string& title,
                               base::NotificationType kind) {
    base::printLine(text);
    emit logAdded(toQt(text), notify, toQt(title), static_cast<int>(kind));
}

void QtUserInteraction::notify(const base::Notifications& notifications) {
    for (const base::NotificationData& notice : notifications) {
        base::printLine(notice.title + ": " + notice.body);
        emit notificationAdded(toQt(notice.title), toQt(notice.body), static_cast<int>(notice.type));
    }
}

} // namespace lumbra::shell
