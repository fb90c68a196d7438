#include "../../core/project/project_test_support.h"
#include "base/console.h"
#include "chain/fields_selection_input.h"
#include "chain/layout_generator_view_controller.h"
#include "chain/single_input_view_controller.h"
#include "import/ale_reader.h"
#include "project/shared_stuff.h"
#include "shell_test_support.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <functional>

using lumbra::shell::FieldsSelectionInput;
using lumbra::shell::LayoutGeneratorViewController;
using lumbra::shell::SingleInputViewController;
using Columns = std::vector<std::string>;

namespace {

// A bin of `rows` clips with six columns.
std::shared_ptr<lumbra::project::Bin> makeBin(lumbra::project::SharedStuff& stuff, int rows) {
    std::string text =
        "Heading\nFIELD_DELIM\tTABS\nFPS\t25\n\nColumn\nName\tTape\tScene\tTake\tStart\tEnd\n\nData\n";
    for (int i = 0; i < rows; ++i) {
        text += "clip" + std::to_string(i) + "\tA001\t12\t3\t10:00:00:00\t10:00:01:00\n";
    }
    auto table = lumbra::import::parseALEText(text, "Day 1").table;
    auto bin = std::make_shared<lumbra::project::Bin>(std::move(table), &stuff, nullptr, true);
    bin->layout = std::make_shared<lumbra::tables::ColumnsLayout>("Day cols", Columns{"Name"});
    stuff.bins->addBin(bin);
    return bin;
}

QListWidgetItem* itemNamed(QListWidget* list, const QString& text) {
    const auto found = list->findItems(text, Qt::MatchExactly);
    return found.isEmpty() ? nullptr : found.first();
}

void click(QListWidget* list, const QString& text, Qt::KeyboardModifiers modifiers = {}) {
    QListWidgetItem* item = itemNamed(list, text);
    QVERIFY2(item, qPrintable(text));
    QTest::mouseClick(list->viewport(), Qt::LeftButton, modifiers, list->visualItemRect(item).center());
}

Columns texts(const QListWidget* list) {
    Columns out;
    for (int row = 0; row < list->count(); ++row) {
        out.push_back(list->item(row)->text().toStdString());
    }
    return out;
}

// Runs `drive` on the modal window once it is up; a window still open afterwards (a failed check
// returns early) is closed, so that the test goes on instead of waiting.
void whenModal(std::function<void(QWidget*)> drive) {
    QTimer::singleShot(0, [drive] {
        QPointer<QWidget> modal = QApplication::activeModalWidget();
        QVERIFY(modal);
        drive(modal);
        if (modal && modal->isVisible()) {
            modal->close();
        }
    });
}

void replaceText(QLineEdit* field, const QString& text) {
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    QTest::keyClicks(field, text);
}

} // namespace

class LayoutGeneratorTest : public QObject {
    Q_OBJECT

private slots:
    void init() {
        m_folder = std::make_unique<lumbra::project::testing::TempFolder>();
        m_stuff = std::make_unique<lumbra::project::SharedStuff>();
        m_stuff->autosave = false;
        m_stuff->currentFolder = m_folder->str();
        m_stuff->projectName = "Proj";
    }

    void buildALayoutWithMouseAndKeys() {
        auto bin = makeBin(*m_stuff, 60);
        bool driven = false;
        whenModal([&](QWidget* modal) {
            auto* editor = qobject_cast<LayoutGeneratorViewController*>(modal);
            QVERIFY(editor);
            QCOMPARE(editor->nameTextField()->text(), QStringLiteral("Day cols"));
            QVERIFY(!editor->cutLabel()->isHidden());
            QCOMPARE(editor->previewModel().rowCount(), 50);

            // Two source columns picked with the mouse go behind "Name". The colour tag column that
            // every read table has matches "ta" too.
            QTest::keyClicks(editor->filterField(), QStringLiteral("ta"));
            QCOMPARE(texts(editor->supportTable()), (Columns{"Lumbra_Color_Tag", "Tape", "Take", "Start"}));
            click(editor->supportTable(), QStringLiteral("Tape"));
            click(editor->supportTable(), QStringLiteral("Take"), Qt::ControlModifier);
            QTest::mouseClick(editor->takeOneButton(), Qt::LeftButton);
            QCOMPARE(editor->columns(), (Columns{"Name", "Tape", "Take"}));

            // "Take" to the top with the keyboard, then one down again.
            click(editor->columnsTable(), QStringLiteral("Take"));
            QTest::keyClick(editor->columnsTable(), Qt::Key_Home, Qt::AltModifier);
            QCOMPARE(editor->columns(), (Columns{"Take", "Name", "Tape"}));
            QTest::keyClick(editor->columnsTable(), Qt::Key_Down, Qt::AltModifier);
            QCOMPARE(editor->columns(), (Columns{"Name", "Take", "Tape"}));

            // A double-clicked source column lands behind the selected row and is selected.
            replaceText(editor->filterField(), QStringLiteral("sc"));
            QListWidgetItem* scene = itemNamed(editor->supportTable(), QStringLiteral("Scene"));
            QVERIFY(scene);
            const QPoint at = editor->supportTable()->visualItemRect(scene).center();
            QTest::mouseClick(editor->supportTable()->viewport(), Qt::LeftButton, {}, at);
            QTest::mouseDClick(editor->supportTable()->viewport(), Qt::LeftButton, {}, at);
            QCOMPARE(editor->columns(), (Columns{"Name", "Take", "Scene", "Tape"}));
            QCOMPARE(editor->columnsTable()->selectedItems().first()->text(), QStringLiteral("Scene"));

            // Delete takes the selected column out.
            click(editor->columnsTable(), QStringLiteral("Tape"));
            QTest::keyClick(editor->columnsTable(), Qt::Key_Delete);
            QCOMPARE(editor->columns(), (Columns{"Name", "Take", "Scene"}));

            // Preview follows the layout, or shows every column when unticked.
            QCOMPARE(editor->previewModel().columnCount(), 3);
            QTest::mouseClick(editor->previewCheckbox(), Qt::LeftButton, {},
                              QPoint(4, editor->previewCheckbox()->height() / 2));
            QVERIFY(editor->previewModel().columnCount() >= 6);

            replaceText(editor->nameTextField(), QStringLiteral("Sound+"));
            QVERIFY(!editor->createButton()->isEnabled());
            replaceText(editor->nameTextField(), QStringLiteral("Dailies"));
            QTest::keyClick(editor->nameTextField(), Qt::Key_Return);
            QVERIFY2(editor->isVisible(), "Return only checks the name");
            QTest::mouseClick(editor->createButton(), Qt::LeftButton);
            driven = true;
        });
        QVERIFY(lumbra::shell::openLayoutEditor(*m_stuff, bin.get(), nullptr));
        QVERIFY(driven);
        QCOMPARE(m_stuff->projectLayouts.layouts.size(), std::size_t(1));
        auto& saved = *m_stuff->projectLayouts.layouts[0];
        QCOMPARE(bin->layout.get(), &saved);
        QCOMPARE(lumbra::project::testing::readFile(m_folder->path / "Proj" / "layout" /
                                                    ("Dailies - " + saved.uuid()) / "Dailies.layout"),
                 std::string("Dailies\nName\nTake\nScene"));
    }

    void updateKeepsWidthsAndCancelChangesNothing() {
        auto bin = makeBin(*m_stuff, 2);
        auto existing = std::make_shared<lumbra::tables::ColumnsLayout>("Dailies", Columns{"Name", "Tape"});
        existing->colwidths["Tape"] = 80.0;
        m_stuff->projectLayouts.layouts.push_back(existing);

        whenModal([](QWidget* modal) {
            auto* editor = qobject_cast<LayoutGeneratorViewController*>(modal);
            QVERIFY(editor);
            QVERIFY(editor->cutLabel()->isHidden());
            QTest::mouseClick(editor->takeAllButton(), Qt::LeftButton);
            QTest::mouseClick(editor->cancelButton(), Qt::LeftButton);
        });
        QVERIFY(!lumbra::shell::openLayoutEditor(*m_stuff, bin.get(), nullptr));
        QCOMPARE(bin->layout->name, std::string("Day cols"));
        QCOMPARE(existing->columns, (Columns{"Name", "Tape"}));

        whenModal([](QWidget* modal) {
            auto* editor = qobject_cast<LayoutGeneratorViewController*>(modal);
            QVERIFY(editor);
            replaceText(editor->nameTextField(), QStringLiteral("Dailies"));
            QCOMPARE(editor->createButton()->text(), QStringLiteral("Update"));
            QTest::mouseClick(editor->takeAllButton(), Qt::LeftButton);
            QTest::mouseClick(editor->takeAllButton(), Qt::LeftButton);
            QCOMPARE(editor->columns(),
                     (Columns{"Name", "Lumbra_Color_Tag", "Tape", "Scene", "Take", "Start", "End"}));
            click(editor->columnsTable(), QStringLiteral("Tape"));
            QTest::keyClick(editor->columnsTable(), Qt::Key_End, Qt::AltModifier);
            QTest::mouseClick(editor->createButton(), Qt::LeftButton);
        });
        QVERIFY(lumbra::shell::openLayoutEditor(*m_stuff, bin.get(), nullptr));
        QCOMPARE(m_stuff->projectLayouts.layouts.size(), std::size_t(1));
        QCOMPARE(bin->layout, existing);
        QCOMPARE(lumbra::project::testing::readFile(m_folder->path / "Proj" / "layout" /
                                                    ("Dailies - " + existing->uuid()) / "Dailies.layout"),
                 std::string("Dailies\nName\nLumbra_Color_Tag\nScene\nTake\nStart\nEnd\nTape\t80.0"));
    }

    void fieldsChooserFiltersAddsAndTells() {
        auto bin = makeBin(*m_stuff, 1);
        m_stuff->projectLayouts.layouts.push_back(
            std::make_shared<lumbra::tables::ColumnsLayout>("Sound", Columns{"Sound Roll", "Name"}));
        FieldsSelectionInput chooser;
        std::vector<Columns> told;
        chooser.setDelegate([&](const Columns& columns) { told.push_back(columns); });
        chooser.setup(*m_stuff);
        chooser.resize(480, 320);
        chooser.show();
        QVERIFY(QTest::qWaitForWindowExposed(&chooser));
        QCOMPARE(chooser.layoutPopup()->count(), 3);

        lumbra::base::PrintCapture capture;
        QTest::keyClicks(chooser.filterTextField(), QStringLiteral("TA"));
        for (const char* shown : {"Start", "Take", "Tape"}) {
            QVERIFY2(itemNamed(chooser.unselectedColumnsList(), QString::fromLatin1(shown)), shown);
        }
        QVERIFY(!itemNamed(chooser.unselectedColumnsList(), QStringLiteral("Name")));
        // A chosen column is greyed out: a second click adds nothing.
        click(chooser.unselectedColumnsList(), QStringLiteral("Take"));
        click(chooser.unselectedColumnsList(), QStringLiteral("Take"));
        QCOMPARE(chooser.selectedColumns(), (Columns{"Take"}));
        QVERIFY(capture.contains("fetched FIELDSLIST: [\"Take\"]"));

        chooser.layoutPopup()->setCurrentIndex(2);
        emit chooser.layoutPopup()->textActivated(QStringLiteral("Sound"));
        QCOMPARE(chooser.filterTextField()->text(), QString());
        QCOMPARE(texts(chooser.unselectedColumnsList()), (Columns{"Sound Roll", "Name"}));
        click(chooser.unselectedColumnsList(), QStringLiteral("Sound Roll"));

        whenModal([](QWidget* modal) {
            auto* prompt = qobject_cast<SingleInputViewController*>(modal);
            QVERIFY(prompt);
            QVERIFY(!prompt->doneButton()->isEnabled());
            QTest::keyClicks(prompt->textField(), QStringLiteral("Camroll"));
            QTest::keyClick(prompt->textField(), Qt::Key_Return);
        });
        QTest::mouseClick(chooser.customColumnButton(), Qt::LeftButton);
        QCOMPARE(chooser.selectedColumns(), (Columns{"Take", "Sound Roll", "Camroll"}));

        click(chooser.selectedColumnsList(), QStringLiteral("Take"));
        QTest::keyClick(chooser.selectedColumnsList(), Qt::Key_Delete);
        QCOMPARE(chooser.selectedColumns(), (Columns{"Sound Roll", "Camroll"}));
        QCOMPARE(told.back(), (Columns{"Sound Roll", "Camroll"}));
        QCOMPARE(told.size(), std::size_t(4));
    }

    void namePromptRefusesTakenNames() {
        whenModal([](QWidget* modal) {
            auto* prompt = qobject_cast<SingleInputViewController*>(modal);
            QVERIFY(prompt);
            QCOMPARE(prompt->textField()->text(), QStringLiteral("bin_01"));
            QVERIFY(!prompt->doneButton()->isEnabled());
            QTest::keyClick(prompt->textField(), Qt::Key_Return);
            QVERIFY(prompt->isVisible());
            QTest::keyClick(prompt->textField(), Qt::Key_End);
            QTest::keyClicks(prompt->textField(), QStringLiteral("b"));
            QVERIFY(prompt->doneButton()->isEnabled());
            QTest::mouseClick(prompt->doneButton(), Qt::LeftButton);
        });
        QCOMPARE(lumbra::shell::singleInput("Name:", "bin_01", "Rename", {"bin_01"}, false, nullptr),
                 std::optional<std::string>("bin_01b"));

        whenModal([](QWidget* modal) {
            auto* prompt = qobject_cast<SingleInputViewController*>(modal);
            QVERIFY(prompt);
            QVERIFY2(prompt->doneButton()->isEnabled(), "an empty text is allowed here");
            QTest::keyClick(prompt->textField(), Qt::Key_Return);
        });
        QCOMPARE(lumbra::shell::singleInput("Suffix:", "", "Suffix", {}, true, nullptr),
                 std::optional<std::string>(""));

        whenModal([](QWidget* modal) { QTest::keyClick(modal, Qt::Key_Escape); });
        QCOMPARE(lumbra::shell::singleInput("Name:", "x", "Rename", {}, false, nullptr), std::nullopt);
    }

private:
    std::unique_ptr<lumbra::project::testing::TempFolder> m_folder;
    std::unique_ptr<lumbra::project::SharedStuff> m_stuff;
};

QTEST_MAIN(LayoutGeneratorTest)
#include "layout_generator_test.moc"
