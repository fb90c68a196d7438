#include "import/csv_options.h"

#include <gtest/gtest.h>
#include <string>
#include <tuple>
#include <vector>

namespace lumbra::import::sheet {
namespace {

TEST(CsvOptionsSheet, SeparatorControls) {
    // The tag, the text of the "other" field, the separator; an empty field reads as a comma.
    const std::vector<std::tuple<int, std::string, char32_t>> cases{
        {0, "|", U','}, {1, "|", U'\t'},           {2, "|", U';'}, {3, "|", U' '}, {4, "|", U'|'},
        {4, "", U','},  {4, "\u00A6x", U'\u00A6'},
    };
    for (const auto& [tag, otherText, expected] : cases) {
        SCOPED_TRACE(tag);
        EXPECT_EQ(separatorForTag(tag, otherText), expected);
        EXPECT_EQ(tagForSeparator(expected), tag == 4 && expected == U',' ? 0 : tag);
    }
    const std::vector<std::pair<std::string, std::string>> typed{
        {"", ","}, {";", ";"}, {"ab", "b"}, {"a\u00A6", "\u00A6"}, {"\u00A6a", "a"}};
    for (const auto& [entry, kept] : typed) {
        SCOPED_TRACE(entry);
        EXPECT_EQ(separatorFieldText(entry), kept);
    }
}

TEST(CsvOptionsSheet, DelimiterAndFirstLineNumber) {
    EXPECT_EQ(delimiterForTag(1), U'\'');
    EXPECT_EQ(delimiterForTag(0), U'"');
    EXPECT_EQ(delimiterForTag(7), U'"');
    EXPECT_EQ(tagForDelimiter(U'\''), 1);
    EXPECT_EQ(tagForDelimiter(U'"'), 0);
    // The third entry is standard CSV; leaving it for another entry leaves standard CSV too.
    for (int tag : {standardCsvTag, 1, 0, standardCsvTag}) {
        SCOPED_TRACE(tag);
        CsvOptions options;
        options.standard_csv = true;
        setDelimiterTag(options, tag);
        EXPECT_EQ(delimiterTag(options), tag);
        EXPECT_EQ(options.standard_csv, tag == standardCsvTag);
    }
    const std::vector<std::pair<std::string, int>> numbers{{"", 1},   {"abc", 1}, {"0", 1},  {"-4", 1},
                                                           {"3x", 1}, {"7", 7},   {"12", 12}};
    for (const auto& [text, expected] : numbers) {
        SCOPED_TRACE(text);
        EXPECT_EQ(firstLineNumberFromText(text), expected);
    }
}

// `count` lines of `line` each followed by a line feed.
std::string lines(const std::string& line, int count) {
    std::string text;
    for (int i = 0; i < count; ++i)
        text += line + "\n";
    return text;
}

TEST(CsvOptionsSheet, PreviewCutsAtTheNextLineFeedCountingCharacters) {
    // 100 characters a line: the character numbered 100 k starts line k, whose line feed is 99 further.
    const std::string medium = lines(std::string(99, 'x'), 400);  // 40,000 characters
    const std::string large = lines(std::string(99, 'x'), 10000); // 1,000,000 characters
    std::string e49;
    for (int i = 0; i < 49; ++i)
        e49 += "\u00E9";
    const std::string accented = lines(e49, 400); // 50 characters and 99 bytes a line: 20,000 characters
    const std::string shortText = lines("\u00E9\u00E9\u00E9\u00E9", 1500); // 13,500 bytes, 7,500 characters
    const std::string noLineFeed(40000, 'x');
    const struct {
        std::string name;
        const std::string* text;
        int slider;
        std::size_t expectedBytes;
    } cases[] = {
        {"a quarter", &medium, 1, 10099},
        {"a half", &medium, 2, 20099},
        {"three quarters", &medium, 3, 30099},
        {"whole", &medium, 4, 40000},
        {"large, at most 20,000", &large, 1, 20099},
        {"large, at most 100,000", &large, 2, 100099},
        {"large, at most 300,000", &large, 3, 300099},
        // A quarter is 5,000 characters: line 100 starts at byte 9,900 and ends 98 bytes on.
        {"characters, not bytes", &accented, 1, 9998},
        {"too short for the slider: the whole text", &shortText, 1, 13500},
        {"no line feed", &noLineFeed, 1, 40000},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(shortenedText(*c.text, c.slider).size(), c.expectedBytes);
    }
}

} // namespace
} // namespace lumbra::import::sheet
