#include "command.h"
#include "csv_options_flags.h"
#include "db/db_column_tools.h"
#include "db/db_editing.h"
#include "db/db_import.h"
#include "project/bin.h"
#include "project/shared_stuff.h"
#include "project_session.h"
#include "subcommand.h"
#include "tables/db_table.h"

#include <array>
#include <iostream>

namespace lumbra::cli {

namespace {

using project::SharedStuff;

constexpr std::string_view usageHead =
    "Usage: lumbra-cli db add PATH FILE... [--separator S] [--delimiter D] [--first-line L]\n"
    "                         [--ignore-oriented-quotes] [--yes|--no]\n"
    "       lumbra-cli db list PATH [--yes|--no]\n"
    "       lumbra-cli db show PATH NAME [--yes|--no]\n"
    "       lumbra-cli db tool PATH NAME TOOL COLUMN [--yes|--no]\n"
    "       lumbra-cli db bin PATH NAME [--yes|--no]\n"
    "       lumbra-cli db remove PATH NAME [--yes|--no]\n"
    "\n"
    "The lookup databases of the project at PATH. NAME is a database's name or uuid.\n"
    "Every command opens the project, which ends with a save, and saves again after a change.\n"
    "\n"
    "  add     one database per file (.csv, .mhl, .ccc, .edl, by the case-sensitive suffix);\n"
    "          a name already taken gets \"_\" appended; a .csv is read with the options below\n"
    "  list    one line per database: name, uuid, rows, columns\n"
    "  show    the columns, then one line per row, tab-separated as the database file holds them\n"
    "  tool    a column tool on COLUMN: infer-path (adds filename and path), trim-extension\n"
    "          (adds COLUMN_noext), suppress-sequence (adds COLUMN_noseq) or group-by (merges the\n"
    "          rows that share the column's value)\n"
    "  bin     a new bin with the database's columns and rows and the project's heading values\n"
    "  remove  the database and its folder\n"
    "\n";
constexpr std::string_view usageTail =
    "  --yes, --no         answer the project's questions (see lumbra-cli project --help)\n"
    "  -h, --help          show this text\n";
const std::string usage = std::string(usageHead) + std::string(csvOptionsHelp) + std::string(usageTail);

int run(std::span<const std::string> args);

const Command command{"db", "add, show, edit, turn into a bin or remove the databases of a project", usage,
                      run};

constexpr std::array<std::string_view, 3> flagOptions{"--yes", "--no", csvFlagOption};

// Saves after the command's change and tells whether it went.
int saved(SharedStuff& sharedstuff, const std::string& path) {
    bool ok = sharedstuff.save();
    sharedstuff.flushBufferedNotifications();
    if (!ok)
        return failure("Cannot save " + path + ": the databases were not all written");
    return exitSuccess;
}

// The database named by `key` (a uuid names one alone); prints why there is none.
tables::DBTable* findDatabase(SharedStuff& sharedstuff, const std::string& path, const std::string& key) {
    std::vector<tables::DBTable*> named;
    for (const auto& table : sharedstuff.db) {
        if (table->uuid() == key)
            return table.get();
        if (table->name == key)
            named.push_back(table.get());
    }
    if (named.size() == 1)
        return named.front();
    if (named.empty())
        failure("Cannot find " + key + " in " + path + ": no database has that name");
    else
        failure("Cannot find " + key + " in " + path + ": " + std::to_string(named.size()) +
                " databases have that name; give the uuid");
    return nullptr;
}

int add(const ParsedArguments& parsed) {
    auto flagsOrMessage = csvFlagsOf(parsed);
    if (const auto* message = std::get_if<std::string>(&flagsOrMessage))
        return usageError(command, *message);
    return onProject(parsed, [&](ProjectSession& session) {
        SharedStuff& sharedstuff = session.project();
        session.interaction().setCsvFlags(std::get<CsvFlags>(flagsOrMessage));
        std::vector<std::string> files(parsed.positional.begin() + 2, parsed.positional.end());
        std::vector<tables::DBTable*> added = db::addDatabases(sharedstuff, files);
        sharedstuff.flushBufferedNotifications();
        if (int status = saved(sharedstuff, parsed.positional[1]); status != exitSuccess)
            return status;
        if (added.size() != files.size())
            return failure("Cannot load " + std::to_string(files.size() - added.size()) + " of " +
                           std::to_string(files.size()) + " files as databases");
        return exitSuccess;
    });
}

int list(const ParsedArguments& parsed) {
    return onProject(parsed, [](ProjectSession& session) {
        for (const auto& table : session.project().db)
            std::cout << table->name << '\t' << table->uuid() << '\t' << table->data.size()
                      << (table->data.size() == 1 ? " row\t" : " rows\t") << table->cols.size()
                      << (table->cols.size() == 1 ? " column\n" : " columns\n");
        return exitSuccess;
    });
}

// Opens the project and runs `step` on its database NAME.
int onDatabase(const ParsedArguments& parsed,
               const std::function<int(SharedStuff&, tables::DBTable&)>& step) {
    return onProject(parsed, [&](ProjectSession& session) {
        tables::DBTable* table = findDatabase(session.project(), parsed.positional[1], parsed.positional[2]);
        return table ? step(session.project(), *table) : exitFailure;
    });
}

int show(const ParsedArguments& parsed) {
    return onDatabase(parsed, [](SharedStuff&, tables::DBTable& table) {
        std::cout << table.tableText("\t") << '\n';
        return exitSuccess;
    });
}

int tool(const ParsedArguments& parsed) {
    const std::string& name = parsed.positional[3];
    const std::string& column = parsed.positional[4];
    if (name != "infer-path" && name != "trim-extension" && name != "suppress-sequence" && name != "group-by")
        return usageError(command, "unknown tool \"" + name + "\"");
    return onDatabase(parsed, [&](SharedStuff& sharedstuff, tables::DBTable& table) {
        if (!table.hasColumn(column))
            return failure("Cannot run " + name + " on " + table.name + ": no column " + column);
        std::vector<std::string> added;
        if (name == "infer-path") {
            added = db::inferPath(table, column);
        } else if (name == "trim-extension") {
            added.push_back(*db::trimExtension(table, column));
        } else if (name == "suppress-sequence") {
            added.push_back(*db::suppressSequence(table, column));
        } else {
            std::size_t before = table.data.size();
            db::groupBy(table, column);
            std::cout << before << " rows grouped into " << table.data.size() << '\n';
        }
        for (const auto& addedColumn : added)
            std::cout << "Added column " << addedColumn << '\n';
        db::tableEdited(sharedstuff, table);
        return saved(sharedstuff, parsed.positional[1]);
    });
}

int bin(const ParsedArguments& parsed) {
    return onDatabase(parsed, [&](SharedStuff& sharedstuff, tables::DBTable& table) {
        project::Bin& bin = db::binFromDatabase(sharedstuff, table);
        if (int status = saved(sharedstuff, parsed.positional[1]); status != exitSuccess)
            return status;
        std::cout << "Bin " << bin.displayName() << " created from " << table.name << '\n';
        return exitSuccess;
    });
}

int remove(const ParsedArguments& parsed) {
    return onDatabase(parsed, [&](SharedStuff& sharedstuff, tables::DBTable& table) {
        std::string name = table.name;
        db::deleteDatabase(sharedstuff, table);
        if (int status = saved(sharedstuff, parsed.positional[1]); status != exitSuccess)
            return status;
        std::cout << "Database " << name << " removed\n";
        return exitSuccess;
    });
}

int run(std::span<const std::string> args) {
    static const std::array<Subcommand, 6> subcommands{
        Subcommand{
            "add", {"PATH", "FILE..."}, {"--separator", "--delimiter", "--first-line", csvFlagOption}, add},
        Subcommand{"list", {"PATH"}, {}, list},
        Subcommand{"show", {"PATH", "NAME"}, {}, show},
        Subcommand{"tool", {"PATH", "NAME TOOL COLUMN"}, {}, tool},
        Subcommand{"bin", {"PATH", "NAME"}, {}, bin},
        Subcommand{"remove", {"PATH", "NAME"}, {}, remove}};
    return runSubcommand(command, subcommands, args, csvValuedOptions, flagOptions);
}

} // namespace

const Command& dbCommand() {
    return command;
}

} // namespace lumbra::cli
