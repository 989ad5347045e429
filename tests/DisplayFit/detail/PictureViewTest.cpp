#include "DisplayFit/detail/PictureView.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Veltrani::LensNumbers;
using Veltrani::DisplayFit::ChannelValues;

/// Where a view shows a place (a, b) of its lens.
Point<double, 2> shownAt(const PictureView& view, double a, double b) {
    return {view.factor[0] * a + view.shift[0], view.factor[1] * b + view.shift[1]};
}

TEST(PictureView, TheEdgesOfAFrustumAreThoseOfThePicture) {
    ChannelValues values;
    values.frustum = {-0.5, 0.3, -0.2, 0.4};
    const PictureView flat = PictureView::of(values, LensFormula::Kind::RECTILINEAR, {1920, 1200});
    EXPECT_LT(norm(shownAt(flat, std::tan(-0.5), std::tan(-0.2)) - Point<double, 2>{0, 0}), 1e-14);
    EXPECT_LT(norm(shownAt(flat, std::tan(0.3), std::tan(0.4)) - Point<double, 2>{1, 1}), 1e-14);
    EXPECT_EQ(flat.pixels, (Point<double, 2>{1920, 1200}));
    const PictureView equal = PictureView::of(values, LensFormula::Kind::EQUIDISTANT, {0, 0});
    EXPECT_LT(norm(shownAt(equal, -0.5, -0.2) - Point<double, 2>{0, 0}), 1e-14);
    EXPECT_LT(norm(shownAt(equal, 0.3, 0.4) - Point<double, 2>{1, 1}), 1e-14);
    EXPECT_EQ(equal.pixels, (Point<double, 2>{1, 1})) << "not configured";
}

TEST(PictureView, ALensShowsItsAxisAtTheCentreOfItsPixel) {
    ChannelValues values;
    values.position = {1, 2, 3};
    values.frustum = {-0.5, 0.3, -0.2, 0.4};
    values.lens = LensNumbers{LensNumbers::Kind::BROWN_CONRADY, 1000, 500, 800, 700, 0, 0, {0.1, 0, 0, 0}};
    const PictureView first = PictureView::of(values, LensFormula::Kind::RECTILINEAR, {1920, 1200});
    // The pixel at the top left: its centre is half a pixel from both edges.
    EXPECT_LT(norm(first.shift - Point<double, 2>{0.0005, 0.999}), 1e-15);
    values.lens->cx = 999;
    values.lens->cy = 499;
    const PictureView last = PictureView::of(values, LensFormula::Kind::RECTILINEAR, {1920, 1200});
    EXPECT_LT(norm(last.shift - Point<double, 2>{0.9995, 0.001}), 1e-15);
    EXPECT_EQ(last.factor, (Point<double, 2>{0.8, 1.4}));
    EXPECT_EQ(last.position, values.position);
}

TEST(PictureView, ALensBendsRaysByItsOwnFormulaAndLooksWhereItIsTurned) {
    ChannelValues values;
    values.orientation = {0.4, -0.2, 0.1};
    values.lens = LensNumbers{LensNumbers::Kind::BROWN_CONRADY, 1000, 500, 800, 700, 500, 250, {0.1, 0, 0, 0}};
    const PictureView brown = PictureView::of(values, LensFormula::Kind::EQUIDISTANT, {1920, 1200});
    EXPECT_EQ(brown.world_from_projector, Veltrani::rotationZXY(0.4, -0.2, 0.1));
    LensFormula::Place place;
    // At 45 degrees to the right: r (1 + k1 r^2), and theta (1 + k1 theta^2).
    ASSERT_TRUE(brown.lens.place({1, 1, 0}, place));
    EXPECT_NEAR(place.a, 1.1, 1e-12);
    values.lens->kind = LensNumbers::Kind::FISHEYE;
    ASSERT_TRUE(PictureView::of(values, LensFormula::Kind::RECTILINEAR, {1920, 1200}).lens.place({1, 1, 0}, place));
    const double angle = std::atan(1.0);
    EXPECT_NEAR(place.a, angle * (1 + 0.1 * angle * angle), 1e-12);
}

}  // namespace
