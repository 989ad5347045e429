#include "DisplayLight/LitPicture.h"

#include "LitPlaces.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using namespace Veltrani::DisplayLight;
using LitColours::Colour;

LitPlace unlitPlace() {
    LitPlace place;
    place.isOnScreen = true;
    return place;
}

TEST(LitColours, TheContentGoesFromBlackThroughRedAndYellowToWhiteAtOnePixel) {
    EXPECT_EQ(LitColours::shift(litPlace(1, 0)), (Colour{0, 0, 0}));
    EXPECT_EQ(LitColours::shift(litPlace(1, 1.0F / 3)), (Colour{255, 0, 0}));
    EXPECT_EQ(LitColours::shift(litPlace(1, 2.0F / 3)), (Colour{255, 255, 0}));
    EXPECT_EQ(LitColours::shift(litPlace(1, 0.8F)), (Colour{255, 255, 102}));
    EXPECT_EQ(LitColours::shift(litPlace(1, 1)), (Colour{255, 255, 255}));
    EXPECT_EQ(LitColours::shift(litPlace(1, 40)), (Colour{255, 255, 255}));
    EXPECT_EQ(LitColours::shift(litPlace(1, -1)), (Colour{0, 0, 0})) << "nothing was compared";
    LitPlace place = litPlace();
    place.lacksContent = true;
    EXPECT_EQ(LitColours::shift(place), (Colour{255, 255, 255}));
}

TEST(LitColours, TheLightIsGreyWhereItIsEvenAndRedOrBlueATenthBesideThat) {
    EXPECT_EQ(LitColours::unevenness(litPlace(1)), (Colour{128, 128, 128}));
    EXPECT_EQ(LitColours::unevenness(litPlace(1.05F)), (Colour{191, 64, 64}));
    EXPECT_EQ(LitColours::unevenness(litPlace(0.95F)), (Colour{64, 64, 191}));
    EXPECT_EQ(LitColours::unevenness(litPlace(1.101F)), (Colour{255, 0, 0}));
    EXPECT_EQ(LitColours::unevenness(litPlace(2)), (Colour{255, 0, 0}));
    EXPECT_EQ(LitColours::unevenness(litPlace(0.899F)), (Colour{0, 0, 255}));
    EXPECT_EQ(LitColours::unevenness(litPlace(0)), (Colour{0, 0, 255}));
}

TEST(LitColours, WhatIsNotLitIsDarkGreenAndWhatIsNoScreenGrey) {
    const Colour dark = LitColours::shift(unlitPlace());
    EXPECT_EQ(LitColours::unevenness(unlitPlace()), dark);
    EXPECT_GT(dark[1], 2 * dark[0]);
    EXPECT_GT(dark[1], 2 * dark[2]);
    EXPECT_LT(dark[1], 64);
    const auto curve = Veltrani::DisplayBlend::BlendCurve::ofGamma(2.2);
    const Colour grey = LitColours::shift(LitPlace());
    EXPECT_EQ(LitColours::unevenness(LitPlace()), grey);
    EXPECT_EQ(LitColours::shown(LitPlace(), curve), grey);
    EXPECT_NE(grey, dark);
    EXPECT_EQ(LitColours::shown(unlitPlace(), curve), (Colour{0, 0, 0}));
    EXPECT_EQ(LitColours::shown(litPlace(), curve), (Colour{255, 255, 255}));
}

/// A picture of three by two pixels, places row by row from the bottom.
TEST(LitPicture, HasItsUpperRowFirstAndItsErrorsBesideEachOther) {
    LitPicture picture;
    picture.view = EyeView::around({}, {}, 3, 2);
    picture.curve = Veltrani::DisplayBlend::BlendCurve::ofGamma(1);
    picture.places = {litPlace(1, 0), litPlace(0.95F, 1.0F / 3), unlitPlace(), litPlace(0, 1), LitPlace(),
                      litPlace(2, 0)};
    const Colour black{0, 0, 0};
    const Colour white{255, 255, 255};
    const Colour grey{26, 27, 30};
    const Colour green{10, 48, 22};
    const auto picturesOf = [](const std::vector<Colour>& colours) {
        std::vector<unsigned char> all;
        for (const Colour& colour : colours) {
            all.insert(all.end(), colour.begin(), colour.end());
        }
        return all;
    };
    const auto shown = picture.shown();
    EXPECT_EQ(shown.width, 3U);
    EXPECT_EQ(shown.height, 2U);
    EXPECT_EQ(shown.colours, picturesOf({black, grey, white, white, {242, 242, 242}, black}));
    const auto errors = picture.errors();
    EXPECT_EQ(errors.width, 6U);
    EXPECT_EQ(errors.height, 2U);
    EXPECT_EQ(errors.colours, picturesOf({white,
                                          grey,
                                          black,
                                          {0, 0, 255},
                                          grey,
                                          {255, 0, 0},  //
                                          black,
                                          {255, 0, 0},
                                          green,
                                          {128, 128, 128},
                                          {64, 64, 191},
                                          green}));
}

// Worked out by hand.
TEST(LitFigures, CountEachPlaceForWhatIsKnownOfIt) {
    LitPlace lacking = litPlace(1, -1);
    lacking.lacksContent = true;
    const std::vector<LitPlace> places{litPlace(1, 0.5F), litPlace(1.25F, 2), litPlace(0.5F, 1), litPlace(1, 1.001F),
                                       lacking,           unlitPlace(),       unlitPlace(),      LitPlace()};
    const LitFigures figures = LitFigures::of(places);
    EXPECT_EQ(figures.lit, 5U);
    EXPECT_EQ(figures.unlit, 2U);
    EXPECT_EQ(figures.compared, 4U);
    EXPECT_EQ(figures.largestShift, 2);
    EXPECT_NEAR(figures.meanShift, (0.5 + 2 + 1 + 1.001) / 4, 1e-6);
    EXPECT_EQ(figures.shifted, 2U) << "one pixel is not more than one";
    EXPECT_EQ(figures.withoutContent, 1U);
    EXPECT_EQ(figures.mostLight, 0.25);
    EXPECT_EQ(figures.leastLight, -0.5);
    EXPECT_NEAR(figures.meanUnevenness, 0.75 / 5, 1e-9);
    EXPECT_EQ(figures.tooBright, 1U);
}

TEST(LitFigures, OfNothingAreZero) {
    const LitFigures figures = LitFigures::of({});
    EXPECT_EQ(figures.lit + figures.unlit + figures.compared, 0U);
    EXPECT_EQ(figures.meanShift, 0);
    EXPECT_EQ(figures.meanUnevenness, 0);
}

}  // namespace
