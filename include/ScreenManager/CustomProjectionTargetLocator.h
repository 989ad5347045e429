#pragma once

#include "ScreenManager/TargetLocator.h"

#include <memory>

class ProjectionModel;

#pragma GCC diagnostic push
// No virtual destructor in this family: see TargetLocatorParams.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// The projection model of a projector, shared with the code that made it.
struct CustomProjectionTargetLocatorParams : TargetLocatorParams {
    std::shared_ptr<ProjectionModel> projectionModel;  ///< empty at first

protected:
    /// Compares what the models report about themselves, not their identity: extents, points and pixel size of their
    /// viewports, then both names. A record without a model equals only another one without a model.
    [[nodiscard]] bool equals(const TargetLocatorParams& other) const override;
};

#pragma GCC diagnostic pop

/// The outline of a channel whose projector has a projection model of its own: rays from the position of the projector
/// through the edges of its picture. Grids of targets are not offered.
class CustomProjectionTargetLocator : public TargetLocator {
public:
    /// Shares the model.
    explicit CustomProjectionTargetLocator(const CustomProjectionTargetLocatorParams& params);
    CustomProjectionTargetLocator& operator=(const CustomProjectionTargetLocator&) = default;

    /// Always throws `VeltraniException` "Method Not Implemented"; `grid` stays as it is.
    void projectOnTargetLocationSurface(double uMin, double uMax, double vMin, double vMax, int columns, int rows,
                                        std::map<Point<int, 2>, Point<double, 3>>& grid) const override;

    [[nodiscard]] const TargetLocatorParams& getTargetLocatorParams() const override;

    /// Walks the edges v = 0, u = 1, v = 1 (backwards) and u = 0 (backwards) in steps of 1 / `samplesPerEdge` that are
    /// added up, so that rounding may give an edge one sample more. The screen makes the outline of the rays, one
    /// through the centre of the picture beside them (`ScreenGeometry::intersectChannelBoundary`). A sample that the
    /// model refuses is a ray of length zero. Empty without a screen, without a model and without samples.
    std::vector<Point<double, 3>> projectBoundaryOnTargetLocationSurface(int samplesPerEdge) const override;

private:
    /// A locator is shared, not copied.
    CustomProjectionTargetLocator(const CustomProjectionTargetLocator&) = default;

    CustomProjectionTargetLocatorParams m_params;
};
