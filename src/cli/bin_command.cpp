#include "command.h"
#include "import/file_formats.h"
#include "project/bin.h"
#include "project/shared_stuff.h"
#include "project_session.h"
#include "subcommand.h"

#include <array>
#include <iostream>

namespace lumbra::cli {

namespace {

constexpr std::string_view usage =
    "Usage: lumbra-cli bin export PATH BIN OUTPUT [--columns A,B,C] [--metadata]\n"
    "                             [--omit-film-format] [--yes|--no]\n"
    "\n"
    "Opens the project at PATH and writes its bin BIN (a display name or a uuid) to OUTPUT\n"
    "(.ale, .csv or .tsv, chosen by suffix), as convert writes a table.\n"
    "\n"
    "  --columns A,B,C     write only these columns, in this order\n"
    "  --metadata          put the heading values above the columns of a .csv or .tsv\n"
    "  --omit-film-format  leave out the FILM_FORMAT heading\n"
    "  --yes, --no         answer the project's questions (see lumbra-cli project --help)\n"
    "  -h, --help          show this text\n";

int run(std::span<const std::string> args);

const Command command{"bin", "export one bin of a project to a table file", usage, run};

// The bins of both trees whose uuid or display name is `key`; a uuid names one bin alone.
std::vector<project::Bin*> binsNamed(project::SharedStuff& sharedstuff, const std::string& key) {
    std::vector<project::Bin*> named;
    for (project::Bin* bin : sharedstuff.allBins()) {
        if (bin->uuid() == key)
            return {bin};
        if (bin->displayName() == key)
            named.push_back(bin);
    }
    return named;
}

int exportBin(const ParsedArguments& parsed) {
    const std::string& path = parsed.positional[1];
    const std::string& key = parsed.positional[2];
    const std::string& output = parsed.positional[3];

    import::WriteOptions options;
    options.withMetadata = parsed.has("--metadata");
    options.omitFilmFormat = parsed.has("--omit-film-format");
    if (auto it = parsed.values.find("--columns"); it != parsed.values.end()) {
        if (it->second.empty())
            return usageError(command, "--columns needs a list of column names");
        options.columns = splitColumns(it->second);
    }
    const import::FileFormat* format = import::formatForPath(output);
    if (!format || !format->write)
        return failure("Cannot write " + output + ": no writer for its file suffix");

    ProjectSession session(answerPolicy(parsed));
    if (!session.open(path))
        return exitFailure;
    std::vector<project::Bin*> named = binsNamed(session.project(), key);
    if (named.empty())
        return failure("Cannot export from " + path + ": no bin named " + key);
    if (named.size() > 1)
        return failure("Cannot export from " + path + ": " + std::to_string(named.size()) +
                       " bins are named " + key + "; give the uuid");
    const tables::ALETable* table = named.front()->table();
    if (!table)
        return failure("Cannot export " + key + ": the bin has no table");
    return writeTable(*format, *table, output, options);
}

int run(std::span<const std::string> args) {
    static const std::array<Subcommand, 1> subcommands{Subcommand{
        "export", {"PATH BIN OUTPUT"}, {"--columns", "--metadata", "--omit-film-format"}, exportBin}};
    constexpr std::array<std::string_view, 1> valued{"--columns"};
    constexpr std::array<std::string_view, 4> flags{"--yes", "--no", "--metadata", "--omit-film-format"};
    return runSubcommand(command, subcommands, args, valued, flags);
}

} // namespace

const Command& binCommand() {
    return command;
}

} // namespace lumbra::cli
