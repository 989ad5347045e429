#include "DisplayLight/EyePlaces.h"

#include "../DisplayExport/BelongingContent.h"
#include "../DisplayExport/ExportDisplays.h"

#include <cmath>
#include <numbers>
#include <vector>

namespace {

using Veltrani::DisplayLight::EyePlace;
using Veltrani::DisplayLight::EyePlaces;

class EyePlacesTest : public ExportDisplayTest {
protected:
    [[nodiscard]] std::vector<EyePlace> seen(const P3& eye, const std::vector<P3>& directions) const {
        // Places are those of the directions, whatever they held.
        std::vector<EyePlace> places(directions.size(), EyePlace{{9.0, 9.0, 9.0}, 1, true});
        EyePlaces(config(), channels().front(), ScreenManager::getInstance()->getScreenGeometry(), eye)
            .see(directions, places);
        return places;
    }
};

/// The normal of a wall ahead points away from the eye.
TEST_F(EyePlacesTest, OnAWallAreWhereTheDirectionMeetsItWithTheSideThatIsSeen) {
    load(displays::FLAT, displays::projector("P", displays::WHOLE_AREA), "<TargetData type='PlanarBasic'/>");
    const std::vector<P3> directions{{0.5, 4.0, 0.25}, {0.0, -1.0, 0.0}, {}, {0.0, 0.5, 0.0}, {9.0, 1.0, 0.0}};
    const auto places = seen({0.5, 1.0, 0.25}, directions);
    EXPECT_TRUE(places[0].isSeen);
    EXPECT_LT(norm(places[0].point - P3{1.0, 5.0, 0.5}), 1e-12);
    EXPECT_EQ(places[0].side, 1);
    EXPECT_TRUE(places[3].isSeen);
    EXPECT_LT(norm(places[3].point - P3{0.5, 5.0, 0.25}), 1e-12);
    for (const std::size_t i : {1U, 2U, 4U}) {
        EXPECT_FALSE(places[i].isSeen) << i;
        EXPECT_EQ(places[i].point, P3()) << i;
        EXPECT_EQ(places[i].side, 0) << i;
    }
    const auto behind = seen({0.5, 9.0, 0.25}, {{0.0, -1.0, 0.0}});
    EXPECT_TRUE(behind[0].isSeen);
    EXPECT_EQ(behind[0].side, -1);
}

/// Against two spheres that are traced by formulas; the eye is that of the mirror, whatever is given.
TEST_F(EyePlacesTest, InAMirrorAreWhereTheReflectedDirectionMeetsTheScreen) {
    loadExample("collimated");
    std::vector<P3> directions;
    for (int azimuth = -180; azimuth < 180; azimuth += 15) {
        for (int elevation = -75; elevation <= 75; elevation += 15) {
            const double a = azimuth * std::numbers::pi / 180;
            const double e = elevation * std::numbers::pi / 180;
            directions.push_back({std::sin(a) * std::cos(e), std::cos(a) * std::cos(e), std::sin(e)});
        }
        directions.emplace_back();
    }
    const auto places = seen({100.0, 0.0, 0.0}, directions);
    const belonging::TracedMirror mirror;
    std::size_t count = 0;
    for (std::size_t i = 0; i < places.size(); ++i) {
        EXPECT_EQ(places[i].side, 0) << "it is not known in a mirror";
        if (places[i].isSeen) {
            EXPECT_LT(norm(places[i].point - mirror.seenIn(directions[i], places[i].point)), 1e-9) << directions[i];
            ++count;
        }
    }
    EXPECT_GT(count, 60U);
    EXPECT_LT(count, directions.size() - 24);
}

}  // namespace
