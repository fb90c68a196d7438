#include "project/name_makers.h"

#include "project/bins_tree_entry.h"

#include <cstdio>

namespace lumbra::project {

namespace {

std::string numbered(const char* pattern, int n) {
    char buffer[256];
    std::snprintf(buffer, sizeof buffer, pattern, n);
    return buffer;
}

} // namespace

NameIndex::NameIndex(const BinsTreeEntry& bins, const BinsTreeEntry& smartbins, Key key) {
    for (const BinsTreeEntry* tree : {&bins, &smartbins}) {
        auto names = key == Key::id ? tree->allIds() : tree->allNames();
        m_names.insert(std::make_move_iterator(names.begin()), std::make_move_iterator(names.end()));
    }
}

bool NameIndex::contains(std::string_view name) const {
    return m_names.count(std::string(name)) != 0;
}

std::string NameIndex::next(const char* pattern) {
    for (int n = 1;; ++n) {
        std::string candidate = numbered(pattern, n);
        if (m_names.insert(candidate).second)
            return candidate;
    }
}

std::string NameIndex::unique(const std::string& name) {
    if (m_names.insert(name).second)
        return name;
    for (int n = 2;; ++n) {
        std::string candidate = name + numbered("_%02d", n);
        if (m_names.insert(candidate).second)
            return candidate;
    }
}

std::string nextBinName(const BinsTreeEntry& bins, const BinsTreeEntry& smartbins) {
    return NameIndex(bins, smartbins, NameIndex::Key::id).next("bin_%02d");
}

std::string nextGroupName(const BinsTreeEntry& bins, const BinsTreeEntry& smartbins) {
    return NameIndex(bins, smartbins, NameIndex::Key::id).next("Group_%02d");
}

std::string nextSmartbinName(const BinsTreeEntry& bins, const BinsTreeEntry& smartbins) {
    return NameIndex(bins, smartbins, NameIndex::Key::id).next("smartbin_%02d");
}

std::string uniqueId(const std::string& name, const BinsTreeEntry& bins, const BinsTreeEntry& smartbins) {
    return NameIndex(bins, smartbins, NameIndex::Key::id).unique(name);
}

std::string uniqueName(const std::string& name, const BinsTreeEntry& bins, const BinsTreeEntry& smartbins) {
    return NameIndex(bins, smartbins, NameIndex::Key::name).unique(name);
}

} // namespace lumbra::project
