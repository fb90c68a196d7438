#include "app_delegate.h"
#include "base/scripted_interaction.h"
#include "base/text_file.h"
#include "binbox/bin_box.h"
#include "bins_list.h"
#include "bins_tree_model.h"
#include "chain/layout_generator_view_controller.h"
#include "main_window.h"
#include "notifications_box.h"
#include "project/bin.h"
#include "shell_test_support.h"
#include "tables/background_writer.h"

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QDirIterator>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QTableView>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QUrl>
#include <memory>

using lumbra::base::ScriptedInteraction;
using lumbra::shell::AppDelegate;
using lumbra::shell::BinsList;
using lumbra::shell::MainWindowViewController;
using lumbra::shell::testing::readText;
using lumbra::shell::testing::writeText;

namespace {

QByteArray aleText(const QList<QByteArray>& clips) {
    QByteArray text =
        "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\n\nColumn\nName\tTape\tScene\n\nData\n";
    for (const QByteArray& clip : clips) {
        text += clip + "\tA001\t12\n";
    }
    return text;
}

// Drops the files on the list at the row's place (an invalid index: below the rows).
void dropFiles(BinsList& list, const QStringList& paths, const QModelIndex& on = {}) {
    QMimeData mime;
    QList<QUrl> urls;
    for (const QString& path : paths) {
        urls.append(QUrl::fromLocalFile(path));
    }
    mime.setUrls(urls);
    const QPoint at = on.isValid() ? list.visualRect(on).center() : QPoint(5, list.viewport()->height() - 5);
    QDragEnterEvent enter(at, Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(list.viewport(), &enter);
    QDropEvent drop(QPointF(at), Qt::CopyAction, &mime, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(list.viewport(), &drop);
}

// A double click as a person makes it: the first press, then the second.
void doubleClick(QAbstractItemView& view, const QModelIndex& index) {
    const QPoint at = view.visualRect(index).center();
    QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, at);
    QTest::mouseDClick(view.viewport(), Qt::LeftButton, Qt::NoModifier, at);
}

void clickHeader(QTableView& view, const QString& title) {
    QHeaderView* header = view.horizontalHeader();
    for (int column = 0; column < header->count(); ++column) {
        if (view.model()->headerData(column, Qt::Horizontal).toString().startsWith(title)) {
            const QPoint centre(header->sectionViewportPosition(column) + header->sectionSize(column) / 2,
                                header->height() / 2);
            QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, centre);
            return;
        }
    }
    QFAIL(qPrintable(QStringLiteral("no column ") + title));
}

int columnTitled(const QTableView& view, const QString& title) {
    for (int column = 0; column < view.model()->columnCount(); ++column) {
        if (view.model()->headerData(column, Qt::Horizontal).toString().startsWith(title)) {
            return column;
        }
    }
    return -1;
}

// Opens the cell's editor, types and ends the edit with Return, as a person does.
void typeIntoCell(QTableView& view, int row, int column, const QString& text) {
    const QModelIndex cell = view.model()->index(row, column);
    view.setCurrentIndex(cell);
    view.edit(cell);
    auto* editor = view.viewport()->findChild<QLineEdit*>();
    QVERIFY(editor);
    editor->selectAll();
    QTest::keyClicks(editor, text);
    QTest::keyClick(editor, Qt::Key_Return);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// Answers the next modal file panel: types the name, presses the buttons named, accepts or cancels.
void answerFilePanel(const QString& path, const QStringList& press, bool accept) {
    QTimer::singleShot(0, [=] {
        auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        QVERIFY(panel != nullptr);
        for (const QString& name : press) {
            auto* button = panel->findChild<QAbstractButton*>(name);
            QVERIFY2(button != nullptr, qPrintable(name));
            button->click();
        }
        if (!accept) {
            panel->reject();
            return;
        }
        panel->selectFile(path);
        static_cast<QDialog*>(panel)->accept();
    });
}

// A panel for the tool buttons: what a tool puts in front of the boxes.
QWidget* demoPanel(lumbra::project::SharedStuff&, QWidget* parent) {
    auto* panel = new QLabel(QStringLiteral("demo tool"), parent);
    panel->setObjectName(QStringLiteral("demoPanel"));
    return panel;
}

} // namespace

class MainWindowTest : public lumbra::shell::testing::ShellWalk {
    Q_OBJECT

private slots:
    void initTestCase() { initSettings("main_window_test"); }

    void init() {
        startApplication();
        writeText(file("day1.ale"), aleText({"A001C001", "A001C002", "A001C003"}));
        writeText(file("day2.ALE"), aleText({"B001C001"}));
        writeText(file("notes.txt"), "not a clip list");
    }

    void cleanup() { stopApplication(); }

    void droppedFilesBecomeBinsAndToolPanelsTakeTheirPlace() {
        MainWindowViewController::registerPanel("pivot", demoPanel);
        openProject();
        BinsList& list = *m_window->binsList();
        QVERIFY(list.findChild<QLabel*>(QStringLiteral("instructionsView"))->isVisible());
        dropFiles(list, {file("day1.ale"), file("notes.txt"), file("day2.ALE")});
        QCOMPARE(m_window->sharedstuff().bins->toarray.size(), 2u);
        QCOMPARE(list.model()->index(1, 0).data().toString(), QStringLiteral("day2"));
        QVERIFY(!list.findChild<QLabel*>(QStringLiteral("instructionsView"))->isVisible());
        QCOMPARE(m_window->notificationsBox()->item(0).body, std::string("Successfully loaded 2 bins"));
        // Each file has its line in the log; the name column is wider than the dates.
        QVERIFY(m_window->log().lines()[0].ends_with(" - Successfully loaded day2"));
        QVERIFY(list.header()->sectionSize(0) > 2 * list.header()->sectionSize(2));

        // A new group lands below the bins and stays there; files dropped on it go inside.
        m_window->findChild<QAction*>(QStringLiteral("newBinGroupButton"))->trigger();
        const QModelIndex group = list.model()->index(2, 0);
        QCOMPARE(group.data().toString(), QStringLiteral("Group_01"));
        dropFiles(list, {file("day2.ALE")}, group);
        QCOMPARE(list.model()->index(0, 0, list.model()->index(2, 0)).data().toString(),
                 QStringLiteral("day2_02"));
        QCOMPARE(list.model()->index(0, 0).data().toString(), QStringLiteral("day1"));

        // A double click closes an open bin and opens it again.
        lumbra::project::Bin* day1 = m_window->sharedstuff().bins->toarray.at(0);
        QVERIFY(day1->selected());
        doubleClick(list, list.model()->index(0, 0));
        QVERIFY(!day1->selected());
        doubleClick(list, list.model()->index(0, 0));
        QVERIFY(day1->selected());

        // A tool not in this build is named on its button; a tool's panel comes in front, and meanwhile the
        // list takes no files.
        QAction* merge = m_window->findChild<QAction*>(QStringLiteral("mergeButton"));
        QVERIFY(!merge->isEnabled());
        QVERIFY(merge->toolTip().contains(QStringLiteral("merge tool")));
        QAction* pivot = m_window->findChild<QAction*>(QStringLiteral("pivotButton"));
        pivot->trigger();
        QCOMPARE(m_window->currentSubcontainer(), std::string("pivot"));
        QVERIFY(m_window->findChild<QLabel*>(QStringLiteral("demoPanel"))->isVisible());
        dropFiles(list, {file("day1.ale")});
        QCOMPARE(m_window->sharedstuff().bins->toarray.size(), 3u);
        pivot->trigger();
        QCOMPARE(m_window->currentSubcontainer(), std::string());
        QVERIFY(!m_window->findChild<QWidget*>(QStringLiteral("subContainer"))->isVisible());
    }

    void aDayWithTwoBinsFromImportToReopen() {
        openProject();
        // The layout editor with no bin active says why nothing opens.
        m_window->findChild<QAction*>(QStringLiteral("layoutEditorAction"))->trigger();
        QCOMPARE(m_window->notificationsBox()->item(0).body, std::string("No active bin"));
        dropFiles(*m_window->binsList(), {file("day1.ale"), file("day2.ALE")});
        auto* day1 = dynamic_cast<lumbra::shell::BinBox*>(m_window->sharedstuff().bins->toarray.at(0)->box());
        auto* day2 = dynamic_cast<lumbra::shell::BinBox*>(m_window->sharedstuff().bins->toarray.at(1)->box());
        QVERIFY(day1 != nullptr && day2 != nullptr);
        QCoreApplication::processEvents();
        QVERIFY(day1->isVisible() && day2->isVisible());
        QCOMPARE(day1->parentWidget(), m_window->boxesView());
        // Two boxes stand side by side in the boxes area.
        QVERIFY(day1->geometry().right() < day2->geometry().left());

        // The first order by a column puts the smallest first; a second click turns it round, and its card
        // does not stack on the first.
        QTableView& table = *day1->mainTable();
        const int name = columnTitled(table, QStringLiteral("Name"));
        clickHeader(table, QStringLiteral("Name"));
        QCOMPARE(table.model()->index(0, name).data().toString(), QStringLiteral("A001C001"));
        clickHeader(table, QStringLiteral("Name"));
        QCOMPARE(table.model()->index(0, name).data().toString(), QStringLiteral("A001C003"));
        QCOMPARE(m_window->notificationsBox()->item(0).body, std::string("Ordered by Name"));
        QVERIFY(m_window->notificationsBox()->item(1).body != std::string("Ordered by Name"));

        // A cell edit is stored.
        const int scene = columnTitled(table, QStringLiteral("Scene"));
        typeIntoCell(table, 0, scene, QStringLiteral("14"));
        QCOMPARE(table.model()->index(0, scene).data().toString(), QStringLiteral("14"));
        QVERIFY(m_window->sharedstuff().something_to_save);

        // The active bin written as CSV through the file panel; a cancelled panel is logged, with no card,
        // and a project without a film format offers none.
        const QString csv = file("out/day1.csv");
        QVERIFY(QDir().mkpath(file("out")));
        answerFilePanel(csv, {QStringLiteral("separatorTab"), QStringLiteral("exportHeadersCheckbox")}, true);
        m_window->findChild<QAction*>(QStringLiteral("saveCSVAction"))->trigger();
        QCOMPARE(
            readText(csv),
            QByteArray("Name\tTape\tScene\n\nA001C003\tA001\t14\nA001C002\tA001\t12\nA001C001\tA001\t12"));
        QVERIFY(m_window->log().lines()[0].ends_with(" - CSV Correctly saved"));
        const int cards = m_window->notificationsBox()->count();
        QTimer::singleShot(0, [] {
            QVERIFY(QApplication::activeModalWidget()->findChild<QCheckBox*>(
                        QStringLiteral("filmFormatCheckbox")) == nullptr);
        });
        answerFilePanel(csv, {}, false);
        m_window->findChild<QAction*>(QStringLiteral("saveBinAction"))->trigger();
        QVERIFY(m_window->log().lines()[0].ends_with(" - Operation aborted by user"));
        QCOMPARE(m_window->notificationsBox()->count(), cards);

        // In a locked bin the same edit leaves the row as it was.
        m_window->sharedstuff().bins->toarray.at(1)->setLock(true);
        day2->refresh(false);
        QTableView& locked = *day2->mainTable();
        typeIntoCell(locked, 0, scene, QStringLiteral("99"));
        QCOMPARE(locked.model()->index(0, scene).data().toString(), QStringLiteral("12"));

        // Searching selects the first row that holds the text.
        QTest::keyClicks(day1->searchField(), QStringLiteral("c002"));
        QCOMPARE(table.selectionModel()->selectedRows().size(), 1);
        QCOMPARE(table.selectionModel()->selectedRows()[0].row(), 1);

        m_window->findChild<QAction*>(QStringLiteral("saveAction"))->trigger();
        QVERIFY(!m_window->sharedstuff().something_to_save);

        // Closed right after the save, with no question; opened again: the same bins, open, with the edit and
        // the lock.
        const std::size_t asked = m_interaction->alerts().size();
        QVERIFY(m_window->close());
        QCOMPARE(m_interaction->alerts().size(), asked);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!m_window);
        openProject();
        auto& bins = m_window->sharedstuff().bins->toarray;
        QCOMPARE(bins.size(), 2u);
        QVERIFY(bins[0]->selected() && bins[1]->selected());
        auto* reopened = dynamic_cast<lumbra::shell::BinBox*>(bins[0]->box());
        QTableView& again = *reopened->mainTable();
        QCOMPARE(again.model()->index(0, columnTitled(again, QStringLiteral("Scene"))).data().toString(),
                 QStringLiteral("14"));
        QCOMPARE(reopened->titleLabel()->text(), QStringLiteral("day1"));
        QVERIFY(dynamic_cast<lumbra::shell::BinBox*>(bins[1]->box())
                    ->titleLabel()
                    ->text()
                    .startsWith(QStringLiteral("🔒")));

        // The box's layout button opens the layout editor on the bin: Scene taken out, saved under a new
        // name.
        bool driven = false;
        QTimer::singleShot(0, [&driven] {
            auto* editor = qobject_cast<lumbra::shell::LayoutGeneratorViewController*>(
                QApplication::activeModalWidget());
            QVERIFY(editor != nullptr);
            editor->columnsTable()->setCurrentItem(
                editor->columnsTable()->findItems(QStringLiteral("Scene"), Qt::MatchExactly).front());
            QTest::mouseClick(editor->removeOneButton(), Qt::LeftButton);
            editor->nameTextField()->selectAll();
            QTest::keyClicks(editor->nameTextField(), QStringLiteral("No scene"));
            QTest::mouseClick(editor->createButton(), Qt::LeftButton);
            driven = true;
        });
        QTest::mouseClick(reopened->layoutButton(), Qt::LeftButton);
        QVERIFY(driven);
        QCOMPARE(bins[0]->layout->name, std::string("No scene"));
        QCOMPARE(columnTitled(*reopened->mainTable(), QStringLiteral("Scene")), -1);
        QVERIFY(columnTitled(*reopened->mainTable(), QStringLiteral("Name")) >= 0);
    }

    void anEditKeepsTheSelectionWhileTheBinIsWrittenInTheBackground() {
        openProject();
        lumbra::project::SharedStuff& project = m_window->sharedstuff();
        project.autosave = true;
        m_window->addBinsFromFiles({file("day1.ale").toStdString()});
        QTableView& table =
            *dynamic_cast<lumbra::shell::BinBox*>(project.bins->toarray.at(0)->box())->mainTable();
        const int tape = columnTitled(table, QStringLiteral("Tape"));
        typeIntoCell(table, 1, tape, QStringLiteral("B777"));
        QCOMPARE(table.currentIndex(), table.model()->index(1, tape));
        QVERIFY(table.selectionModel()->isRowSelected(1, {}));
        project.deferredWriter->waitIdle();
        QDirIterator tables(m_folder->path() + QStringLiteral("/projects/Shoot"), {QStringLiteral("*.ale")},
                            QDir::Files, QDirIterator::Subdirectories);
        QVERIFY(tables.hasNext());
        QVERIFY(readText(tables.next()).contains("B777"));

        // A table the writer cannot write is still a failed save for the user.
        lumbra::base::setWriteFailureHook([](const std::string& path) { return path.ends_with(".ale"); });
        typeIntoCell(table, 2, tape, QStringLiteral("B778"));
        project.deferredWriter->waitIdle();
        lumbra::base::setWriteFailureHook({});
        QTRY_COMPARE(m_window->notificationsBox()->item(0).title, std::string("Save Failed"));
    }

    // Five boxes side by side and ten in columns: every box keeps its size, its title and its buttons apart,
    // and the area scrolls instead. Under LUMBRA_SCREENSHOT_DIR both views are photographed.
    void tiledBoxesKeepTheirTitlesAndTheAreaScrolls() {
        openProject();
        std::vector<std::string> paths;
        for (int day = 0; day < 10; ++day) {
            const QString name = QStringLiteral("day%1_camera_A_selects.ale").arg(day);
            writeText(file(name), aleText({"A001C001", "A001C002", "A001C003", "A001C004", "A001C005"}));
            paths.push_back(file(name).toStdString());
        }
        m_window->resize(1400, 860);
        m_window->addBinsFromFiles(paths);
        lumbra::project::SharedStuff& project = m_window->sharedstuff();
        const struct {
            lumbra::app::MultiViewMode mode;
            std::size_t boxes;
            const char* picture;
        } views[] = {{lumbra::app::MultiViewMode::portrait, 5, "portrait_five_boxes.png"},
                     {lumbra::app::MultiViewMode::standard, 10, "standard_ten_boxes.png"}};
        for (const auto& view : views) {
            const std::vector<lumbra::project::Bin*> bins = project.bins->toarray;
            for (std::size_t i = 0; i < bins.size(); ++i) {
                bins[i]->setSelected(i < view.boxes);
            }
            m_window->refreshOpenBoxes();
            m_window->setMultiViewMode(view.mode);
            QTest::qWait(100);
            for (std::size_t i = 0; i < view.boxes; ++i) {
                auto* box = dynamic_cast<lumbra::shell::BinBox*>(bins[i]->box());
                QVERIFY(box->isVisible());
                QVERIFY(box->width() >= lumbra::shell::BinBox::smallestWidth);
                QVERIFY(box->height() >= lumbra::shell::BinBox::smallestHeight);
                QCOMPARE(box->titleLabel()->toolTip(), QString::fromStdString(bins[i]->displayName()));
                QVERIFY(box->titleLabel()->width() >= 60);
                for (const QToolButton* button :
                     box->titleLabel()->parentWidget()->findChildren<QToolButton*>()) {
                    QVERIFY(!button->isVisible() ||
                            !button->geometry().intersects(box->titleLabel()->geometry()));
                }
            }
            const QString folder = qEnvironmentVariable("LUMBRA_SCREENSHOT_DIR");
            if (!folder.isEmpty()) {
                QVERIFY(QDir().mkpath(folder));
                QVERIFY(m_window->grab().save(folder + QLatin1Char('/') + QString::fromLatin1(view.picture)));
            }
        }
        QWidget* canvas = m_window->boxesView();
        QVERIFY(canvas->height() > canvas->parentWidget()->height());
    }

    void screenshotWithTwoOpenBins() {
        openProject();
        m_window->addBinsFromFiles({file("day1.ale").toStdString(), file("day2.ALE").toStdString()});
        m_window->resize(1400, 860);
        QTest::qWait(200);
        const QString folder = qEnvironmentVariable("LUMBRA_SCREENSHOT_DIR", QDir::tempPath());
        QVERIFY(QDir().mkpath(folder));
        const QString path = folder + QStringLiteral("/main_window.png");
        QVERIFY(m_window->grab().save(path));
        qInfo("screenshot: %s", qPrintable(path));
    }
};

QTEST_MAIN(MainWindowTest)
#include "main_window_test.moc"
