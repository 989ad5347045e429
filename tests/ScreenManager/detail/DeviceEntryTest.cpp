#include "ScreenManager/detail/ChannelDevices.h"

#include "ChannelFixture.h"
#include "Common/Utf8.h"
#include "DeviceFramework2/CmdResultNotAvailableException.h"
#include "DeviceFramework2/DeviceException.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Veltrani::DeviceFramework2::CmdResultNotAvailableException;
using Veltrani::DeviceFramework2::DeviceException;
using Veltrani::ScreenManagerDetail::DeviceEntry;

const log4cxx::spi::LocationInfo OPERATION("a/File.cpp", "File.cpp", "void SomeClass::someOperation(int)", 12);

class DeviceEntryTest : public ChannelFixture {
protected:
    /// The size for a type of projector, and for a resolution when it can tell one.
    static int sizeOf(int typeCode, std::optional<Point<int, 2>> resolution) {
        DeviceDouble device(L"P0");
        device.typeCode = typeCode;
        device.nativeResolution = resolution;
        if (!resolution) {
            device.refused = {"GetNativeResolution"};
        }
        return ChannelManager::getPondOfMirrorSizeForChannel(&device);
    }
};

TEST_F(DeviceEntryTest, ThePondSizeOfType55DependsOnTheExactResolution) {
    EXPECT_EQ(sizeOf(55, Point<int, 2>{2048, 1080}), 7);
    EXPECT_EQ(sizeOf(55, Point<int, 2>{1920, 1080}), 14);
    EXPECT_EQ(sizeOf(55, Point<int, 2>{2048, 1081}), 14);
    EXPECT_EQ(sizeOf(55, Point<int, 2>{1080, 2048}), 14);
    EXPECT_EQ(sizeOf(55, std::nullopt), 14);
}

TEST_F(DeviceEntryTest, ThePondSizeOfType68DependsOnTheExactResolution) {
    EXPECT_EQ(sizeOf(68, Point<int, 2>{2048, 1080}), 7);
    EXPECT_EQ(sizeOf(68, Point<int, 2>{4096, 2160}), 14);
    EXPECT_EQ(sizeOf(68, std::nullopt), 14);
}

TEST_F(DeviceEntryTest, ThePondSizesOfTheOtherTypesDoNot) {
    for (const std::optional<Point<int, 2>>& resolution :
         {std::optional<Point<int, 2>>(), std::optional(Point<int, 2>{2048, 1080})}) {
        EXPECT_EQ(sizeOf(64, resolution), 10);
        EXPECT_EQ(sizeOf(65, resolution), 14);
        EXPECT_EQ(sizeOf(66, resolution), 0);
        for (const int other : {-1, 0, 54, 56, 63, 67, 69, 100}) {
            EXPECT_EQ(sizeOf(other, resolution), 14) << other;
        }
    }
    EXPECT_EQ(ChannelManager::getPondOfMirrorSizeForChannel(nullptr), 14);
}

TEST_F(DeviceEntryTest, TheResolutionIsAskedBeforeTheTypeAndWhateverItIs) {
    DeviceDouble& projector = makeDevice(L"P0");
    projector.typeCode = 66;
    projector.nativeResolution = Point<int, 2>{1, 1};
    EXPECT_EQ(DeviceEntry::pondOfMirrorSize(&projector), 0);
    EXPECT_THAT(trace.lines(), ElementsAre("device P0.supports(GetNativeResolution)",
                                           "device P0.execute(GetNativeResolution)", "device P0.getTypeCode()"));
}

TEST_F(DeviceEntryTest, AResolutionThatIsNotAnsweredIsAFault) {
    DeviceDouble& projector = makeDevice(L"P0");
    const auto fault =
        faultOf<CmdResultNotAvailableException>([&] { (void)DeviceEntry::pondOfMirrorSize(&projector); });
    EXPECT_THAT(Veltrani::toUtf8(fault.message), HasSubstr("GetNativeResolution"));
}

TEST_F(DeviceEntryTest, StoresWhatADeviceTellsStepByStep) {
    ProjectorConfigDouble& stored = addEntry(L"P0", L"old name");
    DeviceDouble& projector = makeDevice(L"P0");
    projector.deviceSnippet = L"<a/>\n<b/>";
    projector.firmware = "1.0 \xc3\xa4";
    projector.nativeResolution = Point<int, 2>{2048, 1080};
    projector.typeCode = 55;
    DeviceEntry::store(projector, L"uid", stored, OPERATION);
    EXPECT_THAT(
        trace.lines(),
        ElementsAre(
            "device P0.getDeviceSnippet()", "device P0.getLocation()", INFO + "addChannel() - Projector UID = [uid]",
            "device P0.supports(GetFirmware)", "device P0.execute(GetFirmware)",
            INFO + "addChannel() - Projector Firmware = [1.0 \xc3\xa4]",
            INFO + "addChannel() - Location desc = [at P0]", INFO + "addChannel() - Device snippet = ", INFO + "<a/>",
            INFO + "<b/>", "projector.setDeviceSnippet(\"<a/>\n<b/>\")", "device P0.supports(GetNativeResolution)",
            "device P0.execute(GetNativeResolution)", "device P0.getTypeCode()", "projector.setPondOfMirror(0, 7)",
            "projector.setPondOfMirror(1, 7)", "projector.setPondOfMirror(2, 7)", "projector.setPondOfMirror(3, 7)",
            "device P0.getLocation()", "projector.setName(\"at P0\")", "device P0.supports(GetNativeResolution)",
            "device P0.execute(GetNativeResolution)", "projector.setWidth(2048)", "projector.setHeight(1080)"));
}

TEST_F(DeviceEntryTest, ADeviceWithoutAPlaceIsStoredWithoutAWordInTheLog) {
    ProjectorConfigDouble& stored = addEntry(L"P0", L"old name");
    DeviceDouble& projector = makeDevice(L"P0");
    projector.locationDescription.reset();
    projector.refused = {"GetNativeResolution"};
    DeviceEntry::store(projector, L"uid", stored, OPERATION);
    EXPECT_TRUE(log.records().empty());
    EXPECT_EQ(stored.deviceSnippet, L"<P0 now/>");
    EXPECT_EQ(stored.name, L"P0") << "the UID of the device";
    EXPECT_EQ(stored.pondOfMirror, (std::array<unsigned char, 4>{14, 14, 14, 14}));
    EXPECT_EQ(std::make_pair(stored.width, stored.height), std::make_pair(1920, 1080)) << "as configured";
}

TEST_F(DeviceEntryTest, AFirmwareThatIsNotSupportedIsNotLogged) {
    DeviceDouble& projector = makeDevice(L"P0");
    projector.refused = {"GetFirmware", "GetNativeResolution"};
    DeviceEntry::store(projector, L"uid", addEntry(L"P0", L""), OPERATION);
    EXPECT_THAT(log.messages(),
                ElementsAre("INFO addChannel() - Projector UID = [uid]", "INFO addChannel() - Location desc = [at P0]",
                            "INFO addChannel() - Device snippet = ", "INFO <P0 now/>"));
}

TEST_F(DeviceEntryTest, AFirmwareThatIsNotAnsweredIsAFaultWhateverTheLevelOfTheLog) {
    const LogTrap quiet(log4cxx::Level::getOff());
    ProjectorConfigDouble& stored = addEntry(L"P0", L"old name");
    DeviceDouble& projector = makeDevice(L"P0");
    const auto fault =
        faultOf<CmdResultNotAvailableException>([&] { DeviceEntry::store(projector, L"uid", stored, OPERATION); });
    EXPECT_THAT(Veltrani::toUtf8(fault.message), HasSubstr("GetFirmware"));
    EXPECT_EQ(stored.deviceSnippet, L"<P0/>") << "nothing is stored yet";
}

TEST_F(DeviceEntryTest, FaultsOfTheDevicePassThrough) {
    DeviceDouble& projector = makeDevice(L"P0");
    projector.throwFrom("execute", DeviceException(L"broken"));
    ProjectorConfigDouble& stored = addEntry(L"P0", L"");
    EXPECT_EQ(faultOf<DeviceException>([&] { DeviceEntry::store(projector, L"uid", stored, OPERATION); }).message,
              L"broken");
}

}  // namespace
