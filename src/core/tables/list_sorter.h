#pragma once

#include "base/text_helpers.h"
#include "base/text_order.h"
#include "tables/merge_sort.h"

#include <numeric>
#include <string>
#include <vector>

namespace lumbra::tables {

// The order a list sorter uses: the type's own, and the program's text order for text.
template <typename T> int threeWay(const T& a, const T& b) {
    return a < b ? -1 : (b < a ? 1 : 0);
}
template <> inline int threeWay<std::string>(const std::string& a, const std::string& b) {
    return base::compareText(a, b);
}

// Sorts a plain list with the merge sort and sense of ALESorter (`ascending` false: smallest first).
template <typename T> class ListSorter {
public:
    ListSorter(std::vector<T> data, bool ascending) : m_data(std::move(data)), m_ascending(ascending) {
        m_idxs.resize(m_data.size());
        std::iota(m_idxs.begin(), m_idxs.end(), 0L);
    }
    virtual ~ListSorter() = default;

    void sort() {
        mergeSort(m_idxs, [this](long a, long b) {
            return firstOf(
                compareValues(m_data[static_cast<std::size_t>(a)], m_data[static_cast<std::size_t>(b)]),
                m_ascending);
        });
    }

    [[nodiscard]] std::vector<T> sortedList() const {
        std::vector<T> out;
        out.reserve(m_idxs.size());
        for (long i : m_idxs)
            out.push_back(m_data[static_cast<std::size_t>(i)]);
        return out;
    }
    [[nodiscard]] const std::vector<long>& idxs() const noexcept { return m_idxs; }

protected:
    [[nodiscard]] virtual int compareValues(const T& a, const T& b) const { return threeWay(a, b); }

private:
    std::vector<T> m_data;
    bool m_ascending;
    std::vector<long> m_idxs;
};

// A list sorter for text that ignores case unless told otherwise.
class StringSorter : public ListSorter<std::string> {
public:
    StringSorter(std::vector<std::string> data, bool ascending, bool caseSensitive)
        : ListSorter(std::move(data), ascending), m_caseSensitive(caseSensitive) {}

protected:
    [[nodiscard]] int compareValues(const std::string& a, const std::string& b) const override {
        return m_caseSensitive ? base::compareText(a, b)
                               : base::compareText(base::lowercased(a), base::lowercased(b));
    }

private:
    bool m_caseSensitive;
};

// A sorted list; when `unique`, it refuses to insert a value it already holds, otherwise an equal value
// goes after its equals, so that they keep the order they came in.
template <typename T> class OrderedList {
public:
    explicit OrderedList(bool unique = true) : unique(unique) {}
    virtual ~OrderedList() = default;

    // Binary search between lo and hi; returns whether it inserted. An empty list takes the value directly.
    // Equal values are searched past, to the place after the last of them.
    bool insert(const T& value, std::size_t lo, std::size_t hi) {
        if (_data.empty()) {
            _data.push_back(value);
            return true;
        }
        while (lo != hi) {
            std::size_t mid = (lo + hi) / 2;
            int c = compareValues(_data[mid], value);
            if (c == 0 && unique)
                return false;
            if (c <= 0)
                lo = mid + 1;
            else
                hi = mid;
        }
        int c = compareValues(value, _data[lo]);
        if (c == 0 && unique)
            return false;
        if (c < 0)
            _data.insert(_data.begin() + static_cast<long>(lo), value);
        else
            _data.insert(_data.begin() + static_cast<long>(lo) + 1, value);
        return true;
    }
    bool insert(const T& value) { return insert(value, 0, _data.empty() ? 0 : _data.size() - 1); }

    std::vector<T> _data;
    const bool unique;

protected:
    [[nodiscard]] virtual int compareValues(const T& a, const T& b) const { return threeWay(a, b); }
};

// An ordered list of text, compared lowercased unless `caseSensitive`; stored texts keep their case.
class OrderedStringList : public OrderedList<std::string> {
public:
    explicit OrderedStringList(bool caseSensitive, bool unique = true)
        : OrderedList(unique), caseSensitive(caseSensitive) {}
    const bool caseSensitive;

protected:
    [[nodiscard]] int compareValues(const std::string& a, const std::string& b) const override {
        return caseSensitive ? base::compareText(a, b)
                             : base::compareText(base::lowercased(a), base::lowercased(b));
    }
};

} // namespace lumbra::tables
