#include "ScreenManager/ProjectorCentricLayoutToChannelMap.h"

#include "Common/VeltraniException.h"
#include "KelvoControl/Configuration.h"
#include "LayoutMapFixture.h"
#include "RayScreen.h"
#include "support/BlendDouble.h"
#include "support/ProjectionModelDouble.h"
#include "support/VirtualSlot.h"

#include <cmath>
#include <stdexcept>
#include <type_traits>

/// What the map asks of table, model and screen, all of them doubles. Its truth on real ones is tested in
/// ProjectorCentricTruthTest.cpp.

namespace {

using Vector = Point<double, 3>;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class ProjectorCentricLayoutToChannelMapTest : public LayoutMapFixture {
protected:
    ProjectorCentricLayoutToChannelMapTest() {
        first.position = {1.0, 2.0, 3.0};
        second.position = {10.0, 20.0, 30.0};
        for (const auto& [id, lens] : {std::pair{L"P1", model}, std::pair{L"P2", secondModel}}) {
            lens->place.width = 1920;
            lens->place.height = 1080;
            lens->place.position = {50.0, 60.0, 70.0};  // not asked for: positions are the configuration's
            addToTable(id, lens);
        }
        ScreenManager::getInstance()->setScreenGeometry(screen);
    }

    std::shared_ptr<BlendDouble> addToTable(const std::wstring& id, const std::shared_ptr<ProjectionModel>& lens) {
        auto blend = std::make_shared<BlendDouble>(Frustum(), &trace);
        blend->model = lens;
        table->add(KelvoProjectorUID(id), std::make_unique<KelvoProjector>(blend));
        return blend;
    }
    /// The trace of what building asks is left out.
    ProjectorCentricLayoutToChannelMap build() {
        ProjectorCentricLayoutToChannelMap map(&config, table);
        trace.clear();
        return map;
    }
    void projectTo(int x, int y) {
        model->projection = [x, y](const Vector&, Point<int, 2>& pixel) {
            pixel = {x, y};
            return true;
        };
    }
    std::wstring fault(XMLConfigManager* from) {
        try {
            const ProjectorCentricLayoutToChannelMap map(from, table);
        } catch (const VeltraniException& thrown) {
            return thrown.message;
        }
        return {};
    }

    std::shared_ptr<KelvoControl::Configuration> table = std::make_shared<KelvoControl::Configuration>();
    const std::shared_ptr<ProjectionModelDouble> model = std::make_shared<ProjectionModelDouble>(&trace);
    const std::shared_ptr<ProjectionModelDouble> secondModel = std::make_shared<ProjectionModelDouble>(&trace, "other");
    const std::shared_ptr<RayScreen> screen = std::make_shared<RayScreen>(&trace);
};

TEST_F(ProjectorCentricLayoutToChannelMapTest, BuildingAsksForRecordsThenIdsThenPositionsAndForNoModel) {
    trace.clear();
    const ProjectorCentricLayoutToChannelMap map(&config, table);
    EXPECT_THAT(trace.lines(), ElementsAre("config.getProjectorConfigIds()", "config.getProjectorConfig(\"P1\")",
                                           "config.getProjectorConfig(\"P2\")", "config.getProjectorConfigIds()",
                                           "projector.getPosition()", "projector.getPosition()"));
    EXPECT_EQ(table.use_count(), 1) << "the table is not kept alive";
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, AProjectorThatTheTableLacksIsNamed) {
    second.identity = L"P3";
    EXPECT_EQ(fault(&config), L"Projector \"P3\" is configured, but the table of the channel maps has no entry for it");
    table.reset();
    EXPECT_THAT(fault(&config), HasSubstr(L"\"P1\"")) << "without a table it is the first";
    EXPECT_EQ(fault(nullptr), L"") << "without a configuration there is none";
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, AProjectorWithoutARecordIsToldByItsNumber) {
    IncompleteConfigDouble incomplete(config, L"P2");
    EXPECT_THAT(fault(&incomplete), HasSubstr(L"channel 1 (counted from 0)"));
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, TheMiddleOfThePictureIsTheRayOfItsPixelFromTheProjector) {
    ProjectorCentricLayoutToChannelMap map = build();
    EXPECT_TRUE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_THAT(trace.lines(),
                ElementsAre("blend.getProjectionModel()", "model.viewport()", "blend.getProjectionModel()",
                            "model.viewport()", "blend.getProjectionModel()", "model.unprojectPixel((960, 540))",
                            "geometry.intersect((1, 2, 3), (1.5, 3, 3.5))"));
    EXPECT_EQ(layout, (Vector{1.5, 3.0, 3.5}));
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, ALayoutPointIsProjectedAsItIsAndDividedByTheSize) {
    projectTo(480, 810);
    ProjectorCentricLayoutToChannelMap map = build();
    EXPECT_TRUE(map.mapLayoutToChannel({4.0, 5.0, 6.0}, channel, 0));
    EXPECT_THAT(trace.lines(),
                ElementsAre("blend.getProjectionModel()", "model.project((4, 5, 6))", "blend.getProjectionModel()",
                            "model.viewport()", "blend.getProjectionModel()", "model.viewport()"));
    EXPECT_EQ(channel, (Point<double, 2>{0.25, 0.75}));
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, PixelsBesideThePictureAreAnswersToo) {
    ProjectorCentricLayoutToChannelMap map = build();
    projectTo(1920, 540);
    EXPECT_TRUE(map.mapLayoutToChannel({}, channel, 0));
    EXPECT_EQ(channel, (Point<double, 2>{1.0, 0.5}));
    projectTo(-3, 10);
    EXPECT_TRUE(map.mapLayoutToChannel({}, channel, 0));
    EXPECT_EQ(channel, (Point<double, 2>{-3.0 / 1920.0, 10.0 / 1080.0}));
    projectTo(std::numeric_limits<int>::min(), std::numeric_limits<int>::max());
    EXPECT_TRUE(map.mapLayoutToChannel({}, channel, 0));
    EXPECT_EQ(channel[0], std::numeric_limits<int>::min() / 1920.0);
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, ChannelPointsBesideThePictureHaveRaysToo) {
    ProjectorCentricLayoutToChannelMap map = build();
    EXPECT_TRUE(map.mapChannelToLayout({-0.5, 2.0}, layout, 0));
    EXPECT_EQ(model->calls("unprojectPixel"), 1U);
    EXPECT_THAT(trace.lines(), testing::Contains("model.unprojectPixel((-960, 2160))"));
    EXPECT_TRUE(map.mapChannelToLayout({NOT_A_NUMBER, 0.0}, layout, 0)) << "model and screen decide";
    EXPECT_TRUE(std::isnan(layout[0]));
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, APictureWithoutPixelsGivesNumbersThatAreNotFinite) {
    model->place.width = 0;
    projectTo(7, 540);
    EXPECT_TRUE(build().mapLayoutToChannel({}, channel, 0));
    EXPECT_FALSE(std::isfinite(channel[0]));
    EXPECT_EQ(channel[1], 0.5);
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, EachChannelHasItsOwnModelAndPosition) {
    secondModel->place.width = 100;
    ProjectorCentricLayoutToChannelMap map = build();
    EXPECT_TRUE(map.mapChannelToLayout({1.0, 0.0}, layout, 1));
    EXPECT_THAT(trace.lines(), testing::Contains("other.unprojectPixel((100, 0))"));
    EXPECT_EQ(screen->rays.back(), (Ray{{10.0, 20.0, 30.0}, {11.0, 21.0, 30.0}}));
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, TheNearestIntersectionIsTheAnswer) {
    screen->surface = [](const Vector&, const Vector&) -> IntersectionSet {
        return {{{7.0, 8.0, 9.0}, 2.0}, {{5.0, 5.0, 5.0}, 1.0}};
    };
    EXPECT_TRUE(build().mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_EQ(layout, (Vector{5.0, 5.0, 5.0}));
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, ARayThatMissesLeavesTheResult) {
    screen->surface = [](const Vector&, const Vector&) { return IntersectionSet(); };
    EXPECT_FALSE(build().mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_EQ(layout, NO_LAYOUT);
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, WhatTheModelRefusesAsksNoScreenAndLeavesTheResults) {
    model->unprojection = [](const Point<double, 2>&, Vector& direction) {
        direction = {9.0, 9.0, 9.0};
        return false;
    };
    model->projection = [](const Vector&, Point<int, 2>& pixel) {
        pixel = {9, 9};
        return false;
    };
    ProjectorCentricLayoutToChannelMap map = build();
    EXPECT_FALSE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_FALSE(map.mapLayoutToChannel({}, channel, 0));
    EXPECT_EQ(layout, NO_LAYOUT);
    EXPECT_EQ(channel, NO_CHANNEL);
    EXPECT_EQ(screen->calls("intersect"), 0U);
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, WithoutAScreenOrAModelNothingMaps) {
    projectTo(1, 1);
    ScreenManager::getInstance()->setScreenGeometry(nullptr);
    ProjectorCentricLayoutToChannelMap map = build();
    EXPECT_FALSE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_TRUE(map.mapLayoutToChannel({}, channel, 0)) << "which needs no screen";
    ScreenManager::getInstance()->setScreenGeometry(screen);
    addToTable(L"P1", nullptr);
    ProjectorCentricLayoutToChannelMap blind = build();
    channel = NO_CHANNEL;
    EXPECT_FALSE(blind.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_FALSE(blind.mapLayoutToChannel({}, channel, 0));
    EXPECT_EQ(layout, NO_LAYOUT);
    EXPECT_EQ(channel, NO_CHANNEL);
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, NothingOfTheModelIsKept) {
    projectTo(1, 1);
    const auto blend = addToTable(L"P1", model);
    const auto uses = model.use_count();
    ProjectorCentricLayoutToChannelMap map = build();
    EXPECT_TRUE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_TRUE(map.mapLayoutToChannel({}, channel, 0));
    EXPECT_EQ(model.use_count(), uses);
    blend->model = secondModel;
    EXPECT_TRUE(map.mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_EQ(secondModel->calls("unprojectPixel"), 1U) << "a blend may change its model";
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, ItFollowsTheScreenButNotThePositions) {
    ProjectorCentricLayoutToChannelMap map = build();
    const auto other = std::make_shared<RayScreen>();
    other->hash[0] = 1;
    other->surface = [](const Vector&, const Vector&) -> IntersectionSet { return {{{0.0, 0.0, 1.0}, 1.0}}; };
    first.position = {-1.0, -1.0, -1.0};
    ScreenManager::getInstance()->setScreenGeometry(other);
    EXPECT_TRUE(map.mapChannelToLayout({0.0, 0.0}, layout, 0));
    EXPECT_EQ(layout, (Vector{0.0, 0.0, 1.0}));
    EXPECT_EQ(other->rays.back().first, (Vector{1.0, 2.0, 3.0}));
    EXPECT_EQ(screen->calls("intersect"), 0U);
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, AScreenThatIsReplacedWhileItIsAskedStaysAliveForTheCall) {
    screen->surface = [](const Vector&, const Vector& to) -> IntersectionSet {
        ScreenManager::getInstance()->setScreenGeometry(nullptr);
        return {{to, 1.0}};
    };
    EXPECT_TRUE(build().mapChannelToLayout({0.5, 0.5}, layout, 0));
    EXPECT_EQ(layout, (Vector{1.5, 3.0, 3.5}));
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, ExceptionsPassThroughAndLeaveTheResult) {
    screen->throwFrom("intersect", std::runtime_error("broken"));
    EXPECT_THROW(build().mapChannelToLayout({0.5, 0.5}, layout, 0), std::runtime_error);
    EXPECT_EQ(layout, NO_LAYOUT);
    first.throwFrom("getPosition", VeltraniException(L"no position"));
    EXPECT_EQ(fault(&config), L"no position");
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, CopiesHaveTheSameEntriesAndPositions) {
    projectTo(960, 0);
    ConfigManagerDouble none;
    ProjectorCentricLayoutToChannelMap assigned(&none, table);
    {
        const ProjectorCentricLayoutToChannelMap original = build();
        const ProjectorCentricLayoutToChannelMap copy = original;
        assigned = copy;
    }
    EXPECT_TRUE(assigned.mapLayoutToChannel({}, channel, 0));
    EXPECT_EQ(channel, (Point<double, 2>{0.5, 0.0}));
    EXPECT_TRUE(assigned.mapChannelToLayout({0.0, 0.0}, layout, 1));
    EXPECT_EQ(layout, (Vector{10.0, 21.0, 30.0}));
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, NothingIsLogged) {
    ProjectorCentricLayoutToChannelMap map = build();
    EXPECT_FALSE(map.mapLayoutToChannel({}, channel, 0));
    EXPECT_THAT(log.records(), IsEmpty());
}

TEST_F(ProjectorCentricLayoutToChannelMapTest, TheOperationsKeepTheirPlaces) {
    EXPECT_EQ(slotOf(&ProjectorCentricLayoutToChannelMap::mapLayoutToChannel), 2U) << "behind the destructor";
    EXPECT_EQ(slotOf(&ProjectorCentricLayoutToChannelMap::mapChannelToLayout), 3U);
    static_assert(std::is_base_of_v<LayoutToChannelMap, ProjectorCentricLayoutToChannelMap>);
}

}  // namespace
