#pragma once

#include <algorithm>
#include <utility>
#include <vector>

namespace lumbra::tables {

// Which of two values goes first, from their three-way comparison: 0 the same, 1 the first, 2 the second.
// `ascending` false puts the smaller value first; true the greater.
[[nodiscard]] constexpr int firstOf(int threeWay, bool ascending) noexcept {
    if (threeWay == 0)
        return 0;
    if (!ascending)
        return threeWay < 0 ? 1 : 2;
    return threeWay > 0 ? 1 : 2;
}

// Top-down merge sort of the places lo..hi of `idxs`; `order(a, b)` answers firstOf for the items a and b.
// A pair keeps its order unless the second goes first, and a merge takes from the right half unless the left
// goes first: these tie rules fix the result.
template <typename Order>
void mergeSort(std::vector<long>& idxs, long lo, long hi, const Order& order, std::vector<long>& merged) {
    if (hi <= lo)
        return;
    if (hi == lo + 1) {
        if (order(idxs[lo], idxs[hi]) == 2)
            std::swap(idxs[lo], idxs[hi]);
        return;
    }
    long mid = (lo + hi) / 2;
    mergeSort(idxs, lo, mid, order, merged);
    mergeSort(idxs, mid + 1, hi, order, merged);
    merged.clear();
    long i = lo;
    long j = mid + 1;
    while (i <= mid && j <= hi)
        merged.push_back(order(idxs[i], idxs[j]) == 1 ? idxs[i++] : idxs[j++]);
    merged.insert(merged.end(), idxs.begin() + i, idxs.begin() + mid + 1);
    merged.insert(merged.end(), idxs.begin() + j, idxs.begin() + hi + 1);
    std::copy(merged.begin(), merged.end(), idxs.begin() + lo);
}

// The whole of `idxs`, when it holds at least two items.
template <typename Order> void mergeSort(std::vector<long>& idxs, const Order& order) {
    std::vector<long> merged;
    merged.reserve(idxs.size());
    if (idxs.size() >= 2)
        mergeSort(idxs, 0, static_cast<long>(idxs.size()) - 1, order, merged);
}

} // namespace lumbra::tables
