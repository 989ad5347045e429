#include "DisplayFit/detail/ResidualLists.h"

#include "StatedModel.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Veltrani::DisplayFit::ChannelFit;

/// Points that are off by so much to the side, in pixels, and by a hundredth of it downwards on the screen.
StatedModel offBy(const std::vector<double>& pixels) {
    StatedModel model(1, pixels.size());
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        model.given.given[i] = 10 + i;
        model.stated[i].pixels = {pixels[i], 0};
        model.stated[i].lengths = {0, 0, -pixels[i] / 100};
    }
    return model;
}

TEST(ResidualLists, SummariesOfAnEvenAndOfAnOddNumber) {
    ChannelFit fit;
    noteBefore(offBy({4, 1, -2, 8}), fit);
    EXPECT_NEAR(fit.pixelsBefore.rms, std::sqrt(85 / 4.0), 1e-14);
    EXPECT_EQ(fit.pixelsBefore.median, 3);
    EXPECT_EQ(fit.pixelsBefore.largest, 8);
    EXPECT_EQ(fit.pixelsBefore.unmapped, 0U);
    EXPECT_NEAR(fit.screenBefore.median, 0.03, 1e-16);
    EXPECT_NEAR(fit.screenBefore.largest, 0.08, 1e-16);
    noteBefore(offBy({4, 1, -20}), fit);
    EXPECT_EQ(fit.pixelsBefore.median, 4);
    ASSERT_EQ(fit.residuals.size(), 3U);
    EXPECT_EQ(fit.residuals[2].point, 12U);
    EXPECT_EQ(fit.residuals[2].pixelsBefore[0], -20);
    EXPECT_EQ(fit.residuals[2].pixelsAfter[0], -20) << "nothing is fitted yet";
    EXPECT_EQ(fit.residuals[2].screenAfter[2], 0.2);
    EXPECT_EQ(fit.pixelsAfter.largest, 20);
    EXPECT_EQ(fit.screenAfter.median, 0.04);
}

TEST(ResidualLists, WhatHasNoResidualIsCountedApart) {
    StatedModel model = offBy({3, 4, 5});
    model.stated[1].pixels.reset();
    model.stated[0].lengths.reset();
    ChannelFit fit;
    noteBefore(model, fit);
    EXPECT_TRUE(std::isnan(fit.residuals[1].pixelsBefore[0]) && std::isnan(fit.residuals[1].pixelsBefore[1]));
    EXPECT_TRUE(std::isnan(fit.residuals[0].screenBefore[2]));
    EXPECT_EQ(fit.pixelsBefore.unmapped, 1U);
    EXPECT_EQ(fit.pixelsBefore.median, 4);
    EXPECT_NEAR(fit.pixelsBefore.rms, std::sqrt(17), 1e-14);
    EXPECT_EQ(fit.screenBefore.unmapped, 1U);
    for (StatedModel::Stated& stated : model.stated) {
        stated.pixels.reset();
    }
    noteBefore(model, fit);
    EXPECT_EQ(fit.pixelsBefore.unmapped, 3U);
    EXPECT_EQ(fit.pixelsBefore.rms, 0);
}

TEST(ResidualLists, OutliersDoNotCountAfterTheFit) {
    ChannelFit fit;
    noteBefore(offBy({3, 100, 5}), fit);
    fit.residuals[1].isOutlier = true;
    StatedModel model = offBy({1, 200, 2});
    model.stated[0].lengths = {0, 1, 0};
    noteAfter(model, fit);
    EXPECT_EQ(fit.pixelsBefore.largest, 100);
    EXPECT_EQ(fit.residuals[1].pixelsAfter[0], 200);
    EXPECT_EQ(fit.residuals[1].pixelsBefore[0], 100);
    EXPECT_EQ(fit.pixelsAfter.largest, 2);
    EXPECT_EQ(fit.pixelsAfter.median, 1.5);
    EXPECT_EQ(fit.screenAfter.largest, 1);
    fit.residuals[1].pixelsAfter = {std::numeric_limits<double>::quiet_NaN(), 0};
    EXPECT_EQ(fit.pixelsAfter.unmapped, 0U);
}

TEST(ResidualLists, TheMedianMissIsAPartOfTheLargerSide) {
    StatedModel model = offBy({1, 20, 3});
    EXPECT_NEAR(medianMiss(model, {1000, 500}), 0.003, 1e-16);
    EXPECT_NEAR(medianMiss(model, {300, 600}), 0.005, 1e-16);
    ChannelFit fit;
    noteBefore(offBy({7, 7, 7}), fit);
    noteAfter(model, fit);
    EXPECT_NEAR(medianMiss(fit, {1000, 500}), 0.003, 1e-16);
    model.stated[0].pixels.reset();
    EXPECT_NEAR(medianMiss(model, {1000, 500}), 0.02, 1e-16) << "one without counts as far off";
    model.stated[1].pixels.reset();
    EXPECT_EQ(medianMiss(model, {1000, 500}), std::numeric_limits<double>::infinity());
    EXPECT_EQ(medianMiss(StatedModel(1), {1000, 500}), std::numeric_limits<double>::infinity());
}

}  // namespace
