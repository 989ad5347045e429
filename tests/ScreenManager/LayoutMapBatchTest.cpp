#include "Common/VeltraniException.h"
#include "EyeMapFixture.h"
#include "KelvoScreen/MeshScreen.h"
#include "RayScreen.h"
#include "ScreenKinds.h"
#include "ScreenManager/CollimatedLayoutToChannelMap.h"
#include "ScreenManager/SphericalLayoutToChannelMap.h"

#include <gmock/gmock.h>

#include <cmath>

/// Many picture points at once are answered as one by one, to the last bit, whatever is done to be fast.

namespace {

using Vector = Point<double, 3>;
using Picture = Point<double, 2>;
using Answers = std::vector<LayoutPoint>;
using screenKinds::areSameBits;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr Vector UNTOUCHED{-7.0, -8.0, -9.0};

/// Row by row, a little more than the picture.
std::vector<Picture> grid(int columns, int rows) {
    std::vector<Picture> points;
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            points.emplace_back(1.2 * column / (columns - 1.0) - 0.1, 1.2 * row / (rows - 1.0) - 0.1);
        }
    }
    return points;
}

Answers atOnce(LayoutToChannelMap& map, const std::vector<Picture>& points) {
    Answers answers(points.size(), LayoutPoint{UNTOUCHED, true});
    map.mapChannelPointsToLayout(points, answers, 0);
    return answers;
}

Answers oneByOne(LayoutToChannelMap& map, const std::vector<Picture>& points) {
    Answers answers(points.size(), LayoutPoint{UNTOUCHED, true});
    for (std::size_t i = 0; i < points.size(); ++i) {
        answers[i].isMapped = map.mapChannelToLayout(points[i], answers[i].point, 0);
    }
    return answers;
}

/// The hits; a failed test when the answers differ in a bit.
std::size_t compare(const Answers& answers, const Answers& expected) {
    std::size_t hits = 0;
    std::size_t differences = answers.size() == expected.size() ? 0 : 1;
    for (std::size_t i = 0; i < answers.size() && differences == 0; ++i) {
        hits += answers[i].isMapped ? 1 : 0;
        const bool isSame =
            answers[i].isMapped == expected[i].isMapped && areSameBits(answers[i].point, expected[i].point);
        differences += isSame ? 0 : 1;
        EXPECT_TRUE(answers[i].isMapped || areSameBits(answers[i].point, UNTOUCHED)) << i;
    }
    EXPECT_EQ(differences, 0U);
    return hits;
}

/// A map of another class is asked for every point.
class PointByPoint : public SphericalLayoutToChannelMap {
public:
    using SphericalLayoutToChannelMap::SphericalLayoutToChannelMap;

    std::vector<Picture> asked;

    bool mapChannelToLayout(const Picture& channel, Vector& layout, std::size_t channelIndex) override {
        asked.push_back(channel);
        return SphericalLayoutToChannelMap::mapChannelToLayout(channel, layout, channelIndex);
    }
};

class LayoutMapBatchTest : public EyeMapFixture {
protected:
    SphericalLayoutToChannelMap makeMap() { return {&config, table}; }

    std::shared_ptr<RayScreen> installRayScreen() {
        auto screen = std::make_shared<RayScreen>(&trace);
        screen->surface = [](const Vector&, const Vector& to) -> IntersectionSet {
            return to[0] < 0.3 ? IntersectionSet() : IntersectionSet{{to, 1.0}};
        };
        ScreenManager::getInstance()->setScreenGeometry(screen);
        trace.clear();
        return screen;
    }
};

TEST_F(LayoutMapBatchTest, EveryKindOfScreenGivesTheSameBitsPointByPoint) {
    const std::vector<Picture> points = grid(67, 43);
    for (const auto& [name, screen] : screenKinds::all()) {
        SCOPED_TRACE(name);
        ScreenManager::getInstance()->setScreenGeometry(screen);
        for (const double turn : {0.0, 0.3, -0.6, 3.0}) {
            Viewport viewport = Viewport::fromFrustumAngles(-0.6, 0.7, -0.5, 0.4);
            viewport.orientation = {turn, 0.1, 0.5 * turn};
            addToTable(Frustum::of(viewport, {}));
            SphericalLayoutToChannelMap map = makeMap();
            const std::size_t hits = compare(atOnce(map, points), oneByOne(map, points));
            EXPECT_EQ(hits == 0, turn == 3.0) << turn;
            EXPECT_LT(hits, points.size()) << turn;
        }
    }
}

TEST_F(LayoutMapBatchTest, EveryNumberOfPointsToo) {
    addToTable(turnedFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<MeshScreen>(screenKinds::bumpyMesh()));
    const std::vector<Picture> all = grid(101, 189);
    for (const std::size_t count : {0U, 1U, 2U, 7U, 8U, 9U, 33U, 2049U, 8181U, 8191U, 8192U, 8193U, 19089U}) {
        const std::vector<Picture> points(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count));
        EXPECT_EQ(compare(atOnce(map, points), oneByOne(map, points)) > 0, count > 0) << count;
    }
}

/// Longer than what is mapped at once, with and without a row that ends there.
TEST_F(LayoutMapBatchTest, RowsOfAnyLengthToo) {
    addToTable(turnedFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<MeshScreen>(screenKinds::bumpyMesh()));
    for (const auto& [columns, rows] : {std::pair<int, int>{9000, 2}, {8192, 2}, {4096, 3}, {2, 9000}}) {
        const std::vector<Picture> points = grid(columns, rows);
        EXPECT_GT(compare(atOnce(map, points), oneByOne(map, points)), 0U) << columns << " x " << rows;
    }
}

TEST_F(LayoutMapBatchTest, PointsInAnyOrderAndWhatIsNotANumberToo) {
    addToTable(turnedFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<MeshScreen>(screenKinds::bumpyMesh()));
    std::vector<Picture> points;
    for (int i = 0; i < 500; ++i) {
        points.emplace_back(0.5 + 0.5 * std::sin(1.7 * i), 0.5 + 0.5 * std::cos(2.9 * i));
    }
    points[100][0] = std::nan("");
    points[200][1] = std::numeric_limits<double>::infinity();
    const Answers answers = atOnce(map, points);
    EXPECT_GT(compare(answers, oneByOne(map, points)), 100U);
    EXPECT_FALSE(answers[100].isMapped);
    EXPECT_FALSE(answers[200].isMapped);
}

TEST_F(LayoutMapBatchTest, AScreenThatIsNotKnownIsAskedRayByRay) {
    addToTable(straightFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    installRayScreen();
    const std::vector<Picture> points = grid(5, 4);
    const Answers answers = atOnce(map, points);
    const std::vector<std::string> asked = trace.lines();
    trace.clear();
    const std::size_t hits = compare(answers, oneByOne(map, points));
    EXPECT_EQ(asked, trace.lines());
    EXPECT_GT(hits, 0U);
    EXPECT_LT(hits, points.size());
}

TEST_F(LayoutMapBatchTest, AMapOfAnotherClassIsAskedForEveryPoint) {
    addToTable(turnedFrustum());
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<MeshScreen>(screenKinds::bumpyMesh()));
    PointByPoint map(&config, table);
    const std::vector<Picture> points = grid(9, 7);
    const Answers answers = atOnce(map, points);
    EXPECT_EQ(map.asked, points);
    compare(answers, oneByOne(map, points));
}

TEST_F(LayoutMapBatchTest, TheFrustumIsAskedForWithEveryPoint) {
    const auto blend = addToTable(turnedFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    ScreenManager::getInstance()->setScreenGeometry(std::make_shared<MeshScreen>(screenKinds::bumpyMesh()));
    const std::vector<Picture> points = grid(9, 7);
    trace.clear();
    atOnce(map, points);
    EXPECT_EQ(blend->calls("getSphericalBlendExtents"), points.size());
}

TEST_F(LayoutMapBatchTest, AMeshRemembersTheLastHitAsPointByPoint) {
    addToTable(turnedFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    const auto screen = std::make_shared<MeshScreen>(screenKinds::bumpyMesh());
    ScreenManager::getInstance()->setScreenGeometry(screen);
    const std::vector<Picture> points = grid(67, 43);
    const auto normalOfLastHit = [&](const Answers& answers) {
        const auto last = std::find_if(answers.rbegin(), answers.rend(), [](const auto& a) { return a.isMapped; });
        return screen->getScreenNormal(last->point);
    };
    const Vector normal = normalOfLastHit(atOnce(map, points));
    EXPECT_TRUE(areSameBits(normal, normalOfLastHit(oneByOne(map, points))));
}

TEST_F(LayoutMapBatchTest, AnswersMustHaveRoom) {
    addToTable(straightFrustum());
    SphericalLayoutToChannelMap map = makeMap();
    const std::vector<Picture> points = grid(3, 3);
    Answers answers(8);
    try {
        map.mapChannelPointsToLayout(points, answers, 0);
        FAIL() << "nothing was thrown";
    } catch (const VeltraniException& fault) {
        EXPECT_THAT(fault.message, HasSubstr(L"9 picture points but room for 8"));
    }
}

TEST_F(LayoutMapBatchTest, WithoutAScreenOrALocatorNothingIsMapped) {
    addToTable(straightFrustum());
    ScreenManager::getInstance()->setScreenGeometry(std::shared_ptr<ScreenGeometry>());
    SphericalLayoutToChannelMap map = makeMap();
    EXPECT_EQ(compare(atOnce(map, grid(3, 3)), Answers(9, LayoutPoint{UNTOUCHED, false})), 0U);
    targetData.targetDataType = L"none such";
    SphericalLayoutToChannelMap withoutLocator = makeMap();
    EXPECT_EQ(compare(atOnce(withoutLocator, grid(3, 3)), Answers(9, LayoutPoint{UNTOUCHED, false})), 0U);
}

/// A collimated map of another class is asked for every point, too.
class MirrorPointByPoint : public CollimatedLayoutToChannelMap {
public:
    using CollimatedLayoutToChannelMap::CollimatedLayoutToChannelMap;

    bool mapChannelToLayout(const Picture&, Vector&, std::size_t) override {
        ++asked;
        return false;
    }
    std::size_t asked = 0;
};

TEST_F(LayoutMapBatchTest, TheMirrorGivesTheSameBitsPointByPoint) {
    targetData.targetDataType = BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED;
    targetData.mirrorRadius = 2.0;
    targetData.mirrorOrientation = {0.0, 0.05, 0.1};
    // Headings are bent for the grids of the locator, not for its rays.
    targetData.pitchTable = {{0.0, 0.1}, {1.0, 1.2}};
    const std::vector<Picture> points = grid(67, 43);
    std::size_t hits = 0;
    std::size_t screens = 0;
    for (const double turn : {-0.4, 0.0, 0.3}) {
        // Backwards into the mirror, which throws the rays ahead.
        Viewport viewport = Viewport::fromFrustumAngles(-0.6, 0.7, -0.5, 0.4);
        viewport.orientation = {3.1 + turn, 0.1, turn};
        addToTable(Frustum::of(viewport, {}));
        CollimatedLayoutToChannelMap turned(&config, table, false);
        for (const auto& [name, screen] : screenKinds::all()) {
            SCOPED_TRACE(name);
            ScreenManager::getInstance()->setScreenGeometry(screen);
            hits += compare(atOnce(turned, points), oneByOne(turned, points));
            ++screens;
        }
    }
    EXPECT_GT(hits, 1000U);
    EXPECT_LT(hits, screens * points.size());
    MirrorPointByPoint own(&config, table, false);
    EXPECT_EQ(compare(atOnce(own, points), Answers(points.size(), LayoutPoint{UNTOUCHED, false})), 0U);
    EXPECT_EQ(own.asked, points.size());
}

}  // namespace
