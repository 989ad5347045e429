#include "DisplayFit/detail/ResidualLists.h"

#include "DisplayFit/detail/Median.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::ChannelFit;
using DisplayFit::PointResidual;
using DisplayFit::ResidualSummary;

constexpr double NONE = std::numeric_limits<double>::quiet_NaN();

template <std::size_t N>
ResidualSummary summaryOf(const std::vector<PointResidual>& residuals, Point<double, N> PointResidual::*miss,
                          bool withOutliers) {
    ResidualSummary summary;
    std::vector<double> sizes;
    double squares = 0;
    for (const PointResidual& residual : residuals) {
        const double size = norm(residual.*miss);
        if (!withOutliers && residual.isOutlier) {
            continue;
        }
        if (!std::isfinite(size)) {
            ++summary.unmapped;
            continue;
        }
        sizes.push_back(size);
        squares += size * size;
    }
    if (sizes.empty()) {
        return summary;
    }
    std::sort(sizes.begin(), sizes.end());
    const std::size_t middle = sizes.size() / 2;
    summary.rms = std::sqrt(squares / static_cast<double>(sizes.size()));
    summary.median = sizes.size() % 2 == 1 ? sizes[middle] : (sizes[middle - 1] + sizes[middle]) / 2;
    summary.largest = sizes.back();
    return summary;
}

Point<double, 2> pixelsOf(const ChannelModel& model, std::size_t point) {
    Point<double, 2> pixels;
    return model.missInPicture(point, pixels) ? pixels : Point<double, 2>{NONE, NONE};
}

Point<double, 3> lengthsOf(const ChannelModel& model, std::size_t point) {
    Point<double, 3> lengths;
    return model.missOnScreen(point, lengths) ? lengths : Point<double, 3>{NONE, NONE, NONE};
}

/// As a part of the picture; those that are no number are infinite.
double medianShareOf(std::vector<double> sizes, const Point<double, 2>& pixels) {
    if (sizes.empty()) {
        return std::numeric_limits<double>::infinity();
    }
    for (double& size : sizes) {
        size = std::isfinite(size) ? size : std::numeric_limits<double>::infinity();
    }
    return medianOf(std::move(sizes)) / std::max(pixels[0], pixels[1]);
}

}  // namespace

void noteBefore(const ChannelModel& model, ChannelFit& fit) {
    fit.residuals.clear();
    for (std::size_t i = 0; i < model.points().size(); ++i) {
        model.points().pulseAt(i);
        PointResidual residual;
        residual.point = model.points().given[i];
        residual.pixelsBefore = residual.pixelsAfter = pixelsOf(model, i);
        residual.screenBefore = residual.screenAfter = lengthsOf(model, i);
        fit.residuals.push_back(residual);
    }
    fit.pixelsBefore = fit.pixelsAfter = summaryOf(fit.residuals, &PointResidual::pixelsBefore, true);
    fit.screenBefore = fit.screenAfter = summaryOf(fit.residuals, &PointResidual::screenBefore, true);
}

void noteAfter(const ChannelModel& model, ChannelFit& fit) {
    for (std::size_t i = 0; i < model.points().size(); ++i) {
        model.points().pulseAt(i);
        fit.residuals[i].pixelsAfter = pixelsOf(model, i);
        fit.residuals[i].screenAfter = lengthsOf(model, i);
    }
    fit.pixelsAfter = summaryOf(fit.residuals, &PointResidual::pixelsAfter, false);
    fit.screenAfter = summaryOf(fit.residuals, &PointResidual::screenAfter, false);
}

double medianMiss(const ChannelModel& model, const Point<double, 2>& pixels) {
    std::vector<double> sizes;
    for (std::size_t i = 0; i < model.points().size(); ++i) {
        model.points().pulseAt(i);
        sizes.push_back(norm(pixelsOf(model, i)));
    }
    return medianShareOf(std::move(sizes), pixels);
}

double medianMiss(const ChannelFit& fit, const Point<double, 2>& pixels) {
    std::vector<double> sizes;
    for (const PointResidual& residual : fit.residuals) {
        sizes.push_back(norm(residual.pixelsAfter));
    }
    return medianShareOf(std::move(sizes), pixels);
}

}  // namespace Veltrani::DisplayFitDetail
