#include "chain/single_input_view_controller.h"

#include "project/shared_stuff.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace lumbra::shell {

SingleInputViewController::SingleInputViewController(const std::string& request,
                                                     const std::string& initialText, const std::string& title,
                                                     app::SingleInputRules rules, QWidget* parent)
    : QDialog(parent), m_rules(std::move(rules)) {
    setObjectName(QStringLiteral("singleinputwindow"));
    setWindowTitle(QString::fromStdString(title));
    auto* layout = new QVBoxLayout(this);
    m_requestLabel = new QLabel(QString::fromStdString(request), this);
    m_requestLabel->setWordWrap(true);
    m_textField = new QLineEdit(QString::fromStdString(initialText), this);
    m_textField->setObjectName(QStringLiteral("textField"));
    m_textField->selectAll();
    auto* buttons = new QDialogButtonBox(this);
    buttons->addButton(QDialogButtonBox::Cancel);
    m_doneButton = buttons->addButton(tr("Done"), QDialogButtonBox::AcceptRole);
    m_doneButton->setObjectName(QStringLiteral("doneButton"));
    m_doneButton->setDefault(true);
    layout->addWidget(m_requestLabel);
    layout->addWidget(m_textField);
    layout->addWidget(buttons);
    setMinimumWidth(340);

    connect(m_textField, &QLineEdit::textChanged, this, &SingleInputViewController::validate);
    connect(m_textField, &QLineEdit::returnPressed, this, [this] {
        validate();
        if (m_doneButton->isEnabled()) {
            doneButtonPressed();
        }
    });
    connect(m_doneButton, &QPushButton::clicked, this, &SingleInputViewController::doneButtonPressed);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    validate();
}

void SingleInputViewController::validate() {
    m_doneButton->setEnabled(m_rules.accepts(m_textField->text().toStdString()));
}

void SingleInputViewController::doneButtonPressed() {
    if (!m_doneButton->isEnabled()) {
        return;
    }
    m_answer = m_textField->text().toStdString();
    accept();
}

std::optional<std::string> singleInput(const std::string& request, const std::string& initialText,
                                       const std::string& title, std::vector<std::string> takenNames,
                                       bool canBeEmpty, project::MainWindowLink* mainWindow,
                                       std::optional<std::vector<std::string>> unusableCharacters,
                                       QWidget* parent) {
    app::SingleInputRules rules{std::move(takenNames), canBeEmpty, std::move(unusableCharacters)};
    SingleInputViewController window(request, initialText, title, std::move(rules), parent);
    if (mainWindow) {
        mainWindow->setFog(true);
    }
    window.exec();
    if (mainWindow) {
        mainWindow->setFog(false);
    }
    return window.stringcontainer();
}

} // namespace lumbra::shell
