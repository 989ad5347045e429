#include "Configuration/detail/FaultList.h"

#include "Common/VeltraniException.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using Veltrani::ConfigurationDetail::FaultList;

Veltrani::FileFault fault(int line, const std::string& element) {
    return {line, element, "a", "b", "do c"};
}

TEST(FaultList, AnEmptyListThrowsNothing) {
    const FaultList faults("a.xml");
    EXPECT_TRUE(faults.empty());
    EXPECT_FALSE(faults.hasStructureFault());
    EXPECT_EQ(faults.message(), L"");
    EXPECT_NO_THROW(faults.throwIfAny());
}

TEST(FaultList, OneLinePerFaultInTheOrderOfTheirLines) {
    FaultList faults("d\u00f6me.xml");
    faults.add(FaultList::Kind::MEANING, fault(9, "Late"));
    faults.add(FaultList::Kind::STRUCTURE, fault(2, "Early"));
    faults.add(FaultList::Kind::STRUCTURE, fault(9, "LateToo"));
    EXPECT_EQ(faults.message(),
              L"d\u00f6me.xml:2: <Early>: found a, expected b; do c\n"
              L"d\u00f6me.xml:9: <Late>: found a, expected b; do c\n"
              L"d\u00f6me.xml:9: <LateToo>: found a, expected b; do c");
    EXPECT_TRUE(faults.hasStructureFault());
    EXPECT_EQ(faults.size(), 3U);
}

TEST(FaultList, ThrowsItsMessage) {
    FaultList faults("a.xml");
    faults.add(FaultList::Kind::MEANING, fault(1, "X"));
    EXPECT_FALSE(faults.hasStructureFault());
    try {
        faults.throwIfAny();
        FAIL() << "nothing was thrown";
    } catch (const VeltraniParseException& exception) {
        EXPECT_EQ(exception.message, faults.message());
    }
}

TEST(FaultList, CountsWhatItDoesNotShow) {
    FaultList faults("a.xml");
    for (int i = 0; i < 1234; ++i) {
        faults.add(FaultList::Kind::STRUCTURE, fault(i, "X"));
    }
    const std::wstring message = faults.message();
    EXPECT_EQ(std::count(message.begin(), message.end(), L'\n'), 1000);
    EXPECT_EQ(message.substr(message.rfind(L'\n')), L"\n(and 234 more faults)");
}

TEST(FaultList, ANameWithALineFeedStaysOnItsLine) {
    FaultList faults("a\nb.xml");
    faults.add(FaultList::Kind::STRUCTURE, fault(1, "X"));
    EXPECT_EQ(faults.message(), L"a\\nb.xml:1: <X>: found a, expected b; do c");
}

}  // namespace
