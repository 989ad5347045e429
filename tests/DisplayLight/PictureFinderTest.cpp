#include "DisplayLight/PictureFinder.h"

#include "../DisplayExport/ExportDisplays.h"
#include "DisplayExport/ChannelSight.h"
#include "DisplayLight/LatticeFinder.h"
#include "DisplayLight/ReachFinder.h"

#include <limits>

namespace {

using Veltrani::DisplayExport::ChannelSight;
using Veltrani::DisplayLight::LatticeFinder;
using Veltrani::DisplayLight::PictureFinder;
using Veltrani::DisplayLight::ReachFinder;

class PictureFinderTest : public ExportDisplayTest {
protected:
    /// Whether places of a channel are found one by one; the others are found through a lattice.
    [[nodiscard]] bool isStraight(std::size_t channel) const {
        const ChannelSight sight(config(), channels()[channel]);
        const auto finder = PictureFinder::of(config(), sight, ScreenManager::getInstance()->getScreenGeometry());
        const bool isReach = dynamic_cast<const ReachFinder*>(finder.get()) != nullptr;
        EXPECT_NE(isReach, dynamic_cast<const LatticeFinder*>(finder.get()) != nullptr);
        return isReach;
    }
};

TEST_F(PictureFinderTest, GoesBackAlongStraightRaysAlone) {
    loadExample("lens-cylinder");
    EXPECT_TRUE(isStraight(0)) << "a frustum";
    EXPECT_TRUE(isStraight(1)) << "a lens";
    load(displays::FLAT, displays::projector("P", displays::WHOLE_AREA), "<TargetData type='PlanarBasic'/>");
    EXPECT_FALSE(isStraight(0)) << "coordinates of the screen, which an eye does not see";
    loadExample("collimated");
    EXPECT_FALSE(isStraight(0)) << "a mirror";
}

TEST(PictureFinder, APictureHasItsEdgesAndNothingBeyondThem) {
    for (const double edge : {0.0, 0.5, 1.0}) {
        for (const double other : {0.0, 0.5, 1.0}) {
            EXPECT_TRUE(PictureFinder::isInPicture({edge, other})) << edge << ' ' << other;
        }
        for (const double beyond : {-1e-12, 1 + 1e-12, std::numeric_limits<double>::quiet_NaN()}) {
            EXPECT_FALSE(PictureFinder::isInPicture({edge, beyond})) << edge << ' ' << beyond;
            EXPECT_FALSE(PictureFinder::isInPicture({beyond, edge})) << edge << ' ' << beyond;
        }
    }
}

}  // namespace
