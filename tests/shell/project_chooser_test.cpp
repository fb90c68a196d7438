#include "app/bins_list_commands.h"
#include "app_delegate.h"
#include "base/scripted_interaction.h"
#include "bins_list.h"
#include "bins_tree_model.h"
#include "import/ale_reader.h"
#include "main_window.h"
#include "project/project_creation.h"
#include "project_chooser_window.h"
#include "qt_user_defaults.h"
#include "shell_test_support.h"

#include <QAction>
#include <QDir>
#include <QFile>
#include <QMainWindow>
#include <QMenuBar>
#include <QPushButton>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <memory>

using lumbra::base::ScriptedInteraction;
using lumbra::shell::AppDelegate;
using lumbra::shell::ProjectChooserWindow;

namespace {

// A project window as the quit rules see it, without any project behind it.
class FakeProjectWindow final : public QMainWindow, public lumbra::app::ProjectWindow {
public:
    std::string projectName() const override { return "Fake"; }
    bool save() override {
        ++saves;
        return true;
    }
    void setPythonFlags(lumbra::app::PythonFlags) override {}
    int saves = 0;
};

void makeProject(const QString& folder, const QString& marker = QStringLiteral("tarelproject")) {
    QVERIFY(QDir().mkpath(folder));
    QFile file(folder + QLatin1Char('/') + marker);
    QVERIFY(file.open(QIODevice::WriteOnly));
}

QStringList titlesOf(const QList<QToolButton*>& buttons) {
    QStringList titles;
    for (const QToolButton* button : buttons) {
        titles.append(button->accessibleName());
    }
    return titles;
}

} // namespace

class ProjectChooserTest : public lumbra::shell::testing::ShellWalk {
    Q_OBJECT

private slots:
    void initTestCase() { initSettings("project_chooser_test"); }

    void init() { startApplication(); }

    void cleanup() { stopApplication(); }

    void chooserListsTheProjectsOfEachFolderAndStoresTheChosenOne() {
        QSettings().setValue(QStringLiteral("NSFullScreenMenuItemEverywhere"), true);
        const QString root = m_folder->path();
        for (const char* name : {"Delta", "Alpha", "Charlie", "Bravo", ".Hidden", "Outer/Nested"}) {
            makeProject(root + QLatin1Char('/') + QString::fromLatin1(name));
        }
        makeProject(root + QStringLiteral("/No marker"), QStringLiteral("tarelproject.txt"));
        makeProject(root + QStringLiteral("/server/Series"));
        QSettings().setValue(QStringLiteral("localfolder"), root);
        QSettings().setValue(QStringLiteral("sharedfolder"), root + QStringLiteral("/server"));
        QSettings().setValue(QStringLiteral("externalfolder"), root + QStringLiteral("/unplugged"));
        m_delegate->start();
        ProjectChooserWindow* chooser = m_delegate->projectChooser();
        QVERIFY(QTest::qWaitForWindowExposed(chooser));
        QCOMPARE(chooser->windowTitle(), QStringLiteral("Projects"));
        QCOMPARE(QSettings().value(QStringLiteral("NSFullScreenMenuItemEverywhere")).toBool(), false);
        // The chooser's File menu does not offer to open itself: Quit alone.
        const QList<QAction*> fileActions = chooser->menuBar()->actions().first()->menu()->actions();
        QCOMPARE(fileActions.size(), 1);
        QCOMPARE(fileActions.last()->shortcut(), QKeySequence(QStringLiteral("Ctrl+Q")));
        // A second start finds the chooser on screen and opens nothing more.
        m_delegate->lifecycle().showProjectChooserIfNoWindows(true);
        QCOMPARE(m_delegate->windowCount(), 1);

        // Only the folders holding the marker file, in order of name, three to a row.
        const QList<QToolButton*> buttons = chooser->projectButtons();
        QCOMPARE(titlesOf(buttons), (QStringList{QStringLiteral("Alpha"), QStringLiteral("Bravo"),
                                                 QStringLiteral("Charlie"), QStringLiteral("Delta")}));
        QCOMPARE(buttons[2]->toolTip(), QStringLiteral("Open project Charlie"));
        QCOMPARE(buttons[2]->y(), buttons[0]->y());
        QVERIFY(buttons[2]->x() > buttons[1]->x());
        QVERIFY(buttons[3]->y() > buttons[0]->y());
        QCOMPARE(buttons[3]->x(), buttons[0]->x());

        const auto click = [chooser](const char* name) {
            QTest::mouseClick(chooser->findChild<QPushButton*>(QString::fromLatin1(name)), Qt::LeftButton);
        };
        auto* newProject = chooser->findChild<QPushButton*>(QStringLiteral("newProjectButton"));
        click("sharedFolderButton");
        QCOMPARE(chooser->catalogue().currentFolderType(), 1);
        QCOMPARE(titlesOf(chooser->projectButtons()), QStringList{QStringLiteral("Series")});
        // An external folder that is not there: no projects, and none can be made there.
        click("externalFolderButton");
        QVERIFY(chooser->projectButtons().isEmpty());
        QVERIFY(!newProject->isEnabled());
        const QString drive = root + QStringLiteral("/drive");
        makeProject(drive + QStringLiteral("/Documentary"));
        m_interaction->queueFolder(std::filesystem::path(drive.toStdString()));
        click("pathButton");
        QCOMPARE(QSettings().value(QStringLiteral("externalfolder")).toString(), drive);
        QCOMPARE(titlesOf(chooser->projectButtons()), QStringList{QStringLiteral("Documentary")});
        QVERIFY(newProject->isEnabled());
        // Cancelling the folder choice keeps what was stored.
        m_interaction->queueFolder(std::nullopt);
        click("pathButton");
        QCOMPARE(QSettings().value(QStringLiteral("externalfolder")).toString(), drive);
        QCOMPARE(QSettings().value(QStringLiteral("localfolder")).toString(), root);
        click("localFolderButton");
        QVERIFY(chooser->findChild<QPushButton*>(QStringLiteral("pathButton"))
                    ->toolTip()
                    .startsWith(root + QLatin1Char('\n')));
    }

    void closingTheLastWindowLetsTheChooserComeBack() {
        m_delegate->start();
        QPointer<ProjectChooserWindow> first = m_delegate->projectChooser();
        QVERIFY(QTest::qWaitForWindowExposed(first));
        first->close();
        QCOMPARE(m_delegate->windowCount(), 0);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(first.isNull());
        QVERIFY(m_delegate->lifecycle().shouldHandleReopen());
        QVERIFY(m_delegate->projectChooser() != nullptr);
        QVERIFY(QTest::qWaitForWindowExposed(m_delegate->projectChooser()));
    }

    void quitFromTheMenuRunsTheRulesAndEndsTheLoop() {
        m_delegate->start();
        FakeProjectWindow project;
        project.show();
        QVERIFY(QTest::qWaitForWindowExposed(&project));
        m_interaction->queueAlert(std::string("Cancel"));
        m_interaction->queueAlert(std::string("Save"));
        // The first quit is cancelled and the loop goes on; the second saves and ends it.
        QTimer::singleShot(0, m_delegate.get(), &AppDelegate::requestQuit);
        QTimer::singleShot(50, m_delegate.get(), &AppDelegate::requestQuit);
        QTimer::singleShot(5000, qApp, [] { QCoreApplication::exit(7); });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(m_interaction->alerts().size(), 2u);
        QCOMPARE(m_interaction->alerts()[0].title, std::string("Save before you go?"));
        QCOMPARE(project.saves, 1);
        QVERIFY(m_delegate->lifecycle().terminating());
    }

    void openingProjectsInTurnFromTheChooserShowsEachTree() {
        // Two projects of twenty bins in four groups; each open replaces the trees the lists were built on.
        const QString root = m_folder->path();
        for (const char* name : {"Alpha", "Bravo"}) {
            lumbra::project::SharedStuff maker(m_interaction);
            lumbra::project::NewProjectSettings settings;
            settings.name = name;
            QVERIFY(lumbra::project::createProject(maker, root.toStdString(), settings).accepted());
            for (int g = 0; g < 4; ++g) {
                auto& group = lumbra::app::addGroup(maker, *maker.bins);
                for (int b = 0; b < 5; ++b) {
                    auto table = lumbra::import::parseALEText(
                                     "Heading\nFIELD_DELIM\tTABS\n\nColumn\nName\n\nData\nA001\n", "day")
                                     .table;
                    maker.addBin(
                        std::make_shared<lumbra::project::Bin>(std::move(table), &maker, nullptr, true),
                        &group);
                }
            }
            QVERIFY(maker.save());
        }
        QSettings().setValue(QStringLiteral("localfolder"), root);
        m_delegate->start();
        for (int open = 0; open < 22; ++open) {
            QPointer<ProjectChooserWindow> chooser = m_delegate->projectChooser();
            QVERIFY(chooser);
            QTest::mouseClick(chooser->projectButtons()[open % 2], Qt::LeftButton);
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QPointer<lumbra::shell::MainWindowViewController> window;
            for (QWidget* widget : QApplication::topLevelWidgets()) {
                if (auto* main = qobject_cast<lumbra::shell::MainWindowViewController*>(widget)) {
                    window = main;
                }
            }
            QVERIFY(window);
            QCOMPARE(window->projectName(), std::string(open % 2 == 0 ? "Alpha" : "Bravo"));
            const auto& model = window->binsList()->binsModel();
            QCOMPARE(model.rowCount(), 4);
            QCOMPARE(model.rowCount(model.index(3, 0)), 5);
            QVERIFY(window->binsList()->isExpanded(model.index(3, 0)));
            m_interaction->queueAlert(std::string("Don't save"));
            window->close();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            QVERIFY(!window);
        }
    }
};

QTEST_MAIN(ProjectChooserTest)
#include "project_chooser_test.moc"
