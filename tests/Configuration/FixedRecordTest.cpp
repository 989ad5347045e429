#include "Configuration/FixedRecord.h"

#include "Common/VeltraniException.h"
#include "Configuration/IScreenConfig.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/TargetLocatorConfig.h"
#include "support/ProjectorConfigDouble.h"
#include "support/ScreenConfigDouble.h"
#include "support/TargetLocatorConfigDouble.h"
#include "support/VirtualSlot.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;

template <class Change>
std::wstring messageOf(const Change& change) {
    try {
        change();
    } catch (const VeltraniException& fault) {
        return fault.message;
    }
    return L"nothing was thrown";
}

TEST(FixedRecord, RefuseEverySetterThatTheyDoNotHave) {
    ProjectorConfigDouble projector(L"a");
    ScreenConfigDouble screen;
    TargetLocatorConfigDouble target;
    const std::vector<std::function<void()>> changes{[&] { projector.setPosition({}); },
                                                     [&] { projector.setOrientationZ(0.0); },
                                                     [&] { projector.setOrientationX(0.0); },
                                                     [&] { projector.setOrientationY(0.0); },
                                                     [&] { projector.setFrustumTop(0.0); },
                                                     [&] { projector.setFrustumBottom(0.0); },
                                                     [&] { projector.setFrustumLeft(0.0); },
                                                     [&] { projector.setFrustumRight(0.0); },
                                                     [&] { projector.setScreenLeft(0.0); },
                                                     [&] { projector.setScreenRight(0.0); },
                                                     [&] { projector.setScreenTop(0.0); },
                                                     [&] { projector.setScreenBottom(0.0); },
                                                     [&] { projector.setLayoutXMin(0.0); },
                                                     [&] { projector.setLayoutXMax(0.0); },
                                                     [&] { projector.setLayoutYMin(0.0); },
                                                     [&] { projector.setLayoutYMax(0.0); },
                                                     [&] { projector.setProjectionModelName(L""); },
                                                     [&] { projector.setCustomPlanarFile(L""); },
                                                     [&] { screen.setEyePoint({}); },
                                                     [&] { screen.setCentre({}); },
                                                     [&] { screen.setOrientation({}); },
                                                     [&] { screen.setRadius(1.0); },
                                                     [&] { screen.setWidth(1.0); },
                                                     [&] { screen.setHeight(1.0); },
                                                     [&] { screen.setAzimuth(0.0, 1.0); },
                                                     [&] { screen.setElevation(0.0, 1.0); },
                                                     [&] { screen.setRails({}, {}); },
                                                     [&] { target.setTargetPosition({}); },
                                                     [&] { target.setMirrorOrientation({}); },
                                                     [&] { target.setMirrorPosition({}); },
                                                     [&] { target.setMirrorRadius(1.0); },
                                                     [&] { target.setYawTable({}); },
                                                     [&] { target.setPitchTable({}); }};
    for (const auto& change : changes) {
        EXPECT_THAT(messageOf(change),
                    HasSubstr(L" of this configuration record cannot be changed: change that of an XMLConfigFile"));
    }
}

TEST(FixedRecord, TheSettersStandBehindTheOlderOperations) {
    EXPECT_EQ(slotOf(&ProjectorConfig::getLayoutYMax), 32U);
    EXPECT_EQ(slotOf(&ProjectorConfig::getText), 33U);
    EXPECT_EQ(slotOf(&ProjectorConfig::setPosition), 35U) << "behind getAllowed";
    EXPECT_EQ(slotOf(&IScreenConfig::getUpperRail), 21U);
    EXPECT_EQ(slotOf(&IScreenConfig::setEyePoint), 23U) << "behind getAllowed";
    EXPECT_EQ(slotOf(&TargetLocatorConfig::getPitchTable), 8U);
    EXPECT_EQ(slotOf(&TargetLocatorConfig::setTargetPosition), 9U);
}

}  // namespace
