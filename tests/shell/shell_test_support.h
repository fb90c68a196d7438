#pragma once

#include "app_delegate.h"
#include "base/scripted_interaction.h"
#include "main_window.h"
#include "project/project_creation.h"
#include "project/project_loader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QPointer>
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

} // namespace lumbra::shell::testing
