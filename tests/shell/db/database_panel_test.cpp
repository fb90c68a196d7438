#include "app_delegate.h"
#include "base/scripted_interaction.h"
#include "binbox/bin_box.h"
#include "chain/chainable_master.h"
#include "chain/picker_popup.h"
#include "chain/settable.h"
#include "db/database_panel.h"
#include "db/db_panel_views.h"
#include "main_window.h"
#include "project/bin.h"
#include "shell_test_support.h"
#include "tables/db_table.h"
#include "tool_panels.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QSettings>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QUrl>
#include <memory>

using lumbra::base::ScriptedInteraction;
using lumbra::shell::AppDelegate;
using lumbra::shell::DatabasePanel;
using lumbra::shell::DBDisplayTextField;
using lumbra::shell::DBPanelList;
using lumbra::shell::MainWindowViewController;
using lumbra::shell::testing::readText;
using lumbra::shell::testing::writeText;

namespace {

QMimeData* fileUrls(const QStringList& paths) {
    auto* mime = new QMimeData;
    QList<QUrl> urls;
    for (const QString& path : paths) {
        urls.append(QUrl::fromLocalFile(path));
    }
    mime->setUrls(urls);
    return mime;
}

// Drags the files over the list; whether the list took them, and whether it lit up meanwhile.
struct DragResult {
    bool accepted = false;
    bool highlighted = false;
};

DragResult dropFiles(DBPanelList& list, const QStringList& paths) {
    std::unique_ptr<QMimeData> mime(fileUrls(paths));
    const QPoint at(10, 10);
    QDragEnterEvent enter(at, Qt::CopyAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(list.viewport(), &enter);
    DragResult result{enter.isAccepted(), list.isHighlighted()};
    if (!result.accepted) {
        return result;
    }
    QDropEvent drop(QPointF(at), Qt::CopyAction, mime.get(), Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(list.viewport(), &drop);
    return result;
}

// Right-clicks `target` at `at` and picks `item` from the menu that opens (none: the menu is dismissed).
// The menu's title, then its items, "-" for a separator.
QStringList chooseFromMenu(QWidget* target, QPoint at, const QString& item) {
    auto seen = std::make_shared<QStringList>();
    QTimer::singleShot(0, [seen, item] {
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        if (menu == nullptr) {
            return;
        }
        seen->append(menu->title());
        QAction* wanted = nullptr;
        for (QAction* action : menu->actions()) {
            seen->append(action->isSeparator() ? QStringLiteral("-") : action->text());
            if (!action->isSeparator() && action->text() == item) {
                wanted = action;
            }
        }
        if (wanted == nullptr) {
            menu->close();
            return;
        }
        menu->setActiveAction(wanted);
        QTest::keyClick(menu, Qt::Key_Return);
    });
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, target->mapToGlobal(at));
    QCoreApplication::sendEvent(target, &event);
    return *seen;
}

// The next modal file panel gets these files; it opens after a menu, so it is waited for.
void answerFilePanel(const QStringList& paths, QFileDialog::FileMode mode = QFileDialog::ExistingFiles) {
    auto* poll = new QTimer;
    poll->setInterval(20);
    QObject::connect(poll, &QTimer::timeout, [=] {
        auto* panel = qobject_cast<QFileDialog*>(QApplication::activeModalWidget());
        if (panel == nullptr) {
            return;
        }
        poll->stop();
        poll->deleteLater();
        QVERIFY(panel->fileMode() == mode);
        panel->setDirectory(QFileInfo(paths.first()).path());
        QStringList names;
        for (const QString& path : paths) {
            names.append(QLatin1Char('"') + QFileInfo(path).fileName() + QLatin1Char('"'));
        }
        // Typed into the name field, as a person does.
        auto* name = panel->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        QVERIFY(name != nullptr);
        name->setText(paths.size() == 1 ? paths.first() : names.join(QLatin1Char(' ')));
        static_cast<QDialog*>(panel)->accept();
    });
    poll->start();
}

lumbra::base::CsvOptions commaOptions() {
    lumbra::base::CsvOptions options;
    options.separator = U',';
    options.first_line = lumbra::base::FirstLineStyle::first;
    return options;
}

QStringList columnsOf(const QAbstractItemModel& model) {
    QStringList columns;
    for (int c = 0; c < model.columnCount(); ++c) {
        columns.append(model.headerData(c, Qt::Horizontal).toString());
    }
    return columns;
}

QStringList rowOf(const QAbstractItemModel& model, int row) {
    QStringList cells;
    for (int c = 0; c < model.columnCount(); ++c) {
        cells.append(model.index(row, c).data().toString());
    }
    return cells;
}

} // namespace

class DatabasePanelTest : public lumbra::shell::testing::ShellWalk {
    Q_OBJECT

private slots:
    void initTestCase() {
        initSettings("database_panel_test");
        lumbra::shell::registerToolPanels();
    }

    void init() {
        startApplication();
        writeText(file("plates.csv"), "Name,Path,Size\n"
                                      "A001C001,/shots/day1/A001_0001.dpx,10\n"
                                      "A001C001,/shots/day1/A001_0002.dpx,20\n"
                                      "B001C002,clip.0012.exr,5\n");
        writeText(file("again/plates.csv"), "Name\nX\n");
        writeText(file("notes.txt"), "not a table");
        const QString edl = QFINDTESTDATA("../../data/edl/reel1_transitions.edl");
        QVERIFY(!edl.isEmpty());
        QVERIFY(QFile::copy(edl, file("reel1.edl")));
    }

    void cleanup() { stopApplication(); }

    void databasesComeInAreEditedBecomeBinsAndSave() {
        openProject();
        lumbra::project::SharedStuff& project = m_window->sharedstuff();
        QAction* button = m_window->findChild<QAction*>(QStringLiteral("databaseButton"));
        QVERIFY(button->isEnabled());
        button->trigger();
        QCOMPARE(m_window->currentSubcontainer(), std::string("database"));
        auto* panel = m_window->findChild<DatabasePanel*>();
        QVERIFY(panel != nullptr);
        QCOMPARE(m_window->findChild<QLabel*>(QStringLiteral("titleLabel"))->text(),
                 QStringLiteral("Manage Databases"));
        DBPanelList& list = *panel->dbList();
        QAbstractItemModelTester listTester(list.model(),
                                            QAbstractItemModelTester::FailureReportingMode::QtTest);
        QAbstractItemModelTester rowsTester(panel->displayTable()->model(),
                                            QAbstractItemModelTester::FailureReportingMode::QtTest);
        QWidget* instructions = list.findChild<QWidget*>(QStringLiteral("instructionsView"));
        QVERIFY(instructions->isVisible());

        // A text file is no database: the list neither lights up nor takes it.
        DragResult refused = dropFiles(list, {file("notes.txt")});
        QVERIFY(!refused.accepted);
        QVERIFY(!refused.highlighted);
        QVERIFY(project.db.empty());

        // A CSV file asks how it is laid out; the text file beside it is left out.
        m_interaction->queueCsvOptions(commaOptions());
        DragResult taken = dropFiles(list, {file("plates.csv"), file("notes.txt")});
        QVERIFY(taken.accepted);
        QVERIFY(taken.highlighted);
        QVERIFY(!list.isHighlighted());
        QCOMPARE(project.db.size(), 1u);
        QVERIFY(!instructions->isVisible());
        QVERIFY(m_window->log().lines()[0].ends_with(" - Successfully loaded plates"));

        // A second file of the same name gets "_".
        m_interaction->queueCsvOptions(commaOptions());
        dropFiles(list, {file("again/plates.csv")});
        QCOMPARE(list.model()->index(1, 0).data().toString(), QStringLiteral("plates_"));

        // "Add Database" takes several files from the file panel.
        const QPoint below(10, list.viewport()->height() - 5);
        answerFilePanel({file("reel1.edl")});
        QCOMPARE(chooseFromMenu(list.viewport(), below, QStringLiteral("Add Database")),
                 (QStringList{QStringLiteral("select action"), QStringLiteral("Add Database")}));
        QCOMPARE(project.db.size(), 3u);
        QVERIFY(!project.db[2]->cols.empty());

        // The list's menu on a row: rename the EDL's table, delete the second "plates".
        auto rowPoint = [&](int row) { return list.visualRect(list.model()->index(row, 0)).center(); };
        m_interaction->queueText(std::string("conform"));
        QCOMPARE(chooseFromMenu(list.viewport(), rowPoint(2), QStringLiteral("Rename")),
                 (QStringList{QStringLiteral("select action"), QStringLiteral("Rename"),
                              QStringLiteral("Create Bin from DB"), QStringLiteral("Delete"),
                              QStringLiteral("Add Database")}));
        QCOMPARE(list.model()->index(2, 0).data().toString(), QStringLiteral("conform"));
        chooseFromMenu(list.viewport(), rowPoint(1), QStringLiteral("Delete"));
        QCOMPARE(list.model()->rowCount(), 2);
        QCOMPARE(list.model()->index(1, 0).data().toString(), QStringLiteral("conform"));

        // Choosing "plates" shows its rows.
        QTest::mouseClick(list.viewport(), Qt::LeftButton, Qt::NoModifier, rowPoint(0));
        QCOMPARE(panel->selectedIndex(), 0);
        QAbstractItemModel& rows = *panel->displayTable()->model();
        QCOMPARE(columnsOf(rows), (QStringList{"Name", "Path", "Size"}));
        QCOMPARE(rows.rowCount(), 3);
        QCOMPARE(rowOf(rows, 2), (QStringList{"B001C002", "clip.0012.exr", "5"}));
        lumbra::tables::DBTable& plates = *panel->selectedTable();

        // A width the user gives is stored, and survives the rebuilds below; the rule's widths are not
        // stored.
        QHeaderView& header = *panel->displayTable()->horizontalHeader();
        header.resizeSection(0, 240);
        QCOMPARE(plates.colwidths.at("Name"), 240.0);

        // The column tools of the header, each right behind its column.
        auto sectionPoint = [&](int section) {
            return QPoint(header.sectionViewportPosition(section) + header.sectionSize(section) / 2,
                          header.height() / 2);
        };
        QCOMPARE(
            chooseFromMenu(header.viewport(), sectionPoint(1), QStringLiteral("Suppress sequence number")),
            (QStringList{"select action", "Infer path/filename", "Trim extension", "Suppress sequence number",
                         "Group by Path", "-", "Delete column"}));
        QCOMPARE(columnsOf(rows), (QStringList{"Name", "Path", "Path_noseq", "Size"}));
        QCOMPARE(rowOf(rows, 0)[2], QStringLiteral("/shots/day1/A001.dpx"));
        QCOMPARE(rowOf(rows, 2)[2], QStringLiteral("clip.exr"));
        chooseFromMenu(header.viewport(), sectionPoint(2), QStringLiteral("Infer path/filename"));
        QCOMPARE(columnsOf(rows), (QStringList{"Name", "Path", "Path_noseq", "filename", "path", "Size"}));
        QCOMPARE(rowOf(rows, 0).mid(3, 2), (QStringList{"A001.dpx", "/shots/day1"}));
        QCOMPARE(rowOf(rows, 2).mid(3, 2), (QStringList{"clip.exr", ""}));
        // The two frames of A001 become one row: sizes summed, the differing paths a code.
        chooseFromMenu(header.viewport(), sectionPoint(2), QStringLiteral("Group by Path_noseq"));
        QCOMPARE(rows.rowCount(), 2);
        QCOMPARE(rowOf(rows, 0)[5], QStringLiteral("30.0"));
        QVERIFY(!rowOf(rows, 0)[1].startsWith(QStringLiteral("/shots/day1/A001_000")));
        chooseFromMenu(header.viewport(), sectionPoint(1), QStringLiteral("Delete column"));
        QCOMPARE(columnsOf(rows), (QStringList{"Name", "Path_noseq", "filename", "path", "Size"}));
        QCOMPARE(header.sectionSize(0), 240);
        QCOMPARE(plates.colwidths.size(), 1u);

        // A cell edit goes into the entry with each keystroke, before the edit is over.
        const QModelIndex cell = rows.index(1, 0);
        QTest::mouseClick(panel->displayTable()->viewport(), Qt::LeftButton, Qt::NoModifier,
                          panel->displayTable()->visualRect(cell).center());
        QTest::mouseDClick(panel->displayTable()->viewport(), Qt::LeftButton, Qt::NoModifier,
                           panel->displayTable()->visualRect(cell).center());
        auto* field = panel->displayTable()->findChild<DBDisplayTextField*>();
        QVERIFY(field != nullptr);
        QCOMPARE(field->column(), std::string("Name"));
        // Typing inside the text keeps the cursor where it is.
        QTest::keyClick(field, Qt::Key_End);
        QTest::keyClicks(field, QStringLiteral("K"));
        QTest::keyClick(field, Qt::Key_Left);
        QTest::keyClicks(field, QStringLiteral("_O"));
        QCOMPARE(plates.data[1].data.valueOr("Name"), std::string_view("B001C002_OK"));
        QVERIFY(plates.hasChanged);
        QTest::keyClick(field, Qt::Key_Return);
        QCOMPARE(rows.index(1, 0).data().toString(), QStringLiteral("B001C002_OK"));

        // A bin from the database: shown in the boxes, the panel gone.
        chooseFromMenu(list.viewport(), rowPoint(0), QStringLiteral("Create Bin from DB"));
        QCOMPARE(m_window->currentSubcontainer(), std::string());
        QCOMPARE(project.bins->toarray.size(), 1u);
        lumbra::project::Bin* bin = project.bins->toarray.at(0);
        QCOMPARE(bin->table()->tablename, std::string("plates"));
        QVERIFY(bin->selected());
        QCOMPARE(bin->table()->data[1]->data().valueOr("Name"), std::string_view("B001C002_OK"));
        // The box shows the database's columns, though the project's layout names only Name of them.
        QTableView* box = dynamic_cast<lumbra::shell::BinBox*>(bin->box())->mainTable();
        QCOMPARE(columnsOf(*box->model()), (QStringList{"Name", "Path_noseq", "filename", "path", "Size"}));

        // The panel again, closed with its close button.
        button->trigger();
        QCOMPARE(m_window->currentSubcontainer(), std::string("database"));
        m_window->findChild<lumbra::shell::ChainableMaster*>()
            ->findChild<QToolButton*>(QStringLiteral("closeButton"))
            ->click();
        QCOMPARE(m_window->currentSubcontainer(), std::string());
        QTRY_VERIFY(m_window->findChild<DatabasePanel*>() == nullptr);

        // On disk: one folder per database, its file tab-separated with no line feed after the last row.
        QVERIFY(m_window->save());
        const QString dbFolder = m_folder->path() + QStringLiteral("/projects/Shoot/db");
        const QStringList folders = QDir(dbFolder).entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name);
        QCOMPARE(folders.size(), 2);
        QCOMPARE(folders.filter(QStringLiteral("conform - ")).size(), 1);
        const QString platesFolder = QString::fromStdString(plates.folderName());
        QCOMPARE(readText(dbFolder + QLatin1Char('/') + platesFolder + QStringLiteral("/plates.csv")),
                 QByteArray("Name\tPath_noseq\tfilename\tpath\tSize\n"
                            "A001C001\t/shots/day1/A001.dpx\tA001.dpx\t/shots/day1\t30.0\n"
                            "B001C002_OK\tclip.exr\tclip.exr\t\t5"));
        QCOMPARE(m_interaction->unexpected(), 0);
    }

    // The database picker's "< Load from File >" reads through the reader the panels install.
    void pickerReadsADatabaseFile() {
        struct Caller : lumbra::shell::DBSettable {
            void setDB(const std::shared_ptr<lumbra::tables::DBTable>& database, int tag) override {
                received = database;
                receivedTag = tag;
            }
            std::shared_ptr<lumbra::tables::DBTable> received;
            int receivedTag = 0;
        } caller;
        lumbra::project::SharedStuff project(m_interaction);
        lumbra::shell::DBSetter setter;
        setter.setup(project, &caller, 7);
        answerFilePanel({file("reel1.edl")}, QFileDialog::ExistingFile);
        setter.loadFromFile();
        QVERIFY(caller.received != nullptr);
        QCOMPARE(caller.receivedTag, 7);
        QVERIFY(!caller.received->data.empty());
        QVERIFY(project.db.empty());
    }
};

QTEST_MAIN(DatabasePanelTest)
#include "database_panel_test.moc"
