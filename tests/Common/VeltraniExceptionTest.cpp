#include "Common/VeltraniException.h"

#include <gtest/gtest.h>

#include <exception>
#include <type_traits>

namespace {

TEST(VeltraniException, WithoutLocationDescribesItselfAsItsMessageAlone) {
    const VeltraniException fault(L"no screen");
    EXPECT_EQ(fault.message, L"no screen");
    EXPECT_EQ(fault.file, "");
    EXPECT_EQ(fault.line, -1);
    EXPECT_EQ(fault.fullDescription(), L"no screen");
}

TEST(VeltraniException, WithLocationDescribesFileAndLine) {
    const VeltraniException fault("BackEnd/ScreenManager/ChannelManager.cpp", 583,
                                  L"getChannelInfo: ChannelID not found");
    EXPECT_EQ(fault.fullDescription(),
              L"getChannelInfo: ChannelID not found @ BackEnd/ScreenManager/ChannelManager.cpp:583");
}

TEST(VeltraniException, LineZeroStillCountsAsALocation) {
    EXPECT_EQ(VeltraniException("a.cpp", 0, L"fault").fullDescription(), L"fault @ a.cpp:0");
}

TEST(VeltraniException, WidensTheFileByteByByte) {
    EXPECT_EQ(VeltraniException("\xc3\xa9.cpp", 1, L"fault").fullDescription(), L"fault @ \u00c3\u00a9.cpp:1");
}

TEST(VeltraniException, ChannelInitializationKeepsTheReason) {
    const ChannelInitializationException fault(L"Projector3");
    EXPECT_EQ(fault.message, L"Projector3");
    EXPECT_EQ(fault.reason, L"Projector3");
    EXPECT_EQ(fault.line, -1);
}

TEST(VeltraniException, ChannelSwapNamesBothProjectors) {
    const ChannelSwapException fault(L"A", L"B");
    EXPECT_EQ(fault.message, L"A is being swapped by B");
    EXPECT_EQ(fault.projectorName, L"A");
    EXPECT_EQ(fault.replacementName, L"B");
    EXPECT_EQ(fault.file, "");
    EXPECT_EQ(fault.line, -1);
}

TEST(VeltraniException, ParseAndMissingFileCarryNoLocation) {
    EXPECT_EQ(VeltraniParseException(L"bad").fullDescription(), L"bad");
    EXPECT_EQ(VeltraniMissingFileException(L"gone").fullDescription(), L"gone");
}

TEST(VeltraniException, CopiesCarryEveryField) {
    const VeltraniException located("Wall.cpp", 12, L"fault");
    const VeltraniException locatedCopy(located);
    EXPECT_EQ(locatedCopy.message, L"fault");
    EXPECT_EQ(locatedCopy.file, "Wall.cpp");
    EXPECT_EQ(locatedCopy.line, 12);

    const ChannelInitializationException unbound(L"section 3");
    const ChannelInitializationException unboundCopy(unbound);
    EXPECT_EQ(unboundCopy.message, L"section 3");
    EXPECT_EQ(unboundCopy.reason, L"section 3");

    const ChannelSwapException swapped(L"A", L"B");
    const ChannelSwapException swappedCopy(swapped);
    EXPECT_EQ(swappedCopy.message, L"A is being swapped by B");
    EXPECT_EQ(swappedCopy.projectorName, L"A");
    EXPECT_EQ(swappedCopy.replacementName, L"B");

    VeltraniException assigned(L"other");
    assigned = located;
    EXPECT_EQ(assigned.fullDescription(), located.fullDescription());
}

TEST(VeltraniException, TheFamilyStandsApartFromTheStandardOne) {
    static_assert(!std::is_base_of_v<std::exception, VeltraniExceptionBase>);
    static_assert(std::is_base_of_v<VeltraniExceptionBase, VeltraniException>);
    static_assert(std::is_base_of_v<VeltraniException, ChannelInitializationException>);
    static_assert(std::is_base_of_v<VeltraniException, ChannelSwapException>);
    static_assert(std::is_base_of_v<VeltraniException, VeltraniParseException>);
    static_assert(std::is_base_of_v<VeltraniException, VeltraniMissingFileException>);
}

}  // namespace
