#include "import/csv_import_options_selector.h"
#include "qt_user_interaction.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSlider>
#include <QTableView>
#include <QTest>
#include <QTimer>

using lumbra::base::CsvOptions;
using lumbra::base::FirstLineStyle;
using lumbra::shell::CsvImportOptionsSelector;

namespace {

const std::string smallText = "Title line\nName,Tape\nA1,R1;x\nA2,R2\n";

template <typename Widget> Widget* child(QWidget& parent, const char* name) {
    auto* widget = parent.findChild<Widget*>(QString::fromLatin1(name));
    if (!widget)
        qFatal("no child %s", name);
    return widget;
}

QPushButton* button(QWidget& parent, const QString& text) {
    for (auto* candidate : parent.findChildren<QPushButton*>()) {
        if (candidate->text() == text)
            return candidate;
    }
    qFatal("no button %s", qPrintable(text));
}

// The preview as the user reads it: the header, then each row, cells joined by "|".
QStringList preview(CsvImportOptionsSelector& sheet) {
    const QAbstractItemModel* model = child<QTableView>(sheet, "previewTable")->model();
    QStringList lines;
    QStringList header;
    for (int c = 0; c < model->columnCount(); ++c)
        header << model->headerData(c, Qt::Horizontal, Qt::DisplayRole).toString();
    lines << header.join(QLatin1Char('|'));
    for (int r = 0; r < model->rowCount(); ++r) {
        QStringList cells;
        for (int c = 0; c < model->columnCount(); ++c)
            cells << model->index(r, c).data().toString();
        lines << cells.join(QLatin1Char('|'));
    }
    return lines;
}

// Moves a list's choice with the arrow keys, as a person does on a closed list.
void choose(QComboBox* list, int index) {
    list->setFocus();
    while (list->currentIndex() < index)
        QTest::keyClick(list, Qt::Key_Down);
    while (list->currentIndex() > index)
        QTest::keyClick(list, Qt::Key_Up);
}

} // namespace

class CsvImportOptionsSelectorTest : public QObject {
    Q_OBJECT

private slots:
    void previewFollowsTheControls() {
        CsvImportOptionsSelector sheet(smallText, CsvOptions{});
        QAbstractItemModelTester tester(child<QTableView>(sheet, "previewTable")->model(),
                                        QAbstractItemModelTester::FailureReportingMode::QtTest);
        sheet.show();
        QVERIFY(QTest::qWaitForWindowExposed(&sheet));
        // Short texts are shown whole, without the slider.
        QVERIFY(!child<QSlider>(sheet, "previewSlider")->isVisible());
        QVERIFY(!child<QLineEdit>(sheet, "textSeparator")->isVisible());
        QVERIFY(!child<QLineEdit>(sheet, "textColumnslist")->isVisible());
        QCOMPARE(preview(sheet), QStringList({"Title line|newcol_001", "Name|Tape", "A1|R1;x", "A2|R2"}));

        auto* lineNumber = child<QLineEdit>(sheet, "textColumnslist");
        choose(child<QComboBox>(sheet, "popupColumnslist"), 4);
        QVERIFY(lineNumber->isVisible());
        lineNumber->selectAll();
        QTest::keyClicks(lineNumber, QStringLiteral("2"));
        QCOMPARE(preview(sheet), QStringList({"Name|Tape", "A1|R1;x", "A2|R2"}));

        choose(child<QComboBox>(sheet, "popupSeparator"), 2);
        QCOMPARE(preview(sheet), QStringList({"Name,Tape|newcol_001", "A1,R1|x", "A2,R2|"}));

        auto* other = child<QLineEdit>(sheet, "textSeparator");
        choose(child<QComboBox>(sheet, "popupSeparator"), 4);
        QVERIFY(other->isVisible());
        // The field keeps only the character typed last.
        other->setFocus();
        QTest::keyClick(other, Qt::Key_End);
        QTest::keyClicks(other, QStringLiteral("R"));
        QCOMPARE(other->text(), QStringLiteral("R"));
        QCOMPARE(preview(sheet), QStringList({"Name,Tape|newcol_001", "A1,|1;x", "A2,|2"}));
        // An emptied field means the comma.
        other->selectAll();
        QTest::keyClick(other, Qt::Key_Backspace);
        QCOMPARE(other->text(), QStringLiteral(","));

        QTest::mouseClick(button(sheet, QStringLiteral("Proceed")), Qt::LeftButton);
        QCOMPARE(sheet.result(), int(QDialog::Accepted));
        CsvOptions expected;
        expected.first_line = FirstLineStyle::custom;
        expected.first_line_number = 2;
        QCOMPARE(sheet.options(), expected);
    }

    void delimiterAndCurlyQuotes() {
        CsvImportOptionsSelector sheet("A,B\n'x, y',\u201Cp, q\u201D\n", CsvOptions{});
        sheet.show();
        QCOMPARE(preview(sheet), QStringList({"A|B|newcol_001", "'x| y'|\u201Cp, q\u201D"}));
        choose(child<QComboBox>(sheet, "popupDelimiter"), 1);
        QCOMPARE(preview(sheet), QStringList({"A|B", "x, y|\u201Cp, q\u201D"}));
        auto* ignore = child<QCheckBox>(sheet, "checkboxIgnoreorientedquotes");
        ignore->setFocus();
        QTest::keyClick(ignore, Qt::Key_Space);
        QCOMPARE(preview(sheet), QStringList({"A|B|newcol_001", "x, y|\u201Cp| q\u201D"}));
        QTest::mouseClick(button(sheet, QStringLiteral("Cancel")), Qt::LeftButton);
        QVERIFY(sheet.options().user_aborted);
        QCOMPARE(sheet.options().delimiter, U'\'');

        // Standard CSV is proposed where only it reads evenly.
        CsvImportOptionsSelector standard("Name,Shot\nA,\"Wide, establishing\"\nB,\"Say \"\"hero\"\"\"\n",
                                          CsvOptions{});
        auto* delimiter = child<QComboBox>(standard, "popupDelimiter");
        QCOMPARE(delimiter->currentText(), QStringLiteral("Standard CSV"));
        QCOMPARE(preview(standard), QStringList({"Name|Shot", "A|Wide, establishing", "B|Say \"hero\""}));
        choose(delimiter, 0);
        QVERIFY(!standard.options().standard_csv);
    }

    void opensOnTheOptionsItIsGiven() {
        CsvOptions initial;
        initial.separator = U'|';
        initial.first_line = FirstLineStyle::custom;
        initial.first_line_number = 3;
        initial.ignore_oriented_quotes = true;
        CsvImportOptionsSelector sheet("x\ny\nA|B\n1|2\n", initial);
        sheet.show();
        QCOMPARE(child<QComboBox>(sheet, "popupSeparator")->currentIndex(), 4);
        QCOMPARE(child<QLineEdit>(sheet, "textSeparator")->text(), QStringLiteral("|"));
        QCOMPARE(child<QLineEdit>(sheet, "textColumnslist")->text(), QStringLiteral("3"));
        QVERIFY(child<QCheckBox>(sheet, "checkboxIgnoreorientedquotes")->isChecked());
        QCOMPARE(preview(sheet), QStringList({"A|B", "1|2"}));
        QCOMPARE(sheet.options(), initial);
    }

    void sliderCutsLongTexts() {
        // A column line and 999 lines of 20 characters: 19,990 characters, so the slider works.
        std::string text = "Name,Tape\n";
        for (int i = 0; i < 999; ++i)
            text += "clip" + std::to_string(10000 + i) + ",tape_ABCD\n";
        CsvImportOptionsSelector sheet(text, CsvOptions{});
        sheet.show();
        auto* slider = child<QSlider>(sheet, "previewSlider");
        QVERIFY(slider->isVisible());
        const QAbstractItemModel* model = child<QTableView>(sheet, "previewTable")->model();
        // A quarter is 4,997 characters, which falls in the data line numbered 249: 250 rows.
        QCOMPARE(model->rowCount(), 250);
        slider->setFocus();
        QTest::keyClick(slider, Qt::Key_Right);
        QCOMPARE(model->rowCount(), 500);
        QTest::keyClick(slider, Qt::Key_End);
        QCOMPARE(model->rowCount(), 999);
    }

    void interactionOpensTheSheet() {
        lumbra::shell::QtUserInteraction interaction;
        QTimer::singleShot(0, this, [] {
            auto* sheet = qobject_cast<CsvImportOptionsSelector*>(QApplication::activeModalWidget());
            QVERIFY(sheet);
            choose(sheet->findChild<QComboBox*>(QStringLiteral("popupSeparator")), 1);
            QTest::mouseClick(button(*sheet, QStringLiteral("Proceed")), Qt::LeftButton);
        });
        CsvOptions answer = interaction.askCsvOptions("A\tB\n1\t2\n", CsvOptions{});
        QCOMPARE(answer.separator, U'\t');
        QVERIFY(!answer.user_aborted);
    }
};

QTEST_MAIN(CsvImportOptionsSelectorTest)
#include "csv_import_options_selector_test.moc"
