#include "DisplayReport/TargetSurvey.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;

TargetSurvey twoChannels() {
    TargetSurvey survey;
    survey.channels.resize(2);
    survey.channels[0].grid = {{0, 0, {0.0, 0.0}, {1.0, 2.0, 3.0}}, {1, 0, {1.0, 0.0}, {-1.0, 2.0, 3.0}}};
    survey.channels[0].gridMissed = 4;
    survey.channels[1].boundary = {{0.0, 9.0, 3.0}};
    survey.channels[1].boundaryMissed = 3;
    return survey;
}

TEST(TargetSurvey, CountsPlacedAndMissedOfBothKinds) {
    EXPECT_EQ(twoChannels().placed(), 3U);
    EXPECT_EQ(twoChannels().missed(), 7U);
}

TEST(TargetSurvey, ItsExtentCoversGridsAndOutlines) {
    const Extent extent = twoChannels().extent();
    EXPECT_EQ(extent.minimum(), (Point<double, 3>{-1.0, 2.0, 3.0}));
    EXPECT_EQ(extent.maximum(), (Point<double, 3>{1.0, 9.0, 3.0}));
    EXPECT_EQ(extentOf(twoChannels().channels[0]).maximum()[1], 2.0);
}

TEST(TargetSurvey, IsCompleteWhenNoChannelHasAFault) {
    TargetSurvey survey = twoChannels();
    EXPECT_TRUE(survey.complete());
    survey.channels[1].fault = "no screen area";
    EXPECT_FALSE(survey.complete());
}

TEST(TargetSurvey, AnEmptyOneHasNothing) {
    const TargetSurvey survey;
    EXPECT_EQ(survey.placed(), 0U);
    EXPECT_TRUE(survey.extent().empty());
}

}  // namespace
