#include "DeviceFramework2/DeviceTypeManager.h"

#include "DeviceFramework2/VirtualProjector.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DeviceFramework2;

std::wstring uidOf(const std::wstring& text) {
    return createMACAddressDeviceUIDFromDeviceSnippet(L"identity", text);
}

TEST(DeviceUid, IsTheMacAddressInTwelveCapitalDigits) {
    EXPECT_EQ(uidOf(L"<Device type='PJLink' mac='02:00:00:00:00:01' host='192.0.2.10' port='4352'/>"), L"020000000001");
    EXPECT_EQ(uidOf(L"<Device mac='ab-cd-ef-01-23-45'/>"), L"ABCDEF012345");
    EXPECT_EQ(uidOf(L"<Device mac='abcdef012345'/>"), L"ABCDEF012345");
    EXPECT_EQ(uidOf(L"\n  <!-- left --> <Device mac=\"02:00:00:00:00:01\"/>\n"), L"020000000001");
    EXPECT_EQ(uidOf(L"02:00:00:00:00:01"), L"020000000001");
}

TEST(DeviceUid, IsTheIdentityWhenThereIsNoMacAddress) {
    EXPECT_EQ(uidOf(L""), L"identity");
    EXPECT_EQ(uidOf(L"<Device type='PJLink' host='192.0.2.10' port='4352'/>"), L"identity");
    EXPECT_EQ(uidOf(L"<Device mac=''/>"), L"identity");
    EXPECT_EQ(uidOf(L"<Device mac='00:00:00:00:00:00'/>"), L"identity");
    EXPECT_EQ(createMACAddressDeviceUIDFromDeviceSnippet(L"", L""), L"");
}

TEST(DeviceUid, IsNeverAnAddressThatCanMove) {
    EXPECT_EQ(uidOf(L"<Device host='02-00-00-00-00-09' mac='02:00:00:00:00:01'/>"), L"020000000001");
    EXPECT_EQ(uidOf(L"<Device host='2001:db8:02:00:00:00:00:01'/>"), L"identity");
    EXPECT_EQ(uidOf(L"<Device mac='broken' host='02-00-00-00-00-09'/>"), L"identity")
        << "a broken address does not make another attribute the identity";
}

TEST(DeviceUid, AnAddressInsideAWrapperAndInBrokenXmlIsFound) {
    EXPECT_EQ(uidOf(L"<Wrapper><Projector Width='1'><Device mac='02:00:00:00:00:01'/></Projector></Wrapper>"),
              L"020000000001");
    EXPECT_EQ(uidOf(L"<Device mac='02:00:00:00:00:01'"), L"020000000001");
    EXPECT_EQ(uidOf(L"<!-- mac='02:00:00:00:00:07' --><Device mac='02:00:00:00:00:01'/>"), L"020000000001")
        << "a comment is not the device";
}

TEST(DeviceUid, NoTextThrows) {
    EXPECT_EQ(uidOf(std::wstring(1, wchar_t(0xD800))), L"identity");
    EXPECT_EQ(uidOf(std::wstring(L"\0<", 2)), L"identity");
    EXPECT_EQ(uidOf(L"<!DOCTYPE a [<!ENTITY b 'c'>]><a mac='&b;'/>"), L"identity");
    EXPECT_EQ(uidOf(std::wstring(3'000'000, L'<')), L"identity");
    std::wstring deep;
    for (int i = 0; i < 100'000; ++i) {
        deep += L"<a>";
    }
    EXPECT_EQ(uidOf(deep), L"identity");
}

TEST(DeviceTypes, HaveNames) {
    EXPECT_EQ(DeviceTypeManager::virtualProjectorTypeName(), L"VirtualProjector");
    EXPECT_EQ(DeviceTypeManager::pjlinkTypeName(), L"PJLink");
}

TEST(DeprecatedDevice, IsTheDeviceBehindTheCommandInterface) {
    VirtualProjector projector({}, L"uid");
    AbstractDevice* abstractDevice = &projector;
    EXPECT_EQ(deprecatedDeviceFromAbstractDevice(abstractDevice), &projector);
}

TEST(DeprecatedDevice, IsNullForNullAndForWhatIsNoDevice) {
    class OnlyCommands : public AbstractDevice {
    public:
        [[nodiscard]] bool supports(const Command&) const override { return false; }
        void execute(const std::shared_ptr<Command>&) override {}
    };
    OnlyCommands other;
    EXPECT_EQ(deprecatedDeviceFromAbstractDevice(&other), nullptr);
    EXPECT_EQ(deprecatedDeviceFromAbstractDevice(nullptr), nullptr);
}

}  // namespace
