#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "core/project/project_test_support.h"

#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lumbra::base {
namespace {

using Tokens = std::vector<std::string>;
using std::nullopt;

TEST(Tokenise, SplitsQuotesAndSeparators) {
    const std::vector<std::tuple<std::string, std::string, Tokens>> cases = {
        {"", ",", {""}},                         // an empty text gives one empty token
        {",a,,b,", ",", {"", "a", "", "b", ""}}, // empty tokens at the ends and between
        {"a;b,c", ",;", {"a", "b", "c"}},        // later separators stand for the first
        {"TAPE  A", " \t", {"TAPE", "", "A"}},   // two blanks in a row
        {"\"a,b\",c", ",", {"a,b", "c"}},        // quotes group and are dropped
        {"x\"y", ",", {"xy"}},                   // a lone quote is dropped
        {"sa\"y\" hi", " ", {"say", "hi"}},      // quotes inside a word
        {"a\u2192b", "\u2192", {"a", "b"}},      // a multi-byte separator
        {"a\"\n\"b\nc", "\n", {"a\nb", "c"}},    // a quoted line feed stays in its token
    };
    for (const auto& [text, separators, expected] : cases)
        EXPECT_EQ(tokenise(text, separators), expected) << text;
}

TEST(QuotifyField, QuotesOnlyWhatWouldSplitTheRecord) {
    const std::vector<std::tuple<std::string, std::string, std::string>> cases = {
        {"A001C003", "\t", "A001C003"},
        {"a\tb", "\t", "\"a\tb\""},
        {"a\nb", ",", "\"a\nb\""},
        {"say \"a,b\"", ",", "say \"a,b\""},             // separator inside straight quotes
        {"x\"y,z", ",", "x\"y,z"},                       // an open quote hides the separator
        {"a\"b\",c", ",", "\"a\"b\",c\""},               // inner quotes are not doubled
        {"\u201Ca,b\u201D", ",", "\u201Ca,b\u201D"},     // separator inside curly quotes
        {"\u201Ca\u201D,b", ",", "\"\u201Ca\u201D,b\""}, // after the curly quotes close
    };
    for (const auto& [value, separator, expected] : cases)
        EXPECT_EQ(quotifyField(value, separator), expected) << value;
}

TEST(Trim, DropsListedCharactersAtOneEnd) {
    const std::vector<std::tuple<std::string, std::string, std::string, std::string>> cases = {
        {" \t a b \t", " \t", "a b \t", " \t a b"},
        {"   ", " ", "", ""},
        {"xa x", " ", "xa x", "xa x"},
        {"\u00AB\u00ABa\u00BB", "\u00AB\u00BB", "a\u00BB", "\u00AB\u00ABa"},
        {" a ", "", " a ", " a "},
    };
    for (const auto& [text, characters, left, right] : cases) {
        EXPECT_EQ(trimLeft(text, characters), left) << text;
        EXPECT_EQ(trimRight(text, characters), right) << text;
    }
}

TEST(ParseTimecodeAndNumbers, FourDecimalPartsAndOneOptionalSign) {
    const std::vector<std::pair<std::string, std::optional<Timecode>>> timecodes = {
        {"01:02:03:04", Timecode{1, 2, 3, 4}},
        {"10:20:30:40:xx", Timecode{10, 20, 30, 40}},
        {"01:02:03", nullopt},
        {"01:02:xx:04", nullopt},
        {"01::03:04", nullopt},
        {"01;02;03;04", nullopt},
        {" 01:02:03:04", nullopt},
        {"01:02:03:04.5", nullopt},
        {"+-1:00:00:00", nullopt},
    };
    for (const auto& [text, expected] : timecodes)
        EXPECT_EQ(parseTimecode(text), expected) << text;
    const std::vector<std::tuple<std::string, std::optional<long long>, std::optional<double>>> numbers = {
        {"25", 25, 25.0},           {"+5", 5, 5.0},
        {"-5", -5, -5.0},           {"23.976", nullopt, 23.976},
        {"+-5", nullopt, nullopt},  {"--5", nullopt, nullopt},
        {"+", nullopt, nullopt},    {"", nullopt, nullopt},
        {" 5", nullopt, nullopt},   {"5 ", nullopt, nullopt},
        {"0x10", nullopt, nullopt}, {"99999999999999999999", nullopt, 1e20},
        {"-NaN", nullopt, nullopt}, {"+infinity", nullopt, nullopt},
    };
    for (const auto& [text, integer, decimal] : numbers) {
        EXPECT_EQ(parseInteger(text), integer) << text;
        EXPECT_EQ(parseDecimal(text), decimal) << text;
    }
}

TEST(TextHelpers, CaseMappingAndUtf8Validity) {
    EXPECT_EQ(lowercased("HEADING \u00C9COLE"), "heading \u00E9cole");
    EXPECT_EQ(uppercased("tabs \xC3\xA9t\xC3\xA9"), "TABS \xC3\x89T\xC3\x89");
    const std::vector<std::pair<std::string, bool>> cases = {
        {"caf\xC3\xA9", true},
        {"\xF0\x9F\x8E\xAC", true},
        {"caf\xE9", false},                      // latin-1
        {"\xC0\xAF", false},                     // overlong
        {"\xE0\x80\xAF", false},                 // overlong three-byte
        {"\xED\xA0\x80", false},                 // surrogate
        {"\xF4\x90\x80\x80", false},             // beyond U+10FFFF
        {"\x80", false},                         // stray continuation
        {"0123456789abcdef caf\xE9", false},     // a long ascii run then latin-1
        {"1234567\xC3\xA9 and more text", true}, // two bytes across an eight-byte block
        {"0123456789abcdef\xE2\x86", false},     // cut short after a long run
    };
    for (const auto& [bytes, valid] : cases)
        EXPECT_EQ(isValidUtf8(bytes), valid) << bytes;
}

TEST(DecodeText, ByteOrderMarksAndLineEnds) {
    using S = std::string;
    const std::vector<std::tuple<const char*, std::string, std::optional<std::string>>> cases = {
        {"utf-8", "a\r\nb\rc\n", "a\nb\rc\n"},
        {"utf-8 with byte order mark", "\uFEFFcaf\u00E9\r\n", "caf\xC3\xA9\n"},
        {"utf-16 little endian", S("\xFF\xFE\x61\0\xE9\0\r\0\n\0", 10), "a\xC3\xA9\n"},
        {"utf-16 big endian", S("\xFE\xFF\0a\0\xE9\0\r\0\n", 10), "a\xC3\xA9\n"},
        {"utf-16 surrogate pair", S("\xFF\xFE\x3C\xD8\xAC\xDF", 6), "\xF0\x9F\x8E\xAC"},
        {"utf-16 lone surrogate", S("\xFF\xFE\x3C\xD8\x61\0", 6), nullopt},
        {"utf-16 odd length", S("\xFF\xFE\x61\0b", 5), nullopt},
        {"utf-16 little endian without a mark", S("N\0a\0\r\0\n\0\xE9\0", 10), "Na\n\xC3\xA9"},
        {"utf-16 big endian without a mark", S("\x04\x1F\0 \x04\x40", 6), "\xD0\x9F \xD1\x80"},
        {"zeros on both sides are no utf-16", S("a\0\0b", 4), S("a\0\0b", 4)},
        {"not utf-8", "caf\xE9", nullopt},
    };
    for (const auto& [name, input, expected] : cases) {
        SCOPED_TRACE(name);
        std::string bytes = input;
        EXPECT_EQ(decodeText(bytes), expected.has_value());
        // A refusal leaves the bytes as they were.
        EXPECT_EQ(bytes, expected.value_or(input));
    }
}

TEST(ReadTextFile, FallsBackToLatin1AndAnUnreadablePathPrintsAndNotifies) {
    project::testing::TempFolder dir;
    const std::vector<std::pair<std::string, std::string>> files = {
        {"caf\xE9\r\nna\xEFve\r", "caf\xC3\xA9\r\nna\xC3\xAFve\r"}, // latin-1 keeps its line ends
        {"caf\xC3\xA9\r\nx", "caf\xC3\xA9\nx"},
        {"", ""},
    };
    for (const auto& [bytes, text] : files) {
        project::testing::writeFile(dir.path / "file.txt", bytes);
        EXPECT_EQ(readTextFile((dir.path / "file.txt").string()), text) << bytes;
    }
    for (const std::string& path : {(dir.path / "none.txt").string(), dir.str()}) {
        SCOPED_TRACE(path);
        PrintCapture capture;
        Notifications notes;
        EXPECT_EQ(readTextFile(path, &notes), nullopt);
        EXPECT_EQ(capture.lines(), std::vector<std::string>{"ERROR reading " + path});
        EXPECT_EQ(notes,
                  (Notifications{{"Reading error", "Error reading file " + path, NotificationType::KO}}));
        PrintCapture quiet;
        EXPECT_EQ(readTextFile(path), nullopt);
    }
}

TEST(WriteFileAtomically, APipeTakesTheTextAndStaysAPipe) {
    project::testing::TempFolder dir;
    const std::string pipe = (dir.path / "pipe").string();
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const int reader = ::open(pipe.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_GE(reader, 0);
    EXPECT_TRUE(writeFileAtomically(pipe, "abc"));
    char got[8] = {};
    EXPECT_EQ(::read(reader, got, sizeof got), 3);
    ::close(reader);
    EXPECT_EQ(std::string(got), "abc");
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
}

} // namespace
} // namespace lumbra::base
