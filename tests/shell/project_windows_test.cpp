#include "app_delegate.h"
#include "base/scripted_interaction.h"
#include "bins_list.h"
#include "bins_tree_model.h"
#include "main_window.h"
#include "new_project_window.h"
#include "notifications_box.h"
#include "project_chooser_window.h"
#include "project_metadata_window.h"
#include "shell_test_support.h"

#include <QAbstractItemModelTester>
#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>
#include <functional>
#include <memory>

using lumbra::base::ScriptedInteraction;
using lumbra::shell::AppDelegate;
using lumbra::shell::MainWindowViewController;
using lumbra::shell::NewProjectWindow;
using lumbra::shell::ProjectChooserWindow;
using lumbra::shell::ProjectMetadataWindow;
using lumbra::shell::testing::readText;
using lumbra::shell::testing::writeText;

namespace {

constexpr const char* kBinUuid = "AAAAAAAA-0000-0000-0000-000000000001";
constexpr const char* kOtherBinUuid = "BBBBBBBB-0000-0000-0000-000000000002";
constexpr const char* kGroupUuid = "CCCCCCCC-0000-0000-0000-000000000003";

QByteArray aleText(const QList<QByteArray>& clips) {
    QByteArray text =
        "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\t1080\nFPS\t25\n\nColumn\nName\tTape\n\nData\n";
    for (const QByteArray& clip : clips) {
        text += clip + "\tA001\n";
    }
    return text;
}

// A bin folder as a saved project holds it: details, table and .bin file.
void writeBin(const QString& under, const QByteArray& name, const char* uuid,
              const QList<QByteArray>& clips) {
    const QString folder = under + QLatin1Char('/') + QString::fromUtf8(name) + QStringLiteral(" - ") +
                           QString::fromLatin1(uuid) + QLatin1Char('/');
    writeText(folder + QStringLiteral("lumbra_details"), QByteArray(uuid) + "\n100.0\n200.0\nNone\ntest");
    writeText(folder + QString::fromUtf8(name) + QStringLiteral(".ale"), aleText(clips));
    writeText(folder + QString::fromUtf8(name) + QStringLiteral(".bin"),
              "tableid\t" + name + "\ndisplayname\t" + name + "\n");
}

template <typename T> T* topLevel(const char* objectName) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<T*>(widget);
            window != nullptr && window->isVisible() && widget->objectName() == QLatin1String(objectName)) {
            return window;
        }
    }
    return nullptr;
}

// Clicks a row button of the columns table and lets the queued rebuild run.
void clickRowButton(QWidget* table, const char* name, int index = 0) {
    const QList<QToolButton*> buttons = table->findChildren<QToolButton*>(QString::fromLatin1(name));
    QVERIFY(index < buttons.size());
    QTest::mouseClick(buttons[index], Qt::LeftButton);
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

QStringList childNames(const QAbstractItemModel& model, const QModelIndex& parent = {}) {
    QStringList names;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        names.append(model.index(row, 0, parent).data().toString());
    }
    return names;
}

} // namespace

class ProjectWindowsTest : public lumbra::shell::testing::ShellWalk {
    Q_OBJECT

private slots:
    void initTestCase() { initSettings("project_windows_test"); }

    void init() {
        startApplication();
        QSettings().setValue(QStringLiteral("localfolder"), m_folder->path());
    }

    void cleanup() { stopApplication(); }

    void newProjectIsTypedInAndCreatedOnDisk() {
        NewProjectWindow* window = openNewProjectWindow();
        QVERIFY(window != nullptr);
        auto* name = window->findChild<QLineEdit*>(QStringLiteral("projectNameText"));
        auto* warnings = window->findChild<QLabel*>(QStringLiteral("warningsLabel"));
        auto* create = window->findChild<QPushButton*>(QStringLiteral("createButton"));
        auto* table = window->findChild<QTableWidget*>(QStringLiteral("columnsTable"));

        // Without a name Create waits and says why; a colon is refused, and so is an existing folder.
        QVERIFY(!create->isEnabled());
        QCOMPARE(create->toolTip(), QStringLiteral("Type a name to create the project"));
        QTest::keyClicks(name, QStringLiteral("Reel:1"));
        QTest::mouseClick(create, Qt::LeftButton);
        QCOMPARE(warnings->text(), QStringLiteral("the project name contains forbidden characters"));
        QVERIFY(QDir().mkpath(m_folder->path() + QStringLiteral("/Taken")));
        name->clear();
        QTest::keyClicks(name, QStringLiteral("Taken"));
        QVERIFY(!warnings->isVisible());
        QTest::mouseClick(create, Qt::LeftButton);
        QCOMPARE(warnings->text(), QStringLiteral("a folder Taken already exists"));

        // Two columns through the add button, the second renamed, a clash refused, the first removed.
        clickRowButton(table, "addColumnButton");
        clickRowButton(table, "addColumnButton");
        QCOMPARE(window->settings().columns, (std::vector<std::string>{"newcol", "newcol_1"}));
        table->item(1, 0)->setText(QStringLiteral("newcol"));
        QCOMPARE(warnings->text(), QStringLiteral("ERROR: a column named newcol already exists"));
        QCOMPARE(table->item(1, 0)->text(), QStringLiteral("newcol_1"));
        table->item(1, 0)->setText(QStringLiteral("Scene"));
        QCOMPARE(table->findChildren<QToolButton*>(QStringLiteral("insertColumnButton")).size(), 2);
        clickRowButton(table, "removeColumnButton");
        QCOMPARE(window->settings().columns, std::vector<std::string>{"Scene"});

        window->findChild<QComboBox*>(QStringLiteral("fpsButton"))->setCurrentText(QStringLiteral("25"));
        QTest::mouseClick(window->findChild<QCheckBox*>(QStringLiteral("filmCheckbox")), Qt::LeftButton);
        window->findChild<QComboBox*>(QStringLiteral("filmButton"))->setCurrentText(QStringLiteral("16mm"));
        // A tape id that the bins' files could not read back keeps Create off and says why.
        auto* tape = window->findChild<QLineEdit*>(QStringLiteral("tapeidText"));
        QTest::keyClicks(tape, QStringLiteral("T\"42"));
        QVERIFY(!create->isEnabled());
        QVERIFY(warnings->text().contains(QStringLiteral("the tape id holds a double quote")));
        tape->clear();
        QTest::keyClicks(tape, QStringLiteral("T42"));
        QVERIFY(create->isEnabled());
        name->clear();
        QTest::keyClicks(name, QStringLiteral("My Film"));
        QTest::mouseClick(create, Qt::LeftButton);

        const QByteArray project = readText(m_folder->path() + QStringLiteral("/My Film/tarelproject"));
        QVERIFY2(project.startsWith("My Film\nfps\t25\ntlResolution\t1080\nsound\t44.1khz\ntapeid\tT42\n"
                                    "filmformat\t16mm\n"),
                 project.constData());
        QVERIFY(project.contains("\nbaselayout\tScene\n"));
        QVERIFY(project.contains("\nprojectlayout\tScene\n"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        auto* main = topLevel<MainWindowViewController>("mainwindow");
        QVERIFY(main != nullptr);
        QCOMPARE(main->windowTitle(), QStringLiteral("My Film"));
        QVERIFY(topLevel<NewProjectWindow>("newprojectwindow") == nullptr);
        QVERIFY(topLevel<ProjectChooserWindow>("projectselector") == nullptr);
        QCOMPARE(main->backupTimer()->interval(), 15 * 60 * 1000);
    }

    void loadFromFileTakesTheHeadingAndCancelReturnsToTheChooser() {
        NewProjectWindow* window = openNewProjectWindow();
        auto* warnings = window->findChild<QLabel*>(QStringLiteral("warningsLabel"));
        auto* load = window->findChild<QPushButton*>(QStringLiteral("loadFromFileButton"));
        QString chosen = m_folder->path() + QStringLiteral("/missing.ale");
        window->setFileChooser([&chosen](QWidget*) { return chosen; });
        QTest::mouseClick(load, Qt::LeftButton);
        QCOMPARE(warnings->text(), QStringLiteral("ERROR while reading info from file"));
        QTRY_VERIFY_WITH_TIMEOUT(!warnings->isVisible(), 4000);

        chosen = m_folder->path() + QStringLiteral("/day.ale");
        writeText(chosen, "Heading\nFIELD_DELIM\tTABS\nVIDEO_FORMAT\tPAL\nAUDIO_FORMAT\t48khz\nFPS\t50\n"
                          "FILM_FORMAT\t35mm, 3 perf\nTAPE\tT9\n\nColumn\nName\tStart\tScene\n\nData\n"
                          "c1\t01:00:00:00\t12\n");
        QTest::mouseClick(load, Qt::LeftButton);
        QVERIFY(!warnings->isVisible());
        for (const auto& [box, text] :
             {std::pair{"fpsButton", "50"}, std::pair{"resButton", "PAL"}, std::pair{"soundButton", "48khz"},
              std::pair{"filmButton", "35mm, 3 perf"}}) {
            QCOMPARE(window->findChild<QComboBox*>(QString::fromLatin1(box))->currentText(),
                     QString::fromUtf8(text));
        }
        QVERIFY(window->findChild<QCheckBox*>(QStringLiteral("filmCheckbox"))->isChecked());
        QCOMPARE(window->findChild<QLineEdit*>(QStringLiteral("tapeidText"))->text(), QStringLiteral("T9"));
        // The file's columns come in their order, with what reading a table adds to them.
        const std::vector<std::string>& columns = window->settings().columns;
        QVERIFY(std::ranges::find(columns, "Lumbra_Color_Tag") != columns.end());
        QVERIFY(std::ranges::find(columns, "Name") < std::ranges::find(columns, "Start"));
        QCOMPARE(columns.back(), std::string("Scene"));
        QCOMPARE(window->findChild<QTableWidget*>(QStringLiteral("columnsTable"))->rowCount(),
                 static_cast<int>(columns.size()) + 1);

        QTest::mouseClick(window->findChild<QPushButton*>(QStringLiteral("cancelButton")), Qt::LeftButton);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(topLevel<NewProjectWindow>("newprojectwindow") == nullptr);
        QVERIFY(m_delegate->projectChooser() != nullptr && m_delegate->projectChooser()->isVisible());
        QCOMPARE(QDir(m_folder->path()).entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList());
    }

    void aProjectOpensFromTheChooserIsEditedSavedAndClosed() {
        openHandMadeProject();
        QPointer<MainWindowViewController> main = topLevel<MainWindowViewController>("mainwindow");
        QVERIFY(main);
        QCOMPARE(main->windowTitle(), QStringLiteral("Film"));
        QVERIFY(m_delegate->projectChooser() == nullptr);
        QAbstractItemModel& model = *main->binsList()->model();
        QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
        QCOMPARE(childNames(model), (QStringList{QStringLiteral("Dailies"), QStringLiteral("Day one")}));
        const QModelIndex dailies = model.index(0, 0);
        QCOMPARE(childNames(model, dailies), QStringList{QStringLiteral("Day two")});
        QVERIFY(
            model.index(0, 0, dailies).data(Qt::ToolTipRole).toString().contains(QStringLiteral("3 clips")));

        // A short backup interval restarts the timer, and a tick leaves its archive.
        main->sharedstuff().timeInMinBackup = 0.001;
        main->sharedstuff().restartBackupTimer();
        QCOMPARE(main->backupTimer()->interval(), 60);
        const QDir backups(m_folder->path() + QStringLiteral("/Film/backup"));
        QTRY_VERIFY_WITH_TIMEOUT(!backups.entryList({QStringLiteral("*-Film.zip")}, QDir::Files).isEmpty(),
                                 5000);
        main->sharedstuff().timeInMinBackup = 15;
        main->sharedstuff().restartBackupTimer();

        // The metadata: custom properties, a base change that asks before it is kept, a refused tape id.
        m_interaction->queueAlert(std::string("Cancel"));
        m_interaction->queueAlert(std::string("Confirm"));
        runInMetadataWindow([&](ProjectMetadataWindow& window) {
            QTableWidget* table = window.propertiesTable();
            QCOMPARE(window.findChild<QComboBox*>(QStringLiteral("Film Format"))->currentText(),
                     QStringLiteral("None"));
            auto* newProperty = window.findChild<QPushButton*>(QStringLiteral("newPropertyButton"));
            QTest::mouseClick(newProperty, Qt::LeftButton);
            QTest::mouseClick(newProperty, Qt::LeftButton);
            QCOMPARE(table->item(6, 0)->text(), QStringLiteral("Custom Prop 2"));
            table->item(5, 1)->setText(QStringLiteral("Jane"));
            // A name taken by another property is put back.
            table->item(6, 0)->setText(QStringLiteral("Custom Prop 1"));
            QCOMPARE(table->item(6, 0)->text(), QStringLiteral("Custom Prop 2"));
            table->item(6, 0)->setText(QStringLiteral("Director"));
            table->item(6, 1)->setText(QStringLiteral("Ann"));
            auto* fps = window.findChild<QComboBox*>(QStringLiteral("FPS"));
            fps->setFocus();
            QTest::keyClick(fps, Qt::Key_Down);
            QCOMPARE(fps->currentText(), QStringLiteral("29.96"));
            auto* done = window.findChild<QPushButton*>(QStringLiteral("doneButton"));
            auto* tape = window.findChild<QLineEdit*>(QStringLiteral("Tape"));
            QTest::keyClicks(tape, QStringLiteral("X\"1"));
            QVERIFY(!done->isEnabled());
            QVERIFY(window.findChild<QLabel*>(QStringLiteral("refusalLabel"))
                        ->text()
                        .contains(QStringLiteral("the value of Tape holds a double quote")));
            tape->clear();
            QTest::keyClicks(tape, QStringLiteral("X1"));
            QCOMPARE(window.baseChanged(), (std::vector<std::string>{"FPS", "Tape"}));
            QTest::mouseClick(done, Qt::LeftButton);
            QVERIFY(window.isVisible());
            QTest::mouseClick(done, Qt::LeftButton);
        });
        QCOMPARE(m_interaction->alerts().size(), 2u);
        QCOMPARE(m_interaction->alerts()[0].text,
                 std::string(
                     "You edited some base properties of the project:\nFPS\nTape\n\n\nAre you sure you want "
                     "to save?"));
        // Cancel changes nothing.
        runInMetadataWindow([](ProjectMetadataWindow& window) {
            QTest::keyClicks(window.findChild<QLineEdit*>(QStringLiteral("Tape")), QStringLiteral("Y"));
            QTest::mouseClick(window.findChild<QPushButton*>(QStringLiteral("cancelButton")), Qt::LeftButton);
        });
        QCOMPARE(main->sharedstuff().tapeId.value_or(""), std::string("X1"));

        main->findChild<QAction*>(QStringLiteral("saveAction"))->trigger();
        const QByteArray project = readText(m_folder->path() + QStringLiteral("/Film/tarelproject"));
        QVERIFY2(project.startsWith("Film\nfps\t29.96\n"), project.constData());
        QVERIFY(project.contains("\ntapeid\tX1\n"));
        QVERIFY(project.contains("\nuserdefinedproperty\tCustom Prop 1\tJane\n"));
        QVERIFY(project.contains("\nuserdefinedproperty\tDirector\tAnn\n"));
        const std::string saved =
            "Project saved to " + (m_folder->path() + QStringLiteral("/Film")).toStdString();
        QVERIFY(main->log().lines().front().ends_with(" - " + saved));
        QCOMPARE(main->notificationsBox()->item(0).title, std::string("Saved"));

        // Close Project asks: Cancel keeps the window, "Don't save" brings the chooser back.
        main->sharedstuff().something_to_save = true;
        QAction* close = main->findChild<QAction*>(QStringLiteral("closeProjectAction"));
        QCOMPARE(close->shortcut(), QKeySequence(QStringLiteral("Ctrl+W")));
        m_interaction->queueAlert(std::string("Cancel"));
        close->trigger();
        QVERIFY(main->isVisible());
        m_interaction->queueAlert(std::string("Don't save"));
        close->trigger();
        QCOMPARE(m_interaction->alerts()[3].title, std::string("Save before you go?"));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(main.isNull());
        QVERIFY(m_delegate->projectChooser() != nullptr && m_delegate->projectChooser()->isVisible());
    }

    void quitFromTheProjectWindowAsksOnceAndSaves() {
        openHandMadeProject();
        auto* main = topLevel<MainWindowViewController>("mainwindow");
        QVERIFY(main != nullptr);
        QFile::remove(m_folder->path() + QStringLiteral("/Film/.selectionlist"));
        main->sharedstuff().something_to_save = true; // a change not saved yet, or nothing would be asked
        m_interaction->queueAlert(std::string("Save"));
        QAction* quit = main->findChild<QAction*>(QStringLiteral("quitAction"));
        QTimer::singleShot(0, quit, &QAction::trigger);
        QTimer::singleShot(5000, qApp, [] { QCoreApplication::exit(7); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(m_interaction->alerts().size(), 1u);
        QVERIFY(QFileInfo::exists(m_folder->path() + QStringLiteral("/Film/.selectionlist")));
    }

private:
    NewProjectWindow* openNewProjectWindow() {
        m_delegate->start();
        ProjectChooserWindow* chooser = m_delegate->projectChooser();
        if (!QTest::qWaitForWindowExposed(chooser)) {
            return nullptr;
        }
        QTest::mouseClick(chooser->findChild<QPushButton*>(QStringLiteral("newProjectButton")),
                          Qt::LeftButton);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        auto* window = topLevel<NewProjectWindow>("newprojectwindow");
        if (window != nullptr) {
            static_cast<void>(QTest::qWaitForWindowExposed(window));
        }
        return window;
    }

    void openHandMadeProject() {
        const QString project = m_folder->path() + QStringLiteral("/Film");
        writeText(project + QStringLiteral("/tarelproject"),
                  "Film\nfps\t25\ntlResolution\t1080\nsound\t48khz\nbaselayout\tName\n");
        const QString bins = project + QStringLiteral("/_bins_");
        writeBin(bins, "Day one", kBinUuid, {"c1"});
        const QString group = bins + QStringLiteral("/Dailies - ") + QString::fromLatin1(kGroupUuid);
        writeText(group + QStringLiteral("/lumbra_details"),
                  QByteArray(kGroupUuid) + "\n100.0\n200.0\nNone\ntest");
        writeBin(group, "Day two", kOtherBinUuid, {"c2", "c3", "c4"});
        m_delegate->start();
        ProjectChooserWindow* chooser = m_delegate->projectChooser();
        QVERIFY(QTest::qWaitForWindowExposed(chooser));
        chooser->refresh();
        const QList<QToolButton*> buttons = chooser->projectButtons();
        QCOMPARE(buttons.size(), 1);
        QTest::mouseClick(buttons[0], Qt::LeftButton);
        // The closed chooser goes as the event loop would let it go.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // The metadata window is modal: the checks run inside its loop.
    void runInMetadataWindow(const std::function<void(ProjectMetadataWindow&)>& steps) {
        auto* main = topLevel<MainWindowViewController>("mainwindow");
        QVERIFY(main != nullptr);
        bool ran = false;
        QTimer::singleShot(0, this, [&] {
            auto* window = qobject_cast<ProjectMetadataWindow*>(QApplication::activeModalWidget());
            if (window == nullptr) {
                window = main->findChild<ProjectMetadataWindow*>();
            }
            QVERIFY(window != nullptr);
            ran = true;
            steps(*window);
            if (window->isVisible()) {
                window->reject();
            }
        });
        main->findChild<QAction*>(QStringLiteral("projectMetadataAction"))->trigger();
        QVERIFY(ran);
    }
};

QTEST_MAIN(ProjectWindowsTest)
#include "project_windows_test.moc"
