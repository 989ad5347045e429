#include "DisplayFit/detail/LinearStart.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using namespace Veltrani::DisplayFitDetail;
using Veltrani::DisplayFit::ChannelValues;

enum class Where { IN_SPACE, ON_A_PLANE, AROUND_THE_EYE };

/// The truth, 100 points that show it, and a start that is far off.
class LinearStart : public testing::TestWithParam<Where> {
protected:
    LinearStart() {
        ChannelValues values;
        values.position = {0.5, -1, 2};
        values.orientation = {0.4, -0.2, 0.1};
        values.frustum = {-0.5, 0.4, -0.3, 0.35};
        m_truth = PictureView::of(values, LensFormula::Kind::RECTILINEAR, {1920, 1200});
        std::uniform_real_distribution<double> part(0, 1);
        for (std::size_t i = 0; i < 100; ++i) {
            const Point<double, 2> picture{part(m_random), part(m_random)};
            const double distance = GetParam() == Where::ON_A_PLANE ? 4 : 2 + 4 * part(m_random);
            const Point<double, 3> ray{(picture[0] - m_truth.shift[0]) / m_truth.factor[0], 1,
                                       (picture[1] - m_truth.shift[1]) / m_truth.factor[1]};
            m_points.picture.push_back(picture);
            m_points.world.push_back(m_truth.position + m_truth.world_from_projector * (ray * distance));
        }
        values.orientation = {-0.5, 0.3, 0.6};
        m_held.solved.orientation = true;
        if (GetParam() == Where::AROUND_THE_EYE) {
            m_held.solved.frustum = true;
        } else {
            values.position = {3, 1, -1};
            m_held.solved.position = true;
            m_held.solved.frustum = GetParam() == Where::IN_SPACE;
        }
        if (m_held.solved.frustum) {
            values.frustum = {-0.6, 0.6, -0.4, 0.4};
        }
        m_given = PictureView::of(values, LensFormula::Kind::RECTILINEAR, {1920, 1200});
    }

    /// How far the view shows a point of the picture from where the truth does, in widths of the picture.
    [[nodiscard]] double missOf(const PictureView& view) const {
        double largest = 0;
        for (std::size_t i = 0; i < m_points.size(); ++i) {
            const Point<double, 3> ray = transpose(view.world_from_projector) * (m_sound.world[i] - view.position);
            const Point<double, 2> there{view.factor[0] * ray[0] / ray[1] + view.shift[0],
                                         view.factor[1] * ray[2] / ray[1] + view.shift[1]};
            largest = std::max(largest, norm(there - m_sound.picture[i]));
        }
        return largest;
    }

    PictureView m_truth;
    PictureView m_given;
    PictureModel::Held m_held;
    FitPoints m_points;
    FitPoints m_sound;
    std::mt19937 m_random{17};
};

TEST_P(LinearStart, FindsTheViewFromAfar) {
    m_sound = m_points;
    const auto found = linearStart(m_points, m_given, m_held);
    ASSERT_TRUE(found);
    EXPECT_FALSE(found->isMirrored);
    EXPECT_LT(missOf(found->view), 1e-7);
}

// What is left when the outliers are left out is exact, and so is the view; one of them among the rest would show.
TEST_P(LinearStart, LeavesOutPointsThatAreWrong) {
    m_sound = m_points;
    std::normal_distribution<double> normal;
    for (std::size_t i = 0; i < m_points.size(); i += 8) {
        m_points.picture[i] += Point<double, 2>{0.2 * normal(m_random), 0.2 * normal(m_random)};
    }
    const auto found = linearStart(m_points, m_given, m_held);
    ASSERT_TRUE(found);
    EXPECT_LT(missOf(found->view), 1e-7);
}

INSTANTIATE_TEST_SUITE_P(All, LinearStart, testing::Values(Where::IN_SPACE, Where::ON_A_PLANE, Where::AROUND_THE_EYE));

}  // namespace
