#include "DisplayReport/coverage/ChannelLight.h"

#include "Common/VeltraniException.h"
#include "KelvoScreen/FlatScreen.h"
#include "LitDisplays.h"
#include "ScreenManager/PlanarTargetLocator.h"
#include "ScreenManager/TargetLocator.h"
#include "support/TestPaths.h"

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;

class ChannelLightKindTest : public LitDisplayTest, public testing::WithParamInterface<std::pair<std::string, int>> {};

using ChannelLightTest = LitDisplayTest;

class UnknownLocator : public TargetLocator {
public:
    void projectOnTargetLocationSurface(double, double, double, double, int, int,
                                        std::map<Point<int, 2>, Point<double, 3>>&) const override {}
    [[nodiscard]] const TargetLocatorParams& getTargetLocatorParams() const override { return m_params; }
    std::vector<Point<double, 3>> projectBoundaryOnTargetLocationSurface(int) const override { return {}; }

private:
    PlanarTargetLocatorParams m_params;
};

// The two ways are computed apart; a picture that is upside down in one of them fails here.
TEST_P(ChannelLightKindTest, OfEveryExampleIsLitWhereItLands) {
    const auto [example, landing] = GetParam();
    m_config = XMLConfigFile::load(sourceFolder() + "/examples/" + example + "/display.xml");
    ASSERT_TRUE(ScreenLoader::load(*m_config).empty());
    int landed = 0;
    for (const auto& light : lights()) {
        landed += expectLitWhereItLands(*light);
    }
    EXPECT_EQ(landed, landing);
}

// Of the lenses before the cylinder, 31 and 30 rays of the upper rows pass above the wall: counted by their formulas,
// apart from this code.
INSTANTIATE_TEST_SUITE_P(Kinds, ChannelLightKindTest,
                         testing::Values(std::pair{"planar-wall", 6 * 651}, std::pair{"curved-wall", 4 * 651},
                                         std::pair{"dome", 6 * 651}, std::pair{"cylinder", 5 * 651},
                                         std::pair{"cockpit", 4 * 651}, std::pair{"spherical-dome", 4 * 651},
                                         std::pair{"collimated", 3 * 651}, std::pair{"warped-wall", 2 * 651},
                                         std::pair{"lens-cylinder", 3 * 651 - 31 - 30},
                                         std::pair{"mesh-rays", 2 * 651}));

TEST_F(ChannelLightTest, ALocatorOfAnUnknownKindIsRefused) {
    try {
        static_cast<void>(ChannelLight::of(std::make_shared<UnknownLocator>(), std::make_shared<FlatScreen>()));
        FAIL() << "was taken";
    } catch (const VeltraniException& refusal) {
        EXPECT_EQ(refusal.message, L"No light is known for this kind of target locator");
    }
}

}  // namespace
