#include "DisplayReport/TargetSummary.h"

#include "DisplayReport/TargetSurvey.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;

std::string summary(const TargetSurvey& survey) {
    std::ostringstream out;
    printSummary(survey, out);
    return out.str();
}

TEST(TargetSummary, TellsPlacedMissedAndExtent) {
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
              "channel  placed  missed  x (m)    y (m)   z (m)\n"
              "Left     2       3       -1 .. 1  4 .. 4  0.5 .. 2\n"
              "Right    0       5       -        -       -\n"
              "2 targets placed, 8 missed, on 2 x 0 x 1.5 m (right x forward x up)\n"
              "channel Right has no grid of targets: no screen area\n");
}

TEST(TargetSummary, TellsWhatIsSpecialAboutAChannel) {
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

TEST(TargetSummary, SaysWhenThereAreNoProjectors) {
    EXPECT_EQ(summary(TargetSurvey()),
              "channel  placed  missed  x  y  z\n"
              "0 targets placed, 0 missed\n"
              "the configuration has no projectors\n");
}

}  // namespace
