#include "DisplayReport/targets/TargetSurvey.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

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

std::string summary(const TargetSurvey& survey) {
    std::ostringstream out;
    printSummary(survey, out);
    return out.str();
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

TEST(TargetSurvey, ItsSummaryStatesPlacedMissedAndExtent) {
    TargetSurvey survey;
    survey.unit = "m";
    survey.channels.resize(2);
    survey.channels[0].name = "Left";
    survey.channels[0].grid = {{0, 0, {}, {-1.0, 4.0, 0.5}}};
    survey.channels[0].boundary = {{1.0, 4.0, 2.0}};
    survey.channels[0].boundaryMissed = 3;
    survey.channels[1].name = "Right";
    survey.channels[1].gridMissed = 5;
    survey.channels[1].fault = "no screen area";
    EXPECT_EQ(summary(survey),
              "channel  targets  outline  x (m)    y (m)   z (m)\n"
              "Left     1 of 1   1 of 4   -1 .. 1  4 .. 4  0.5 .. 2\n"
              "Right    0 of 5   0 of 0   -        -       -\n"
              "1 of 6 targets placed, 1 of 4 samples of outlines, on 2 x 0 x 1.5 m (right x forward x up)\n"
              "channel Right has no grid of targets: no screen area\n");
}

TEST(TargetSurvey, ItsSummaryStatesWhatIsSpecialAboutAChannel) {
    TargetSurvey survey;
    survey.channels.resize(2);
    survey.channels[0].name = "Left";
    survey.channels[0].remark = "only an outline is placed";
    survey.channels[1].name = "Right";
    survey.channels[1].remark = "only an outline is placed";
    survey.channels[1].fault = "nothing of it lies on the screen";
    EXPECT_THAT(summary(survey),
                testing::HasSubstr("note: channel Left: only an outline is placed\n"
                                   "channel Right has no targets: nothing of it lies on the screen\n"));
}

TEST(TargetSurvey, ItsSummarySaysWhenThereAreNoProjectors) {
    EXPECT_EQ(summary(TargetSurvey()),
              "channel  targets  outline  x  y  z\n"
              "0 of 0 targets placed, 0 of 0 samples of outlines\n"
              "the configuration has no projectors\n");
}

}  // namespace
