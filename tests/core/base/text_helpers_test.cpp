#include "base/console.h"
#include "base/text_file.h"
#include "base/text_helpers.h"
#include "core/tables/table_test_support.h"

#include <gtest/gtest.h>

namespace lumbra::tables {
namespace {

using Tokens = std::vector<std::string>;

TEST(Tokenise, SplitsQuotesAndSeparators) {
    struct Case {
        const char* name;
        std::string text;
        std::string separators;
        Tokens expected;
    };
    const Case cases[] = {
        {"empty text gives one empty token", "", ",", {""}},
        {"plain split", "a,b", ",", {"a", "b"}},
        {"trailing separator ends in an empty token", "a,", ",", {"a", ""}},
        {"two separators give an empty token", "a,,b", ",", {"a", "", "b"}},
        {"leading separator", ",a", ",", {"", "a"}},
        {"later separators stand for the first", "a;b,c", ",;", {"a", "b", "c"}},
        {"blank and tab", "a b\tc", " \t", {"a", "b", "c"}},
        {"two blanks in a row", "TAPE  A", " \t", {"TAPE", "", "A"}},
        {"quotes group and are dropped", "\"a,b\",c", ",", {"a,b", "c"}},
        {"a lone quote is dropped", "x\"y", ",", {"xy"}},
        {"quotes inside a word", "sa\"y\" hi", " ", {"say", "hi"}},
        {"only quotes", "\"\"", ",", {""}},
        {"separator not present", "abc", ",", {"abc"}},
        {"multi-byte separator",
         "a\xE2\x86\x92"
         "b",
         "\xE2\x86\x92",
         {"a", "b"}},
        {"path", "/tmp/x/clip.ale", "/", {"", "tmp", "x", "clip.ale"}},
        {"line feeds", "a\n\nb\n", "\n", {"a", "", "b", ""}},
        {"quoted line feed stays in its token", "a\"\n\"b\nc", "\n", {"a\nb", "c"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(base::tokenise(c.text, c.separators), c.expected);
    }
}

TEST(QuotifyField, QuotesOnlyWhatWouldSplitTheRecord) {
    struct Case {
        const char* name;
        std::string value;
        std::string separator;
        std::string expected;
    };
    const Case cases[] = {
        {"plain value stands", "A001C003", "\t", "A001C003"},
        {"separator marks", "a\tb", "\t", "\"a\tb\""},
        {"line feed marks", "a\nb", ",", "\"a\nb\""},
        {"separator inside straight quotes does not", "say \"a,b\"", ",", "say \"a,b\""},
        {"an open quote hides the separator", "x\"y,z", ",", "x\"y,z"},
        {"inner quotes are not doubled", "a\"b\",c", ",", "\"a\"b\",c\""},
        {"separator inside curly quotes does not", "\u201Ca,b\u201D", ",", "\u201Ca,b\u201D"},
        {"after the curly quotes close it does", "\u201Ca\u201D,b", ",", "\"\u201Ca\u201D,b\""},
        {"empty value", "", ",", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(base::quotifyField(c.value, c.separator), c.expected);
    }
}

TEST(Trim, DropsListedCharactersAtOneEnd) {
    struct Case {
        const char* name;
        std::string text;
        std::string characters;
        std::string left;
        std::string right;
    };
    const Case cases[] = {
        {"blanks and tabs", " \t a b \t", " \t", "a b \t", " \t a b"},
        {"nothing left", "   ", " ", "", ""},
        {"empty text", "", " ", "", ""},
        {"characters not in the list stay", "xa x", " ", "xa x", "xa x"},
        {"line feed", "\n Heading \n", " \n", "Heading \n", "\n Heading"},
        {"multi-byte characters",
         "\xC2\xAB\xC2\xAB"
         "a\xC2\xBB",
         "\xC2\xAB\xC2\xBB", "a\xC2\xBB",
         "\xC2\xAB\xC2\xAB"
         "a"},
        {"empty list trims nothing", " a ", "", " a ", " a "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(base::trimLeft(c.text, c.characters), c.left);
        EXPECT_EQ(base::trimRight(c.text, c.characters), c.right);
    }
}

TEST(ParseTimecode, NeedsFourDecimalParts) {
    struct Case {
        const char* name;
        std::string text;
        std::optional<base::Timecode> expected;
    };
    const Case cases[] = {
        {"plain", "01:02:03:04", base::Timecode{1, 2, 3, 4}},
        {"single digits", "1:2:3:4", base::Timecode{1, 2, 3, 4}},
        {"a fifth part is ignored", "10:20:30:40:xx", base::Timecode{10, 20, 30, 40}},
        {"three parts", "01:02:03", std::nullopt},
        {"letters", "01:02:xx:04", std::nullopt},
        {"empty part", "01::03:04", std::nullopt},
        {"semicolons are not separators", "01;02;03;04", std::nullopt},
        {"blank before a part", " 01:02:03:04", std::nullopt},
        {"decimal point", "01:02:03:04.5", std::nullopt},
        {"empty text", "", std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(base::parseTimecode(c.text), c.expected);
    }
}

TEST(ParseNumbers, OneOptionalSignAndNothingAround) {
    struct Case {
        const char* text;
        std::optional<long long> integer;
        std::optional<double> decimal;
    };
    const Case cases[] = {
        {"25", 25, 25.0},
        {"+5", 5, 5.0},
        {"-5", -5, -5.0},
        {"23.976", std::nullopt, 23.976},
        {"+-5", std::nullopt, std::nullopt},
        {"-+5", std::nullopt, std::nullopt},
        {"++5", std::nullopt, std::nullopt},
        {"--5", std::nullopt, std::nullopt},
        {"+", std::nullopt, std::nullopt},
        {"", std::nullopt, std::nullopt},
        {" 5", std::nullopt, std::nullopt},
        {"5 ", std::nullopt, std::nullopt},
        {"0x10", std::nullopt, std::nullopt},
        {"1,5", std::nullopt, std::nullopt},
        {"99999999999999999999", std::nullopt, 1e20},
        {"nan", std::nullopt, std::nullopt},
        {"-NaN", std::nullopt, std::nullopt},
        {"inf", std::nullopt, std::nullopt},
        {"+infinity", std::nullopt, std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        EXPECT_EQ(base::parseInteger(c.text), c.integer);
        EXPECT_EQ(base::parseDecimal(c.text), c.decimal);
    }
    EXPECT_EQ(base::parseTimecode("+-1:00:00:00"), std::nullopt);
}

TEST(TextHelpers, CaseMapping) {
    EXPECT_EQ(base::lowercased("HEADING"), "heading");
    EXPECT_EQ(base::lowercased("\xC3\x89"
                               "COLE"),
              "\xC3\xA9"
              "cole");
    EXPECT_EQ(base::uppercased("tabs"), "TABS");
    EXPECT_EQ(base::uppercased("\xC3\xA9t\xC3\xA9"), "\xC3\x89T\xC3\x89");
}

TEST(TextHelpers, Utf8Validity) {
    struct Case {
        const char* name;
        std::string bytes;
        bool valid;
    };
    const Case cases[] = {
        {"ascii", "abc", true},
        {"two-byte", "caf\xC3\xA9", true},
        {"four-byte", "\xF0\x9F\x8E\xAC", true},
        {"latin-1 byte", "caf\xE9", false},
        {"overlong", "\xC0\xAF", false},
        {"overlong three-byte", "\xE0\x80\xAF", false},
        {"surrogate", "\xED\xA0\x80", false},
        {"beyond U+10FFFF", "\xF4\x90\x80\x80", false},
        {"cut short", "\xE2\x86", false},
        {"stray continuation", "\x80", false},
        {"long ascii run then latin-1", "0123456789abcdef caf\xE9", false},
        {"two-byte across an eight-byte block", "1234567\xC3\xA9 and more text", true},
        {"cut short after a long run", "0123456789abcdef\xE2\x86", false},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(base::isValidUtf8(c.bytes), c.valid);
    }
}

TEST(DecodeText, ByteOrderMarksAndLineEnds) {
    struct Case {
        const char* name;
        std::string bytes;
        std::optional<std::string> expected;
    };
    const Case cases[] = {
        {"utf-8", "a\r\nb\rc\n", "a\nb\rc\n"},
        {"utf-8 with byte order mark",
         "\xEF\xBB\xBF"
         "caf\xC3\xA9\r\n",
         "caf\xC3\xA9\n"},
        {"utf-16 little endian",
         std::string("\xFF\xFE"
                     "a\0\xE9\0\r\0\n\0",
                     10),
         "a\xC3\xA9\n"},
        {"utf-16 big endian", std::string("\xFE\xFF\0a\0\xE9\0\r\0\n", 10), "a\xC3\xA9\n"},
        {"utf-16 surrogate pair", std::string("\xFF\xFE\x3C\xD8\xAC\xDF", 6), "\xF0\x9F\x8E\xAC"},
        {"utf-16 lone surrogate",
         std::string("\xFF\xFE\x3C\xD8"
                     "a\0",
                     6),
         std::nullopt},
        {"utf-16 odd length",
         std::string("\xFF\xFE"
                     "a\0b",
                     5),
         std::nullopt},
        {"utf-16 little endian without a mark", std::string("N\0a\0\r\0\n\0\xE9\0", 10), "Na\n\xC3\xA9"},
        {"utf-16 big endian without a mark, Cyrillic", std::string("\x04\x1F\0 \x04\x40", 6),
         "\xD0\x9F \xD1\x80"},
        {"zeros on both sides are no utf-16", std::string("a\0\0b", 4), std::string("a\0\0b", 4)},
        {"not utf-8", "caf\xE9", std::nullopt},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        std::string bytes = c.bytes;
        bool ok = base::decodeText(bytes);
        EXPECT_EQ(ok, c.expected.has_value());
        // A refusal leaves the bytes as they were.
        EXPECT_EQ(bytes, c.expected.value_or(c.bytes));
    }
}

TEST(ReadTextFile, FallsBackToLatin1WithoutTouchingLineEnds) {
    testing::TempDir dir;
    auto latin = dir.write("latin.txt", "caf\xE9\r\nna\xEFve\r");
    EXPECT_EQ(base::readTextFile(latin), "caf\xC3\xA9\r\nna\xC3\xAFve\r");
    auto utf8 = dir.write("utf8.txt", "caf\xC3\xA9\r\nx");
    EXPECT_EQ(base::readTextFile(utf8), "caf\xC3\xA9\nx");
    auto empty = dir.write("empty.txt", "");
    EXPECT_EQ(base::readTextFile(empty), "");
}

TEST(ReadTextFile, UnreadablePathPrintsAndNotifies) {
    testing::TempDir dir;
    struct Case {
        const char* name;
        std::string path;
    };
    const Case cases[] = {
        {"missing file", dir.file("none.txt")},
        {"a folder", dir.path()},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        base::PrintCapture capture;
        base::Notifications notes;
        EXPECT_EQ(base::readTextFile(c.path, &notes), std::nullopt);
        EXPECT_EQ(capture.lines(), std::vector<std::string>{"ERROR reading " + c.path});
        ASSERT_EQ(notes.size(), 1u);
        EXPECT_EQ(notes[0].title, "Reading error");
        EXPECT_EQ(notes[0].body, "Error reading file " + c.path);
        EXPECT_EQ(notes[0].type, base::NotificationType::KO);

        base::PrintCapture quiet;
        EXPECT_EQ(base::readTextFile(c.path), std::nullopt);
    }
}

} // namespace
} // namespace lumbra::tables
