#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace lumbra::app {

// How wide a panel of a chain wants to be: its share of the row, and a cap in percent of the row.
struct PanelWidthRule {
    double widthWeight = 1.0;
    double maxWidthPercent = 100.0;

    bool operator==(const PanelWidthRule&) const = default;
};

// The rule of a tool panel by its class name ("FinderSetupViewController"...); the plain rule for
// any other name.
[[nodiscard]] PanelWidthRule panelWidthRule(std::string_view panelName);

// Where one panel stands in the row.
struct PanelFrame {
    double x = 0.0;
    double width = 0.0;

    bool operator==(const PanelFrame&) const = default;
};

// The row's geometry: a frame per panel in chain order, and the space the row leaves at its
// trailing side (the "mastertrailingspace" constant).
struct ChainGeometry {
    std::vector<PanelFrame> frames;
    double trailingSpace = 0.0;
};

// Each panel gets the smaller of its weighted share of (masterWidth - 20) and its cap; panels
// stand side by side from x 0. An empty row leaves masterWidth - 10 at the trailing side.
[[nodiscard]] ChainGeometry layoutChain(double masterWidth, const std::vector<PanelWidthRule>& panels);

// What `next` from a panel does to the row.
enum class NextMove {
    notInChain,     // the panel is not in the row: the row stands, it is only laid out again
    nothing,        // last panel and no new one wanted: nothing at all happens
    appendNew,      // last panel: a new panel is made by the sender, appended and fed
    reuseFollowing, // a panel stands behind: it stays, those behind it go, and it is fed again
};

// The panels of a chain, left to right, owned by the row. It keeps order only; showing the panels
// is the holder's business. Removals hand the panels back, rightmost first, so that the holder
// can take each off the screen in the order the row loses them.
template <class Panel> class PanelChain {
public:
    [[nodiscard]] std::size_t size() const noexcept { return m_panels.size(); }
    [[nodiscard]] bool empty() const noexcept { return m_panels.empty(); }
    [[nodiscard]] Panel* at(std::size_t index) const {
        return index < m_panels.size() ? m_panels[index].get() : nullptr;
    }
    // By identity; absent when the panel is not in the row.
    [[nodiscard]] std::optional<std::size_t> indexOf(const Panel* panel) const {
        for (std::size_t i = 0; i < m_panels.size(); ++i) {
            if (m_panels[i].get() == panel) {
                return i;
            }
        }
        return std::nullopt;
    }
    // The panel right behind `panel`; nullptr for the last one or one not in the row.
    [[nodiscard]] Panel* following(const Panel* panel) const {
        const auto index = indexOf(panel);
        return index ? at(*index + 1) : nullptr;
    }
    [[nodiscard]] NextMove nextMove(const Panel* from, bool create) const {
        const auto index = indexOf(from);
        if (!index) {
            return NextMove::notInChain;
        }
        if (*index + 1 < m_panels.size()) {
            return NextMove::reuseFollowing;
        }
        return create ? NextMove::appendNew : NextMove::nothing;
    }

    Panel& append(std::unique_ptr<Panel> panel) {
        m_panels.push_back(std::move(panel));
        return *m_panels.back();
    }
    // Every panel behind `panel`, which stays; nothing when it is not in the row.
    std::vector<std::unique_ptr<Panel>> removeFollowing(const Panel* panel) {
        const auto index = indexOf(panel);
        return index ? takeFrom(*index + 1) : std::vector<std::unique_ptr<Panel>>{};
    }
    // `panel` and every panel behind it, `panel` last; nothing when it is not in the row.
    std::vector<std::unique_ptr<Panel>> removeFrom(const Panel* panel) {
        const auto index = indexOf(panel);
        return index ? takeFrom(*index) : std::vector<std::unique_ptr<Panel>>{};
    }

private:
    std::vector<std::unique_ptr<Panel>> takeFrom(std::size_t first) {
        std::vector<std::unique_ptr<Panel>> removed;
        while (m_panels.size() > first) {
            removed.push_back(std::move(m_panels.back()));
            m_panels.pop_back();
        }
        return removed;
    }

    std::vector<std::unique_ptr<Panel>> m_panels;
};

} // namespace lumbra::app
