#include "app/box_tiling.h"

namespace lumbra::app {

MultiViewMode multiViewModeForTag(int tag) noexcept {
    if (tag == 1)
        return MultiViewMode::portrait;
    if (tag == 2)
        return MultiViewMode::landscape;
    return MultiViewMode::standard;
}

namespace {

// `count` boxes in a row (side by side) or a column (stacked), equal shares of the length.
std::vector<BoxFrame> line(std::size_t count, double width, double height, bool sideBySide) {
    std::vector<BoxFrame> frames;
    const double n = static_cast<double>(count);
    const double share = ((sideBySide ? width : height) - boxSpacing * (n - 1.0)) / n;
    for (std::size_t i = 0; i < count; ++i) {
        const double offset = static_cast<double>(i) * (share + boxSpacing);
        frames.push_back(sideBySide ? BoxFrame{offset, 0.0, share, height}
                                    : BoxFrame{0.0, offset, width, share});
    }
    return frames;
}

std::vector<BoxFrame> standard(std::size_t count, double width, double height) {
    if (count <= 2)
        return line(count, width, height, true);
    std::vector<BoxFrame> frames;
    if (count == 4) {
        const double w = (width - boxSpacing) / 2.0;
        const double h = (height - boxSpacing) / 2.0;
        for (std::size_t i = 0; i < 4; ++i)
            frames.push_back({static_cast<double>(i % 2) * (w + boxSpacing),
                              static_cast<double>(i / 2) * (h + boxSpacing), w, h});
        return frames;
    }
    const double w = (width - 2.0 * boxSpacing) / 3.0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t column = i % 3;
        const std::size_t row = i / 3;
        const std::size_t inColumn = count / 3 + (column < count % 3 ? 1 : 0);
        const double n = static_cast<double>(inColumn);
        const double h = (height - boxSpacing * (n - 1.0)) / n;
        frames.push_back({static_cast<double>(column) * (w + boxSpacing),
                          static_cast<double>(row) * (h + boxSpacing), w, h});
    }
    return frames;
}

} // namespace

std::vector<BoxFrame> tileFrames(std::size_t count, double width, double height, MultiViewMode mode) {
    if (count == 0)
        return {};
    switch (mode) {
    case MultiViewMode::portrait:
        return line(count, width, height, true);
    case MultiViewMode::landscape:
        return line(count, width, height, false);
    case MultiViewMode::standard:
        break;
    }
    return standard(count, width, height);
}

} // namespace lumbra::app
