#include "base/console.h"
#include "base/text_file.h"
#include "import/csv_parser.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_set>

// The first bytes choose the options; the rest, decoded as a file reader would, goes through the parser, the
// sheet's proposal, the preview's cuts and the database writer, whose text must read back the same.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    namespace import = lumbra::import;
    namespace tables = lumbra::tables;
    namespace base = lumbra::base;
    base::PrintCapture quiet;
    if (size < 3)
        return 0;
    base::CsvOptions options;
    constexpr char32_t separators[] = {U',', U'\t', U';', U' ', U'|', U'\u00A6', U'"', U'\n', U'\u201C'};
    options.separator = separators[bytes[0] % std::size(separators)];
    options.delimiter = (bytes[1] & 1) ? U'\'' : (bytes[1] & 2) ? U'\u201D' : U'"';
    options.ignore_oriented_quotes = (bytes[1] & 4) != 0;
    options.standard_csv = (bytes[1] & 8) != 0;
    options.first_line = static_cast<base::FirstLineStyle>(bytes[2] % 5);
    options.first_line_number = static_cast<int>(bytes[2] / 5) - 3;
    std::string text = base::decodeFileBytes(std::string(reinterpret_cast<const char*>(bytes + 3), size - 3));
    base::Notifications notices;
    for (int slider = 1; slider <= 4; ++slider)
        static_cast<void>(import::sheet::shortenedText(text, slider));
    static_cast<void>(import::proposedOptions(text, options));
    auto table = import::parseCSVText(text, options, "fuzz.csv", &notices);
    // Every row's keys must be columns of the table, and the text form must write cleanly.
    const std::unordered_set<std::string> columns(table->cols.begin(), table->cols.end());
    if (columns.size() != table->cols.size())
        __builtin_trap();
    for (const auto& entry : table->data) {
        for (const auto& cell : entry.data) {
            if (!columns.contains(tables::ColumnNames::name(cell.key)))
                __builtin_trap();
        }
    }
    // The database file form is standard CSV with its column line first, and must read back as it was (a
    // table without columns writes an empty text, which reads as one unnamed column).
    if (table->cols.empty())
        return 0;
    std::string written = table->tableText(",");
    base::CsvOptions own;
    own.standard_csv = true;
    own.first_line = base::FirstLineStyle::first;
    auto again = import::parseCSVText(std::move(written), own, "again.csv", nullptr);
    if (again->cols != table->cols || again->data.size() != table->data.size())
        __builtin_trap();
    for (std::size_t i = 0; i < table->data.size(); ++i) {
        if (again->data[i].data.toMap() != table->data[i].data.toMap())
            __builtin_trap();
    }
    return 0;
}
