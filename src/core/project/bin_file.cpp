#include "project/bin_file.h"

#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "project/bin.h"
#include "tables/columns_layout.h"

#include <filesystem>

namespace lumbra::project {

using base::NotificationType;
using base::printLine;

namespace {

void appendLine(std::string& out, std::string_view key, const std::vector<std::string>& fields = {}) {
    out.append(key);
    for (const auto& field : fields) {
        out.push_back('\t');
        out.append(field);
    }
    out.push_back('\n');
}

void appendOptional(std::string& out, std::string_view key, const std::optional<std::string>& value) {
    if (value)
        appendLine(out, key, {*value});
}

std::vector<std::string> tail(const std::vector<std::string>& tokens, std::size_t from) {
    if (tokens.size() <= from)
        return {};
    return {tokens.begin() + static_cast<long>(from), tokens.end()};
}

} // namespace

std::string binFileText(const Bin& bin) {
    std::string out;
    appendLine(out, binkeys::tableid, {bin.table() ? bin.table()->tablename : std::string()});
    if (bin.layout) {
        std::vector<std::string> fields{bin.layout->name};
        fields.insert(fields.end(), bin.layout->columns.begin(), bin.layout->columns.end());
        appendLine(out, binkeys::layout, fields);
    } else {
        // With no layout at all the key stands alone, which a reader passes over: the default stays.
        appendLine(out, binkeys::layout);
    }
    appendLine(out, binkeys::displayname, {bin.displayName()});
    if (bin.selected())
        appendLine(out, binkeys::selected);
    if (!bin.tags.empty())
        appendLine(out, binkeys::tags, bin.tags);
    if (bin.isLock())
        appendLine(out, binkeys::islock);
    if (!bin.lockedColumns.empty())
        appendLine(out, binkeys::locked, bin.lockedColumns);
    appendOptional(out, binkeys::originalmeta_fps, bin.originalmeta_fps);
    appendOptional(out, binkeys::originalmeta_filmformat, bin.originalmeta_filmformat);
    appendOptional(out, binkeys::originalmeta_videoformat, bin.originalmeta_videoformat);
    appendOptional(out, binkeys::originalmeta_audioformat, bin.originalmeta_audioformat);
    appendOptional(out, binkeys::originalmeta_tape, bin.originalmeta_tape);
    return out;
}

void applyBinFileText(Bin& bin, std::string_view text) {
    for (const auto& line : base::tokenise(text, "\n")) {
        auto tokens = base::tokenise(line, "\t");
        const std::string& key = tokens.front();
        if (key == binkeys::selected) {
            bin.setSelected(true);
            continue;
        }
        if (key == binkeys::islock) {
            bin.setLock(true);
            continue;
        }
        if (key == binkeys::tags) {
            auto more = tail(tokens, 1);
            bin.tags.insert(bin.tags.end(), more.begin(), more.end());
            continue;
        }
        if (key == binkeys::locked) {
            auto more = tail(tokens, 1);
            bin.lockedColumns.insert(bin.lockedColumns.end(), more.begin(), more.end());
            continue;
        }
        // Every other key needs a value: a key alone on its line is passed over.
        if (tokens.size() < 2)
            continue;
        const std::string& value = tokens[1];
        if (key == binkeys::tableid || key == binkeys::title) {
            if (bin.table())
                bin.table()->tablename = value;
        } else if (key == binkeys::displayname) {
            bin.setDisplayName(value);
        } else if (key == binkeys::layout) {
            bin.layout = std::make_shared<tables::ColumnsLayout>(value, tail(tokens, 2));
        } else if (key == binkeys::originalmeta_fps) {
            bin.originalmeta_fps = value;
        } else if (key == binkeys::originalmeta_filmformat) {
            bin.originalmeta_filmformat = value;
        } else if (key == binkeys::originalmeta_videoformat) {
            bin.originalmeta_videoformat = value;
        } else if (key == binkeys::originalmeta_audioformat) {
            bin.originalmeta_audioformat = value;
        } else if (key == binkeys::originalmeta_tape) {
            bin.originalmeta_tape = value;
        }
    }
}

bool Bin::writeBinFile(const std::string& folder, base::Notifications* notifications) {
    auto path = (std::filesystem::path(folder) / (fileStem() + ".bin")).string();
    return base::writeFileAtomically(path, binFileText(*this));
}

bool Bin::readBinFile(const std::string& path, base::Notifications* notifications) {
    auto text = base::readTextFile(path);
    if (!text) {
        printLine("Warning: bin file unreadable, default values used");
        if (notifications)
            notifications->emplace_back(".BIN file error",
                                        "Error reading " + path + ". Default values used for bin.",
                                        NotificationType::WARNING);
        return false;
    }
    applyBinFileText(*this, *text);
    hasChanged = false;
    return true;
}

} // namespace lumbra::project
