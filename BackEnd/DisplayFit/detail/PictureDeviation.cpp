#include "DisplayFit/detail/PictureDeviation.h"

#include <Eigen/Eigenvalues>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <limits>

namespace Veltrani::DisplayFitDetail {

namespace {

/// Places along each side of the picture.
constexpr int PLACES = 5;

/// What is shown may lie so much nearer or farther than what was measured.
constexpr double BEYOND = 0.1;

struct Distance {
    double length;
    const char* words;
};

std::string nameOf(const Point<double, 2>& place) {
    const auto side = [](double part, const char* low, const char* high) {
        return part == 0 ? std::string(low) : part == 1 ? std::string(high) : std::string();
    };
    const std::string across = side(place[0], "left", "right");
    const std::string up = side(place[1], "bottom", "top");
    if (!across.empty() && !up.empty()) {
        return "at its " + up + " " + across + " corner";
    }
    return across.empty() && up.empty() ? "within it" : "at its " + up + across + " edge";
}

std::array<Distance, 4> distancesOf(const ChannelModel& model, const std::vector<bool>& isLeftOut) {
    double nearest = std::numeric_limits<double>::infinity();
    double farthest = 0;
    for (std::size_t i = 0; i < isLeftOut.size(); ++i) {
        if (!isLeftOut[i]) {
            nearest = std::min(nearest, model.distanceOf(i));
            farthest = std::max(farthest, model.distanceOf(i));
        }
    }
    return {Distance{nearest, ""}, Distance{farthest, ""},
            Distance{nearest * (1 - BEYOND), ", of what is a tenth nearer than the points"},
            Distance{farthest * (1 + BEYOND), ", of what is a tenth farther away than the points"}};
}

}  // namespace

PictureDeviation PictureDeviation::of(const ChannelModel& model, const std::vector<double>& covariance,
                                      const std::vector<bool>& isLeftOut) {
    using Rows = Eigen::Matrix<double, 2, Eigen::Dynamic, Eigen::RowMajor>;
    PictureDeviation worst;
    const auto count = static_cast<Eigen::Index>(model.unknowns().size());
    if (covariance.size() != model.unknowns().size() * model.unknowns().size()) {
        return worst;
    }
    const Eigen::Map<const Eigen::MatrixXd> spread(covariance.data(), count, count);
    Rows rows(2, count);
    for (const auto& [length, words] : distancesOf(model, isLeftOut)) {
        for (int i = 0; i < PLACES * PLACES; ++i) {
            const int column = i % PLACES;
            const int row = i / PLACES;
            const Point<double, 2> place{static_cast<double>(column) / (PLACES - 1),
                                         static_cast<double>(row) / (PLACES - 1)};
            if (!model.rowsAt(place, length, rows.data())) {
                continue;
            }
            const Eigen::SelfAdjointEigenSolver<Eigen::Matrix2d> axes(rows * spread * rows.transpose());
            const double pixels = std::sqrt(std::max(axes.eigenvalues()[1], 0.0));
            // Another distance is named where it matters alone.
            if (pixels > worst.pixels * (*words != '\0' ? 1 + BEYOND : 1)) {
                const Eigen::VectorXd along = rows.transpose() * axes.eigenvectors().col(1);
                worst = {pixels, {along.begin(), along.end()}, nameOf(place) + words};
            }
        }
    }
    return worst;
}

}  // namespace Veltrani::DisplayFitDetail
