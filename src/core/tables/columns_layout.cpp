#include "tables/columns_layout.h"

#include "base/console.h"
#include "base/file_names.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "base/text_order.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <unordered_set>

namespace lumbra::tables {

namespace fs = std::filesystem;

namespace {

constexpr const char* colorTagColumn = "Lumbra_Color_Tag";

// A "/" would open a folder of its own, so it stands as "_" on disk; the name line keeps it.
std::string diskName(std::string_view name) {
    std::string out(name);
    std::replace(out.begin(), out.end(), '/', '_');
    return out;
}

// Widths are read back as 32-bit numbers, so one that is exactly such a number is written in the
// shortest form that reads back as it, and a width read from a file is saved again as it was read.
std::string formatWidth(double width) {
    constexpr double floatMax = std::numeric_limits<float>::max();
    if (std::isfinite(width) && std::fabs(width) <= floatMax) {
        float narrow = static_cast<float>(width);
        char buffer[64];
        auto [end, ec] = std::to_chars(buffer, buffer + sizeof buffer, narrow, std::chars_format::fixed);
        if (ec == std::errc() && static_cast<double>(narrow) == width) {
            std::string out(buffer, end);
            if (out.find('.') == std::string::npos)
                out += ".0";
            return out;
        }
    }
    return base::formatDecimal(width);
}

// Tab-separated parts of a column line, empty ones dropped.
std::vector<std::string_view> tabParts(std::string_view line) {
    std::vector<std::string_view> parts;
    std::size_t start = 0;
    while (start <= line.size()) {
        std::size_t tab = line.find('\t', start);
        std::size_t stop = tab == std::string_view::npos ? line.size() : tab;
        if (stop > start)
            parts.push_back(line.substr(start, stop - start));
        start = stop + 1;
    }
    return parts;
}

} // namespace

std::string printedList(const std::vector<std::string>& items) {
    std::string out = "[";
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0)
            out += ", ";
        out += '"';
        for (char c : items[i]) {
            if (c == '"' || c == '\\')
                out += '\\';
            out += c;
        }
        out += '"';
    }
    return out + "]";
}

ColumnsLayout::ColumnsLayout(std::string name) : name(std::move(name)) {
}

ColumnsLayout::ColumnsLayout(std::string name, std::vector<std::string> columns)
    : name(std::move(name)), columns(std::move(columns)) {
}

std::string ColumnsLayout::layoutText() const {
    std::string text = name;
    for (const auto& column : columns) {
        text += '\n';
        text += column;
        if (auto it = colwidths.find(column); it != colwidths.end()) {
            text += '\t';
            text += formatWidth(it->second);
        }
    }
    return text;
}

std::string ColumnsLayout::fileName() const {
    return diskName(name) + std::string(fileSuffix);
}

std::string ColumnsLayout::folderName() {
    return diskName(name) + " - " + uuid();
}

bool ColumnsLayout::save(const std::string& folder, bool isCopy, base::Notifications* notifications) {
    base::printLine("saving layout " + name);
    if (!Saveable::save(folder, isCopy, notifications))
        return false;
    std::string path = (fs::path(folder) / fileName()).string();
    auto fail = [&](const std::string& printed) {
        base::printLine(printed);
        // The base save marked the layout saved, yet the disk does not hold it: the next save retries.
        if (!isCopy)
            hasChanged = true;
        if (notifications)
            notifications->emplace_back("Error saving layout", "Error saving " + path,
                                        base::NotificationType::KO);
        return false;
    };
    std::string text = layoutText();
    // A file that already says the same is left alone, so an unchanged layout keeps its file's time.
    if (base::readFileBytes(path) != text && !base::writeFileAtomically(path, text))
        return fail("Error saving " + path);
    // A rename leaves the old name's file behind and a load takes the first in the listing, so only
    // the file just written may stay; one that cannot be removed fails the save.
    std::string ownName = fileName();
    std::error_code ec;
    for (const auto& entry : fs::directory_iterator(folder, ec)) {
        std::error_code removeError;
        if (entry.is_regular_file(removeError) && entry.path().filename() != ownName &&
            base::hasSuffix(entry.path().filename().string(), ColumnsLayout::fileSuffix) &&
            !fs::remove(entry.path(), removeError) && removeError)
            return fail("ERROR removing " + entry.path().string());
    }
    return true;
}

bool ColumnsLayout::load(const std::string& folder, base::Notifications* notifications) {
    if (!Saveable::load(folder, notifications))
        return false;
    columns.clear();
    // Widths belong to the columns just read; none from an earlier content may linger.
    colwidths.clear();
    std::optional<std::string> text;
    if (auto file = base::findFile(folder, fileSuffix, notifications, true))
        text = base::readTextFile(*file, notifications);
    if (!text) {
        if (notifications)
            notifications->emplace_back("Error loading layout", "Error reading layout in " + folder,
                                        base::NotificationType::WARNING);
        return false;
    }
    readLayoutText(*text);
    return true;
}

void ColumnsLayout::readLayoutText(std::string_view text) {
    columns.clear();
    colwidths.clear();
    auto lines = base::tokenise(text, "\n");
    name = lines.front();
    columns.reserve(lines.size() - 1);
    for (std::size_t i = 1; i < lines.size(); ++i) {
        auto parts = tabParts(lines[i]);
        if (parts.empty())
            continue;
        columns.emplace_back(parts[0]);
        if (parts.size() >= 2) {
            // A width is what a 32-bit number can hold.
            if (auto width = base::parseFloat(parts[1]))
                colwidths[columns.back()] = *width;
        }
    }
}

ProjectLayouts::ProjectLayouts()
    : baseLayout(std::make_shared<ColumnsLayout>("Default")),
      projectLayout(std::make_shared<ColumnsLayout>("Project Default")) {
}

const std::shared_ptr<ColumnsLayout>& ProjectLayouts::systemLayout() {
    std::vector<std::string> wanted(systemLayoutColumns.begin(), systemLayoutColumns.end());
    if (!m_systemLayout)
        m_systemLayout = std::make_shared<ColumnsLayout>("System", std::move(wanted));
    else if (m_systemLayout->columns != wanted)
        m_systemLayout->columns = std::move(wanted);
    return m_systemLayout;
}

std::string ProjectLayouts::uniqueLayoutName(std::string_view base) const {
    std::unordered_set<std::string_view> taken;
    taken.reserve(layouts.size());
    for (const auto& layout : layouts)
        taken.insert(layout->name);
    for (int n = 1;; ++n) {
        char suffix[24];
        std::snprintf(suffix, sizeof suffix, "_%02d", n);
        std::string candidate = std::string(base) + suffix;
        if (!taken.contains(candidate))
            return candidate;
    }
}

std::string ProjectLayouts::layoutNamed(const std::vector<std::string>& columns,
                                        base::Notifications* notifications) {
    std::unordered_set<std::string_view> wanted(columns.begin(), columns.end());
    for (const auto& layout : layouts) {
        if (layout->columns.size() == columns.size() &&
            std::all_of(layout->columns.begin(), layout->columns.end(),
                        [&](const std::string& column) { return wanted.contains(column); }))
            return layout->name;
    }
    auto layout = std::make_shared<ColumnsLayout>(uniqueLayoutName("Lay"), columns);
    if (!wanted.contains(colorTagColumn))
        layout->columns.emplace_back(colorTagColumn);
    std::string name = layout->name;
    layouts.push_back(std::move(layout));
    sortLayouts();
    std::string message = "Automatically created layout " + name + " with columns: " + printedList(columns);
    base::printLine(message);
    if (notifications)
        notifications->emplace_back("Layout Added", message, base::NotificationType::WARNING);
    return name;
}

void ProjectLayouts::sortLayouts() {
    std::vector<std::pair<std::string, std::shared_ptr<ColumnsLayout>>> keyed;
    keyed.reserve(layouts.size());
    for (auto& layout : layouts)
        keyed.emplace_back(base::sortKey(layout->name), std::move(layout));
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (std::size_t i = 0; i < keyed.size(); ++i)
        layouts[i] = std::move(keyed[i].second);
}

} // namespace lumbra::tables
