#include "DisplayReport/coverage/CoverageReport.h"

#include <gtest/gtest.h>

namespace {

using namespace Veltrani::DisplayReport;

ChannelCoverage channel() {
    ChannelCoverage channel;
    channel.width = 200;
    channel.height = 100;
    channel.area = 4;
    channel.landed = 0.5;
    return channel;
}

TEST(CoverageReport, TheMeanPixelHasItsPartOfTheArea) {
    EXPECT_DOUBLE_EQ(channel().meanPitch() * channel().meanPitch(), 4.0 / 10000);
    EXPECT_DOUBLE_EQ(channel().missed(), 0.5);
    EXPECT_DOUBLE_EQ(channel().pixels(), 20000);
}

TEST(CoverageReport, RoundingIsNoMiss) {
    ChannelCoverage whole = channel();
    whole.landed = 1.0001;
    EXPECT_EQ(whole.missed(), 0.0);
    whole.landed = 1 - 1e-5;
    EXPECT_EQ(whole.missed(), 0.0);
    whole.landed = 1 - 3e-5;
    EXPECT_NEAR(whole.missed(), 3e-5, 1e-15);
}

TEST(CoverageReport, NothingIsDividedByZero) {
    ChannelCoverage none = channel();
    none.landed = 0;
    EXPECT_EQ(none.meanPitch(), 0.0);
    none = channel();
    none.width = 0;
    EXPECT_EQ(none.meanPitch(), 0.0);
    EXPECT_EQ(CoverageReport().partOfScreen(1.0), 0.0);
    EXPECT_EQ(CoverageReport().areaLitBy(0), 0.0);
    EXPECT_EQ(CoverageReport().areaLitByAtLeast(3), 0.0);
}

TEST(CoverageReport, APictureCannotMissByLessThanNothing) {
    ChannelCoverage all = channel();
    all.landed = 1 + 1e-12;
    EXPECT_EQ(all.missed(), 0.0);
}

TEST(CoverageReport, ThreeAndMoreAreTakenTogether) {
    CoverageReport report;
    report.screenArea = 20;
    report.areaByCount = {1, 2, 4, 8, 5};
    EXPECT_EQ(report.areaLitBy(2), 4);
    EXPECT_EQ(report.areaLitByAtLeast(3), 13);
    EXPECT_EQ(report.partOfScreen(5), 0.25);
}

TEST(CoverageReport, IsCompleteWithoutAnyFault) {
    CoverageReport report;
    report.channels = {channel()};
    EXPECT_TRUE(report.complete());
    report.channels[0].fault = "dark";
    EXPECT_FALSE(report.complete());
    report.channels.clear();
    report.fault = "no screen";
    EXPECT_FALSE(report.complete());
}

}  // namespace
