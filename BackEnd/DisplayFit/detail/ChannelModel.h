#pragma once

#include "DisplayFit/ChannelValues.h"
#include "DisplayFit/FitResult.h"
#include "DisplayFit/detail/FitPoints.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// What a number that is solved stands for.
struct Unknown {
    enum class Role { TILT, ROLL, HEADING, ACROSS, ALONG, UPWARDS, WIDTH, HEIGHT, SHIFT_U, SHIFT_V, LENS, AREA };

    Role role = Role::AREA;
    std::string words;  ///< "position along the axis", UTF-8
    DisplayFit::FittedValue::Quantity quantity = DisplayFit::FittedValue::Quantity::NUMBER;
};

/// How the points of a channel follow from its values. The unknowns are steps from values that the model keeps, its
/// base; a rotation is a vector about the axes of the projector, so that no direction is special.
class ChannelModel {
public:
    ChannelModel() = default;
    ChannelModel(const ChannelModel&) = delete;
    ChannelModel& operator=(const ChannelModel&) = delete;
    virtual ~ChannelModel() = default;

    [[nodiscard]] virtual const std::vector<Unknown>& unknowns() const = 0;
    [[nodiscard]] virtual const FitPoints& points() const = 0;

    /// Calculates two residuals for each of some points, and a row of derivatives by the unknowns for each of them
    /// unless `jacobian` is null. A point that the values do not lead to has zeros and false in `isMapped`.
    /// @param step from the base, one number for each unknown
    /// @param first the first one of the points, of which there are `count`
    /// @param isMapped one for each of these points
    virtual void evaluate(const double* step, std::size_t first, std::size_t count, double* residuals, double* jacobian,
                          bool* isMapped) const = 0;

    /// Returns how the stated deviations of a point spread its residuals, at the base. False where the point is not
    /// mapped.
    virtual bool spreadOf(std::size_t point, Spread& spread) const = 0;

    /// Makes a step the base.
    virtual void move(const double* step) = 0;

    /// Takes the derivatives, and the spreads, at the places where the points are by the base and their stated
    /// deviations, in place of where they were measured. The noise of a point would otherwise stand in its residual and
    /// in its derivatives at once, and shift what is solved. Here nothing: for models whose derivatives hardly depend
    /// on the measured place.
    virtual void settle() {}

    /// The values at the base and at a step from it; `values` has what is held already.
    virtual void write(const double* step, DisplayFit::ChannelValues& values) const = 0;

    /// Calculates, at the base, the place in the picture that leads to the measured point minus the stated one, in
    /// pixels; false where there is none.
    virtual bool missInPicture(std::size_t point, Point<double, 2>& pixels) const = 0;

    /// Calculates, at the base, the point of the screen that the stated place leads to, minus the measured point;
    /// native units. The screen is taken to be flat between them. False where there is none.
    virtual bool missOnScreen(std::size_t point, Point<double, 3>& lengths) const = 0;

    /// Calculates, at the base, where the stated place meets the current screen, wherever the measured point lies;
    /// false where it does not.
    virtual bool landing(std::size_t point, Point<double, 3>& place) const = 0;

    /// Calculates, at the base, how the place in the picture moves that shows what a place of the picture shows now, in
    /// pixels: two rows of derivatives by the unknowns. False where the place shows nothing.
    /// @param picture normalised
    /// @param distance from the projector to what is shown, native units; not used by models without one
    virtual bool rowsAt(const Point<double, 2>& picture, double distance, double* rows) const = 0;

    /// Returns how far a measured point is from the projector, at the base; 1 for models to which it does not matter.
    [[nodiscard]] virtual double distanceOf(std::size_t /*point*/) const { return 1; }

    /// Returns how large the picture is, or what the points cover, in units of the residuals.
    [[nodiscard]] virtual double extent() const = 0;
    /// Returns how large a residual is that counts as none, in units of the residuals: what rounding leaves.
    [[nodiscard]] double leastDeviation() const { return 1e-10 * extent(); }

    /// Returns true where a picture of the base is the mirror image of what it was made from: (left to right, bottom
    /// to top).
    [[nodiscard]] virtual Point<int, 2> isReversed() const = 0;
};

}  // namespace Veltrani::DisplayFitDetail
