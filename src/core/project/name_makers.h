#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

namespace lumbra::project {

class BinsTreeEntry;

// The ids (or display names) of both trees in one set, for making many names in a row
// without walking the trees each time. Names handed out are added, so they stay distinct.
class NameIndex {
public:
    enum class Key { id, name };
    NameIndex(const BinsTreeEntry& bins, const BinsTreeEntry& smartbins, Key key);

    [[nodiscard]] bool contains(std::string_view name) const;
    // The first of pattern with 1, 2, ... ("bin_%02d") that is free; taken at once.
    std::string next(const char* pattern);
    // `name` itself when free, otherwise name + "_%02d" from 2 on; taken at once.
    std::string unique(const std::string& name);
    void add(std::string name) { m_names.insert(std::move(name)); }

private:
    std::unordered_set<std::string> m_names;
};

// "bin_%02d" with the first number that is no id in either tree.
[[nodiscard]] std::string nextBinName(const BinsTreeEntry& bins, const BinsTreeEntry& smartbins);
// The same with "Group_%02d".
[[nodiscard]] std::string nextGroupName(const BinsTreeEntry& bins, const BinsTreeEntry& smartbins);
// The same with "smartbin_%02d".
[[nodiscard]] std::string nextSmartbinName(const BinsTreeEntry& bins, const BinsTreeEntry& smartbins);
// `name` if it is no id in either tree, else name + "_%02d" from 2 on.
[[nodiscard]] std::string uniqueId(const std::string& name, const BinsTreeEntry& bins,
                                   const BinsTreeEntry& smartbins);
// The same, tested against the display names of both trees.
[[nodiscard]] std::string uniqueName(const std::string& name, const BinsTreeEntry& bins,
                                     const BinsTreeEntry& smartbins);

} // namespace lumbra::project
