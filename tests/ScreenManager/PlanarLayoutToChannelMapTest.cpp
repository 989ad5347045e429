#include "ScreenManager/PlanarLayoutToChannelMap.h"

#include "Common/VeltraniException.h"
#include "KelvoControl/Configuration.h"
#include "LayoutMapFixture.h"
#include "LayoutMapRows.h"
#include "support/VirtualSlot.h"

#include <cmath>
#include <stdexcept>
#include <type_traits>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Sides of a few units; each way rounds a handful of times.
constexpr double CLOSURE = 1e-9;

class PlanarLayoutToChannelMapTest : public LayoutMapFixture {
protected:
    PlanarLayoutToChannelMapTest() {
        setRect(first, -2.0, 0.5, 0.25, 1.5);
        setRect(second, 0.125, 2.0, 0.0, 3.0);
    }

    static void setRect(ProjectorConfigDouble& projector, double xMin, double xMax, double yMin, double yMax) {
        projector.layoutXMin = xMin;
        projector.layoutXMax = xMax;
        projector.layoutYMin = yMin;
        projector.layoutYMax = yMax;
    }
    PlanarLayoutToChannelMap build() { return {&config, nullptr}; }
    bool toLayout(double u, double v) {
        layout = NO_LAYOUT;
        return build().mapChannelToLayout({u, v}, layout, 0);
    }
    bool toChannel(double x, double y, double z = 0.0) {
        channel = NO_CHANNEL;
        return build().mapLayoutToChannel({x, y, z}, channel, 0);
    }
};

TEST_F(PlanarLayoutToChannelMapTest, TheRecordsAreListedThenTheRectanglesReadInTheOrderOfTheEntry) {
    const PlanarLayoutToChannelMap map(&config, std::make_shared<KelvoControl::Configuration>());
    EXPECT_THAT(trace.lines(),
                ElementsAre("config.getProjectorConfigIds()", "config.getProjectorConfig(\"P1\")",
                            "config.getProjectorConfig(\"P2\")", "config.getProjectorConfigIds()",
                            "projector.getLayoutXMin()", "projector.getLayoutXMax()", "projector.getLayoutYMin()",
                            "projector.getLayoutYMax()", "projector.getLayoutXMin()", "projector.getLayoutXMax()",
                            "projector.getLayoutYMin()", "projector.getLayoutYMax()"));
}

TEST_F(PlanarLayoutToChannelMapTest, TheTableIsNotNeededAndNotKept) {
    const auto table = std::make_shared<KelvoControl::Configuration>();
    PlanarLayoutToChannelMap map(&config, table);
    EXPECT_EQ(table.use_count(), 1);
    EXPECT_TRUE(map.mapChannelToLayout({0.5, 0.5}, layout, 0)) << "though the table has no entry";
}

TEST_F(PlanarLayoutToChannelMapTest, CornersOfThePictureAreCornersOfTheRectangle) {
    EXPECT_TRUE(toLayout(0.0, 0.0));
    EXPECT_EQ(layout, (Point<double, 3>{-2.0, 0.25, 0.0}));
    EXPECT_TRUE(toLayout(1.0, 1.0));
    EXPECT_EQ(layout, (Point<double, 3>{0.5, 1.5, 0.0}));
    EXPECT_TRUE(toLayout(1.0, 0.0));
    EXPECT_EQ(layout, (Point<double, 3>{0.5, 0.25, 0.0}));
}

TEST_F(PlanarLayoutToChannelMapTest, ChannelPointsBesideThePictureAreRefusedAndLeaveTheResult) {
    const double above = std::nextafter(1.0, 2.0);
    const double below = -std::numeric_limits<double>::denorm_min();
    const double infinite = std::numeric_limits<double>::infinity();
    for (const double beside : {1.0000001, above, below, infinite, -infinite}) {
        EXPECT_FALSE(toLayout(beside, 0.5)) << beside;
        EXPECT_EQ(layout, NO_LAYOUT);
        EXPECT_FALSE(toLayout(0.5, beside)) << beside;
        EXPECT_EQ(layout, NO_LAYOUT);
    }
    EXPECT_TRUE(toLayout(-0.0, -0.0)) << "minus zero is on the edge";
}

TEST_F(PlanarLayoutToChannelMapTest, EdgesOfTheRectangleAreZeroAndOneWhateverTheHeight) {
    for (const double z : {0.0, 5.0, -std::numeric_limits<double>::infinity(), NOT_A_NUMBER}) {
        EXPECT_TRUE(toChannel(-2.0, 0.25, z));
        EXPECT_EQ(channel, (Point<double, 2>{0.0, 0.0}));
        EXPECT_TRUE(toChannel(0.5, 1.5, z));
        EXPECT_EQ(channel, (Point<double, 2>{1.0, 1.0}));
        EXPECT_TRUE(toChannel(-0.75, 0.5, z));
        EXPECT_EQ(channel, (Point<double, 2>{0.5, 0.2}));
    }
}

TEST_F(PlanarLayoutToChannelMapTest, LayoutPointsBesideTheRectangleAreRefusedAndLeaveTheResult) {
    for (const auto& [x, y] : {std::pair{std::nextafter(-2.0, -3.0), 1.0}, std::pair{std::nextafter(0.5, 1.0), 1.0},
                               std::pair{0.0, std::nextafter(0.25, 0.0)}, std::pair{0.0, std::nextafter(1.5, 2.0)}}) {
        EXPECT_FALSE(toChannel(x, y)) << x << ' ' << y;
        EXPECT_EQ(channel, NO_CHANNEL);
    }
}

TEST_F(PlanarLayoutToChannelMapTest, AMirroredRectangleTakesChannelPointsButNoLayoutPoint) {
    setRect(first, 0.5, -2.0, 0.25, 1.5);
    EXPECT_TRUE(toLayout(0.0, 0.0));
    EXPECT_EQ(layout, (Point<double, 3>{0.5, 0.25, 0.0})) << "u grows to the left";
    EXPECT_TRUE(toLayout(1.0, 0.0));
    EXPECT_EQ(layout, (Point<double, 3>{-2.0, 0.25, 0.0}));
    for (const double x : {-2.0, -0.75, 0.5}) {
        EXPECT_FALSE(toChannel(x, 1.0));
    }
    setRect(first, -2.0, 0.5, 1.5, 0.25);
    EXPECT_TRUE(toLayout(0.0, 1.0));
    EXPECT_EQ(layout[1], 0.25);
    EXPECT_FALSE(toChannel(0.0, 1.0));
}

TEST_F(PlanarLayoutToChannelMapTest, ARectangleWithoutWidthOrHeightAnswersWhatIsNotFinite) {
    setRect(first, 0.5, 0.5, 0.25, 0.25);
    EXPECT_TRUE(toChannel(0.5, 0.25));
    EXPECT_FALSE(std::isfinite(channel[0]));
    EXPECT_FALSE(std::isfinite(channel[1]));
    EXPECT_FALSE(toChannel(0.25, 0.25)) << "only on it";
    EXPECT_TRUE(toLayout(0.75, 0.5));
    EXPECT_EQ(layout, (Point<double, 3>{0.5, 0.25, 0.0}));
}

TEST_F(PlanarLayoutToChannelMapTest, NotANumberIsOutsideOfNothingAndComesOut) {
    EXPECT_TRUE(toLayout(NOT_A_NUMBER, 0.5));
    EXPECT_TRUE(std::isnan(layout[0]));
    EXPECT_EQ(layout[1], 0.875);
    EXPECT_EQ(layout[2], 0.0);
    EXPECT_TRUE(toChannel(0.0, NOT_A_NUMBER));
    EXPECT_EQ(channel[0], 0.8);
    EXPECT_TRUE(std::isnan(channel[1]));
    EXPECT_TRUE(toChannel(NOT_A_NUMBER, 0.5));
    EXPECT_TRUE(std::isnan(channel[0]));
    EXPECT_EQ(channel[1], 0.2);
    EXPECT_FALSE(toLayout(NOT_A_NUMBER, 1.5)) << "the other coordinate still counts";
    EXPECT_FALSE(toChannel(NOT_A_NUMBER, 1.75));
}

TEST_F(PlanarLayoutToChannelMapTest, ARectangleWithASideThatIsNoNumberTakesEverythingOnThatSide) {
    for (double* const side : {&first.layoutXMin, &first.layoutXMax, &first.layoutYMin, &first.layoutYMax}) {
        const double before = *side;
        *side = NOT_A_NUMBER;
        const bool isX = side == &first.layoutXMin || side == &first.layoutXMax;
        const bool isMin = side == &first.layoutXMin || side == &first.layoutYMin;
        const double beyond = isMin ? -100.0 : 100.0;
        EXPECT_TRUE(isX ? toChannel(beyond, 1.0) : toChannel(0.0, beyond));
        EXPECT_TRUE(std::isnan(channel[isX ? 0 : 1]));
        EXPECT_TRUE(toLayout(0.5, 0.5));
        EXPECT_TRUE(std::isnan(layout[isX ? 0 : 1]));
        *side = before;
    }
}

TEST_F(PlanarLayoutToChannelMapTest, EachChannelHasItsOwnRectangle) {
    PlanarLayoutToChannelMap map = build();
    EXPECT_TRUE(map.mapChannelToLayout({0.0, 1.0}, layout, 1));
    EXPECT_EQ(layout, (Point<double, 3>{0.125, 3.0, 0.0}));
    EXPECT_FALSE(map.mapLayoutToChannel({0.0, 1.0, 0.0}, channel, 1));
    EXPECT_TRUE(map.mapLayoutToChannel({0.25, 1.0, 0.0}, channel, 0)) << "channels may overlap";
}

TEST_F(PlanarLayoutToChannelMapTest, EveryRowOfTheScriptIsMatchedToTheLastBit) {
    int inside = 0;
    for (const layoutMapRows::Planar& row : layoutMapRows::PLANAR) {
        setRect(first, row.rect[0], row.rect[2], row.rect[1], row.rect[3]);
        EXPECT_TRUE(toLayout(row.channel[0], row.channel[1]));
        EXPECT_EQ(layout, row.toLayout);
        EXPECT_EQ(toChannel(row.layout[0], row.layout[1], row.layout[2]), row.isInside);
        EXPECT_EQ(channel, row.isInside ? row.toChannel : NO_CHANNEL);
        inside += row.isInside ? 1 : 0;
    }
    EXPECT_GT(inside, 10);
    EXPECT_LT(inside, static_cast<int>(std::size(layoutMapRows::PLANAR)) - 10);
}

TEST_F(PlanarLayoutToChannelMapTest, ThereAndBackIsTheSamePointOverThePicture) {
    setRect(first, -1.7, 3.3, 0.1, 2.9);
    PlanarLayoutToChannelMap map = build();
    constexpr int STEPS = 64;
    for (int row = 1; row < STEPS; ++row) {
        for (int column = 1; column < STEPS; ++column) {
            const Point<double, 2> point{static_cast<double>(column) / STEPS, static_cast<double>(row) / STEPS};
            ASSERT_TRUE(map.mapChannelToLayout(point, layout, 0));
            ASSERT_TRUE(map.mapLayoutToChannel(layout, channel, 0));
            EXPECT_LT(norm(channel - point), CLOSURE);
        }
    }
}

TEST_F(PlanarLayoutToChannelMapTest, NothingIsClampedSoThatRoundingMayPutTheFarEdgeOutside) {
    setRect(first, -3.0, -0.9, 0.0, 1.0);
    EXPECT_TRUE(toLayout(1.0, 0.5));
    EXPECT_EQ(layout[0], -0.8999999999999999);
    EXPECT_FALSE(toChannel(layout[0], layout[1]));
}

TEST_F(PlanarLayoutToChannelMapTest, ItAsksNothingAfterItWasBuiltAndKeepsItsRectangles) {
    PlanarLayoutToChannelMap map = build();
    trace.clear();
    first.layoutXMin = 100.0;
    config.projectors.clear();
    EXPECT_TRUE(map.mapChannelToLayout({0.0, 0.0}, layout, 0));
    EXPECT_TRUE(map.mapLayoutToChannel(layout, channel, 0));
    EXPECT_EQ(layout[0], -2.0);
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(PlanarLayoutToChannelMapTest, CopiesHaveRectanglesOfTheirOwn) {
    setRect(second, 5.0, 6.0, 7.0, 8.0);
    ConfigManagerDouble other;
    PlanarLayoutToChannelMap assigned(&other, nullptr);
    {
        const PlanarLayoutToChannelMap original = build();
        const PlanarLayoutToChannelMap copy = original;
        assigned = copy;
    }
    EXPECT_TRUE(assigned.mapChannelToLayout({0.5, 1.0}, layout, 1));
    EXPECT_EQ(layout, (Point<double, 3>{5.5, 8.0, 0.0}));
}

TEST_F(PlanarLayoutToChannelMapTest, ThereIsOneRectanglePerListedProjector) {
    // The list has become shorter since the records were taken, then longer.
    class Growing : public ConfigManagerDouble {
    public:
        using ConfigManagerDouble::ConfigManagerDouble;
        std::vector<std::wstring> getProjectorConfigIds() const override {
            auto ids = ConfigManagerDouble::getProjectorConfigIds();
            ids.resize(calls("getProjectorConfigIds") == 1 ? before : after);
            return ids;
        }
        std::size_t before = 2;
        std::size_t after = 1;
    };
    Growing growing;
    growing.projectors = config.projectors;
    PlanarLayoutToChannelMap map(&growing, nullptr);
    EXPECT_TRUE(map.mapChannelToLayout({0.0, 0.0}, layout, 0));
    EXPECT_EQ(second.calls("getLayoutXMin"), 0U);
    Growing grown;
    grown.projectors = config.projectors;
    grown.before = 1;
    grown.after = 2;
    EXPECT_THROW((PlanarLayoutToChannelMap{&grown, nullptr}), VeltraniException);
}

TEST_F(PlanarLayoutToChannelMapTest, WithoutAConfigurationThereAreNoChannelsAndNoFault) {
    const PlanarLayoutToChannelMap map(nullptr, nullptr);
    EXPECT_THAT(log.records(), IsEmpty());
    EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(PlanarLayoutToChannelMapTest, AProjectorWithoutARecordIsToldByItsNumber) {
    IncompleteConfigDouble incomplete(config, L"P2");
    try {
        const PlanarLayoutToChannelMap map(&incomplete, nullptr);
        FAIL() << "nothing was thrown";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(fault.message,
                  L"The configuration lists a projector for channel 1 (counted from 0), but has no record of it");
    }
}

TEST_F(PlanarLayoutToChannelMapTest, WhatTheConfigurationThrowsPassesThrough) {
    first.throwFrom("getLayoutYMax", std::runtime_error("broken"));
    EXPECT_THROW(build(), std::runtime_error);
}

TEST_F(PlanarLayoutToChannelMapTest, TheOperationsKeepTheirPlaces) {
    EXPECT_EQ(slotOf(&PlanarLayoutToChannelMap::mapLayoutToChannel), 2U) << "behind the destructor";
    EXPECT_EQ(slotOf(&PlanarLayoutToChannelMap::mapChannelToLayout), 3U);
    static_assert(std::is_base_of_v<LayoutToChannelMap, PlanarLayoutToChannelMap>);
}

TEST(ChannelLayoutRect, IsFourNumbersInTheirOrder) {
    const ChannelLayoutRect rect{1.0, 2.0, 3.0, 4.0};
    EXPECT_EQ(rect.xMin, 1.0);
    EXPECT_EQ(rect.yMin, 2.0);
    EXPECT_EQ(rect.xMax, 3.0);
    EXPECT_EQ(rect.yMax, 4.0);
    static_assert(sizeof(ChannelLayoutRect) == 4 * sizeof(double));
}

}  // namespace
