#include "DisplayLight/LatticeFinder.h"

#include "AddedLight.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayLight/EyeGrid.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <string>
#include <utility>
#include <vector>

namespace {

using Veltrani::DisplayExport::ChannelSight;
using Veltrani::DisplayLight::EyeGrid;
using Veltrani::DisplayLight::EyePlace;
using Veltrani::DisplayLight::EyePlaces;
using Veltrani::DisplayLight::EyeView;
using Veltrani::DisplayLight::FoundPlace;
using Veltrani::DisplayLight::LatticeFinder;
using Veltrani::DisplayLight::SeenSide;

class LatticeFinderTest : public AddedLightTest {
protected:
    static constexpr double PIXEL = 0.01;  ///< metres on the wall

    /// A picture of 200 x 100 pixels on the left half of a wall of 4 x 1 m, five metres ahead of the eye.
    LatticeFinderTest() { loadArea(WALL, "left='0' right='0.5' bottom='0' top='1'"); }

    void loadArea(const std::string& screen, const std::string& area) {
        load("<Screen " + screen + "</Screen>",
             "<Projector id='P'><Name>P</Name><Resolution width='200' height='100'/><ScreenArea " + area +
                 "/></Projector>",
             "<TargetData type='PlanarBasic'/>");
    }

    /// What is found of the places that the eye sees around some directions.
    void findAround(const P3& eye, const std::vector<P3>& directions, std::size_t width, std::size_t height) {
        const EyePlaces places(config(), channels().front(), ScreenManager::getInstance()->getScreenGeometry(), eye);
        m_grid = EyeGrid::of(EyeView::around(eye, directions, width, height), places);
        const ChannelSight sight(config(), channels().front());
        LatticeFinder(sight).find(m_grid, SeenSide::LIT, m_found);
    }

    /// Each place is lit where its coordinates lie within the area, and by the picture point that stands there.
    /// @param coordinatesOf (s, t) of a place
    /// @return how many are
    template <class CoordinatesOf>
    std::size_t expectFound(const P2& lower, const P2& upper, const CoordinatesOf& coordinatesOf) const {
        std::size_t count = 0;
        for (std::size_t i = 0; i < m_found.size(); ++i) {
            if (!m_grid.places[i].isSeen) {
                EXPECT_FALSE(m_found[i].isLit);
                continue;
            }
            const P2 st = coordinatesOf(m_grid.places[i].point);
            const P2 picture{(st[0] - lower[0]) / (upper[0] - lower[0]), (st[1] - lower[1]) / (upper[1] - lower[1])};
            const double beside = std::max(std::abs(picture[0] - 0.5), std::abs(picture[1] - 0.5)) - 0.5;
            if (std::abs(beside) < 1e-6) {
                continue;
            }
            EXPECT_EQ(m_found[i].isLit, beside < 0) << st;
            if (m_found[i].isLit) {
                EXPECT_LT(norm(m_found[i].picture - picture), 1e-5) << st;
                ++count;
            }
        }
        return count;
    }

    static inline const std::string WALL =
        "shape='Flat'><EyePoint x='0' y='0' z='0'/><Centre x='0' y='5' z='0'/><Size width='4' height='1'/>";

    /// What is found of the places that the eye sees, after they were moved.
    void find(const P3& move) {
        const std::vector<P3> directions{{-2, 5, -0.5}, {2, 5, 0.5}};
        const EyePlaces eye(config(), channels().front(), ScreenManager::getInstance()->getScreenGeometry(), {});
        m_grid = EyeGrid::of(EyeView::around({}, directions, 160, 90), eye);
        for (EyePlace& place : m_grid.places) {
            place.point = place.point + move;
        }
        const ChannelSight sight(config(), channels().front());
        LatticeFinder(sight).find(m_grid, SeenSide::LIT, m_found);
    }

    [[nodiscard]] std::size_t lit() const {
        return static_cast<std::size_t>(
            std::count_if(m_found.begin(), m_found.end(), [](const FoundPlace& place) { return place.isLit; }));
    }

    EyeGrid m_grid;
    std::vector<FoundPlace> m_found;
};

TEST_F(LatticeFinderTest, FindsEachPlaceWhereThePictureShowsIt) {
    find({});
    for (std::size_t i = 0; i < m_found.size(); ++i) {
        const EyePlace& place = m_grid.places[i];
        EXPECT_EQ(m_found[i].isLit, place.isSeen && place.point[0] < 0) << place.point;
        if (m_found[i].isLit) {
            EXPECT_NEAR(m_found[i].picture[0], (place.point[0] + 2) / 2, 1e-6);
            EXPECT_NEAR(m_found[i].picture[1], place.point[2] + 0.5, 1e-6);
        }
    }
    EXPECT_GT(lit(), 1000U);
}

// The picture reaches beyond the wall to the left and upwards: its cells there are seen in part.
TEST_F(LatticeFinderTest, APictureThatReachesBeyondTheScreenIsFoundToItsEdge) {
    loadArea(WALL, "left='-0.13' right='0.4' bottom='0.2' top='1.27'");
    findAround({}, {{-2.2, 5.0, -0.7}, {2.2, 5.0, 0.7}}, 211, 97);
    const std::size_t count = expectFound({-0.13, 0.2}, {0.4, 1.27}, [](const P3& place) {
        return P2{place[0] / 4 + 0.5, place[2] + 0.5};
    });
    EXPECT_GT(count, 2000U);
}

// In a panorama around an eye beside the axis: pictures before it, beside it, and on either side of the seam behind it.
TEST_F(LatticeFinderTest, OnACylinderEachPictureIsFoundUpToTheSeamOfThePanorama) {
    std::vector<P3> around;
    for (int i = 0; i < 36; ++i) {
        for (const double z : {-0.7, 0.9}) {
            around.push_back({std::sin(i * std::numbers::pi / 18), std::cos(i * std::numbers::pi / 18), z});
        }
    }
    around.push_back({0.1, -1.0, -3.0});
    for (const auto& [left, right] : {std::pair{0.0, 0.21}, {0.4, 0.73}, {0.83, 1.0}}) {
        loadArea(
            "shape='Cylinder'><EyePoint x='0.3' y='0.2' z='0.1'/><Centre x='0' y='0' z='0'/><Radius value='3'/><Size "
            "height='4'/><Azimuth min='-180' max='180'/>",
            "left='" + std::to_string(left) + "' right='" + std::to_string(right) + "' bottom='0.1' top='0.8'");
        findAround({0.3, 0.2, 0.1}, around, 180, 90);
        ASSERT_EQ(m_grid.view.kind(), EyeView::Kind::PANORAMA);
        const std::size_t count = expectFound({left, 0.1}, {right, 0.8}, [](const P3& place) {
            return P2{std::atan2(place[0], place[1]) / (2 * std::numbers::pi) + 0.5, place[2] / 4 + 0.5};
        });
        EXPECT_GT(count, 500U);
    }
}

// What lies before the surface that the picture lands on, by no more than rounding and interpolation explain, is that
// surface; what lies further before it is another part of the screen.
TEST_F(LatticeFinderTest, AQuarterOfAPixelBesideTheSurfaceIsAnotherPartOfTheScreen) {
    // Of a pixel that is not square, its longer side counts.
    for (const std::string& top : std::vector<std::string>{"1", "0.3"}) {
        loadArea(WALL, "left='0' right='0.5' bottom='0' top='" + top + "'");
        find({});
        const std::size_t all = lit();
        EXPECT_GT(all, 0U);
        find({0, -0.2 * PIXEL, 0});
        EXPECT_EQ(lit(), all);
        find({0, -0.3 * PIXEL, 0});
        EXPECT_EQ(lit(), 0U);
        find({0, 0.3 * PIXEL, 0});
        EXPECT_EQ(lit(), 0U) << "behind it, too";
    }
}

}  // namespace
