#include "DisplayFit/detail/AreaModel.h"

#include "Common/Matrix.h"
#include "ScreenManager/ScreenManager.h"
#include "support/LogTrap.h"
#include "support/ScreenGeometryDouble.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <memory>
#include <numbers>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Veltrani::DisplayFit::AreaBounds;
using Veltrani::DisplayFit::ChannelValues;
using Place = Point<double, 3>;

const AreaBounds BOUNDS{0.2, 0.7, 0.1, 0.5};

/// With a screen of the current process.
class AreaModelTest : public testing::Test {
protected:
    ~AreaModelTest() override { ScreenManager::deleteInstance(); }

    using Surface = std::function<Place(double, double)>;
    static void install(const Surface& surface) {
        const auto screen = std::make_shared<ScreenGeometryDouble>();
        screen->mapping = [surface](const Point<double, 2>& st, Place& out, bool) {
            out = surface(st[0], st[1]);
            return true;
        };
        ScreenManager::getInstance()->resetScreen();
        ScreenManager::getInstance()->setScreenGeometry(screen);
    }

    /// Measured where the parameters (s, t) are, by places of the picture; beside the surface by some way.
    struct On {
        Point<double, 2> picture;
        Point<double, 2> parameters;
        Place beside;
    };
    void measure(const Surface& surface, const std::vector<On>& points) {
        for (const On& on : points) {
            m_points.picture.push_back(on.picture);
            m_points.world.push_back(surface(on.parameters[0], on.parameters[1]) + on.beside);
        }
    }

    static std::vector<double> residualsOf(const AreaModel& model, const std::vector<double>& step) {
        std::vector<double> residuals(2 * model.points().size());
        const auto isMapped = std::make_unique<bool[]>(model.points().size());
        model.evaluate(step.data(), 0, model.points().size(), residuals.data(), nullptr, isMapped.get());
        return residuals;
    }
    static void expectDerivatives(const AreaModel& model, const std::vector<double>& step) {
        constexpr double WIDTH = 1e-5;
        const std::size_t points = model.points().size();
        std::vector<double> residuals(2 * points);
        std::vector<double> jacobian(8 * points);
        const auto isMapped = std::make_unique<bool[]>(points);
        model.evaluate(step.data(), 0, points, residuals.data(), jacobian.data(), isMapped.get());
        for (std::size_t k = 0; k < 4; ++k) {
            std::vector<double> ahead = step;
            std::vector<double> behind = step;
            ahead[k] += WIDTH;
            behind[k] -= WIDTH;
            const auto there = residualsOf(model, ahead);
            const auto here = residualsOf(model, behind);
            for (std::size_t r = 0; r < residuals.size(); ++r) {
                EXPECT_NEAR(jacobian[4 * r + k], (there[r] - here[r]) / (2 * WIDTH), 1e-6) << r << ", " << k;
            }
        }
    }

    LogTrap m_log;
    FitPoints m_points;
};

/// Leaning: t leads along s, too.
Place leaningWall(double s, double t) {
    return {2 * s + t, 5, 3 * t};
}

TEST_F(AreaModelTest, ResidualsAreLengthsAlongTheSurface) {
    install(leaningWall);
    // (0.3, 0.5) of the picture is (0.35, 0.3) of the screen; (1, 0) is (0.7, 0.1).
    measure(leaningWall, {{{0.3, 0.5}, {0.3, 0.2}, {0, 0.4, 0}}, {{1, 0}, {0.7, 0.1}, {0, 0, 0}}});
    const AreaModel model(m_points, BOUNDS, {1000, 500});
    const std::vector<double> residuals = residualsOf(model, {0, 0, 0, 0});
    EXPECT_NEAR(residuals[0], 2 * 0.05 + 0.1, 1e-8);
    EXPECT_NEAR(residuals[1], 3 * 0.1, 1e-8);
    EXPECT_NEAR(residuals[2], 0, 1e-8);
    EXPECT_NEAR(residuals[3], 0, 1e-8);
    expectDerivatives(model, {0.01, -0.02, 0.03, 0.01});
    Point<double, 2> pixels;
    ASSERT_TRUE(model.missInPicture(0, pixels));
    // (0.3, 0.2) of the screen is (0.2, 0.25) of the picture.
    EXPECT_NEAR(pixels[0], 1000 * (0.2 - 0.3), 1e-6);
    EXPECT_NEAR(pixels[1], 500 * (0.25 - 0.5), 1e-6);
    Place lengths;
    ASSERT_TRUE(model.missOnScreen(0, lengths));
    EXPECT_LT(norm(lengths - (leaningWall(0.35, 0.3) - leaningWall(0.3, 0.2) - Place{0, 0.4, 0})), 1e-12);
    Place landing;
    ASSERT_TRUE(model.landing(1, landing));
    EXPECT_LT(norm(landing - leaningWall(0.7, 0.1)), 1e-12);
    EXPECT_EQ(model.unknowns().size(), 4U);
    EXPECT_EQ(model.unknowns()[2].words, "area bottom");
}

TEST_F(AreaModelTest, SomePointsHaveTheResidualsThatTheyHaveAmongAll) {
    install(leaningWall);
    measure(leaningWall, {{{0.3, 0.5}, {0.3, 0.2}, {}}, {{1, 0}, {0.6, 0.2}, {}}, {{0.2, 0.7}, {0.5, 0.4}, {}}});
    const AreaModel model(m_points, BOUNDS, {1000, 500});
    const std::vector<double> step{0.01, -0.02, 0.03, 0.01};
    const std::vector<double> all = residualsOf(model, step);
    std::vector<double> some(4);
    const auto isMapped = std::make_unique<bool[]>(2);
    model.evaluate(step.data(), 1, 2, some.data(), nullptr, isMapped.get());
    EXPECT_EQ(some, std::vector<double>(all.begin() + 2, all.end()));
    EXPECT_TRUE(isMapped[0] && isMapped[1]);
}

TEST_F(AreaModelTest, DeviationsSpreadAlongTheSurface) {
    install(leaningWall);
    measure(leaningWall, {{{0.3, 0.5}, {0.3, 0.2}, {}}});
    const AreaModel model(m_points, BOUNDS, {1000, 500});
    Spread spread;
    m_points.pictureDeviation = {{0.01, 0.02}};
    ASSERT_TRUE(model.spreadOf(0, spread));
    // 0.005 of s and 0.008 of t: (2, 0) and (1, 3) along the surface.
    EXPECT_NEAR(spread[0], std::pow(2 * 0.005, 2) + std::pow(0.008, 2), 1e-11);
    EXPECT_NEAR(spread[1], 3 * 0.008 * 0.008, 1e-11);
    EXPECT_NEAR(spread[2], std::pow(3 * 0.008, 2), 1e-11);
    Matrix<double, 3> covariance;
    covariance(0, 0) = 4;
    covariance(0, 2) = covariance(2, 0) = 1;
    covariance(1, 1) = 100;
    covariance(2, 2) = 9;
    m_points.pictureDeviation.clear();
    m_points.covariance = {covariance};
    ASSERT_TRUE(model.spreadOf(0, spread));
    EXPECT_LT(norm(spread - Spread{4, 1, 9}), 1e-8);
    m_points.pictureDeviation = {{0.01, 0.02}};
    ASSERT_TRUE(model.spreadOf(0, spread));
    EXPECT_NEAR(spread[2], 9 + std::pow(3 * 0.008, 2), 1e-8) << "both";
}

TEST_F(AreaModelTest, AStepMovesTheBounds) {
    install(leaningWall);
    measure(leaningWall, {{{0.3, 0.5}, {0.3, 0.2}, {}}});
    AreaModel model(m_points, BOUNDS, {1000, 500});
    const std::vector<double> step{0.01, -0.02, 0.03, 0.05};
    ChannelValues values;
    model.write(step.data(), values);
    EXPECT_NEAR(values.area.left, 0.21, 1e-15);
    EXPECT_NEAR(values.area.right, 0.68, 1e-15);
    EXPECT_NEAR(values.area.bottom, 0.13, 1e-15);
    EXPECT_NEAR(values.area.top, 0.55, 1e-15);
    const std::vector<double> before = residualsOf(model, step);
    model.move(step.data());
    EXPECT_EQ(residualsOf(model, {0, 0, 0, 0}), before);
    EXPECT_EQ(model.isReversed(), (Point<int, 2>{0, 0}));
    const std::vector<double> turned{0.6, -0.6, 0, 0};
    model.move(turned.data());
    EXPECT_EQ(model.isReversed(), (Point<int, 2>{1, 0}));
    const std::vector<double> both{0, 0, 0.8, -0.3};
    model.move(both.data());
    EXPECT_EQ(model.isReversed(), (Point<int, 2>{1, 1}));
    model.move(std::vector<double>{-0.6, 0.6, 0, 0}.data());
    EXPECT_EQ(model.isReversed(), (Point<int, 2>{0, 1}));
}

// Oracle: differences of the place in the picture that a fixed place of the screen has.
TEST_F(AreaModelTest, RowsOfAPlaceAreHowItMovesInThePicture) {
    install(leaningWall);
    const Point<double, 2> picture{0.3, 0.8};
    measure(leaningWall, {{picture, {0.2 + 0.5 * 0.3, 0.1 + 0.4 * 0.8}, {}}});
    constexpr double WIDTH = 1e-5;
    std::vector<double> rows(8, 9.0);
    ASSERT_TRUE(AreaModel(m_points, BOUNDS, {1000, 500}).rowsAt(picture, 1, rows.data()));
    for (std::size_t k = 0; k < 4; ++k) {
        std::array<Point<double, 2>, 2> pixels;
        for (std::size_t side = 0; side < 2; ++side) {
            AreaModel model(m_points, BOUNDS, {1000, 500});
            std::vector<double> step(4);
            step[k] = side == 0 ? WIDTH : -WIDTH;
            model.move(step.data());
            ASSERT_TRUE(model.missInPicture(0, pixels[side]));
        }
        for (std::size_t r = 0; r < 2; ++r) {
            EXPECT_NEAR(rows[4 * r + k], (pixels[0][r] - pixels[1][r]) / (2 * WIDTH), 1e-3) << r << ", " << k;
        }
    }
}

/// Around the zenith, which is at t = 0: a quarter of a unit from it for each tenth of t.
Place cap(double s, double t) {
    const double turn = std::numbers::pi * s;
    return {2.5 * t * std::cos(turn), 2.5 * t * std::sin(turn), 7 - t * t};
}

TEST_F(AreaModelTest, AtAPoleOnlyTheDistanceFromItCounts) {
    install(cap);
    // The picture's bottom edge is the pole. One mark was measured there, one beside it, one far from it.
    const AreaBounds area{0, 1, 0, 0.8};
    measure(cap, {{{0.9, 0}, {0.1, 0.001}, {}}, {{0.4, 0.01}, {0.7, 0.004}, {}}, {{0.5, 0.5}, {0.5, 0.4}, {}}});
    const AreaModel model(m_points, area, {1000, 500});
    const std::vector<double> residuals = residualsOf(model, {0, 0, 0, 0});
    EXPECT_NEAR(std::hypot(residuals[0], residuals[1]), norm(cap(0.9, 0) - cap(0.1, 0.001)), 1e-6);
    EXPECT_NEAR(std::hypot(residuals[2], residuals[3]), norm(cap(0.4, 0.008) - cap(0.7, 0.004)), 1e-6);
    EXPECT_NEAR(std::hypot(residuals[4], residuals[5]), 0, 1e-8);
    expectDerivatives(model, {0.01, -0.02, 0.03, 0.01});
    Point<double, 2> pixels;
    ASSERT_TRUE(model.missInPicture(1, pixels));
    EXPECT_EQ(pixels[0], 0) << "left and right have no meaning there";
    EXPECT_NEAR(pixels[1], 500 * (0.005 - 0.01), 1e-6);
    ASSERT_TRUE(model.missInPicture(2, pixels));
    EXPECT_NEAR(pixels[0], 0, 1e-5);
    m_points.picture[2] = {0.25, 0.5};
    ASSERT_TRUE(model.missInPicture(2, pixels));
    EXPECT_NEAR(pixels[0], 250, 1e-5);
}

TEST_F(AreaModelTest, WithoutAScreenNothingIsMapped) {
    m_points.picture = {{0.5, 0.5}};
    m_points.world = {{1, 2, 3}};
    const AreaModel model(m_points, BOUNDS, {0, 0});
    bool isMapped = true;
    std::vector<double> residuals(2, 9.0);
    model.evaluate(std::vector<double>(4).data(), 0, 1, residuals.data(), nullptr, &isMapped);
    EXPECT_FALSE(isMapped);
    EXPECT_EQ(residuals, std::vector<double>(2));
    Spread spread;
    Point<double, 2> pixels;
    Place place;
    EXPECT_FALSE(model.spreadOf(0, spread));
    EXPECT_FALSE(model.missInPicture(0, pixels));
    EXPECT_FALSE(model.missOnScreen(0, place));
    EXPECT_FALSE(model.landing(0, place));
}

}  // namespace
