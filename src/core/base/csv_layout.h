#pragma once

namespace lumbra::base {

// Where the line of column names stands; the numbers are the tags of the sheet's list.
enum class FirstLineStyle {
    // Behind the first empty line, else behind a line "Column", else the first line ("auto" is taken by C++).
    auto_ = 0,
    first = 1,
    afterempty = 2,
    aftercolumn = 3,
    // The line numbered first_line_number, counting from 1.
    custom = 4,
};

// How a delimited text file is laid out, as the user states it once for a batch.
struct CsvOptions {
    char32_t separator = U',';
    char32_t delimiter = U'"';
    FirstLineStyle first_line = FirstLineStyle::auto_;
    int first_line_number = 0;
    bool ignore_oriented_quotes = false;
    bool user_aborted = false;
    // Quoted fields keep separators and line feeds, a doubled quote is one quote (the delimiter is unused).
    // The rules for the other delimiters drop every double quote first, which loses what spreadsheets write.
    bool standard_csv = false;

    bool operator==(const CsvOptions&) const = default;
};

} // namespace lumbra::base
