#pragma once

#include "Common/Point.h"
#include "KelvoControl/Viewport.h"

#include <string>

/// How a projector's lens places picture points in space: from a point of the picture to the ray that leaves the
/// projector there, and from a point in space back into the picture.
///
/// Picture points are normalised (u, v), (0, 0) the bottom left corner and (1, 1) the top right one, or pixels: the
/// same times the size of the viewport's picture. Directions are in world axes, from the viewport's position, of any
/// length above zero. Layout points are positions in the world frame.
///
/// No operation clips at the edges of the picture. Each returns false and leaves its result as it was where the lens
/// sends no light: behind it, or beyond the angle where its model folds back; the same holds for any coordinate that is
/// NaN. Models are immutable once made, and `Blend::createProjectionModel` makes them.
class ProjectionModel {
public:
    virtual ~ProjectionModel();

    [[nodiscard]] virtual const Viewport& viewport() const = 0;

    /// The direction of the ray of a normalised picture point.
    virtual bool unproject(const Point<double, 2>& normalised, Point<double, 3>& direction) const = 0;

    /// As `unproject`, from a position in pixels.
    virtual bool unprojectPixel(const Point<double, 2>& pixel, Point<double, 3>& direction) const = 0;

    /// The pixel position of a layout point, rounded to the nearest whole pixel, halves upwards: floor(x + 0.5). It may
    /// lie outside the picture; false as well when it does not fit an `int`.
    virtual bool project(const Point<double, 3>& layoutPoint, Point<int, 2>& pixel) const = 0;

    /// The two texts that the model was made from, as they were given.
    [[nodiscard]] virtual std::wstring firstName() const = 0;
    [[nodiscard]] virtual std::wstring secondName() const = 0;

    /// The normalised picture point of a layout point. By default what `project` returns, divided by the size of the
    /// picture; models with a more exact result are not bound to whole pixels.
    virtual bool projectNormalised(const Point<double, 3>& layoutPoint, Point<double, 2>& normalised) const;

    /// The size in pixels of the picture that the lens was calibrated with; zero for a model that no calibration made.
    [[nodiscard]] virtual Point<int, 2> calibratedSize() const { return {}; }

protected:
    ProjectionModel() = default;
    ProjectionModel(const ProjectionModel&) = default;
    ProjectionModel& operator=(const ProjectionModel&) = default;
};
