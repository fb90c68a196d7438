#include "command.h"
#include "csv_options_flags.h"
#include "import/file_formats.h"
#include "project/bin.h"
#include "project/bin_import.h"
#include "project/project_creation.h"
#include "project/project_saver.h"
#include "project/setting_values.h"
#include "project/shared_stuff.h"
#include "project_session.h"
#include "subcommand.h"

#include <array>
#include <filesystem>
#include <iostream>

namespace lumbra::cli {

namespace {

namespace fs = std::filesystem;
using project::SharedStuff;

constexpr std::string_view usage =
    "Usage: lumbra-cli project create PATH [--fps F] [--resolution R] [--sound S]\n"
    "                             [--film-format F] [--tape T] [--columns A,B,C] [--from-ale FILE]\n"
    "       lumbra-cli project import PATH FILE... [--group NAME] [--yes|--no]\n"
    "                             [--separator S] [--delimiter D] [--first-line L] "
    "[--ignore-oriented-quotes]\n"
    "       lumbra-cli project info PATH [--yes|--no]\n"
    "       lumbra-cli project save PATH [--yes|--no]\n"
    "       lumbra-cli project copy PATH DEST [--yes|--no]\n"
    "       lumbra-cli project zip PATH DEST [--yes|--no]\n"
    "       lumbra-cli project backup PATH [--yes|--no]\n"
    "\n"
    "PATH is the project's folder: its parent holds the project, its last component is the name.\n"
    "Every command but create opens the project first, which ends with a save.\n"
    "\n"
    "  create   a new project; without --columns the ten columns of the system layout;\n"
    "           --from-ale takes the settings and columns from an ALE file's heading\n"
    "  import   one bin per file (.ale, .csv, .tsv...), into the group NAME (made if missing) or at the\n"
    "           top; then a save. The layout of .csv and .tsv files comes from the options below\n"
    "  info     the settings, the layouts and the bins, one line each\n"
    "  save     the project saved in its folder\n"
    "  copy     a full copy in the folder DEST (\"_02\"... when the name is taken)\n"
    "  zip      a copy zipped to DEST/<name>.zip\n"
    "  backup   a copy zipped into the project's backup folder\n"
    "\n"
    "  --yes    answer every question of the project with its first button (Proceed, Confirm...)\n"
    "  --no     answer every question with its cancelling button\n"
    "           with neither, a question stops the command with status 2 and changes nothing\n"
    "  -h, --help  show this text\n"
    "\n"
    "Layout of .csv and .tsv files (import only):\n"
    "  --separator S, --delimiter D, --first-line L, --ignore-oriented-quotes\n"
    "           as for lumbra-cli convert (see lumbra-cli convert --help)\n";

int run(std::span<const std::string> args);

const Command command{"project", "create, import into, show, save, copy, zip or back up a project", usage,
                      run};

std::string optionOr(const ParsedArguments& parsed, std::string_view name, std::string fallback) {
    auto it = parsed.values.find(name);
    return it == parsed.values.end() ? std::move(fallback) : it->second;
}

int create(const ParsedArguments& parsed) {
    const std::string& path = parsed.positional[1];
    std::optional<fs::path> argument = projectFolderArgument(path);
    if (!argument)
        return failure("Cannot create " + path + ": the working folder cannot be read");
    const fs::path& folder = *argument;
    std::string parent = folder.parent_path().string();
    std::error_code error;
    if (!fs::is_directory(parent, error))
        return failure("Cannot create " + path + ": the folder " + parent + " does not exist");

    project::NewProjectSettings settings;
    // The file's heading comes first, so that the options given with it override its values.
    if (auto it = parsed.values.find("--from-ale"); it != parsed.values.end()) {
        std::string warning;
        if (!project::settingsFromFile(it->second, settings, &warning))
            return failure("Cannot create " + path + ": " + warning + " " + it->second);
    }
    settings.name = folder.filename().string();
    settings.fps = optionOr(parsed, "--fps", settings.fps);
    settings.tlResolution = optionOr(parsed, "--resolution", settings.tlResolution);
    settings.sound = optionOr(parsed, "--sound", settings.sound);
    if (parsed.values.contains("--film-format"))
        settings.filmFormat = parsed.values.find("--film-format")->second;
    settings.tapeId = optionOr(parsed, "--tape", settings.tapeId);
    if (auto it = parsed.values.find("--columns"); it != parsed.values.end()) {
        if (it->second.empty())
            return usageError(command, "--columns needs a list of column names");
        settings.columns = splitColumns(it->second);
    }
    // A value that the project's files could not read back is a wrong command line: nothing is made.
    if (auto reason = project::unreadableSettingReason(settings))
        return usageError(command, "cannot create " + path + ": " + *reason);

    PolicyInteraction interaction(answerPolicy(parsed));
    SharedStuff sharedstuff(&interaction);
    bool saved = false;
    project::NewProjectCheck check = project::createProject(sharedstuff, parent, settings, &saved);
    switch (check.refusal) {
    case project::NewProjectRefusal::none:
        break;
    case project::NewProjectRefusal::repeatedColumn:
        return failure("Cannot create " + path + ": a column is named twice");
    case project::NewProjectRefusal::emptyName:
        return failure("Cannot create " + path + ": the project name is empty");
    default:
        return failure("Cannot create " + path + ": " + check.warning);
    }
    if (!saved)
        return failure("Cannot create " + path + ": the project could not be saved");
    std::cout << "Project created at " << *sharedstuff.projectPath() << '\n';
    return exitSuccess;
}

project::BinsTreeEntry* findGroup(SharedStuff& sharedstuff, const std::string& name) {
    for (project::BinsTreeEntry* node : sharedstuff.bins->flatten()) {
        if (node != sharedstuff.bins.get() && !node->bin && node->name() == name)
            return node;
    }
    return nullptr;
}

int import(ProjectSession& session, const ParsedArguments& parsed, const CsvFlags& csvFlags) {
    SharedStuff& sharedstuff = session.project();
    session.interaction().setCsvFlags(csvFlags);
    project::ImportTarget target;
    if (auto it = parsed.values.find("--group"); it != parsed.values.end()) {
        target.item = findGroup(sharedstuff, it->second);
        // A script names the group it wants; a group that is not there yet is made at the top.
        if (!target.item) {
            auto group = std::make_shared<project::BinsTreeEntry>(
                sharedstuff.uniqueId(it->second), nullptr, std::vector<project::TreeNode>{}, &sharedstuff);
            group->setName(it->second);
            target.item = group.get();
            sharedstuff.bins->addChild(std::move(group));
            sharedstuff.bins->rebuildArray();
        }
    }
    std::vector<std::string> files(parsed.positional.begin() + 2, parsed.positional.end());
    // The command waits for the batch's own save rather than saving once per bin.
    bool autosave = sharedstuff.autosave;
    sharedstuff.autosave = false;
    project::BinImportResult result = project::addBinsFromFiles(sharedstuff, files, target);
    sharedstuff.autosave = autosave;
    sharedstuff.flushBufferedNotifications();
    project::SaveResult saved = sharedstuff.save();
    sharedstuff.flushBufferedNotifications();
    if (!saved) {
        std::string names;
        for (const auto& name : saved.unwritten)
            names += (names.empty() ? "" : ", ") + name;
        return failure("Cannot save " + parsed.positional[1] + ": not written: " + names);
    }
    if (!result.failedPaths.empty())
        return failure("Cannot read " + result.failedPaths.front() + ": " + result.failureReasons.front() +
                       (result.failedPaths.size() > 1
                            ? " (and " + std::to_string(result.failedPaths.size() - 1) + " more)"
                            : std::string()));
    return exitSuccess;
}

std::string joined(const std::vector<std::string>& names) {
    std::string out;
    for (const auto& name : names)
        out += (out.empty() ? "" : ", ") + name;
    return out;
}

std::string counted(std::size_t n, const std::string& noun) {
    return std::to_string(n) + " " + noun + (n == 1 ? "" : "s");
}

// A name as one field of the listing: tabs, line feeds and backslashes are written \t, \n and \\.
std::string escaped(const std::string& name) {
    std::string out;
    out.reserve(name.size());
    for (char c : name) {
        if (c == '\t')
            out += "\\t";
        else if (c == '\n')
            out += "\\n";
        else if (c == '\\')
            out += "\\\\";
        else
            out += c;
    }
    return out;
}

void printTree(project::BinsTreeEntry& node, int depth) {
    for (const auto& child : node.children) {
        std::string indent(static_cast<std::size_t>(depth) * 2, ' ');
        if (!child->bin) {
            std::cout << indent << escaped(child->name()) << "/\n";
            printTree(*child, depth + 1);
            continue;
        }
        project::Bin& bin = *child->bin;
        const tables::ALETable* table = bin.table();
        std::cout << indent << escaped(bin.displayName()) << '\t' << child->nodeUuid() << '\t'
                  << counted(table ? table->data.size() : 0, "row") << '\t'
                  << counted(table ? table->cols.size() : 0, "column") << '\t'
                  << (bin.isLock() ? "locked" : "unlocked") << '\n';
    }
}

int info(ProjectSession& session) {
    SharedStuff& s = session.project();
    auto value = [](const std::optional<std::string>& v) { return v.value_or(""); };
    std::cout << "Project: " << *s.projectName << "\nFolder: " << *s.currentFolder
              << "\nfps: " << value(s.fps) << "\ntlResolution: " << value(s.tlResolution)
              << "\nsound: " << value(s.sound) << "\nfilmformat: " << value(s.film_format)
              << "\ntapeid: " << value(s.tapeId) << "\nautosave: " << s.autosave
              << "\narchiveOriginalData: " << s.archiveOriginalData
              << "\ntimeInMinBackup: " << s.timeInMinBackup << "\nmaxNBackup: " << s.maxNBackup
              << "\nmaxShowBinToImport: " << s.maxShowBinToImport << "\nLayouts:\n";
    const auto& layouts = s.projectLayouts;
    if (layouts.baseLayout)
        std::cout << "  " << layouts.baseLayout->name << ": " << joined(layouts.baseLayout->columns) << '\n';
    if (layouts.projectLayout)
        std::cout << "  " << layouts.projectLayout->name << ": " << joined(layouts.projectLayout->columns)
                  << '\n';
    for (const auto& layout : layouts.layouts)
        std::cout << "  " << layout->name << ": " << joined(layout->columns) << '\n';
    std::cout << "Bins:\n";
    printTree(*s.bins, 1);
    std::cout << "Smart bins:\n";
    printTree(*s.smartbins, 1);
    return exitSuccess;
}

int copyOrZip(const ParsedArguments& parsed, bool zip) {
    return onProject(parsed, [&](ProjectSession& session) {
        SharedStuff& sharedstuff = session.project();
        const std::string& dest = parsed.positional[2];
        std::error_code error;
        if (!fs::is_directory(dest, error))
            return failure("Cannot save to " + dest + ": no such folder");
        std::string resultPath;
        bool ok =
            zip ? sharedstuff.saveCompressed(dest, &resultPath) : sharedstuff.saveCopy(dest, &resultPath);
        sharedstuff.flushBufferedNotifications();
        if (!ok)
            return failure("Error while saving to " + (resultPath.empty() ? dest : resultPath));
        std::cout << "Successfully saved to " << resultPath << '\n';
        return exitSuccess;
    });
}

int importFiles(const ParsedArguments& parsed) {
    auto flagsOrMessage = csvFlagsOf(parsed);
    if (const auto* message = std::get_if<std::string>(&flagsOrMessage))
        return usageError(command, *message);
    for (std::size_t i = 2; i < parsed.positional.size(); ++i) {
        const import::FileFormat* format = import::formatForPath(parsed.positional[i]);
        if (!format || !format->read)
            return failure("Cannot import " + parsed.positional[i] + ": no reader for its file suffix");
    }
    return onProject(parsed, [&](ProjectSession& session) {
        return import(session, parsed, std::get<CsvFlags>(flagsOrMessage));
    });
}

int save(const ParsedArguments& parsed) {
    return onProject(parsed, [](ProjectSession& session) {
        SharedStuff& sharedstuff = session.project();
        // The open ended with a save already; this one is the command's own, and tells how it went.
        bool ok = sharedstuff.save();
        sharedstuff.flushBufferedNotifications();
        if (!ok)
            return failure("ERROR while saving " + *sharedstuff.projectPath());
        std::cout << "Project saved to " << *sharedstuff.projectPath() << '\n';
        return exitSuccess;
    });
}

int backup(const ParsedArguments& parsed) {
    return onProject(parsed, [&](ProjectSession& session) {
        SharedStuff& sharedstuff = session.project();
        bool ok = sharedstuff.backup();
        sharedstuff.flushBufferedNotifications();
        if (!ok)
            return failure("Cannot back up " + parsed.positional[1] + ": the backup could not be written");
        std::cout << "Backup written in " << *sharedstuff.projectPath() << '/' << project::backupFolderName
                  << '\n';
        return exitSuccess;
    });
}

int run(std::span<const std::string> args) {
    static const std::array<Subcommand, 7> subcommands{
        Subcommand{"create",
                   {"PATH"},
                   {"--fps", "--resolution", "--sound", "--film-format", "--tape", "--columns", "--from-ale"},
                   create},
        Subcommand{"import",
                   {"PATH", "FILE..."},
                   {"--group", "--separator", "--delimiter", "--first-line", csvFlagOption},
                   importFiles},
        Subcommand{
            "info", {"PATH"}, {}, [](const ParsedArguments& parsed) { return onProject(parsed, info); }},
        Subcommand{"save", {"PATH"}, {}, save},
        Subcommand{"copy",
                   {"PATH", "DEST"},
                   {},
                   [](const ParsedArguments& parsed) { return copyOrZip(parsed, false); }},
        Subcommand{"zip",
                   {"PATH", "DEST"},
                   {},
                   [](const ParsedArguments& parsed) { return copyOrZip(parsed, true); }},
        Subcommand{"backup", {"PATH"}, {}, backup}};
    constexpr std::array<std::string_view, 11> valued{
        "--fps",   "--resolution", "--sound",     "--film-format", "--tape",      "--columns",
        "--group", "--from-ale",   "--separator", "--delimiter",   "--first-line"};
    constexpr std::array<std::string_view, 3> flags{"--yes", "--no", csvFlagOption};
    return runSubcommand(command, subcommands, args, valued, flags);
}

} // namespace

const Command& projectCommand() {
    return command;
}

} // namespace lumbra::cli
