#include "KelvoControl/KelvoProjector.h"

#include "Common/VeltraniException.h"
#include "DeviceFramework2/VirtualProjector.h"
#include "support/DeviceDouble.h"

#include <gtest/gtest.h>

namespace {

TEST(KelvoProjector, HandsOutItsBlend) {
    const auto blend = std::make_shared<const Blend>(Frustum());
    const KelvoProjector projector(blend);
    EXPECT_EQ(&projector.getBlend(), blend.get());
    EXPECT_EQ(blend.use_count(), 2) << "kept alive by the projector";
}

TEST(KelvoProjector, NeedsABlend) {
    EXPECT_THROW(KelvoProjector(std::shared_ptr<const Blend>()), VeltraniException);
}

TEST(KelvoProjector, SuggestsWhereTheDeviceIs) {
    DeviceDouble device(L"020000000001");
    device.locationDescription = L"PJLink 192.0.2.10:4352";
    EXPECT_EQ(KelvoProjector::suggestNameForChannel(&device), L"PJLink 192.0.2.10:4352");
}

TEST(KelvoProjector, SuggestsTheUidOfADeviceThatDoesNotTell) {
    DeviceDouble device(L"020000000001");
    EXPECT_EQ(KelvoProjector::suggestNameForChannel(&device), L"020000000001");
    device.locationDescription = L"";
    EXPECT_EQ(KelvoProjector::suggestNameForChannel(&device), L"020000000001") << "an empty place is no name";
}

TEST(KelvoProjector, SuggestsNothingWithoutADevice) {
    EXPECT_EQ(KelvoProjector::suggestNameForChannel(nullptr), L"");
}

TEST(KelvoProjector, AVirtualProjectorIsPlainlyOne) {
    const auto snippet = Veltrani::DeviceFramework2::VirtualProjectorSnippet::parse(
        L"<Wrapper><Projector Width='1920' Height='1200'></Projector></Wrapper>");
    const Veltrani::DeviceFramework2::VirtualProjector projector(snippet, L"virtual-1");
    EXPECT_EQ(KelvoProjector::suggestNameForChannel(&projector), L"Virtual projector virtual-1");
}

}  // namespace
