#include "DisplayFit/detail/PointFaults.h"

#include "Common/Finite.h"
#include "Common/VeltraniException.h"

#include <Eigen/Eigenvalues>

#include <algorithm>
#include <cmath>
#include <string>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::MeasuredPoint;

/// No length, and no place in a picture, is larger: their squares must not leave the range of a double.
constexpr double LARGEST = 1e12;

constexpr std::size_t POINTS_OF_A_PULSE = 1024;

/// What rounding may take from a covariance, as a part of it.
constexpr double ROUNDING = 1e-9;

[[noreturn]] void refusePoint(const MeasuredPoint& point, std::size_t index, const std::wstring& fault) {
    const std::wstring name =
        point.row > 0 ? L"line " + std::to_wstring(point.row) : L"point " + std::to_wstring(index);
    throw VeltraniException(__FILE__, __LINE__, L"Fit: " + name + L": " + fault);
}

template <std::size_t N>
bool isInRange(const Point<double, N>& point) {
    for (std::size_t i = 0; i < N; ++i) {
        if (!(std::abs(point[i]) <= LARGEST)) {
            return false;
        }
    }
    return true;
}

/// The least and the largest eigenvalue of a covariance; an empty text where it is one.
std::wstring faultOfCovariance(const Matrix<double, 3>& covariance, double& least, double& most) {
    Eigen::Matrix3d m;
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            m(static_cast<Eigen::Index>(r), static_cast<Eigen::Index>(c)) = covariance(r, c);
        }
    }
    if (!m.allFinite() || m.cwiseAbs().maxCoeff() > LARGEST) {
        return L"a covariance that is not finite";
    }
    if ((m - m.transpose()).cwiseAbs().maxCoeff() > ROUNDING * m.cwiseAbs().maxCoeff()) {
        return L"a covariance that is not symmetric";
    }
    const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> solver(m, Eigen::EigenvaluesOnly);
    least = solver.eigenvalues().minCoeff();
    most = solver.eigenvalues().maxCoeff();
    return least < -ROUNDING * std::abs(most) ? L"a covariance with a variance below zero" : L"";
}

void requireDeviations(const MeasuredPoint& point, std::size_t index) {
    double least = 0;
    double most = 0;
    if (point.covariance) {
        const std::wstring fault = faultOfCovariance(*point.covariance, least, most);
        if (!fault.empty()) {
            refusePoint(point, index, fault);
        }
    }
    double ofPicture = 0;
    if (point.pictureDeviation) {
        const Point<double, 2>& stated = *point.pictureDeviation;
        if (!isInRange(stated) || stated[0] < 0 || stated[1] < 0) {
            refusePoint(point, index, L"a deviation in the picture that is not finite and zero or above");
        }
        ofPicture = std::min(stated[0], stated[1]);
    }
    if ((point.covariance || point.pictureDeviation) && !(least > 0) && !(ofPicture > 0)) {
        refusePoint(point, index, L"deviations of zero: a point that is exact would outweigh all others");
    }
}

}  // namespace

void requireSound(std::span<const MeasuredPoint> points, std::size_t channels, const std::function<void()>& pulse) {
    for (std::size_t i = 0; i < points.size(); ++i) {
        if (pulse && i % POINTS_OF_A_PULSE == 0) {
            pulse();
        }
        const MeasuredPoint& point = points[i];
        if (point.channel >= channels) {
            refusePoint(point, i,
                        L"channel " + std::to_wstring(point.channel) + L" of " + std::to_wstring(channels) +
                            L", counted from 0");
        }
        if (!isInRange(point.picture) || !isInRange(point.world)) {
            refusePoint(point, i, L"a coordinate that is not a number of at most 1e12 in size");
        }
        if (point.covariance.has_value() != points.front().covariance.has_value() ||
            point.pictureDeviation.has_value() != points.front().pictureDeviation.has_value()) {
            refusePoint(point, i, L"deviations are stated by some points only: state them for all, or for none");
        }
        requireDeviations(point, i);
    }
}

}  // namespace Veltrani::DisplayFitDetail
