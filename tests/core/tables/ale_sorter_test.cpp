#include "base/text_order.h"
#include "table_test_support.h"
#include "tables/ale_sorter.h"
#include "tables/list_sorter.h"

#include <gtest/gtest.h>

namespace lumbra::tables {
namespace {

using Names = std::vector<std::string>;

// One row per value, each with its place in "Id" so that ties can be told apart.
std::vector<EntryPtr> rowsOf(const Names& values, const std::string& column = "V") {
    std::vector<EntryPtr> rows;
    for (std::size_t i = 0; i < values.size(); ++i)
        rows.push_back(std::make_shared<ALEEntry>(RowData{{column, values[i]}, {"Id", std::to_string(i)}}));
    return rows;
}

// The `shown` value of each row after sorting by `cols`.
Names sorted(const std::vector<EntryPtr>& rows, Names cols, bool ascending, const std::string& shown = "Id") {
    ALESorter sorter(rows, std::move(cols), ascending);
    sorter.sort();
    Names out;
    for (const auto& row : sorter.sortedRows())
        out.emplace_back(row->data().valueOr(shown));
    return out;
}

TEST(ALESorter, TieRulesOfTheMergeSort) {
    struct Case {
        const char* name;
        Names values;
        bool ascending;
        Names ids;
    };
    const Case cases[] = {
        {"a tie in a pair keeps the pair", {"x", "x"}, false, {"0", "1"}},
        {"a tie in the merge takes the right-hand row first", {"x", "x", "x"}, false, {"2", "0", "1"}},
        {"four equal rows", {"x", "x", "x", "x"}, true, {"2", "3", "0", "1"}},
        {"five equal rows", {"x", "x", "x", "x", "x"}, false, {"3", "4", "2", "0", "1"}},
        {"ties among others", {"b", "a", "b", "a", "c"}, true, {"4", "2", "0", "3", "1"}},
        {"one row", {"x"}, false, {"0"}},
        {"no rows", {}, false, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(sorted(rowsOf(c.values), {"V"}, c.ascending), c.ids);
    }
}

TEST(ALESorter, OrderOfText) {
    struct Case {
        const char* name;
        Names values;
        Names smallestFirst;
    };
    const Case cases[] = {
        {"letters", {"b", "c", "a"}, {"a", "b", "c"}},
        {"digits have no numeric order", {"9", "10", "2"}, {"10", "2", "9"}},
        {"case matters, capitals first", {"b", "B", "a", "A"}, {"A", "B", "a", "b"}},
        {"empty text first", {"a", "", " "}, {"", " ", "a"}},
        {"by scalar value, not bytes of decomposed text", {"f", "e\xCC\x81", "e"}, {"e", "f", "e\xCC\x81"}},
        {"beyond the basic plane",
         {"\xF0\x9F\x8E\xAC", "\xEF\xBC\xA1", "z"},
         {"z", "\xEF\xBC\xA1", "\xF0\x9F\x8E\xAC"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto rows = rowsOf(c.values);
        EXPECT_EQ(sorted(rows, {"V"}, false, "V"), c.smallestFirst);
        EXPECT_EQ(sorted(rows, {"V"}, true, "V"), Names(c.smallestFirst.rbegin(), c.smallestFirst.rend()));
    }
}

TEST(ALESorter, CompareAtAndCanonicalEquivalence) {
    // Precomposed e-acute against e and a combining acute; two marks in either order, which compose to
    // U+1EAD, after "b" although their first letter is "a".
    const std::string composed = "caf\xC3\xA9", decomposed = "cafe\xCC\x81";
    auto rows = rowsOf({composed, decomposed, "a\xCC\xA3\xCC\x82", "a\xCC\x82\xCC\xA3", "b"});
    const struct {
        bool ascending;
        long first, second;
        int expected;
    } cases[] = {{false, 0, 1, 0}, {false, 2, 3, 0}, {false, 2, 4, 2}, {false, 4, 2, 1},
                 {true, 2, 4, 1},  {true, 4, 2, 2},  {true, 0, 1, 0}};
    for (const auto& c : cases)
        EXPECT_EQ(ALESorter(rows, {"V"}, c.ascending).compareAt(c.first, c.second), c.expected);
    EXPECT_LT(base::compareText("B", "a"), 0);
    EXPECT_EQ(base::sortKey(decomposed), composed);
    EXPECT_FALSE(base::isSortKey(decomposed));
    EXPECT_TRUE(base::isSortKey(composed));
    ALETable t = testing::makeTable({"V"}, {{{"V", composed}}, {{"V", decomposed}}});
    EXPECT_FALSE(t.definesId({"V"}, false));
    EXPECT_EQ(t.duplicateRows("V").size(), 2u);
}

TEST(ALESorter, LaterColumnsBreakTies) {
    std::vector<EntryPtr> rows;
    const std::pair<const char*, const char*> cells[] = {{"a", "2"}, {"b", "1"}, {"a", "1"}, {"b", "3"}};
    for (std::size_t i = 0; i < 4; ++i)
        rows.push_back(std::make_shared<ALEEntry>(
            RowData{{"K", cells[i].first}, {"L", cells[i].second}, {"Id", std::to_string(i)}}));
    EXPECT_EQ(sorted(rows, {"K", "L"}, false), (Names{"2", "0", "1", "3"}));
    EXPECT_EQ(sorted(rows, {"K", "L"}, true), (Names{"3", "1", "0", "2"}));
    // A column no row holds reads as "" everywhere and decides nothing.
    EXPECT_EQ(sorted(rows, {"Unheard of", "L"}, false), (Names{"2", "1", "0", "3"}));
}

TEST(ListSorter, SameSchemeAsTheRowSorter) {
    ListSorter<int> numbers({10, 9, 100, 9}, false), down({10, 9, 100}, true), ties({1, 1, 1}, false);
    numbers.sort();
    down.sort();
    ties.sort();
    EXPECT_EQ(ties.idxs(), (std::vector<long>{2, 0, 1}));
    EXPECT_EQ(numbers.sortedList(), (std::vector<int>{9, 9, 10, 100}));
    EXPECT_EQ(numbers.idxs(), (std::vector<long>{3, 1, 0, 2}));
    EXPECT_EQ(down.sortedList(), (std::vector<int>{100, 10, 9}));
    ListSorter<std::string> texts({"9", "10", "e\xCC\x81", "f"}, false);
    texts.sort();
    EXPECT_EQ(texts.sortedList(), (Names{"10", "9", "f", "e\xCC\x81"}));
}

TEST(StringSorter, CaseIgnoredUnlessAskedFor) {
    struct Case {
        const char* name;
        Names values;
        bool ascending;
        bool caseSensitive;
        Names expected;
    };
    const Case cases[] = {
        {"insensitive", {"b", "A", "a", "B"}, false, false, {"a", "A", "B", "b"}},
        {"sensitive", {"b", "A", "a", "B"}, false, true, {"A", "B", "a", "b"}},
        {"insensitive, greatest first", {"b", "A", "c"}, true, false, {"c", "b", "A"}},
        {"insensitive beyond ascii",
         {"\xC3\xA9t\xC3\xA9", "\xC3\x89T\xC3\x89", "f"},
         false,
         false,
         {"f", "\xC3\xA9t\xC3\xA9", "\xC3\x89T\xC3\x89"}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        StringSorter sorter(c.values, c.ascending, c.caseSensitive);
        sorter.sort();
        EXPECT_EQ(sorter.sortedList(), c.expected);
    }
}

TEST(OrderedStringList, InsertKeepsOrderAndRefusesDuplicates) {
    auto insertAll = [](OrderedStringList& list, const Names& values) {
        std::vector<bool> inserted;
        for (const auto& v : values) {
            if (list._data.empty()) {
                list._data.push_back(v);
                inserted.push_back(true);
            } else {
                inserted.push_back(list.insert(v, 0, list._data.size() - 1));
            }
        }
        return inserted;
    };
    OrderedStringList insensitive(false);
    EXPECT_EQ(insertAll(insensitive, {"m", "Apple", "z", "apple", "b", "M", "a", "APPLE", "zz", "0"}),
              (std::vector<bool>{true, true, true, false, true, false, true, false, true, true}));
    EXPECT_EQ(insensitive._data, (Names{"0", "a", "Apple", "b", "m", "z", "zz"}));

    OrderedStringList sensitive(true);
    EXPECT_EQ(insertAll(sensitive, {"b", "a", "B", "b", "A", "a"}),
              (std::vector<bool>{true, true, true, false, true, false}));
    EXPECT_EQ(sensitive._data, (Names{"A", "B", "a", "b"}));

    OrderedStringList equivalent(true);
    EXPECT_EQ(insertAll(equivalent, {"caf\xC3\xA9", "cafe\xCC\x81"}), (std::vector<bool>{true, false}));

    OrderedStringList repeated(false, false);
    EXPECT_EQ(insertAll(repeated, {"b", "a", "B", "a", "b"}), (std::vector<bool>(5, true)));
    EXPECT_EQ(repeated._data, (Names{"a", "a", "b", "B", "b"}));

    OrderedStringList direct(false);
    EXPECT_TRUE(direct.insert("x"));
    EXPECT_TRUE(direct.insert("a"));
    EXPECT_FALSE(direct.insert("X"));
    EXPECT_EQ(direct._data, (Names{"a", "x"}));
}

} // namespace
} // namespace lumbra::tables
