#pragma once

#include "app_delegate.h"
#include "base/scripted_interaction.h"
#include "main_window.h"
#include "new_project_window.h"
#include "project/project_creation.h"
#include "project/project_loader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <memory>
#include <string>
#include <vector>

namespace QTest {
// Lists of names read in failure messages.
template <> inline char* toString(const std::vector<std::string>& names) {
    QStringList items;
    for (const std::string& name : names) {
        items << QString::fromStdString(name);
    }
    return qstrdup(("[" + items.join(QStringLiteral(", ")) + "]").toUtf8().constData());
}
} // namespace QTest

namespace lumbra::shell::testing {

inline void writeText(const QString& path, const QByteArray& text) {
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(text);
}

inline QByteArray readText(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<none>");
}

// The project "Shoot" (columns Name, Tape, Scene) under `parent`, made once, then opened as the chooser
// opens a project, with its window shown and autosave off; `window` holds the window.
inline void openShootProject(const QString& parent, AppDelegate& delegate,
                             base::ScriptedInteraction* interaction,
                             QPointer<MainWindowViewController>& window) {
    const std::string folder = parent.toStdString();
    QDir().mkpath(parent);
    if (!QFileInfo::exists(parent + QStringLiteral("/Shoot"))) {
        project::SharedStuff maker(interaction);
        project::NewProjectSettings settings;
        settings.name = "Shoot";
        settings.columns = {"Name", "Tape", "Scene"};
        QVERIFY(project::createProject(maker, folder, settings).accepted());
    }
    auto sharedstuff = std::make_unique<project::SharedStuff>(interaction);
    project::SharedStuff& opened = *sharedstuff;
    opened.currentFolder = folder;
    opened.projectName = "Shoot";
    project::OpenHooks hooks;
    hooks.makeMainWindow = [&](project::SharedStuff&) -> project::MainWindowLink* {
        window = delegate.makeProjectWindow(std::move(sharedstuff));
        window->show();
        return window;
    };
    QCOMPARE(project::openProject(opened, hooks), project::OpenResult::opened);
    QVERIFY(window);
    QVERIFY(QTest::qWaitForWindowExposed(window));
    window->sharedstuff().autosave = false;
}

// What each walk through the application stands on: settings of its own, a fresh folder per test, the
// application with a scripted user, and the project window it opened.
class ShellWalk : public QObject {
protected:
    // In initTestCase: the settings go to a folder of the suite's own.
    void initSettings(const char* suite) {
        QVERIFY(m_settingsDir.isValid());
        QCoreApplication::setOrganizationName(QStringLiteral("LumbraTests"));
        QCoreApplication::setApplicationName(QString::fromLatin1(suite));
        QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_settingsDir.path());
    }
    // In init.
    void startApplication() {
        QSettings().clear();
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        auto interaction = std::make_unique<base::ScriptedInteraction>();
        m_interaction = interaction.get();
        m_delegate = std::make_unique<AppDelegate>(std::move(interaction));
    }
    // In cleanup: the windows go without a question, then the application.
    void stopApplication() {
        QList<QPointer<QWidget>> windows;
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (auto* main = qobject_cast<MainWindowViewController*>(widget)) {
                main->sharedstuff().something_to_save = false;
                windows.append(widget);
            } else if (qobject_cast<NewProjectWindow*>(widget) != nullptr) {
                windows.append(widget);
            }
        }
        qDeleteAll(windows);
        m_delegate.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    [[nodiscard]] QString file(const QString& name) const {
        return m_folder->path() + QStringLiteral("/files/") + name;
    }
    // A project "Shoot" made and opened as the chooser does, with its window.
    void openProject() {
        openShootProject(m_folder->path() + QStringLiteral("/projects"), *m_delegate, m_interaction,
                         m_window);
    }

    QTemporaryDir m_settingsDir;
    std::unique_ptr<QTemporaryDir> m_folder;
    base::ScriptedInteraction* m_interaction = nullptr;
    std::unique_ptr<AppDelegate> m_delegate;
    QPointer<MainWindowViewController> m_window;
};

} // namespace lumbra::shell::testing
