#pragma once

#include "DisplayFit/detail/ChannelModel.h"

#include <string>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// How far a picture that was fitted may be from where it belongs: the standard deviation of its places that follows
/// from those of its values, at the place where it is largest.
struct PictureDeviation {
    double pixels = 0;
    std::vector<double> slopes;  ///< derivatives by the unknowns there, along the direction that deviates most
    std::string words;           ///< "at its top right corner, where points are a tenth nearer", UTF-8

    /// Looks all over the picture, at the distances of the measured points and a tenth nearer and farther.
    /// @param covariance of the unknowns, row by row
    /// @param isLeftOut points whose distances do not count
    [[nodiscard]] static PictureDeviation of(const ChannelModel& model, const std::vector<double>& covariance,
                                             const std::vector<bool>& isLeftOut);

    /// What a display may be off without anybody seeing it, as a part of the larger side of its picture.
    static constexpr double VISIBLE = 1e-3;
};

}  // namespace Veltrani::DisplayFitDetail
