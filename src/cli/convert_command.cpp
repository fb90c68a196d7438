#include "command.h"
#include "csv_options_flags.h"
#include "import/csv_parser.h"
#include "import/file_formats.h"
#include "policy_interaction.h"

#include <iostream>
#include <optional>
#include <variant>
#include <vector>

namespace lumbra::cli {

namespace {

namespace tables = lumbra::tables;

constexpr std::string_view usageHead =
    "Usage: lumbra-cli convert INPUT OUTPUT [--metadata] [--omit-film-format] "
    "[--columns A,B,C]\n"
    "                          [--separator S] [--delimiter D] [--first-line L] [--ignore-oriented-quotes]\n"
    "\n"
    "Reads INPUT and writes OUTPUT, each in the format of its suffix.\n"
    "\n"
    "  --metadata          put the heading values above the columns of a .csv "
    "or .tsv\n"
    "  --omit-film-format  leave out the FILM_FORMAT heading\n"
    "  --columns A,B,C     write only these columns, in this order\n";
constexpr std::string_view usageTail = "  -h, --help          show this text\n";
const std::string usage = std::string(usageHead) + std::string(csvOptionsHelp) + std::string(usageTail);

int run(std::span<const std::string> args);

const Command command{"convert", "convert a table file into another format", usage, run};

struct ConvertArguments {
    std::string input;
    std::string output;
    import::WriteOptions options;
    CsvFlags csv;
};

// The parsed arguments, or the message of a usage error.
std::variant<ConvertArguments, std::string> parseArguments(std::span<const std::string> args) {
    ConvertArguments parsed;
    std::vector<std::string> files;
    bool optionsEnded = false;
    for (std::size_t i = 0; i < args.size(); ++i) {
        const std::string& arg = args[i];
        std::optional<std::string> columnList;
        if (optionsEnded || arg == "-" || !arg.starts_with("-")) {
            files.push_back(arg);
        } else if (arg == "--") {
            optionsEnded = true;
        } else if (arg == "--metadata") {
            parsed.options.withMetadata = true;
        } else if (arg == "--omit-film-format") {
            parsed.options.omitFilmFormat = true;
        } else if (arg == "--columns") {
            if (i + 1 == args.size())
                return std::string("--columns needs a list of column names");
            columnList = args[++i];
        } else if (arg.starts_with("--columns=")) {
            columnList = arg.substr(std::string_view("--columns=").size());
        } else if (arg == csvFlagOption) {
            parsed.csv.ignoreOrientedQuotes = true;
        } else if (auto equals = arg.find('='); isCsvOption(arg.substr(0, equals))) {
            std::string name = arg.substr(0, equals);
            if (equals == std::string::npos && i + 1 == args.size())
                return name + " needs a value";
            std::string value = equals == std::string::npos ? args[++i] : arg.substr(equals + 1);
            if (auto message = setCsvOption(parsed.csv, name, value))
                return *message;
        } else {
            return "unknown option " + arg;
        }
        if (columnList) {
            if (columnList->empty())
                return std::string("--columns needs a list of column names");
            auto names = splitColumns(*columnList);
            parsed.options.columns.insert(parsed.options.columns.end(), names.begin(), names.end());
        }
    }
    if (files.size() != 2)
        return std::string(files.size() < 2 ? "INPUT and OUTPUT are needed" : "too many arguments");
    parsed.input = std::move(files[0]);
    parsed.output = std::move(files[1]);
    return parsed;
}

// Why a path's suffix does not fit: unknown, or known but not available in that direction.
std::string suffixReason(std::string_view path, const import::FileFormat* format,
                         std::string_view direction) {
    if (format)
        return std::string(format->name) + " files cannot be " + std::string(direction) + " yet";
    std::string_view suffix = import::pathSuffix(path);
    if (suffix.empty())
        return "no file suffix to choose the format by";
    return "unknown file suffix \"" + std::string(suffix) + "\"";
}

int run(std::span<const std::string> args) {
    if (asksForHelp(args)) {
        std::cout << usage;
        return exitSuccess;
    }
    auto parsed = parseArguments(args);
    if (auto* message = std::get_if<std::string>(&parsed))
        return usageError(command, *message);
    auto& arguments = std::get<ConvertArguments>(parsed);

    const import::FileFormat* in = import::formatForPath(arguments.input);
    if (!in || !in->read)
        return failure("Cannot read " + arguments.input + ": " + suffixReason(arguments.input, in, "read"));
    const import::FileFormat* out = import::formatForPath(arguments.output);
    if (!out || !out->write)
        return failure("Cannot write " + arguments.output + ": " +
                       suffixReason(arguments.output, out, "written"));

    if (arguments.csv.given() && !in->readDelimited)
        return usageError(command,
                          "--separator, --delimiter, --first-line and --ignore-oriented-quotes apply "
                          "to .csv and .tsv input only");

    base::Notifications notices;
    const base::CsvOptions options = arguments.csv.applyTo(import::initialOptions(arguments.input));
    import::ReadResult read = in->readDelimited
                                  ? in->readDelimited(arguments.input, &options, nullptr, &notices)
                                  : in->read(arguments.input, &notices);
    if (read.failure)
        return failure("Cannot read " + read.failure->message());
    PolicyInteraction(AnswerPolicy::ask).notify(notices);
    return writeTable(*out, *read.table, arguments.output, arguments.options);
}

} // namespace

const Command& convertCommand() {
    return command;
}

} // namespace lumbra::cli
