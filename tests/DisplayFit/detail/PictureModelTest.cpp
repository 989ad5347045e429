#include "DisplayFit/detail/PictureModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Veltrani::LensNumbers;
using Veltrani::DisplayFit::ChannelValues;

struct LensCase {
    std::string name;
    LensFormula::Kind kind;
    std::vector<double> coefficients;
};

std::ostream& operator<<(std::ostream& out, const LensCase& lens) {
    return out << lens.name;
}

class PictureModelTest : public testing::TestWithParam<LensCase> {
protected:
    PictureModelTest() {
        m_values.position = {0.5, -1, 2};
        m_values.orientation = {0.4, -0.2, 0.1};
        m_values.frustum = {-0.5, 0.4, -0.3, 0.35};
        if (!GetParam().coefficients.empty()) {
            const bool isFisheye = GetParam().kind == LensFormula::Kind::FISHEYE;
            m_values.lens = LensNumbers{isFisheye ? LensNumbers::Kind::FISHEYE : LensNumbers::Kind::BROWN_CONRADY,
                                        1000,
                                        800,
                                        900,
                                        910,
                                        520,
                                        390,
                                        GetParam().coefficients};
        }
        std::mt19937 random(7);
        std::uniform_real_distribution<double> part(-1, 1);
        const auto world_from_projector = Veltrani::rotationZXY(0.4, -0.2, 0.1);
        for (int i = 0; i < 20; ++i) {
            const double distance = 3 + part(random);
            m_points.world.push_back(m_values.position +
                                     world_from_projector * Point<double, 3>{0.45 * part(random) * distance, distance,
                                                                             0.35 * part(random) * distance});
            m_points.picture.push_back({0.5 + 0.4 * part(random), 0.5 + 0.4 * part(random)});
            m_points.given.push_back(m_points.given.size());
        }
    }

    [[nodiscard]] PictureView view() const { return PictureView::of(m_values, GetParam().kind, {1920, 1200}); }

    ChannelValues m_values;
    FitPoints m_points;
};

std::vector<double> residualsAt(const ChannelModel& model, const std::vector<double>& step) {
    std::vector<double> residuals(2 * model.points().size());
    const auto isMapped = std::make_unique<bool[]>(model.points().size());
    model.evaluate(step.data(), 0, model.points().size(), residuals.data(), nullptr, isMapped.get());
    return residuals;
}

/// Away from the base, where a turn is not small.
TEST_P(PictureModelTest, TheDerivativesAreThoseOfTheResiduals) {
    for (const bool isSquare : {false, true}) {
        PictureModel model(m_points, view(), {{true, true, true, true, false}, isSquare, isSquare});
        const std::size_t count = model.unknowns().size();
        std::vector<double> step;
        for (std::size_t k = 0; k < count; ++k) {
            step.push_back(k % 2 == 0 ? 0.03 : -0.02);
        }
        std::vector<double> residuals(2 * m_points.size());
        std::vector<double> jacobian(residuals.size() * count);
        const auto isMapped = std::make_unique<bool[]>(m_points.size());
        model.evaluate(step.data(), 0, m_points.size(), residuals.data(), jacobian.data(), isMapped.get());
        EXPECT_EQ(residuals, residualsAt(model, step));
        for (std::size_t k = 0; k < count; ++k) {
            constexpr double WIDTH = 1e-5;
            std::vector<double> ahead = step;
            std::vector<double> behind = step;
            ahead[k] += WIDTH;
            behind[k] -= WIDTH;
            const auto there = residualsAt(model, ahead);
            const auto here = residualsAt(model, behind);
            for (std::size_t i = 0; i < residuals.size(); ++i) {
                const double slope = (there[i] - here[i]) / (2 * WIDTH);
                EXPECT_NEAR(jacobian[i * count + k], slope, 1e-5 * (1 + std::abs(slope)))
                    << model.unknowns()[k].words << ", residual " << i;
            }
        }
    }
}

/// Residuals of some points are those of the same points among all.
TEST_P(PictureModelTest, SomePointsHaveTheResidualsOfAll) {
    const PictureModel model(m_points, view(), {{true, true, true, true, false}, false, false});
    const std::size_t count = model.unknowns().size();
    const std::vector<double> step(count, 0.01);
    const std::vector<double> all = residualsAt(model, step);
    std::vector<double> some(6);
    std::vector<double> jacobian(some.size() * count);
    const auto isMapped = std::make_unique<bool[]>(3);
    model.evaluate(step.data(), 4, 3, some.data(), jacobian.data(), isMapped.get());
    EXPECT_EQ(some, std::vector<double>(all.begin() + 8, all.begin() + 14));
}

/// What a place of the picture shows, at any distance, moves as the residual of such a point.
TEST_P(PictureModelTest, RowsAtAPlaceAreThoseOfAPointThere) {
    const PictureModel model(m_points, view(), {{true, true, true, true, false}, false, false});
    const std::size_t count = model.unknowns().size();
    const std::vector<double> none(count, 0.0);
    std::vector<double> residuals(2 * m_points.size());
    std::vector<double> jacobian(residuals.size() * count);
    const auto isMapped = std::make_unique<bool[]>(m_points.size());
    model.evaluate(none.data(), 0, m_points.size(), residuals.data(), jacobian.data(), isMapped.get());
    for (std::size_t i = 0; i < m_points.size(); ++i) {
        const Point<double, 2> place{m_points.picture[i][0] + residuals[2 * i] / 1920,
                                     m_points.picture[i][1] + residuals[2 * i + 1] / 1200};
        std::vector<double> rows(2 * count);
        ASSERT_TRUE(model.rowsAt(place, model.distanceOf(i), rows.data()));
        for (std::size_t k = 0; k < rows.size(); ++k) {
            EXPECT_NEAR(rows[k], jacobian[2 * i * count + k], 1e-6 * (1 + std::abs(rows[k]))) << i << ", " << k;
        }
    }
}

/// A move of the base changes nothing but where steps start.
TEST_P(PictureModelTest, AMoveTakesAStepIntoTheBase) {
    PictureModel model(m_points, view(), {{true, true, true, true, false}, false, false});
    const std::vector<double> step(model.unknowns().size(), 0.01);
    const auto before = residualsAt(model, step);
    ChannelValues stepped = m_values;
    model.write(step.data(), stepped);
    model.move(step.data());
    const std::vector<double> none(step.size(), 0.0);
    const auto after = residualsAt(model, none);
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_NEAR(before[i], after[i], 1e-9);
    }
    // The written values describe the same view.
    const PictureModel written(m_points, PictureView::of(stepped, GetParam().kind, {1920, 1200}),
                               {{true, true, true, true, false}, false, false});
    const auto again = residualsAt(written, none);
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_NEAR(before[i], again[i], 1e-8);
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, PictureModelTest,
    testing::Values(LensCase{"rectilinear", LensFormula::Kind::RECTILINEAR, {}},
                    LensCase{"equidistant", LensFormula::Kind::EQUIDISTANT, {}},
                    LensCase{"five", LensFormula::Kind::BROWN_CONRADY, {-0.14, 0.08, 4e-3, -3e-3, -0.02}},
                    LensCase{"twelve",
                             LensFormula::Kind::BROWN_CONRADY,
                             {0.3, -0.12, 4e-3, -3e-3, 0.05, 0.45, -0.08, 0.03, 1e-2, -2e-2, 5e-3, 1e-2}},
                    LensCase{"fisheye", LensFormula::Kind::FISHEYE, {0.03, -0.01, 4e-3, -1e-3}}),
    [](const auto& info) { return info.param.name; });

}  // namespace
