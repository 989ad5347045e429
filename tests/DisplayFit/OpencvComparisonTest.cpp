// The same correspondences and the same model in another program: our cost is no larger.
#include "DisplayFit/DisplayFitter.h"

#include "ScreenManager/ScreenManager.h"
#include "SyntheticChannel.h"
#include "support/LogTrap.h"

#include <gtest/gtest.h>
#include <opencv2/calib3d.hpp>

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace Veltrani::DisplayFit;
using Veltrani::LensNumbers;

/// Of the cost.
constexpr double WORSE = 1e-6;

struct Correspondences {
    std::vector<cv::Point3d> world;
    std::vector<cv::Point2d> pixels;
};

/// In the conventions of calibrations: pixel centres at whole numbers, from the top left.
Correspondences correspondencesOf(const std::vector<MeasuredPoint>& points) {
    Correspondences list;
    for (const MeasuredPoint& point : points) {
        list.world.emplace_back(point.world[0], point.world[1], point.world[2]);
        list.pixels.emplace_back(point.picture[0] * 1920 - 0.5, (1 - point.picture[1]) * 1200 - 0.5);
    }
    return list;
}

cv::Mat cameraOf(const LensNumbers& lens) {
    return (cv::Mat_<double>(3, 3) << lens.fx, 0, lens.cx, 0, lens.fy, lens.cy, 0, 0, 1);
}

/// From the world to a camera that looks along z with y down.
void poseOf(const ChannelValues& values, cv::Mat& turn, cv::Mat& shift) {
    const auto world_from_projector =
        Veltrani::rotationZXY(values.orientation[0], values.orientation[1], values.orientation[2]);
    const auto projector_from_world = transpose(world_from_projector);
    cv::Mat rotation(3, 3, CV_64F);
    for (int c = 0; c < 3; ++c) {
        const auto column = static_cast<std::size_t>(c);
        rotation.at<double>(0, c) = projector_from_world(0, column);
        rotation.at<double>(1, c) = -projector_from_world(2, column);
        rotation.at<double>(2, c) = projector_from_world(1, column);
    }
    const cv::Mat position = (cv::Mat_<double>(3, 1) << values.position[0], values.position[1], values.position[2]);
    shift = -rotation * position;
    cv::Rodrigues(rotation, turn);
}

double costOf(const Correspondences& list, const cv::Mat& turn, const cv::Mat& shift, const cv::Mat& camera,
              const cv::Mat& distortion) {
    std::vector<cv::Point2d> projected;
    cv::projectPoints(list.world, turn, shift, camera, distortion, projected);
    double cost = 0;
    for (std::size_t i = 0; i < projected.size(); ++i) {
        const cv::Point2d miss = projected[i] - list.pixels[i];
        cost += miss.dot(miss);
    }
    return cost;
}

/// The cost of our values, computed by the other program.
double costOf(const Correspondences& list, const ChannelValues& values) {
    cv::Mat turn;
    cv::Mat shift;
    poseOf(values, turn, shift);
    return costOf(list, turn, shift, cameraOf(*values.lens), cv::Mat(values.lens->distortion));
}

/// What the other program found, in its own numbers.
struct Calibration {
    cv::Mat camera;
    cv::Mat distortion;
    cv::Mat turn;
    cv::Mat shift;
    double cost = 0;
};

/// Calibrates from a start, until nothing is gained any more.
Calibration calibrated(const Correspondences& list, const ChannelValues& start) {
    std::vector<std::vector<cv::Point3f>> world(1);
    std::vector<std::vector<cv::Point2f>> pixels(1);
    for (std::size_t i = 0; i < list.world.size(); ++i) {
        world[0].emplace_back(list.world[i]);
        pixels[0].emplace_back(list.pixels[i]);
    }
    Calibration found{cameraOf(*start.lens), cv::Mat(start.lens->distortion).clone(), {}, {}};
    std::vector<cv::Mat> turns;
    std::vector<cv::Mat> shifts;
    const std::size_t count = start.lens->distortion.size();
    const int flags = cv::CALIB_USE_INTRINSIC_GUESS | (count < 5 ? cv::CALIB_FIX_K3 : 0) |
                      (count == 8 ? cv::CALIB_RATIONAL_MODEL : 0);
    cv::calibrateCamera(world, pixels, {1920, 1200}, found.camera, found.distortion, turns, shifts, flags,
                        {cv::TermCriteria::COUNT | cv::TermCriteria::EPS, 500, 1e-15});
    found.turn = turns[0];
    found.shift = shifts[0];
    found.cost = costOf(list, found.turn, found.shift, found.camera, found.distortion);
    return found;
}

/// Both programs are given what single precision holds, since the other one reads no more.
std::vector<MeasuredPoint> rounded(std::vector<MeasuredPoint> points) {
    for (MeasuredPoint& point : points) {
        for (std::size_t i = 0; i < 3; ++i) {
            point.world[i] = static_cast<double>(static_cast<float>(point.world[i]));
        }
        const auto px = static_cast<double>(static_cast<float>(point.picture[0] * 1920 - 0.5));
        const auto py = static_cast<double>(static_cast<float>((1 - point.picture[1]) * 1200 - 0.5));
        point.picture = {(px + 0.5) / 1920, 1 - (py + 0.5) / 1200};
    }
    return points;
}

/// Ours, without the robust loss.
ChannelFit plainFit(const SyntheticChannel& channel, const ChannelValues& start,
                    const std::vector<MeasuredPoint>& points, std::optional<SolvedGroups> solved = std::nullopt) {
    FitOptions options;
    options.isRobust = false;
    options.solved = solved;
    return DisplayFitter(options).fit(*channel.config(start, "start"), points).channels.at(0);
}

const std::vector<std::vector<double>> LENSES{{-0.14, 0.08, 4e-4, -3e-4},
                                              {-0.14, 0.08, 4e-4, -3e-4, -0.02},
                                              {-0.3, 0.12, -1e-3, 2e-3, 0.01},
                                              {0.05, -0.02, 0, 0, 0.005},
                                              {0.3, -0.12, 4e-4, -3e-4, 0.05, 0.45, -0.08, 0.03}};

class OpencvComparison : public testing::TestWithParam<int> {
protected:
    ~OpencvComparison() override { ScreenManager::deleteInstance(); }
    LogTrap m_log;
};

TEST_P(OpencvComparison, OurCostIsNoLargerThanThatOfACalibration) {
    cv::setNumThreads(1);
    const auto index = static_cast<std::size_t>(GetParam());
    SyntheticChannel channel("BrownConrady", LENSES[index % LENSES.size()], static_cast<unsigned>(40 + GetParam()));
    if (LENSES[index % LENSES.size()].size() == 8) {
        // A wide view, which determines the rational terms. Those of a narrow one follow the noise, until the lens
        // folds within its picture: such a minimum is no lens, and not taken.
        ChannelValues truth = channel.truth();
        truth.lens->fx = truth.lens->fy = 700;
        channel.setTruth(truth);
    }
    const double pixels = index < LENSES.size() ? 0.3 : 2;
    const auto points = rounded(SyntheticChannel::noisyInPicture(channel.measured(300), pixels, 5));
    const ChannelValues start = channel.disturbed();
    const ChannelFit fit = plainFit(channel, start, points);
    ASSERT_TRUE(fit.isSolved);
    ASSERT_NE(fit.outcome, FitOutcome::UNUSABLE);
    const Correspondences list = correspondencesOf(points);
    const double ours = costOf(list, fit.after);
    EXPECT_LE(ours, calibrated(list, start).cost * (1 + WORSE));
    // Both count the same: our own figure is that of the other program.
    EXPECT_NEAR(fit.residualFactor * fit.residualFactor * static_cast<double>(fit.degreesOfFreedom), ours, 1e-6 * ours);
}

/// Oracle: whether the distorted radius of a quotient falls before the corner of its picture, or lies so near to a pole
/// that its lower line is the difference of numbers a thousand times as large.
bool foldsInPicture(const std::vector<double>& k, double corner) {
    double last = 0;
    for (double r = 1e-6; r <= corner; r += 1e-6) {
        const double r2 = r * r;
        const double below = 1 + r2 * (k[5] + r2 * (k[6] + r2 * k[7]));
        const double terms = 1 + r2 * (std::abs(k[5]) + r2 * (std::abs(k[6]) + r2 * std::abs(k[7])));
        const double radius = r * (1 + r2 * (k[0] + r2 * (k[1] + r2 * k[4]))) / below;
        if (!(below > 1e-3 * terms) || !(radius > last)) {
            return true;
        }
        last = radius;
    }
    return false;
}

/// Oracle: by which part of it the next step of Gauss and Newton lessens a cost, from the other program's derivatives.
double gainOfAStep(const Correspondences& list, const Calibration& found) {
    std::vector<cv::Point2d> projected;
    cv::Mat all;
    cv::projectPoints(list.world, found.turn, found.shift, found.camera, found.distortion, projected, all);
    const auto rows = static_cast<int>(2 * projected.size());
    cv::Mat misses(rows, 1, CV_64F);
    for (int i = 0; i < rows; ++i) {
        const auto point = static_cast<std::size_t>(i / 2);
        const cv::Point2d miss = projected[point] - list.pixels[point];
        misses.at<double>(i) = i % 2 == 0 ? miss.x : miss.y;
    }
    cv::Mat derivatives = all.colRange(0, 18).clone();
    for (int column = 0; column < derivatives.cols; ++column) {
        derivatives.col(column) /= cv::norm(derivatives.col(column));
    }
    cv::Mat step;
    cv::solve(derivatives, misses, step, cv::DECOMP_SVD);
    const cv::Mat left = misses - derivatives * step;
    return 1 - left.dot(left) / misses.dot(misses);
}

// The rational terms of a narrow view follow the noise, and most minima of the squares are no lens. Where the other
// program's cost is lower than ours, it has not reached a minimum, or its minimum is none of a lens; and the cost of
// five coefficients is a bound for both.
TEST_P(OpencvComparison, ANarrowRationalLensIsNoWorseThanAMinimumThatIsALens) {
    cv::setNumThreads(1);
    constexpr double CORNER = 0.58;
    const SyntheticChannel channel("BrownConrady", LENSES[4], static_cast<unsigned>(40 + GetParam()));
    const auto points = rounded(SyntheticChannel::noisyInPicture(channel.measured(300), 0.3, 5));
    const ChannelValues start = channel.disturbed();
    const ChannelFit fit = plainFit(channel, start, points);
    ASSERT_TRUE(fit.isSolved);
    const Correspondences list = correspondencesOf(points);
    const double ours = costOf(list, fit.after);
    const Calibration theirs = calibrated(list, start);
    std::vector<double> coefficients;
    theirs.distortion.reshape(1, 1).copyTo(coefficients);
    EXPECT_TRUE(ours <= theirs.cost * (1 + WORSE) || foldsInPicture(coefficients, CORNER) ||
                gainOfAStep(list, theirs) > WORSE)
        << ours << ", " << theirs.cost << ", " << gainOfAStep(list, theirs);
    ASSERT_NE(fit.outcome, FitOutcome::UNUSABLE);
    EXPECT_FALSE(foldsInPicture(fit.after.lens->distortion, CORNER));
    ChannelValues five = start;
    five.lens->distortion.resize(5);
    EXPECT_LE(ours, calibrated(list, five).cost * (1 + WORSE));
}

/// The other program's fisheye in its own solver: its calibration takes points to be on a plane.
class FisheyeProblem : public cv::LMSolver::Callback {
public:
    explicit FisheyeProblem(const Correspondences& list) : m_list(list) {}

    /// Of fx, fy, cx, cy, four coefficients, turn and shift.
    bool compute(cv::InputArray parameters, cv::OutputArray errors, cv::OutputArray jacobian) const override {
        const cv::Mat p = parameters.getMat().reshape(1, 14);
        const auto at = [&p](int i) { return p.at<double>(i); };
        const cv::Mat camera = (cv::Mat_<double>(3, 3) << at(0), 0, at(2), 0, at(1), at(3), 0, 0, 1);
        std::vector<cv::Point2d> projected;
        cv::Mat all;
        cv::fisheye::projectPoints(m_list.world, projected, p.rowRange(8, 11), p.rowRange(11, 14), camera,
                                   p.rowRange(4, 8), 0, all);
        const auto rows = static_cast<int>(projected.size());
        cv::Mat misses(2 * rows, 1, CV_64F);
        for (int i = 0; i < rows; ++i) {
            const auto point = static_cast<std::size_t>(i);
            misses.at<double>(2 * i) = projected[point].x - m_list.pixels[point].x;
            misses.at<double>(2 * i + 1) = projected[point].y - m_list.pixels[point].y;
        }
        misses.copyTo(errors);
        if (jacobian.needed()) {
            all.colRange(0, 14).copyTo(jacobian);
        }
        return true;
    }

    [[nodiscard]] cv::Mat parametersOf(const ChannelValues& values) const {
        cv::Mat turn;
        cv::Mat shift;
        poseOf(values, turn, shift);
        const Veltrani::LensNumbers& lens = *values.lens;
        cv::Mat parameters = (cv::Mat_<double>(8, 1) << lens.fx, lens.fy, lens.cx, lens.cy, lens.distortion[0],
                              lens.distortion[1], lens.distortion[2], lens.distortion[3]);
        parameters.push_back(turn);
        parameters.push_back(shift);
        return parameters;
    }

    [[nodiscard]] double costOf(const cv::Mat& parameters) const {
        cv::Mat misses;
        compute(parameters, misses, cv::noArray());
        return misses.dot(misses);
    }

private:
    const Correspondences& m_list;
};

TEST_P(OpencvComparison, OurFisheyeIsNoWorse) {
    const SyntheticChannel channel("Fisheye", {0.03, -0.01, 4e-3, -1e-3}, static_cast<unsigned>(80 + GetParam()));
    const double pixels = GetParam() % 2 == 0 ? 0.3 : 2;
    const auto points = SyntheticChannel::noisyInPicture(channel.measured(300), pixels, 7);
    const ChannelValues start = channel.disturbed();
    const ChannelFit fit = plainFit(channel, start, points);
    ASSERT_TRUE(fit.isSolved);
    const Correspondences list = correspondencesOf(points);
    const auto problem = cv::makePtr<FisheyeProblem>(list);
    // From near the minimum, where its solver ends for certain.
    cv::Mat theirs = problem->parametersOf(channel.truth());
    const double before = problem->costOf(theirs);
    cv::LMSolver::create(problem, 500)->run(theirs);
    EXPECT_LT(problem->costOf(theirs), before);
    EXPECT_LE(problem->costOf(problem->parametersOf(fit.after)), problem->costOf(theirs) * (1 + WORSE));
}

TEST_P(OpencvComparison, OurPoseIsNoWorseThanOneOfALensThatIsKnown) {
    const auto index = static_cast<std::size_t>(GetParam());
    const SyntheticChannel channel("BrownConrady", LENSES[index % LENSES.size()],
                                   static_cast<unsigned>(60 + GetParam()));
    const auto points = SyntheticChannel::noisyInPicture(channel.measured(50), 1, 6);
    ChannelValues start = channel.disturbed();
    start.lens = channel.truth().lens;
    const ChannelFit fit = plainFit(channel, start, points, SolvedGroups{true, true, false, false, false});
    ASSERT_TRUE(fit.isSolved);
    const Correspondences list = correspondencesOf(points);
    cv::Mat turn;
    cv::Mat shift;
    const cv::Mat camera = cameraOf(*start.lens);
    const cv::Mat distortion(start.lens->distortion);
    ASSERT_TRUE(cv::solvePnP(list.world, list.pixels, camera, distortion, turn, shift));
    cv::solvePnPRefineLM(list.world, list.pixels, camera, distortion, turn, shift,
                         {cv::TermCriteria::COUNT | cv::TermCriteria::EPS, 200, 1e-14});
    EXPECT_LE(costOf(list, fit.after), costOf(list, turn, shift, camera, distortion) * (1 + WORSE));
}

INSTANTIATE_TEST_SUITE_P(TenSetUps, OpencvComparison, testing::Range(0, 10));

}  // namespace
