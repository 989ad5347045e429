#include "DisplayReport/check/FindingList.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(FindingList, CollectsWhatIsFoundInOrder) {
    std::vector<Finding> findings;
    FindingList found(findings, {});
    found.add(Rule::named("same-name"), "channel B", "", "first");
    found.add(Rule::named("dark-parts"), "screen", "", "second");
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[0].rule, "same-name");
    EXPECT_EQ(findings[0].severity, Severity::WARNING);
    EXPECT_EQ(findings[0].where, "channel B");
    EXPECT_EQ(findings[0].what, "first");
    EXPECT_EQ(findings[1].severity, Severity::REMARK);
}

TEST(FindingList, LeavesOutWhatTheDisplayOrTheElementAllows) {
    std::vector<Finding> findings;
    FindingList found(findings, {"same-name"});
    found.add(Rule::named("same-name"), "channel B", "", "allowed for all");
    found.add(Rule::named("looks-away"), "channel B", " same-place\tlooks-away ", "allowed here");
    EXPECT_THAT(findings, IsEmpty());
    found.add(Rule::named("looks-away"), "channel C", "looks", "a part of the name is no name");
    EXPECT_EQ(findings.size(), 1U);
}

TEST(FindingList, KeepsFaultsWhoeverAllowsThem) {
    std::vector<Finding> findings;
    FindingList found(findings, {"same-device"});
    found.add(Rule::named("same-device"), "channel B", "same-device", "one projector");
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].severity, Severity::FAULT);
}

TEST(FindingList, WordsStandBetweenBlanks) {
    EXPECT_THAT(wordsOf(" a\tbc \n d"), ElementsAre("a", "bc", "d"));
    EXPECT_THAT(wordsOf("  "), IsEmpty());
}

}  // namespace
