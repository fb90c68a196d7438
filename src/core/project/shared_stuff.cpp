#include "project/shared_stuff.h"

#include "base/console.h"
#include "project/bin.h"
#include "project/name_makers.h"
#include "project/project_saver.h"
#include "project/tag_trees.h"
#include "tables/ale_table.h"

#include <algorithm>
#include <cstdio>

namespace lumbra::project {

using base::printLine;

SharedStuff::SharedStuff(base::UserInteraction* interaction)
    : ProjectContents(this), SessionState(interaction), m_saver(std::make_unique<ProjectSaver>(*this)) {
}

SharedStuff::~SharedStuff() = default;

std::optional<std::string> SharedStuff::projectPath() const {
    if (!currentFolder || !projectName)
        return std::nullopt;
    return *currentFolder + "/" + *projectName;
}

void SharedStuff::addBin(std::shared_ptr<Bin> bin, BinsTreeEntry* group) {
    if (group) {
        group->addBin(std::move(bin));
        group->rebuildArray();
        bins->rebuildArray();
    } else {
        bins->addBin(std::move(bin));
    }
    for (SharedStuffDelegate* delegate : delegates)
        delegate->reloadBinsLists();
    projectChanged();
}

void SharedStuff::addSmartbin(std::shared_ptr<Bin> bin, BinsTreeEntry* group) {
    SmartTableLink* smart = bin ? smartLink(*bin) : nullptr;
    if (!smart) {
        printLine("ERROR: only a bin with a smart table enters the smart bins tree");
        return;
    }
    Bin& added = *bin;
    if (group)
        group->addBin(std::move(bin));
    else
        smartbins->addBin(std::move(bin));
    for (Bin* source : bins->toarray)
        smart->reEvaluateAll(*source);
    if (added.selected() && added.box())
        added.box()->refresh();
    if (group)
        group->rebuildArray();
    smartbins->rebuildArray();
    rebuildTagTrees();
    for (SharedStuffDelegate* delegate : delegates)
        delegate->reloadBinsLists();
    projectChanged();
}

void SharedStuff::refreshSmartbins(Bin& bin, bool refreshBin) {
    for (Bin* smartbin : smartbins->toarray) {
        SmartTableLink* smart = smartLink(*smartbin);
        if (smart && bin.table() && bin.table()->bin)
            smart->reEvaluateAll(bin);
        if (smartbin->selected() && smartbin->box())
            smartbin->box()->refresh();
    }
    if (refreshBin && bin.selected() && bin.box())
        bin.box()->refresh();
    rebuildTagTrees();
}

bool SharedStuff::addJob(TarelJob job) {
    auto it = std::find_if(tareljobs.begin(), tareljobs.end(),
                           [&](const TarelJob& j) { return j.name == job.name; });
    if (it != tareljobs.end()) {
        const base::AlertRequest request{"Delete Existing Job?",
                                         "A job named " + job.name + " already exists. Overwrite it?",
                                         base::AlertStyle::Warning,
                                         {"Overwrite", "Cancel"},
                                         false};
        // Without anyone to ask, an existing job is never overwritten.
        if (!interaction || interaction->alert(request).button != 0)
            return false;
        tareljobs.erase(it);
    }
    tareljobs.push_back(std::move(job));
    return true;
}

void SharedStuff::projectChanged() {
    if (autosave)
        save();
    else
        something_to_save = true;
}

std::shared_ptr<tables::ColumnsLayout> SharedStuff::baseLayout() const {
    return projectLayouts.baseLayout;
}

std::unique_ptr<BinBoxLink> SharedStuff::makeBox(Bin& bin) {
    return mainWindow ? mainWindow->makeBox(bin) : nullptr;
}

void SharedStuff::showBox(Bin& bin, bool shown) {
    if (!shown && activeBin == &bin)
        activeBin = nullptr;
    if (mainWindow)
        mainWindow->showBox(bin, shown);
}

void SharedStuff::openAfterLoading(Bin& bin) {
    openthesebinsafterloading.push_back(&bin);
}

void SharedStuff::rebuildTagTrees() {
    TagTrees trees = buildTagTrees(*bins, *smartbins);
    tagThreeWithSmartbins = std::move(trees.withSmartbins);
    tagThreeWithoutSmartbins = std::move(trees.withoutSmartbins);
}

void SharedStuff::rowChanged(tables::ALEEntry& row) {
    tables::EntryPtr handle = row.weak_from_this().lock();
    if (!handle)
        return;
    for (Bin* smartbin : smartbins->toarray) {
        if (SmartTableLink* smart = smartLink(*smartbin))
            smart->reEvaluate(handle);
    }
}

std::optional<std::string> ProjectSettings::interpretProjectToken(std::string_view token) const {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    return interpretProjectToken(token, local);
}

std::optional<std::string> ProjectSettings::interpretProjectToken(std::string_view token,
                                                                  const std::tm& now) const {
    auto twoDigits = [](int n) {
        char buffer[16];
        std::snprintf(buffer, sizeof buffer, "%02d", n);
        return std::string(buffer);
    };
    const int year = now.tm_year + 1900;
    const int month = now.tm_mon + 1;
    if (token == "projname")
        return projectName.value_or("");
    if (token == "date")
        return twoDigits(now.tm_mday) + "_" + twoDigits(month) + "_" + twoDigits(year);
    if (token == "day")
        return twoDigits(now.tm_mday);
    if (token == "month")
        return twoDigits(month);
    if (token == "year")
        return twoDigits(year);
    const std::pair<std::string_view, const std::optional<std::string>*> fields[] = {
        {"projfps", &fps},     {"projresolution", &tlResolution}, {"projtape", &tapeId},
        {"projsound", &sound}, {"projfilmformat", &film_format},
    };
    for (const auto& [name, field] : fields) {
        if (token == name)
            return field->value_or("");
    }
    auto property = userDefinedProperties.find(std::string(token));
    if (property != userDefinedProperties.end())
        return property->second;
    return std::nullopt;
}

ProjectContents::ProjectContents(BinsHost* host)
    : bins(std::make_shared<BinsTreeEntry>("root", nullptr, std::vector<TreeNode>{}, host)),
      smartbins(std::make_shared<BinsTreeEntry>("smartbins", nullptr, std::vector<TreeNode>{}, host)) {
    TagTrees trees = emptyTagTrees();
    tagThreeWithSmartbins = std::move(trees.withSmartbins);
    tagThreeWithoutSmartbins = std::move(trees.withoutSmartbins);
}

std::vector<Bin*> ProjectContents::openBins() const {
    std::vector<Bin*> out;
    std::copy_if(bins->toarray.begin(), bins->toarray.end(), std::back_inserter(out),
                 [](const Bin* b) { return b->selected(); });
    out.insert(out.end(), smartbins->toarray.begin(), smartbins->toarray.end());
    return out;
}

std::vector<Bin*> ProjectContents::allBins() const {
    std::vector<Bin*> out = bins->toarray;
    out.insert(out.end(), smartbins->toarray.begin(), smartbins->toarray.end());
    return out;
}

tables::OrderedStringList ProjectContents::allColumns() const {
    tables::OrderedStringList out(true);
    auto addAll = [&](const std::vector<std::string>& names) {
        for (const auto& name : names)
            out.insert(name);
    };
    for (const Bin* bin : allBins()) {
        if (bin->table())
            addAll(bin->table()->cols);
    }
    for (const auto& layout : projectLayouts.layouts)
        addAll(layout->columns);
    if (projectLayouts.baseLayout)
        addAll(projectLayouts.baseLayout->columns);
    return out;
}

bool ProjectContents::removeJob(const std::string& name) {
    auto it =
        std::find_if(tareljobs.begin(), tareljobs.end(), [&](const TarelJob& j) { return j.name == name; });
    if (it == tareljobs.end())
        return false;
    tareljobs.erase(it);
    return true;
}

std::string ProjectContents::nextBinName() const {
    return project::nextBinName(*bins, *smartbins);
}

std::string ProjectContents::nextGroupName() const {
    return project::nextGroupName(*bins, *smartbins);
}

std::string ProjectContents::nextSmartbinName() const {
    return project::nextSmartbinName(*bins, *smartbins);
}

std::string ProjectContents::uniqueId(const std::string& name) const {
    return project::uniqueId(name, *bins, *smartbins);
}

std::string ProjectContents::uniqueName(const std::string& name) const {
    return project::uniqueName(name, *bins, *smartbins);
}

void SessionState::refreshOpenBoxes() {
    for (SharedStuffDelegate* delegate : delegates)
        delegate->refreshOpenBoxes();
}

void SessionState::refreshLayoutButtons() {
    for (SharedStuffDelegate* delegate : delegates)
        delegate->refreshLayoutButtons();
}

void SessionState::flushBufferedNotifications() {
    if (interaction && !bufferedNotifications.empty())
        interaction->notify(bufferedNotifications);
    bufferedNotifications.clear();
}

void SessionState::addLog(const std::string& text, bool notify, const std::string& title,
                          base::NotificationType kind) {
    if (mainWindow && interaction) {
        interaction->addLog(text, notify, title, kind);
        return;
    }
    printLine(text);
    if (notify)
        bufferedNotifications.emplace_back(title, text, kind);
}

} // namespace lumbra::project
