#include "DisplayLight/ReachFinder.h"

#include "../DisplayExport/ExportDisplays.h"
#include "DisplayExport/ChannelSight.h"

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

namespace {

using Veltrani::DisplayExport::ChannelSight;
using Veltrani::DisplayLight::EyePlace;
using Veltrani::DisplayLight::FoundPlace;
using Veltrani::DisplayLight::PlaceGrid;
using Veltrani::DisplayLight::ReachFinder;
using Veltrani::DisplayLight::SeenSide;
using Veltrani::DisplayReport::ChannelLight;
using Veltrani::DisplayReport::SurfacePoint;
using P2 = Point<double, 2>;
using P3 = Point<double, 3>;

/// Light whose picture lands on a rectangle of 3 by 4 at y = 2, from (1, 2, 0) upwards, or nowhere.
class LightDouble : public ChannelLight {
public:
    using Way = std::function<Reach(const SurfacePoint&)>;

    LightDouble(bool lands, Way way, std::vector<SurfacePoint>& requested)
        : m_lands(lands), m_way(std::move(way)), m_requested(requested) {}

    void land(std::span<const P2> picture, std::span<Landing> landings) const override {
        for (std::size_t i = 0; i < picture.size(); ++i) {
            landings[i].on.place = {1 + 3 * picture[i][0], 2.0, 4 * picture[i][1]};
            landings[i].hits = m_lands;
        }
    }
    [[nodiscard]] bool lights(const SurfacePoint& /*point*/) const override { return true; }
    bool findPicture(const SurfacePoint& /*point*/, P2& /*picture*/) const override { return true; }
    void reach(std::span<const SurfacePoint> points, std::span<Reach> reaches) const override {
        for (std::size_t i = 0; i < points.size(); ++i) {
            m_requested.push_back(points[i]);
            reaches[i] = m_way(points[i]);
        }
    }

private:
    bool m_lands;
    Way m_way;
    std::vector<SurfacePoint>& m_requested;
};

ChannelLight::Reach reachAt(const P2& picture, int side = 0, bool inSight = true) {
    ChannelLight::Reach reach;
    reach.picture = picture;
    reach.hasPicture = true;
    reach.inSight = inSight;
    reach.side = side;
    return reach;
}

EyePlace seenAt(const P3& point, int side = 0) {
    return {point, static_cast<std::int8_t>(side), true};
}

class ReachFinderTest : public testing::Test {
protected:
    std::vector<FoundPlace> find(const PlaceGrid& grid, const LightDouble::Way& way, SeenSide side = SeenSide::LIT,
                                 bool lands = true) {
        std::vector<FoundPlace> found(99, FoundPlace{{0.5, 0.5}, 1, true});
        ReachFinder(std::make_unique<LightDouble>(lands, way, m_requested)).findPlaces(grid, side, found);
        EXPECT_EQ(found.size(), grid.places.size());
        return found;
    }

    std::vector<SurfacePoint> m_requested;
};

TEST_F(ReachFinderTest, EachPlaceOfEachRowHasItsOwnPictureAndCoordinates) {
    PlaceGrid grid;
    grid.width = 3;
    for (int i = 0; i < 6; ++i) {
        grid.places.push_back(seenAt({1.5 + 0.25 * i, 2.0, 1.0}));
        grid.parameters.emplace_back(0.125 * i, 0.5);
    }
    grid.places[1].isSeen = false;
    const auto way = [](const SurfacePoint& point) { return reachAt({point.place[0] / 4, point.parameters[0]}); };
    auto found = find(grid, way);
    for (std::size_t i = 0; i < found.size(); ++i) {
        ASSERT_EQ(found[i].isLit, i != 1) << i;
        EXPECT_EQ(found[i].side, 0);
        const double part = static_cast<double>(i);
        EXPECT_EQ(found[i].picture, i != 1 ? P2((1.5 + 0.25 * part) / 4, 0.125 * part) : P2()) << i;
    }
    EXPECT_EQ(m_requested.size(), 5U) << "what is not seen is not looked for";
    EXPECT_TRUE(std::all_of(m_requested.begin(), m_requested.end(), [](const auto& one) { return one.hasParameters; }));
    m_requested.clear();
    grid.parameters.clear();
    found = find(grid, way);
    EXPECT_EQ(found[5].picture, P2(2.75 / 4, 0.0));
    EXPECT_TRUE(
        std::none_of(m_requested.begin(), m_requested.end(), [](const auto& one) { return one.hasParameters; }));
}

TEST_F(ReachFinderTest, OnlyWhatIsInSightAndInThePictureIsLit) {
    PlaceGrid grid;
    grid.width = 1;
    grid.places = {seenAt({2.0, 2.0, 2.0})};
    const auto isLit = [&](const ChannelLight::Reach& reach) {
        return find(grid, [&reach](const SurfacePoint& /*point*/) { return reach; }).front().isLit;
    };
    EXPECT_TRUE(isLit(reachAt({1.0, 0.0})));
    EXPECT_FALSE(isLit(reachAt({1.0, 0.0}, 0, false)));
    EXPECT_FALSE(isLit(reachAt({1.01, 0.5})));
    EXPECT_FALSE(isLit(reachAt({0.5, -0.01})));
}

/// A place that shows no side, and light that comes from none, count for both.
TEST_F(ReachFinderTest, ASideShowsTheLightThatArrivesAtItOrBehindIt) {
    for (const int place : {-1, 0, 1}) {
        for (const int light : {-1, 0, 1}) {
            PlaceGrid grid;
            grid.width = 1;
            grid.places = {seenAt({2.0, 2.0, 2.0}, place)};
            const auto way = [light](const SurfacePoint& /*point*/) { return reachAt({0.5, 0.5}, light); };
            const FoundPlace lit = find(grid, way, SeenSide::LIT).front();
            const FoundPlace behind = find(grid, way, SeenSide::BEHIND).front();
            const bool isBoth = place == 0 || light == 0;
            EXPECT_EQ(lit.isLit, isBoth || place == light) << place << ' ' << light;
            EXPECT_EQ(behind.isLit, isBoth || place != light) << place << ' ' << light;
            EXPECT_EQ(lit.side, lit.isLit ? light : 0);
        }
    }
}

// The box that the picture lands in has a diagonal of 5: a sixteenth of that around it is looked into.
TEST_F(ReachFinderTest, FarFromWhatThePictureLandsOnNothingIsLookedFor) {
    const auto way = [](const SurfacePoint& /*point*/) { return reachAt({0.5, 0.5}); };
    const P3 lower{1.0, 2.0, 0.0};
    const P3 upper{4.0, 2.0, 4.0};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        for (const bool isUpper : {false, true}) {
            PlaceGrid grid;
            grid.width = 2;
            for (const double beyond : {0.31, 0.32}) {
                P3 place{2.0, 2.0, 2.0};
                place[axis] = isUpper ? upper[axis] + beyond : lower[axis] - beyond;
                grid.places.push_back(seenAt(place));
            }
            const auto found = find(grid, way);
            EXPECT_TRUE(found[0].isLit) << axis << ' ' << isUpper;
            EXPECT_FALSE(found[1].isLit) << axis << ' ' << isUpper;
            EXPECT_TRUE(find(grid, way, SeenSide::LIT, false)[1].isLit) << "where nothing lands it is not known";
        }
    }
}

/// The left half of a wall of 4 by 2 m.
class ReachFinderForPlacesTest : public ExportDisplayTest {
protected:
    [[nodiscard]] std::vector<FoundPlace> find(const std::vector<P3>& points, const std::vector<P2>& parameters) const {
        PlaceGrid grid;
        grid.width = points.size();
        for (const P3& point : points) {
            grid.places.push_back(seenAt(point));
        }
        grid.parameters = parameters;
        const ChannelSight sight(config(), channels().front());
        std::vector<FoundPlace> found;
        ReachFinder::forPlaces(config(), sight, ScreenManager::getInstance()->getScreenGeometry(), !parameters.empty())
            ->findPlaces(grid, SeenSide::LIT, found);
        return found;
    }
};

TEST_F(ReachFinderForPlacesTest, AnAreaGoesByTheCoordinatesOfAPlaceOrSearchesThem) {
    load(displays::FLAT, displays::projector("P", "<ScreenArea left='0' right='0.5' bottom='0' top='1'/>"),
         "<TargetData type='PlanarBasic'/>");
    const std::vector<P3> points{{-1.5, 5.0, 0.5}, {-0.5, 5.0, 1.75}, {1.0, 5.0, 0.5}};
    const auto searched = find(points, {});
    EXPECT_FALSE(searched[2].isLit);
    ASSERT_TRUE(searched[0].isLit && searched[1].isLit);
    EXPECT_LT(norm(searched[0].picture - P2{0.25, 0.25}), 1e-6);
    EXPECT_LT(norm(searched[1].picture - P2{0.75, 0.875}), 1e-6);
    // Coordinates that are known are those of the place.
    const auto known = find(points, {{0.125, 0.5}, {0.25, 0.25}, {0.75, 0.5}});
    EXPECT_FALSE(known[2].isLit);
    ASSERT_TRUE(known[0].isLit && known[1].isLit);
    EXPECT_EQ(known[0].picture, (P2{0.25, 0.5}));
    EXPECT_EQ(known[1].picture, (P2{0.5, 0.25}));
}

TEST_F(ReachFinderForPlacesTest, AFrustumNeedsNoCoordinates) {
    load(displays::FLAT, exportDisplays::standing("P", "x='0' y='0' z='1'", "z='0' x='0'", 45, 45),
         "<TargetData type='ProjectorCentric'/>");
    const auto found = find({{-1.0, 5.0, 1.5}, {2.0, 5.0, 0.0}}, {});
    ASSERT_TRUE(found[0].isLit && found[1].isLit);
    EXPECT_LT(norm(found[0].picture - P2{0.4, 0.55}), 1e-12);
    EXPECT_LT(norm(found[1].picture - P2{0.7, 0.4}), 1e-12);
    EXPECT_EQ(found[0].side, 1);
}

}  // namespace
