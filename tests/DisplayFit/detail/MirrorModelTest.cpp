#include "DisplayFit/detail/MirrorModel.h"

#include "Configuration/ProjectorConfig.h"
#include "DisplayFit/detail/ChannelSetup.h"
#include "FitScene.h"
#include "support/LogTrap.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Veltrani::DisplayFit::ChannelValues;
using Veltrani::DisplayFit::MeasuredPoint;
using Offset = Point<double, 2>;

/// The channel in the middle of a display behind a mirror, with points where its light lands.
class MirrorModelTest : public testing::Test {
protected:
    MirrorModelTest() {
        for (const MeasuredPoint& point : m_scene.measured(4, 3)) {
            if (point.channel == 1) {
                m_points.picture.push_back(point.picture);
                m_points.world.push_back(point.world);
                m_points.given.push_back(m_points.given.size());
            }
        }
    }

    [[nodiscard]] std::unique_ptr<ChannelModel> model() const {
        const auto& config = m_scene.truth();
        const ProjectorConfig& projector = *config.getProjectorConfig(config.getProjectorConfigIds()[1]);
        return ChannelSetup(config, *DisplayKind::of(config), projector)
            .make(m_points, {{false, true, true, false, false}, false, false});
    }
    static std::vector<double> residualsOf(const ChannelModel& model, const std::vector<double>& step,
                                           std::vector<double>* jacobian = nullptr) {
        const std::size_t count = model.points().size();
        std::vector<double> residuals(2 * count, 9.0);
        const auto isMapped = std::make_unique<bool[]>(count);
        model.evaluate(step.data(), 0, count, residuals.data(), jacobian != nullptr ? jacobian->data() : nullptr,
                       isMapped.get());
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_TRUE(isMapped[i]) << i;
        }
        return residuals;
    }

    LogTrap m_log;
    mutable FitScene m_scene = FitScene::ofExample("collimated");
    FitPoints m_points;
};

TEST_F(MirrorModelTest, LightThatLandsWhereItWasMeasuredHasNoResidual) {
    ASSERT_EQ(m_points.size(), 12U);
    const auto exact = model();
    const std::vector<double> none(exact->unknowns().size());
    for (const double residual : residualsOf(*exact, none)) {
        EXPECT_NEAR(residual, 0, 1e-9);
    }
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        Offset pixels;
        Point<double, 3> way;
        ASSERT_TRUE(exact->missInPicture(i, pixels));
        EXPECT_LT(norm(pixels), 1e-5);
        ASSERT_TRUE(exact->missOnScreen(i, way));
        EXPECT_LT(norm(way), 1e-9);
        ASSERT_TRUE(exact->landing(i, way));
        EXPECT_LT(norm(way - m_points.world[i]), 1e-9);
    }
}

TEST_F(MirrorModelTest, AWrongPlaceInThePictureIsFoundAgainInPixels) {
    const FitPoints exact = m_points;
    for (Offset& picture : m_points.picture) {
        picture += Offset{0.02, -0.03};
    }
    const auto wrong = model();
    const std::vector<double> residuals = residualsOf(*wrong, std::vector<double>(wrong->unknowns().size()));
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        Offset pixels;
        ASSERT_TRUE(wrong->missInPicture(i, pixels)) << i;
        EXPECT_NEAR(pixels[0], -0.02 * 1920, 1e-4) << i;
        EXPECT_NEAR(pixels[1], 0.03 * 1200, 1e-4) << i;
        Point<double, 3> way;
        Point<double, 3> landing;
        ASSERT_TRUE(wrong->landing(i, landing));
        ASSERT_TRUE(wrong->missOnScreen(i, way));
        // The screen is taken to be flat there: nearly the way to where the light lands.
        EXPECT_LT(norm(way - (landing - exact.world[i])), 0.1 * norm(way)) << i;
        EXPECT_LE(std::hypot(residuals[2 * i], residuals[2 * i + 1]), 1.001 * norm(way)) << i;
        EXPECT_GT(std::hypot(residuals[2 * i], residuals[2 * i + 1]), 0.3 * norm(way)) << i;
    }
}

TEST_F(MirrorModelTest, DerivativesAreThoseOfTheResiduals) {
    const auto exact = model();
    const std::size_t columns = exact->unknowns().size();
    ASSERT_EQ(columns, 7U);
    const std::vector<double> base(columns, 0.002);
    std::vector<double> jacobian(2 * m_points.size() * columns);
    residualsOf(*exact, base, &jacobian);
    constexpr double WIDTH = 1e-4;
    for (std::size_t k = 0; k < columns; ++k) {
        std::vector<double> ahead = base;
        std::vector<double> behind = base;
        ahead[k] += WIDTH;
        behind[k] -= WIDTH;
        const auto there = residualsOf(*exact, ahead);
        const auto here = residualsOf(*exact, behind);
        for (std::size_t r = 0; r < here.size(); ++r) {
            EXPECT_NEAR(jacobian[r * columns + k], (there[r] - here[r]) / (2 * WIDTH), 1e-5) << r << ", " << k;
        }
    }
}

// Oracle: the residuals that a place in the picture has which is off by as much as it deviates.
TEST_F(MirrorModelTest, DeviationsSpreadAsPlacesThatAreOffDo) {
    m_points.pictureDeviation.assign(m_points.size(), {2e-4, 5e-4});
    const auto exact = model();
    const std::vector<double> none(exact->unknowns().size());
    std::vector<Spread> expected(m_points.size());
    for (std::size_t k = 0; k < 2; ++k) {
        Offset off;
        off[k] = m_points.pictureDeviation[0][k];
        for (Offset& picture : m_points.picture) {
            picture += off;
        }
        const auto moved = residualsOf(*exact, none);
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            m_points.picture[i] -= off;
            const double x = moved[2 * i];
            const double y = moved[2 * i + 1];
            expected[i] += Spread{x * x, x * y, y * y};
        }
    }
    Spread spread;
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        ASSERT_TRUE(exact->spreadOf(i, spread));
        EXPECT_LT(norm(spread - expected[i]), 5e-3 * norm(expected[i])) << i;
    }
    Matrix<double, 3> covariance;
    for (std::size_t k = 0; k < 3; ++k) {
        covariance(k, k) = 4;
    }
    m_points.covariance.assign(m_points.size(), covariance);
    ASSERT_TRUE(exact->spreadOf(0, spread));
    EXPECT_LT(norm(spread - Spread{4, 0, 4} - expected[0]), 5e-3 * norm(expected[0])) << "both";
}

TEST_F(MirrorModelTest, AStepThatIsTakenIsWrittenAndStaysTheSameView) {
    const auto moved = model();
    const std::vector<double> step{0.01, -0.02, 0.015, 0.03, -0.02, 0.01, 0.02};
    const std::vector<double> none(step.size());
    ChannelValues there;
    there.orientation = {0, 0, 0};
    moved->write(step.data(), there);
    moved->move(step.data());
    ChannelValues again;
    moved->write(none.data(), again);
    EXPECT_LT(norm(there.orientation - again.orientation), 1e-12);
    EXPECT_NEAR(there.frustum.left, again.frustum.left, 1e-12);
    EXPECT_NEAR(there.frustum.top, again.frustum.top, 1e-12);
    // Another model, made of what was written, lands its light at the same places.
    auto& config = m_scene.truth();
    ProjectorConfig& projector = *config.getProjectorConfig(config.getProjectorConfigIds()[1]);
    ChannelValues values = ChannelValues::of(projector);
    moved->write(none.data(), values);
    FitScene::apply(values, projector, "");
    const auto written = model();
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        Point<double, 3> one;
        Point<double, 3> other;
        ASSERT_TRUE(moved->landing(i, one));
        ASSERT_TRUE(written->landing(i, other));
        EXPECT_LT(norm(one - other), 1e-9) << i;
        EXPECT_GT(norm(one - m_points.world[i]), 1e-3) << i;
    }
}

}  // namespace
