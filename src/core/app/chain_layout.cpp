#include "app/chain_layout.h"

#include <array>
#include <utility>

namespace lumbra::app {

namespace {

// The tool panels that change the plain rule; the others keep weight 1 and no cap.
constexpr std::array<std::pair<std::string_view, PanelWidthRule>, 13> panelRules = {{
    {"ChooseCheckCompareOperationVC", {1.0, 33.333333333333336}},
    {"CompareInternalSetup", {1.0, 33.333333333333336}},
    {"CompareInternalViewController", {2.0, 100.0}},
    {"CheckInternalDBSetup", {1.0, 50.0}},
    {"CheckInternalDBViewController", {2.0, 100.0}},
    {"FinderSetupViewController", {3.0, 42.857142857142854}},
    {"FindReplaceViewController", {4.0, 100.0}},
    {"FuseDataViewController", {1.0, 33.333333333333336}},
    {"ReportPresetsViewController", {1.0, 33.333333333333336}},
    {"PreviewPresenter", {2.0, 100.0}},
    {"PivotTablesPanel", {5.0, 100.0}},
    {"PivotTableEditor", {2.0, 100.0}},
    {"DatabasePanel", {1.0, 100.0}},
}};

// Room kept free around the row: 20 points in all for the panels' share, 10 at the trailing side.
constexpr double rowMargins = 20.0;
constexpr double trailingMargin = 10.0;

} // namespace

PanelWidthRule panelWidthRule(std::string_view panelName) {
    for (const auto& [name, rule] : panelRules) {
        if (name == panelName) {
            return rule;
        }
    }
    return {};
}

ChainGeometry layoutChain(double masterWidth, const std::vector<PanelWidthRule>& panels) {
    double sumWeights = 0.0;
    for (const PanelWidthRule& rule : panels) {
        sumWeights += rule.widthWeight;
    }
    const double room = masterWidth - rowMargins;
    ChainGeometry geometry;
    geometry.frames.reserve(panels.size());
    double x = 0.0;
    for (const PanelWidthRule& rule : panels) {
        const double byPercent = room * rule.maxWidthPercent / 100.0;
        const double byWeight = sumWeights > 0.0 ? room * rule.widthWeight / sumWeights : 0.0;
        const double width = std::min(byPercent, byWeight);
        geometry.frames.push_back({x, width});
        x += width;
    }
    geometry.trailingSpace = (masterWidth - x) - trailingMargin;
    return geometry;
}

} // namespace lumbra::app
