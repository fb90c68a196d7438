#include "app/chain_layout.h"

#include <gtest/gtest.h>
#include <string>

namespace lumbra::app {
namespace {

TEST(ChainLayout, WidthsAreTheSmallerOfShareAndCap) {
    struct Case {
        std::string name;
        double width;
        std::vector<PanelWidthRule> panels;
        std::vector<PanelFrame> frames;
        double trailing;
    };
    const std::vector<Case> cases = {
        {"a capped panel alone leaves the rest at the trailing side",
         1000.0,
         {{1.0, 33.333333333333336}},
         {{0.0, 980.0 * 33.333333333333336 / 100.0}},
         1000.0 - 980.0 * 33.333333333333336 / 100.0 - 10.0},
        {"weights one and two share the row",
         1000.0,
         {{1.0, 100.0}, {2.0, 100.0}},
         {{0.0, 980.0 / 3.0}, {980.0 / 3.0, 980.0 * 2.0 / 3.0}},
         10.0},
        {"the cap of the first narrows it, the second keeps its share",
         620.0,
         {{1.0, 25.0}, {1.0, 100.0}},
         {{0.0, 150.0}, {150.0, 300.0}},
         620.0 - 450.0 - 10.0},
        {"an empty row", 500.0, {}, {}, 490.0},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const ChainGeometry geometry = layoutChain(c.width, c.panels);
        ASSERT_EQ(geometry.frames.size(), c.frames.size());
        for (std::size_t i = 0; i < c.frames.size(); ++i) {
            EXPECT_DOUBLE_EQ(geometry.frames[i].x, c.frames[i].x) << i;
            EXPECT_DOUBLE_EQ(geometry.frames[i].width, c.frames[i].width) << i;
        }
        EXPECT_DOUBLE_EQ(geometry.trailingSpace, c.trailing);
    }
}

TEST(ChainLayout, ToolPanelsHaveTheirOwnRules) {
    EXPECT_EQ(panelWidthRule("FinderSetupViewController"), (PanelWidthRule{3.0, 42.857142857142854}));
    EXPECT_EQ(panelWidthRule("FindReplaceViewController"), (PanelWidthRule{4.0, 100.0}));
    EXPECT_EQ(panelWidthRule("PivotTablesPanel"), (PanelWidthRule{5.0, 100.0}));
    EXPECT_EQ(panelWidthRule("SomethingElse"), PanelWidthRule{});

    // The setup and the tool behind it fill a 1000-point row exactly: 3/7 of 980 is also the cap.
    const auto geometry = layoutChain(
        1000.0, {panelWidthRule("FinderSetupViewController"), panelWidthRule("FindReplaceViewController")});
    EXPECT_NEAR(geometry.frames[0].width, 420.0, 1e-9);
    EXPECT_NEAR(geometry.frames[1].width, 560.0, 1e-9);
    EXPECT_NEAR(geometry.trailingSpace, 10.0, 1e-9);
}

struct Panel {
    int id = 0;
};

PanelChain<Panel> chainOf(int count, std::vector<Panel*>& panels) {
    PanelChain<Panel> chain;
    for (int i = 0; i < count; ++i) {
        panels.push_back(&chain.append(std::make_unique<Panel>(Panel{i})));
    }
    return chain;
}

std::vector<int> ids(const std::vector<std::unique_ptr<Panel>>& removed) {
    std::vector<int> out;
    for (const auto& panel : removed) {
        out.push_back(panel->id);
    }
    return out;
}

TEST(PanelChain, NextMoveByPlaceInTheRow) {
    std::vector<Panel*> panels;
    auto chain = chainOf(3, panels);
    Panel stranger;
    EXPECT_EQ(chain.nextMove(&stranger, true), NextMove::notInChain);
    EXPECT_EQ(chain.nextMove(panels[0], false), NextMove::reuseFollowing);
    EXPECT_EQ(chain.nextMove(panels[1], true), NextMove::reuseFollowing);
    EXPECT_EQ(chain.nextMove(panels[2], false), NextMove::nothing);
    EXPECT_EQ(chain.nextMove(panels[2], true), NextMove::appendNew);
    EXPECT_EQ(chain.following(panels[0]), panels[1]);
    EXPECT_EQ(chain.following(panels[2]), nullptr);
}

TEST(PanelChain, RemovalsGoFromTheRightEnd) {
    std::vector<Panel*> panels;
    auto chain = chainOf(4, panels);
    EXPECT_EQ(ids(chain.removeFollowing(panels[1])), (std::vector<int>{3, 2}));
    ASSERT_EQ(chain.size(), 2u);
    EXPECT_EQ(chain.at(1), panels[1]);

    EXPECT_TRUE(chain.removeFollowing(panels[1]).empty());
    Panel stranger;
    EXPECT_TRUE(chain.removeFrom(&stranger).empty());
    EXPECT_EQ(chain.size(), 2u);

    EXPECT_EQ(ids(chain.removeFrom(panels[0])), (std::vector<int>{1, 0}));
    EXPECT_TRUE(chain.empty());
}

} // namespace
} // namespace lumbra::app
