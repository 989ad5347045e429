#pragma once

#include "DisplayFit/ChannelValues.h"
#include "DisplayFit/detail/PictureModel.h"

#include <cstddef>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// What the display's own model of a lens makes of values that were found: it maps nothing where the lens folds,
/// however near to its points a formula comes there.
struct LensCheck {
    std::size_t unmapped = 0;     ///< points that took part and that the lens does not map
    bool foldsInPicture = false;  ///< a place of the picture has no ray, or one that leads back to another place
    /// The fold lies no further from the axis than the points reach. Only a fisheye may have a picture that is larger
    /// than what it shows.
    bool foldsAmongPoints = false;
    /// A quotient changes so much close to the axis that it has left what it is there before it reaches any point: the
    /// points show a lens of another focal length, and which one the numbers state is chance.
    bool isOpenOnAxis = false;

    /// True where the lens shows all points that took part, and, if its distortion was solved, all that its picture
    /// needs.
    [[nodiscard]] bool isUsable(const PictureModel& model) const;

    /// Checks the base of a model; values without a calibrated lens have no fault.
    /// @param given what is held, with the lens
    /// @param isLeftOut points that took no part
    [[nodiscard]] static LensCheck of(const PictureModel& model, const DisplayFit::ChannelValues& given,
                                      const std::vector<bool>& isLeftOut);
};

}  // namespace Veltrani::DisplayFitDetail
