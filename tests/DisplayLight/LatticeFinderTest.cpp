#include "DisplayLight/LatticeFinder.h"

#include "AddedLight.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayLight/EyeGrid.h"

#include <algorithm>
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
    LatticeFinderTest() {
        load(
            "<Screen shape='Flat'><EyePoint x='0' y='0' z='0'/><Centre x='0' y='5' z='0'/><Size width='4' height='1'/>"
            "</Screen>",
            "<Projector id='P'><Name>P</Name><Resolution width='200' height='100'/><ScreenArea left='0' right='0.5' "
            "bottom='0' top='1'/></Projector>",
            "<TargetData type='PlanarBasic'/>");
    }

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

// What lies before the surface that the picture lands on, by no more than rounding and interpolation explain, is that
// surface; what lies further before it is another part of the screen.
TEST_F(LatticeFinderTest, AQuarterOfAPixelBesideTheSurfaceIsAnotherPartOfTheScreen) {
    find({});
    const std::size_t all = lit();
    find({0, -0.2 * PIXEL, 0});
    EXPECT_EQ(lit(), all);
    find({0, -0.3 * PIXEL, 0});
    EXPECT_EQ(lit(), 0U);
    find({0, 0.3 * PIXEL, 0});
    EXPECT_EQ(lit(), 0U) << "behind it, too";
}

}  // namespace
