#include "DisplayFit/FitResult.h"

#include <gtest/gtest.h>

#include <set>
#include <string>

namespace {

using namespace Veltrani::DisplayFit;

TEST(FitResult, EachKindOfFindingHasANameOfItsOwn) {
    std::set<std::string> names;
    for (int kind = 0; kind <= static_cast<int>(FitFinding::Kind::KIND_NOT_SOLVED); ++kind) {
        const std::string name = FitFinding::nameOf(static_cast<FitFinding::Kind>(kind));
        EXPECT_FALSE(name.empty()) << kind;
        EXPECT_TRUE(names.insert(name).second) << name;
    }
    EXPECT_EQ(FitFinding::nameOf(FitFinding::Kind::CHANGED_FOR_PLANE), "CHANGED_FOR_PLANE");
    EXPECT_EQ(FitFinding::nameOf(FitFinding::Kind::KIND_NOT_SOLVED), "KIND_NOT_SOLVED");
}

TEST(FitResult, QuantitiesHaveTheirNames) {
    EXPECT_EQ(FittedValue::nameOf(FittedValue::Quantity::LENGTH), "length");
    EXPECT_EQ(FittedValue::nameOf(FittedValue::Quantity::ANGLE), "angle");
    EXPECT_EQ(FittedValue::nameOf(FittedValue::Quantity::PIXELS), "pixels");
    EXPECT_EQ(FittedValue::nameOf(FittedValue::Quantity::NUMBER), "number");
}

TEST(FitResult, TheWorstOfItsChannelsAndFindingsCounts) {
    DisplayFitResult result;
    EXPECT_EQ(result.outcome(), FitOutcome::UNUSABLE) << "no channel";
    result.channels.resize(2);
    result.channels[0].outcome = result.channels[1].outcome = FitOutcome::GOOD;
    EXPECT_EQ(result.outcome(), FitOutcome::GOOD);
    result.findings.resize(2);
    result.findings[0].outcome = FitOutcome::DOUBTFUL;
    EXPECT_EQ(result.outcome(), FitOutcome::DOUBTFUL);
    result.channels[0].outcome = FitOutcome::UNUSABLE;
    EXPECT_EQ(result.outcome(), FitOutcome::UNUSABLE);
    result.findings.clear();
    result.channels[0].outcome = FitOutcome::DOUBTFUL;
    EXPECT_EQ(result.outcome(), FitOutcome::DOUBTFUL);
}

}  // namespace
