#include "DisplayExport/PictureWay.h"

#include "DisplayExport/RayWay.h"
#include "DisplayExport/ScreenCoordinateWay.h"
#include "ExportDisplays.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <typeinfo>

namespace {

using namespace Veltrani::DisplayExport;

class PictureWayTest : public ExportDisplayTest {
protected:
    /// Whether the way of a channel of a display is of exactly this class.
    template <class Way>
    [[nodiscard]] bool is(const std::string& display, std::size_t channel = 0) {
        loadAny(display);
        const auto way = PictureWay::of(locator(channel), ScreenManager::getInstance()->getScreenGeometry());
        const PictureWay* const found = way.get();
        return found != nullptr && typeid(*found) == typeid(Way);
    }
};

TEST_F(PictureWayTest, IsThatOfItsLocator) {
    EXPECT_TRUE(is<AreaWay>("cave"));
    EXPECT_TRUE(is<MapFileWay>("warped-wall"));
    EXPECT_TRUE(is<FrustumWay>("round"));
    EXPECT_TRUE(is<MirrorWay>("collimated"));
    EXPECT_TRUE(is<LensWay>("lens-cylinder", 1));
}

/// A class from elsewhere may send its rays where it likes.
class LocatorFromElsewhere : public SphereTargetLocator {
public:
    using SphereTargetLocator::SphereTargetLocator;
};

TEST_F(PictureWayTest, OfALocatorFromElsewhereIsFollowed) {
    loadAny("round");
    const auto& camera = static_cast<const SphereTargetLocatorParams&>(locator(0)->getTargetLocatorParams());
    const auto way = PictureWay::of(std::make_shared<LocatorFromElsewhere>(camera),
                                    ScreenManager::getInstance()->getScreenGeometry());
    EXPECT_NE(dynamic_cast<const FollowedWay*>(way.get()), nullptr);
}

}  // namespace
