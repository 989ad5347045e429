#include "ScreenManager/BlackBoxInfo.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <type_traits>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(BlackBoxInfo, ADefaultRecordKnowsNothing) {
    BlackBoxInfo info;
    EXPECT_FALSE(info.getEnabled());
    EXPECT_EQ(info.getProtocol(), L"");
    EXPECT_EQ(info.getCommAddress(), L"");
    EXPECT_EQ(info.getCommPort(), 0);
    EXPECT_EQ(info.getPowerPort(), -1);
    EXPECT_THAT(info.getOtherPowerPorts(), IsEmpty());
}

TEST(BlackBoxInfo, ADefaultRecordPrintsItsExactText) {
    EXPECT_EQ(BlackBoxInfo().toString(),
              L"BlackBoxInfo[ enabled='false';  protocol='';  commAddress='';  commPort='0';  powerPort=-1 ]");
}

TEST(BlackBoxInfo, AFilledRecordPrintsItsExactText) {
    BlackBoxInfo info(true, L"tcp", L"192.0.2.7", 4352, 3);
    std::vector<int> others{1, 2};
    info.setOtherPowerPorts(others);
    EXPECT_EQ(info.toString(),
              L"BlackBoxInfo[ enabled='true';  protocol='tcp';  commAddress='192.0.2.7';  commPort='4352';  "
              L"powerPort=3 ]");
    EXPECT_THAT(info.getOtherPowerPorts(), ElementsAre(1, 2));
}

TEST(BlackBoxInfo, PrintsTheExtremesOfTheNumbers) {
    BlackBoxInfo info(false, L"", L"", INT_MAX, INT_MIN);
    EXPECT_EQ(info.toString(),
              L"BlackBoxInfo[ enabled='false';  protocol='';  commAddress='';  commPort='2147483647';  "
              L"powerPort=-2147483648 ]");
}

TEST(BlackBoxInfo, PercentSignsAndNonAsciiTextStandAsTheyAre) {
    BlackBoxInfo info(false, L"%s%n%d", L"B\u00fchne", 0, -1);
    EXPECT_EQ(info.toString(),
              L"BlackBoxInfo[ enabled='false';  protocol='%s%n%d';  commAddress='B\u00fchne';  commPort='0';  "
              L"powerPort=-1 ]");
}

TEST(BlackBoxInfo, ALongTextIsCutAfter511Characters) {
    const std::wstring address(1000, L'a');
    BlackBoxInfo info(true, L"tcp", address, 1, 2);
    const std::wstring whole = L"BlackBoxInfo[ enabled='true';  protocol='tcp';  commAddress='" + address +
                               L"';  commPort='1';  powerPort=2 ]";
    EXPECT_EQ(info.toString(), whole.substr(0, 511));
    EXPECT_EQ(info.toString().size(), 511U);
}

TEST(BlackBoxInfo, ATextOfExactly511CharactersStaysWhole) {
    const std::size_t frame = BlackBoxInfo().toString().size();
    for (const std::size_t length : {510U, 511U, 512U}) {
        BlackBoxInfo info(false, std::wstring(length - frame, L'p'), L"", 0, -1);
        EXPECT_EQ(info.toString().size(), std::min<std::size_t>(length, 511));
        EXPECT_EQ(info.toString().back() == L']', length <= 511);
    }
}

TEST(BlackBoxInfo, ChangingThePortsThatWereHandedInDoesNotChangeTheRecord) {
    BlackBoxInfo info;
    std::vector<int> ports{1, 2};
    info.setOtherPowerPorts(ports);
    ports[0] = 9;
    ports.push_back(3);
    EXPECT_THAT(info.getOtherPowerPorts(), ElementsAre(1, 2));
}

TEST(BlackBoxInfo, SettersReplaceEveryField) {
    BlackBoxInfo info;
    info.setEnabled(true);
    info.setProtocol(L"udp");
    info.setCommAddress(L"box");
    info.setCommPort(5);
    info.setPowerPort(6);
    EXPECT_TRUE(info.getEnabled());
    EXPECT_EQ(info.getProtocol(), L"udp");
    EXPECT_EQ(info.getCommAddress(), L"box");
    EXPECT_EQ(info.getCommPort(), 5);
    EXPECT_EQ(info.getPowerPort(), 6);
}

TEST(BlackBoxInfo, CopiesCarryAllSixFields) {
    BlackBoxInfo info(true, L"tcp", L"box", 5, 6);
    std::vector<int> ports{7};
    info.setOtherPowerPorts(ports);
    BlackBoxInfo copy(info);
    BlackBoxInfo assigned;
    assigned = info;
    info.setProtocol(L"changed");
    for (BlackBoxInfo* record : {&copy, &assigned}) {
        EXPECT_EQ(record->toString(),
                  L"BlackBoxInfo[ enabled='true';  protocol='tcp';  commAddress='box';  commPort='5';  powerPort=6 ]");
        EXPECT_THAT(record->getOtherPowerPorts(), ElementsAre(7));
    }
}

TEST(BlackBoxInfo, IsDestroyedThroughItsBase) {
    static_assert(std::has_virtual_destructor_v<BlackBoxInfo>);
}

}  // namespace
