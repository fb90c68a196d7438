#pragma once

#include <cstddef>
#include <vector>

namespace lumbra::app {

// One box at a time, or every open box tiled.
enum class ViewMode { onlyone, multiple };
enum class MultiViewMode { standard, landscape, portrait };

// The menu items' tags: 1 portrait, 2 landscape, anything else standard.
[[nodiscard]] MultiViewMode multiViewModeForTag(int tag) noexcept;

struct BoxFrame {
    double x = 0.0;
    double y = 0.0;
    double width = 0.0;
    double height = 0.0;
    bool operator==(const BoxFrame&) const = default;
};

// Points between two boxes.
inline constexpr double boxSpacing = 10.0;

// Where each of `count` open boxes goes in an area of width by height, in open-bins order, when
// all of them are shown; y grows downwards from the top of the area.
[[nodiscard]] std::vector<BoxFrame> tileFrames(std::size_t count, double width, double height,
                                               MultiViewMode mode);

} // namespace lumbra::app
