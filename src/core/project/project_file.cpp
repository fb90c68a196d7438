#include "project/project_file.h"

#include "base/text_file.h"
#include "base/text_helpers.h"
#include "project/shared_stuff.h"

#include <limits>
#include <unordered_map>

namespace lumbra::project {

namespace {

using tables::ColumnsDefaultWidth;
using tables::ColumnsLayout;

void appendLine(std::string& out, std::string_view key, const std::vector<std::string>& fields) {
    out += key;
    for (const auto& field : fields) {
        out += '\t';
        out += field;
    }
    out += '\n';
}

void appendLine(std::string& out, std::string_view key, const std::string& field) {
    appendLine(out, key, std::vector<std::string>{field});
}

const char* flag(bool value) {
    return value ? "1" : "0";
}

std::vector<std::string> columnsOf(const std::shared_ptr<ColumnsLayout>& layout) {
    return layout ? layout->columns : std::vector<std::string>{};
}

std::string widthRuleName(ColumnsDefaultWidth rule) {
    switch (rule) {
    case ColumnsDefaultWidth::fittoheader:
        return "fittoheader";
    case ColumnsDefaultWidth::fittocontent:
        return "fittocontent";
    case ColumnsDefaultWidth::fixed:
        return "fixed";
    case ColumnsDefaultWidth::asneeded:
        break;
    }
    return "asneeded";
}

// A count that an int holds, or nothing.
std::optional<int> parseCount(std::string_view token) {
    std::optional<long long> value = base::parseInteger(token);
    if (!value || *value < std::numeric_limits<int>::min() || *value > std::numeric_limits<int>::max())
        return std::nullopt;
    return static_cast<int>(*value);
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> out;
    std::size_t start = 0;
    while (true) {
        std::size_t end = text.find(separator, start);
        out.emplace_back(
            text.substr(start, end == std::string_view::npos ? std::string_view::npos : end - start));
        if (end == std::string_view::npos)
            return out;
        start = end + 1;
    }
}

std::vector<std::string> tail(const std::vector<std::string>& tokens, std::size_t from) {
    return from < tokens.size()
               ? std::vector<std::string>(tokens.begin() + static_cast<long>(from), tokens.end())
               : std::vector<std::string>{};
}

// The earlier status bar line: pairs of kind and text, each adding a token or plain text.
std::string olderStatusBarRule(const std::vector<std::string>& tokens) {
    std::string rule;
    for (std::size_t i = 1; i + 1 < tokens.size(); i += 2) {
        const std::string& kind = tokens[i];
        const std::string& text = tokens[i + 1];
        if (kind == "operation")
            rule += "#{" + text + "}";
        else if (kind == "column")
            rule += "@{" + text + "}";
        else
            rule += text;
    }
    return rule;
}

enum class Key {
    text,
    flag,
    columnsdefaultwidth,
    tags,
    baselayout,
    lastselecteddefault,
    projectlayout,
    userdefinedproperty,
    timeInMinBackup,
    maxNBackup,
    maxShowBinToImport,
    statusBarRuleNew,
    statusBarRuleOld,
    binNamingRule,
    tree,
    smarttree,
};

const std::unordered_map<std::string_view, Key>& keys() {
    static const std::unordered_map<std::string_view, Key> map = {
        {"fps", Key::text},
        {"tlResolution", Key::text},
        {"sound", Key::text},
        {"tapeid", Key::text},
        {"filmformat", Key::text},
        {"archiveOriginalData", Key::flag},
        {"gang", Key::flag},
        {"saveff", Key::flag},
        {"autosave", Key::flag},
        {"columnsdefaultwidth", Key::columnsdefaultwidth},
        {"tags", Key::tags},
        {"baselayout", Key::baselayout},
        {"lastselecteddefault", Key::lastselecteddefault},
        {"projectlayout", Key::projectlayout},
        {"userdefinedproperty", Key::userdefinedproperty},
        {"timeInMinBackup", Key::timeInMinBackup},
        {"maxNBackup", Key::maxNBackup},
        {"maxShowBinToImport", Key::maxShowBinToImport},
        {"statusBarRule2.0", Key::statusBarRuleNew},
        {"statusBarRule", Key::statusBarRuleOld},
        {"binNamingRule", Key::binNamingRule},
        {"treeentry", Key::tree},
        {"treecreated", Key::tree},
        {"treemodified", Key::tree},
        {"treedisplayname", Key::tree},
        {"smarttreeentry", Key::smarttree},
        {"smarttreecreated", Key::smarttree},
        {"smarttreemodified", Key::smarttree},
        {"smarttreedisplayname", Key::smarttree},
    };
    return map;
}

std::optional<std::string>* textField(SharedStuff& s, std::string_view key) {
    if (key == "fps")
        return &s.fps;
    if (key == "tlResolution")
        return &s.tlResolution;
    if (key == "sound")
        return &s.sound;
    if (key == "tapeid")
        return &s.tapeId;
    return &s.film_format;
}

bool* flagField(SharedStuff& s, std::string_view key) {
    if (key == "archiveOriginalData")
        return &s.archiveOriginalData;
    if (key == "gang")
        return &s.gang;
    if (key == "saveff")
        return &s.saving_film_format;
    return &s.autosave;
}

void readColumnsWidth(const std::vector<std::string>& tokens, tables::ProjectLayouts& layouts) {
    const std::string& rule = tokens[1];
    if (rule == "fixed") {
        layouts.columnsdefaultwidth = ColumnsDefaultWidth::fixed;
        if (auto width = tokens.size() > 2 ? base::parseFloat(tokens[2]) : std::nullopt)
            layouts.columnsfixedwidth = static_cast<double>(*width);
    } else if (rule == "fittoheader") {
        layouts.columnsdefaultwidth = ColumnsDefaultWidth::fittoheader;
    } else if (rule == "fittocontent") {
        layouts.columnsdefaultwidth = ColumnsDefaultWidth::fittocontent;
    } else {
        layouts.columnsdefaultwidth = ColumnsDefaultWidth::asneeded;
    }
}

void readLine(const std::vector<std::string>& tokens, Key key, SharedStuff& s, ProjectFileNotes& notes) {
    const std::string& name = tokens[0];
    tables::ProjectLayouts& layouts = s.projectLayouts;
    switch (key) {
    case Key::text:
        *textField(s, name) = tokens[1];
        break;
    case Key::flag:
        *flagField(s, name) = tokens[1] == "1";
        break;
    case Key::columnsdefaultwidth:
        readColumnsWidth(tokens, layouts);
        break;
    case Key::tags:
        // Tags that are written are read back: otherwise every open and save would lose them.
        s.projectTags = tail(tokens, 1);
        break;
    case Key::baselayout:
        notes.hadBaseLayout = true;
        layouts.baseLayout = std::make_shared<ColumnsLayout>("Default", tail(tokens, 1));
        break;
    case Key::lastselecteddefault:
        layouts.lastSelectedDefault = std::make_shared<ColumnsLayout>(tokens[1], tail(tokens, 2));
        break;
    case Key::projectlayout:
        notes.hadProjectLayout = true;
        layouts.projectLayout = std::make_shared<ColumnsLayout>("Project Default", tail(tokens, 1));
        break;
    case Key::userdefinedproperty:
        if (tokens.size() >= 3)
            s.userDefinedProperties[tokens[1]] = tokens[2];
        break;
    case Key::timeInMinBackup:
        s.timeInMinBackup = base::parseDecimal(tokens[1]).value_or(5.0);
        break;
    case Key::maxNBackup:
        s.maxNBackup = parseCount(tokens[1]).value_or(1);
        break;
    case Key::maxShowBinToImport:
        s.maxShowBinToImport = parseCount(tokens[1]).value_or(10);
        break;
    case Key::statusBarRuleNew:
        s.statusBarRule = tokens[1];
        break;
    case Key::statusBarRuleOld:
        s.statusBarRule = olderStatusBarRule(tokens);
        break;
    case Key::binNamingRule:
        s.binNamingRule = tokens[1];
        break;
    case Key::tree:
        notes.treeentry = notes.treeentry || name == "treeentry";
        notes.treeLines.push_back(tokens);
        break;
    case Key::smarttree:
        notes.smarttreeentry = notes.smarttreeentry || name == "smarttreeentry";
        notes.smartTreeLines.push_back(tokens);
        break;
    }
}

} // namespace

std::string projectFileText(const SharedStuff& s) {
    const tables::ProjectLayouts& layouts = s.projectLayouts;
    std::string out = s.projectName.value_or("") + "\n";
    // An absent value leaves the bare key, which a reader passes over: absent stays absent.
    auto optionalLine = [&](std::string_view key, const std::optional<std::string>& value) {
        appendLine(out, key, value ? std::vector<std::string>{*value} : std::vector<std::string>{});
    };
    optionalLine("fps", s.fps);
    optionalLine("tlResolution", s.tlResolution);
    optionalLine("sound", s.sound);
    if (s.tapeId)
        appendLine(out, "tapeid", *s.tapeId);
    if (s.film_format)
        appendLine(out, "filmformat", *s.film_format);
    appendLine(out, "gang", flag(s.gang));
    appendLine(out, "saveff", flag(s.saving_film_format));
    appendLine(out, "autosave", flag(s.autosave));
    appendLine(out, "archiveOriginalData", flag(s.archiveOriginalData));
    if (layouts.columnsdefaultwidth == ColumnsDefaultWidth::fixed)
        appendLine(out, "columnsdefaultwidth", {"fixed", base::formatDecimal(layouts.columnsfixedwidth)});
    else
        appendLine(out, "columnsdefaultwidth", widthRuleName(layouts.columnsdefaultwidth));
    if (!s.projectTags.empty())
        appendLine(out, "tags", s.projectTags);
    appendLine(out, "baselayout", columnsOf(layouts.baseLayout));
    if (layouts.lastSelectedDefault) {
        std::vector<std::string> fields{layouts.lastSelectedDefault->name};
        fields.insert(fields.end(), layouts.lastSelectedDefault->columns.begin(),
                      layouts.lastSelectedDefault->columns.end());
        appendLine(out, "lastselecteddefault", fields);
    }
    appendLine(out, "projectlayout", columnsOf(layouts.projectLayout));
    for (const auto& [key, value] : s.userDefinedProperties)
        appendLine(out, "userdefinedproperty", {key, value});
    appendLine(out, "timeInMinBackup", base::formatDecimal(s.timeInMinBackup));
    appendLine(out, "maxNBackup", std::to_string(s.maxNBackup));
    appendLine(out, "maxShowBinToImport", std::to_string(s.maxShowBinToImport));
    appendLine(out, "statusBarRule2.0", s.statusBarRule);
    appendLine(out, "binNamingRule", s.binNamingRule);
    return out;
}

bool writeProjectFile(const SharedStuff& sharedstuff, const std::string& path) {
    return base::writeFileAtomically(path, projectFileText(sharedstuff));
}

ProjectFileNotes readProjectFileText(std::string_view text, SharedStuff& s) {
    ProjectFileNotes notes;
    std::string plain(text);
    for (std::size_t at = plain.find("\r\n"); at != std::string::npos; at = plain.find("\r\n", at))
        plain.erase(at, 1);
    // Split plainly on line feeds and tabs: a double quote in a rule or a name is text, not grouping.
    const std::vector<std::string> lines = split(plain, '\n');
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const std::vector<std::string> tokens = split(lines[i], '\t');
        auto found = keys().find(tokens[0]);
        if (found == keys().end() || (tokens.size() < 2 && found->second != Key::baselayout))
            continue;
        readLine(tokens, found->second, s, notes);
    }
    // A file cut short (a disk that filled, a copy that stopped) lacks its later lines: saving what
    // was read would replace the settings it lost with empty ones.
    for (const char* key : {"fps", "tlResolution", "sound", "baselayout"}) {
        bool found = false;
        for (std::size_t i = 1; i < lines.size() && !found; ++i)
            found = lines[i] == key || lines[i].starts_with(std::string(key) + "\t");
        if (!found)
            notes.damage.push_back(std::string("no ") + key + " line");
    }
    if (!plain.empty() && plain.back() != '\n')
        notes.damage.push_back("a cut last line");
    // The project starts with standing layouts already, so "absent" means no line of the file set them.
    tables::ProjectLayouts& layouts = s.projectLayouts;
    if (!notes.hadBaseLayout)
        layouts.baseLayout = std::make_shared<ColumnsLayout>("Default");
    if (!notes.hadProjectLayout)
        layouts.projectLayout =
            std::make_shared<ColumnsLayout>("Project Default", layouts.baseLayout->columns);
    s.columns = layouts.baseLayout->columns;
    return notes;
}

std::optional<ProjectFileNotes> readProjectFile(const std::string& path, SharedStuff& sharedstuff,
                                                base::Notifications* notifications) {
    std::optional<std::string> text = base::readTextFile(path, notifications);
    if (!text)
        return std::nullopt;
    return readProjectFileText(*text, sharedstuff);
}

} // namespace lumbra::project
