#include "DisplayFit/detail/PictureDeviation.h"

#include "StatedModel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

namespace {

using Veltrani::DisplayFitDetail::PictureDeviation;

const std::vector<double> APART_BY_ONE{1, 0, 0, 1};

/// A model of two unknowns, each of which moves the picture along one of its sides by a size of a place.
template <class Size>
StatedModel movingBy(Size size, std::size_t points = 1) {
    StatedModel model(2, points);
    model.rowsOfPlace = [size](const Point<double, 2>& place, double distance, double* rows) {
        rows[0] = size(place, distance);
        rows[1] = rows[2] = 0;
        rows[3] = 0.5 * rows[0];
        return true;
    };
    return model;
}

TEST(PictureDeviation, IsThatOfTheWorstDirectionAtTheWorstPlace) {
    StatedModel model(2, 1);
    model.rowsOfPlace = [](const Point<double, 2>& place, double, double* rows) {
        // The worst direction is neither u nor v.
        const double size = place[0] == 0.25 && place[1] == 0.75 ? 1 : 0.1;
        const std::vector<double> of{3 * size, 0, 4 * size, 0.5 * size};
        std::copy(of.begin(), of.end(), rows);
        return true;
    };
    const PictureDeviation worst = PictureDeviation::of(model, {4, 0, 0, 1}, {false});
    // The spread is (36, 48; 48, 64.25): its larger eigenvalue by the quadratic formula.
    const double largest = (100.25 + std::sqrt(100.25 * 100.25 - 4 * (36 * 64.25 - 48 * 48))) / 2;
    EXPECT_NEAR(worst.pixels, std::sqrt(largest), 1e-12);
    EXPECT_EQ(worst.words, "within it");
    // Its direction is (48, largest - 36); the slopes are the rows along it.
    const double length = std::hypot(48, largest - 36);
    const Point<double, 2> along{48 / length, (largest - 36) / length};
    ASSERT_EQ(worst.slopes.size(), 2U);
    EXPECT_NEAR(std::abs(worst.slopes[0]), 3 * along[0] + 4 * along[1], 1e-12);
    EXPECT_NEAR(std::abs(worst.slopes[1]), 0.5 * along[1], 1e-12);
    EXPECT_GT(worst.slopes[0] * worst.slopes[1], 0);
}

TEST(PictureDeviation, NamesThePlaceWhereItIsLargest) {
    struct Named {
        Point<double, 2> place;
        std::string words;
    };
    for (const Named& named :
         {Named{{0, 0}, "at its bottom left corner"}, Named{{1, 0}, "at its bottom right corner"},
          Named{{0, 1}, "at its top left corner"}, Named{{1, 1}, "at its top right corner"},
          Named{{0, 0.5}, "at its left edge"}, Named{{1, 0.25}, "at its right edge"},
          Named{{0.75, 0}, "at its bottom edge"}, Named{{0.5, 1}, "at its top edge"}, Named{{0.5, 0.5}, "within it"}}) {
        const StatedModel model =
            movingBy([&named](const Point<double, 2>& place, double) { return place == named.place ? 2.0 : 1.0; });
        EXPECT_EQ(PictureDeviation::of(model, APART_BY_ONE, {false}).words, named.words);
        EXPECT_NEAR(PictureDeviation::of(model, APART_BY_ONE, {false}).pixels, 2, 1e-14);
    }
}

TEST(PictureDeviation, NamesAnotherDistanceOnlyWhereItMatters) {
    struct Growth {
        double power;
        std::string words;
        double pixels;
    };
    // Points at 2 and 5; another that is left out would be nearer, and one farther.
    for (const Growth& growth :
         {Growth{-2, "within it, of what is a tenth nearer than the points", 1 / 3.24},
          Growth{-0.5, "within it", 0.7071067811865475}, Growth{0.5, "within it", 2.23606797749979},
          Growth{2, "within it, of what is a tenth farther away than the points", 30.25}}) {
        StatedModel model = movingBy(
            [&growth](const Point<double, 2>& place, double distance) {
                return place == Point<double, 2>{0.5, 0.5} ? std::pow(distance, growth.power) : 0.0;
            },
            4);
        model.stated[0].distance = 5;
        model.stated[1].distance = 0.1;
        model.stated[2].distance = 2;
        model.stated[3].distance = 90;
        const PictureDeviation worst = PictureDeviation::of(model, APART_BY_ONE, {false, true, false, true});
        EXPECT_EQ(worst.words, growth.words) << growth.power;
        EXPECT_NEAR(worst.pixels, growth.pixels, 1e-12) << growth.power;
    }
}

TEST(PictureDeviation, PassesOverPlacesThatShowNothing) {
    StatedModel model(2, 1);
    model.rowsOfPlace = [](const Point<double, 2>& place, double, double* rows) {
        std::fill(rows, rows + 4, 9.0);
        rows[0] = rows[3] = 1 + place[0];
        rows[1] = rows[2] = 0;
        return place[0] < 1;
    };
    EXPECT_NEAR(PictureDeviation::of(model, APART_BY_ONE, {false}).pixels, 1.75, 1e-14);
    EXPECT_EQ(PictureDeviation::of(model, {}, {false}).pixels, 0) << "no covariance";
    EXPECT_TRUE(PictureDeviation::of(model, {}, {false}).slopes.empty());
}

}  // namespace
