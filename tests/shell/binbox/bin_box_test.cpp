#include "base/console.h"
#include "binbox/bin_box.h"
#include "binbox/bin_table_model.h"
#include "binbox/box_header.h"
#include "import/ale_reader.h"
#include "project/bin.h"
#include "project/shared_stuff.h"

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QToolButton>

using namespace lumbra;

namespace {

class FakeHost final : public shell::BoxHost {
public:
    bool panelInFront() const override { return panel; }
    void toggleViewMode() override { ++toggles; }
    QWidget* boxesArea() override { return nullptr; }
    void showNotification(const base::NotificationData& notification) override {
        notes.push_back(notification);
    }

    bool panel = false;
    int toggles = 0;
    std::vector<base::NotificationData> notes;
};

// The window side of the project: it makes the bins' boxes, as the main window does.
class FakeWindow final : public project::MainWindowLink {
public:
    FakeWindow(project::SharedStuff& sharedstuff, FakeHost& host)
        : m_sharedstuff(sharedstuff), m_host(host) {}
    std::unique_ptr<project::BinBoxLink> makeBox(project::Bin& bin) override {
        auto box = std::make_unique<shell::BinBox>(bin, m_sharedstuff, m_host);
        box->resize(700, 320);
        box->show();
        return box;
    }

private:
    project::SharedStuff& m_sharedstuff;
    FakeHost& m_host;
};

const char* const clipsText =
    "Heading\nFIELD_DELIM\tTABS\nFPS\t25\n\nColumn\nName\tTape\tComments\tLumbra_Color_Tag\n\n"
    "Data\nB002\tT2\tnice take\tGreen\nA001\tT1\t\tred\nC003\tT3\tTake two\t\n";

// A project with open bins made from the ALE text above, each shown in a box of its own.
struct Project {
    explicit Project(int bins = 1, int extraRows = 0) {
        sharedstuff.autosave = false;
        sharedstuff.mainWindow = &window;
        for (int i = 0; i < bins; ++i) {
            std::string text = clipsText;
            for (int r = 0; r < extraRows; ++r)
                text += "X" + std::to_string(r) + "\tT\tfiller\t\n";
            auto table = import::parseALEText(text, "day" + std::to_string(i)).table;
            auto layout = std::make_shared<tables::ColumnsLayout>(
                "Lay", std::vector<std::string>{"Lumbra_Color_Tag", "Name", "Tape", "Comments"});
            auto bin = std::make_shared<project::Bin>(std::move(table), &sharedstuff, layout, true);
            sharedstuff.addBin(bin);
            bin->setSelected(true);
            boxes.push_back(dynamic_cast<shell::BinBox*>(bin->box()));
            boxes.back()->refresh(false);
        }
        sharedstuff.something_to_save = false;
    }

    shell::BinBox& box(int i = 0) { return *boxes[static_cast<std::size_t>(i)]; }
    project::Bin& bin(int i = 0) { return box(i).bin(); }
    std::string value(int row, const std::string& column, int i = 0) {
        return std::string(bin(i).table()->data[static_cast<std::size_t>(row)]->data().valueOr(column));
    }

    FakeHost host;
    FakeWindow window{sharedstuff, host};
    project::SharedStuff sharedstuff;
    std::vector<shell::BinBox*> boxes; // owned by their bins
};

QString headerTitle(QTableView* view, int column) {
    return view->model()->headerData(column, Qt::Horizontal).toString();
}

void clickHeader(QTableView* view, int column) {
    QHeaderView* header = view->horizontalHeader();
    const QPoint centre(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                        header->height() / 2);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, centre);
}

// Opens the cell's editor, types the text and ends the edit with Return.
void typeIntoCell(QTableView* view, int row, int column, const QString& text) {
    const QModelIndex cell = view->model()->index(row, column);
    view->setCurrentIndex(cell);
    view->edit(cell);
    auto* editor = view->viewport()->findChild<QLineEdit*>();
    QVERIFY(editor);
    editor->selectAll();
    QTest::keyClicks(editor, text);
    QTest::keyClick(editor, Qt::Key_Return);
    // The delegate commits a Return through the event loop and the old editor goes later still.
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class BinBoxTest : public QObject {
    Q_OBJECT

private slots:
    void cellsShowValuesTagsAndEmptyMarks();
    void headerClicksOrderAndMarkTheDirection();
    void typedEditsStoreClearOrAreDropped();
    void searchSelectsTheHitAndNeverEditsIt();
    void pinnedColumnsLeaveTheMainTableAndRowsStayInStep();
    void gangScrollingFollowsTheActiveBoxOnly();
    void headerEdgesFitAndDragsMoveColumns();
    void closeAndLockedTitle();
};

void BinBoxTest::cellsShowValuesTagsAndEmptyMarks() {
    Project p;
    QTableView* view = p.box().mainTable();
    QAbstractItemModelTester tester(view->model(), QAbstractItemModelTester::FailureReportingMode::QtTest);
    QCOMPARE(view->model()->rowCount(), 3);
    QCOMPARE(headerTitle(view, 0), QStringLiteral("Tag"));
    QCOMPARE(view->horizontalHeader()->sectionSize(0), 30);
    QCOMPARE(view->model()->index(0, 0).data().toString(), QStringLiteral("●"));
    QCOMPARE(view->model()->index(0, 0).data(Qt::ForegroundRole).value<QColor>().green() > 150, true);
    QCOMPARE(view->model()->index(2, 0).data().toString(), QString());
    QVERIFY(!(view->model()->flags(view->model()->index(0, 0)) & Qt::ItemIsEnabled));
    QCOMPARE(view->model()->index(1, 3).data().toString(), QStringLiteral("    /    "));
    QCOMPARE(view->model()->index(1, 3).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignCenter));
    QCOMPARE(view->model()->index(1, 3).data(Qt::EditRole).toString(), QString());
    QCOMPARE(p.box().statusLabel()->text(), QStringLiteral("Total values 3"));

    // Rows that left the table behind the model's back answer nothing and say so.
    const QModelIndex last = view->model()->index(2, 1);
    base::PrintCapture capture;
    p.bin().table()->data.pop_back();
    QVERIFY(!last.data().isValid());
    QVERIFY(capture.contains("ERROR: bin day0 (day0) asked for row 2, which is out of bounds"));
}

void BinBoxTest::headerClicksOrderAndMarkTheDirection() {
    Project p;
    QTableView* view = p.box().mainTable();
    clickHeader(view, 1);
    QCOMPARE(headerTitle(view, 1), QStringLiteral("Name ↓"));
    QCOMPARE(p.host.notes.size(), std::size_t(1));
    QCOMPARE(QString::fromStdString(p.host.notes[0].body), QStringLiteral("Ordered by Name"));
    const QString first = view->model()->index(0, 1).data().toString();

    clickHeader(view, 1);
    QCOMPARE(headerTitle(view, 1), QStringLiteral("Name ↑"));
    QCOMPARE(view->model()->index(2, 1).data().toString(), first);
    QVERIFY(QStringList({"A001", "C003"}).contains(first));

    clickHeader(view, 2);
    QCOMPARE(headerTitle(view, 1), QStringLiteral("Name"));
    QCOMPARE(headerTitle(view, 2), QStringLiteral("Tape ↓"));
    QVERIFY(p.sharedstuff.something_to_save);
    QCOMPARE(p.sharedstuff.activeBin, &p.bin());
}

void BinBoxTest::typedEditsStoreClearOrAreDropped() {
    Project p;
    QTableView* view = p.box().mainTable();
    QSignalSpy changed(view->model(), &QAbstractItemModel::dataChanged);
    QSignalSpy reset(view->model(), &QAbstractItemModel::modelReset);
    QSignalSpy relaid(view->model(), &QAbstractItemModel::layoutChanged);
    typeIntoCell(view, 0, 2, QStringLiteral("T9"));
    QCOMPARE(p.value(0, "Tape"), std::string("T9"));
    QCOMPARE(view->model()->index(0, 2).data().toString(), QStringLiteral("T9"));
    // The edit repaints its one cell: no reset and no signal over other cells, however large the bin.
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed[0][0].toModelIndex(), view->model()->index(0, 2));
    QCOMPARE(changed[0][1].toModelIndex(), view->model()->index(0, 2));
    QCOMPARE(reset.size() + relaid.size(), 0);

    // Fitted to content, a column follows its widest value both ways.
    p.sharedstuff.projectLayouts.columnsdefaultwidth = tables::ColumnsDefaultWidth::fittocontent;
    p.box().refresh(false);
    const int fitted = view->horizontalHeader()->sectionSize(3);
    typeIntoCell(view, 1, 3, QStringLiteral("a much longer comment"));
    QCOMPARE(view->horizontalHeader()->sectionSize(3), fitted + (21 - 9) * 8);
    typeIntoCell(view, 1, 3, QStringLiteral("___"));
    QCOMPARE(view->horizontalHeader()->sectionSize(3), fitted);

    typeIntoCell(view, 0, 3, QStringLiteral("___"));
    QVERIFY(!p.bin().table()->data[0]->data().contains("Comments"));
    QCOMPARE(view->model()->index(0, 3).data().toString(), QStringLiteral("    /    "));

    p.bin().lockedColumns = {"Name"};
    p.box().refresh(false);
    QCOMPARE(headerTitle(view, 1), QStringLiteral("Name 🔒"));
    QVERIFY(!(view->model()->flags(view->model()->index(0, 1)) & Qt::ItemIsEditable));

    p.bin().setLock(true);
    typeIntoCell(view, 1, 2, QStringLiteral("T7"));
    QCOMPARE(p.value(1, "Tape"), std::string("T1"));
    QCOMPARE(view->model()->index(1, 2).data().toString(), QStringLiteral("T1"));

    // An editor still open when the project goes commits into no half-gone box.
    p.box().activateWindow();
    view->edit(view->model()->index(2, 2));
    QTest::keyClicks(view->viewport()->findChild<QLineEdit*>(), QStringLiteral("x"));
}

void BinBoxTest::searchSelectsTheHitAndNeverEditsIt() {
    Project p;
    QLineEdit* field = p.box().searchField();
    QTableView* view = p.box().mainTable();
    QTest::keyClicks(field, QStringLiteral("TAKE"));
    QCOMPARE(view->selectionModel()->selectedRows().size(), 1);
    QCOMPARE(view->selectionModel()->selectedRows()[0].row(), 0);
    QVERIFY(field->hasFocus() || !QApplication::focusWidget());

    // Find-next walks the cells: row 0's comment, then row 2's; the hit is current but no editor opens.
    QTest::keyClick(field, Qt::Key_Return);
    QCOMPARE(view->selectionModel()->selectedRows()[0].row(), 0);
    QVERIFY(!view->viewport()->findChild<QLineEdit*>());
    p.box().findNext();
    QCOMPARE(view->selectionModel()->selectedRows()[0].row(), 2);
    QCOMPARE(view->currentIndex().row(), 2);

    auto* notFound = p.box().findChild<QLabel*>(QStringLiteral("searchNotFound"));
    QVERIFY(notFound && notFound->isHidden());
    QTest::keyClicks(field, QStringLiteral("zz"));
    QVERIFY(!notFound->isHidden());
    field->clear();
    QVERIFY(notFound->isHidden());
    QVERIFY(!view->selectionModel()->hasSelection());

    p.box().setSearchHeaders(true);
    QTest::keyClicks(field, QStringLiteral("tap"));
    QVERIFY(view->selectionModel()->isColumnSelected(2, {}));
}

void BinBoxTest::pinnedColumnsLeaveTheMainTableAndRowsStayInStep() {
    Project p;
    p.sharedstuff.projectLayouts.pinnedColumns = {"Tape", "Scene"};
    p.box().refresh(false);
    QTableView* pinned = p.box().pinnedTable();
    QTableView* main = p.box().mainTable();
    QCOMPARE(pinned->model()->columnCount(), 1);
    QCOMPARE(headerTitle(pinned, 0), QStringLiteral("📌 Tape"));
    QCOMPARE(main->model()->columnCount(), 3);
    QCOMPARE(headerTitle(main, 2), QStringLiteral("Comments"));
    QVERIFY(pinned->isVisible());

    const QRect cell = main->visualRect(main->model()->index(2, 1));
    QTest::mouseClick(main->viewport(), Qt::LeftButton, {}, cell.center());
    QCOMPARE(pinned->selectionModel()->selectedRows().size(), 1);
    QCOMPARE(pinned->selectionModel()->selectedRows()[0].row(), 2);

    // An edit in the pinned table passes through the same rules.
    typeIntoCell(pinned, 2, 0, QStringLiteral("T42"));
    QCOMPARE(p.value(2, "Tape"), std::string("T42"));
}

void BinBoxTest::gangScrollingFollowsTheActiveBoxOnly() {
    Project p(2, 200);
    QScrollBar* first = p.box(0).mainTable()->verticalScrollBar();
    QScrollBar* second = p.box(1).mainTable()->verticalScrollBar();
    QVERIFY(first->maximum() > 100);
    p.box(0).setActive(false);

    first->setValue(40);
    QCOMPARE(second->value(), 0);
    QCOMPARE(p.box(0).pinnedTable()->verticalScrollBar()->value(), 40);

    QTest::mouseClick(p.box(0).gangButton(), Qt::LeftButton);
    QVERIFY(p.sharedstuff.gang);
    QVERIFY(p.box(1).gangButton()->isChecked());
    first->setValue(100);
    QCOMPARE(second->value(), 60);
    // The other box is not the active one: its scroll stays its own.
    second->setValue(10);
    QCOMPARE(first->value(), 100);
}

void BinBoxTest::headerEdgesFitAndDragsMoveColumns() {
    Project p;
    QTableView* view = p.box().mainTable();
    QHeaderView* header = view->horizontalHeader();
    const auto rightEdge = [header](int column) {
        return header->sectionViewportPosition(column) + header->sectionSize(column);
    };
    const int y = header->height() / 2;
    // 7 points inside the edge is the column itself: nothing is fitted or stored.
    QTest::mouseDClick(header->viewport(), Qt::LeftButton, {}, QPoint(rightEdge(3) - 7, y));
    QCOMPARE(p.bin().layout->name, std::string("Lay"));

    QTest::mouseDClick(header->viewport(), Qt::LeftButton, {}, QPoint(rightEdge(3) - 3, y));
    QCOMPARE(p.bin().layout->name, std::string("Lay+"));
    QCOMPARE(p.bin().layout->colwidths.at("Comments"), 9 * 8.0); // "nice take"
    // On screen the cell's margins come on top of the stored width, so the fitted value shows whole.
    QVERIFY(header->sectionSize(3) > 72);
    QVERIFY(header->sectionSize(3) >= view->fontMetrics().horizontalAdvance(QStringLiteral("nice take")) + 8);

    // Name dragged onto Comments: the block moves two places, in the layout too.
    const QPoint name(header->sectionViewportPosition(1) + 10, y);
    const QPoint comments(header->sectionViewportPosition(3) + 10, y);
    QTest::mousePress(header->viewport(), Qt::LeftButton, {}, name);
    QTest::mouseMove(header->viewport(), comments);
    QTest::mouseRelease(header->viewport(), Qt::LeftButton, {}, comments);
    QCOMPARE(p.bin().layout->columns,
             (std::vector<std::string>{"Lumbra_Color_Tag", "Tape", "Comments", "Name"}));
    QCOMPARE(headerTitle(view, 3), QStringLiteral("Name"));

    // A locked bin keeps its columns where they are.
    p.bin().setLock(true);
    QTest::mousePress(header->viewport(), Qt::LeftButton, {},
                      QPoint(header->sectionViewportPosition(3) + 10, y));
    QTest::mouseRelease(header->viewport(), Qt::LeftButton, {},
                        QPoint(header->sectionViewportPosition(1) + 10, y));
    QCOMPARE(p.bin().layout->columns.back(), std::string("Name"));
}

void BinBoxTest::closeAndLockedTitle() {
    Project p;
    p.bin().setLock(true);
    p.box().setActive(false);
    QCOMPARE(p.box().titleLabel()->text(), QStringLiteral("🔒day0"));
    QVERIFY(p.box().isActiveLook());

    p.host.panel = true;
    p.box().refresh(false);
    QVERIFY(!p.box().searchField()->isEnabled());
    QVERIFY(!p.box().closeButton()->isEnabled());
    p.host.panel = false;
    p.box().refresh(false);
    QTest::mouseClick(p.box().closeButton(), Qt::LeftButton);
    QVERIFY(!p.bin().selected());
    QVERIFY(!p.box().isVisible());
}

QTEST_MAIN(BinBoxTest)
#include "bin_box_test.moc"
