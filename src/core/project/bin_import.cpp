#include "project/bin_import.h"

#include "base/text_helpers.h"
#include "base/user_interaction.h"
#include "import/csv_parser.h"
#include "import/file_formats.h"
#include "project/bin.h"
#include "project/bins_tree_entry.h"
#include "project/name_makers.h"
#include "project/shared_stuff.h"
#include "tables/columns_layout.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>
#include <optional>
#include <span>

namespace lumbra::project {

namespace {

using base::NotificationData;
using base::NotificationType;

// Tables of these readers come from a plain table: the bin gets a layout of all their columns.
constexpr std::array<std::string_view, 5> plainTableSuffixes{".csv", ".tsv", ".edl", ".ccc", ".mhl"};
// Read through the embedded Python, and only while it is in use.
constexpr std::array<std::string_view, 4> pythonSuffixes{".aaf", ".avb", ".fcpxml", ".otio"};

bool isOneOf(std::string_view suffix, std::span<const std::string_view> list) {
    return std::find(list.begin(), list.end(), suffix) != list.end();
}

const import::FileFormat* readerFor(std::string_view extension) {
    for (const auto& format : import::fileFormats()) {
        if (format.suffix == extension && format.read)
            return &format;
    }
    return nullptr;
}

// The table takes the project's value; the difference is noted when both have one and they differ.
bool takeProjectValue(std::optional<std::string>& tableValue,
                      const std::optional<std::string>& projectValue) {
    const std::optional<std::string> original = tableValue;
    if (!projectValue || projectValue->empty())
        return false;
    tableValue = projectValue;
    return original && *original != *projectValue;
}

// Keeps the heading as read in the bin, then puts the project's values in the table; the short
// names of the values that differ, in a fixed order.
std::vector<std::string> applyProjectHeading(Bin& bin, const SharedStuff& sharedstuff) {
    tables::ALETable& table = *bin.table();
    bin.originalmeta_fps = table.fps;
    bin.originalmeta_videoformat = table.video_format;
    bin.originalmeta_audioformat = table.audio_format;
    bin.originalmeta_filmformat = table.film_format;
    bin.originalmeta_tape = table.tape;

    std::vector<std::string> differences;
    if (takeProjectValue(table.fps, sharedstuff.fps))
        differences.emplace_back("fps");
    if (takeProjectValue(table.film_format, sharedstuff.film_format))
        differences.emplace_back("ff");
    if (takeProjectValue(table.video_format, sharedstuff.tlResolution))
        differences.emplace_back("vf");
    if (takeProjectValue(table.audio_format, sharedstuff.sound))
        differences.emplace_back("af");
    if (sharedstuff.tapeId && takeProjectValue(table.tape, sharedstuff.tapeId))
        differences.emplace_back("tape");
    return differences;
}

BinsTreeEntry& targetGroup(SharedStuff& sharedstuff, const ImportTarget& target) {
    BinsTreeEntry& root = *sharedstuff.bins;
    if (!target.item)
        return root;
    if (!target.item->bin)
        return *target.item;
    BinsTreeEntry* parent = root.parent(target.item);
    return parent ? *parent : root;
}

// To the main window when it stands, else kept until the project flushes its notifications.
void handOver(SharedStuff& sharedstuff, const NotificationData& notification) {
    if (sharedstuff.mainWindow && sharedstuff.interaction)
        sharedstuff.interaction->notify({notification});
    else
        sharedstuff.bufferedNotifications.push_back(notification);
}

} // namespace

std::string importExtension(std::string_view path) {
    std::string last7 = base::lowercased(path.substr(path.size() > 7 ? path.size() - 7 : 0));
    if (last7 == ".fcpxml")
        return last7;
    return base::lowercased(path.substr(path.size() > 4 ? path.size() - 4 : 0));
}

BinImportResult addBinsFromFiles(SharedStuff& sharedstuff, const std::vector<std::string>& paths,
                                 ImportTarget target) {
    BinImportResult result;
    // One layout serves every ".csv" of the batch, asked on the text of the first; a ".tsv" asks for itself.
    std::optional<base::CsvOptions> csvOptions;
    auto firstCsv = std::find_if(paths.begin(), paths.end(),
                                 [](const std::string& path) { return importExtension(path) == ".csv"; });
    if (firstCsv != paths.end()) {
        // An unreadable first file is asked about on no text; its own failure is told when it is read.
        std::string text = import::readCSVText(*firstCsv).value_or("");
        csvOptions = import::initialOptions(*firstCsv);
        if (sharedstuff.interaction)
            csvOptions = sharedstuff.interaction->askCsvOptions(text, *csvOptions);
        if (csvOptions->user_aborted) {
            result.notifications.emplace_back("Loading aborted", "User aborted the import operation",
                                              NotificationType::KO);
            handOver(sharedstuff, result.notifications.back());
            for (SharedStuffDelegate* delegate : sharedstuff.delegates)
                delegate->reloadBinsLists();
            return result;
        }
    }
    BinsTreeEntry& group = targetGroup(sharedstuff, target);
    NameIndex ids(*sharedstuff.bins, *sharedstuff.smartbins, NameIndex::Key::id);
    // Bins dropped together keep the order of their files from the drop point on.
    long index = target.index;
    std::map<std::vector<std::string>, std::size_t> mismatchByDifferences;
    auto refuse = [&](import::ReadFailure failure) {
        sharedstuff.addLog("ERROR while opening " + failure.message(), true, "", NotificationType::KO);
        result.failures.push_back(std::move(failure));
    };

    for (const auto& path : paths) {
        std::string extension = importExtension(path);
        if (isOneOf(extension, pythonSuffixes) && !sharedstuff.usePython)
            continue;
        const import::FileFormat* format = readerFor(extension);
        if (!format)
            continue;
        base::Notifications readerNotices;
        import::ReadResult read =
            format->readDelimited ? format->readDelimited(path, extension == ".csv" ? &*csvOptions : nullptr,
                                                          sharedstuff.interaction, &readerNotices)
                                  : format->read(path, nullptr);
        result.notifications.insert(result.notifications.end(), readerNotices.begin(), readerNotices.end());
        if (read.failure) {
            refuse(std::move(*read.failure));
            continue;
        }
        std::unique_ptr<tables::ALETable> table = std::move(read.table);
        table->tablename = ids.unique(table->tablename);
        std::shared_ptr<tables::ColumnsLayout> layout =
            isOneOf(extension, plainTableSuffixes)
                ? std::make_shared<tables::ColumnsLayout>("*" + table->tablename, table->cols)
                : sharedstuff.projectLayouts.baseLayout;
        std::string id = table->tablename;
        auto bin = std::make_shared<Bin>(std::move(table), &sharedstuff, std::move(layout), true);

        std::vector<std::string> differences = applyProjectHeading(*bin, sharedstuff);
        if (!differences.empty()) {
            auto [it, added] = mismatchByDifferences.try_emplace(differences, result.mismatches.size());
            if (added)
                result.mismatches.push_back({differences, {}});
            result.mismatches[it->second].bins.push_back(bin.get());
        }

        Bin& added = *bin;
        group.addChild(std::make_shared<BinsTreeEntry>(std::move(id), std::move(bin), std::vector<TreeNode>{},
                                                       &sharedstuff),
                       index);
        if (index >= 0)
            ++index;
        result.bins.push_back(&added);
        if (static_cast<long>(result.bins.size()) <= sharedstuff.maxShowBinToImport)
            added.setSelected(true);
    }
    sharedstuff.bins->rebuildArray();
    for (Bin* bin : result.bins)
        sharedstuff.refreshSmartbins(*bin, false);

    for (const auto& mismatch : result.mismatches)
        result.notifications.emplace_back("Metadata mismatch",
                                          std::to_string(mismatch.bins.size()) +
                                              " Bins Metadata Mismatch. Click here to view/correct",
                                          NotificationType::WARNING);
    if (static_cast<long>(result.bins.size()) > sharedstuff.maxShowBinToImport)
        result.notifications.emplace_back("Many bins added",
                                          "Didn't show all the added bins to avoid cluttering",
                                          NotificationType::WARNING);
    else if (!result.bins.empty())
        result.notifications.emplace_back(
            "Load OK", "Successfully loaded " + std::to_string(result.bins.size()) + " bins",
            NotificationType::OK);
    for (const auto& notification : result.notifications)
        handOver(sharedstuff, notification);

    if (!result.bins.empty())
        sharedstuff.projectChanged();
    for (SharedStuffDelegate* delegate : sharedstuff.delegates)
        delegate->reloadBinsLists();
    return result;
}

} // namespace lumbra::project
