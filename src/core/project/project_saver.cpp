#include "project/project_saver.h"

#include "project/shared_stuff.h"

namespace lumbra::project {

ProjectSaver::ProjectSaver(SharedStuff& sharedstuff) : sharedstuff(sharedstuff) {
}

bool SharedStuff::save() {
    return m_saver->save();
}

bool SharedStuff::saveCopy(const std::string& url, std::string* resultPath) {
    return m_saver->saveCopy(url, resultPath);
}

bool SharedStuff::saveCompressed(const std::string& url, std::string* resultPath) {
    return m_saver->saveCompressed(url, resultPath);
}

bool SharedStuff::backup(std::string* resultPath) {
    return m_saver->backup(resultPath);
}

void SharedStuff::pruneBackups() {
    m_saver->pruneBackups();
}

void SharedStuff::restartBackupTimer() {
    timer.valid = true;
    timer.intervalSeconds = timeInMinBackup * 60.0;
    if (mainWindow)
        mainWindow->backupTimerChanged();
}

void SharedStuff::backupTick() {
    pruneBackups();
    backup();
}

bool ProjectSaver::save() {
    return false;
}
bool ProjectSaver::saveCopy(const std::string&, std::string*) {
    return false;
}
bool ProjectSaver::saveCompressed(const std::string&, std::string*) {
    return false;
}
bool ProjectSaver::backup(std::string*) {
    return false;
}
void ProjectSaver::pruneBackups() {
}

} // namespace lumbra::project
