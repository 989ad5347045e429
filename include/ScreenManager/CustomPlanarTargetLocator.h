#pragma once

#include "KelvoControl/CustomPlanarScreenToChannelMap.h"
#include "ScreenManager/TargetLocator.h"

#include <string>

#pragma GCC diagnostic push
// No virtual destructor in this family: see TargetLocatorParams.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"

/// The pixel space of a channel and the file that maps it to the screen. Nothing is checked before a locator is built.
struct CustomPlanarTargetLocatorParams : TargetLocatorParams {
    /// One pixel, no file.
    CustomPlanarTargetLocatorParams() = default;
    CustomPlanarTargetLocatorParams(const Point<int, 2>& pixels, const std::wstring& mapFile);

    Point<int, 2> resolution{1, 1};  ///< width and height in pixels
    std::wstring filename;           ///< the custom planar map, resolved

protected:
    /// File names are compared exactly, case included.
    [[nodiscard]] bool equals(const TargetLocatorParams& other) const override;
};

#pragma GCC diagnostic pop

/// Targets of a channel whose pixels a file maps to the screen's 2D parameters: a point of the channel's picture is
/// scaled to pixels, carried through the map, and lifted onto the screen.
///
/// Reads the file once, when it is built. Points that the map or the screen refuses are left out without a message.
class CustomPlanarTargetLocator : public TargetLocator {
public:
    /// Reads the map. Throws `VeltraniParseException` for a record without a file name or with a resolution below 1, in
    /// this order, and what the map throws for a file that is missing or bad.
    explicit CustomPlanarTargetLocator(const CustomPlanarTargetLocatorParams& params);

    /// Samples from (uMin, vMin) on, in equal steps up to (uMax, vMax), v from 0 at the bottom edge of the picture to 1
    /// at its top edge as the map file has it; a single column or row stays at uMin or vMin. Points that `grid` already
    /// holds under a key are replaced. Without a screen `grid` stays as it is; exceptions of the screen, such as the
    /// `VeltraniException` of one without 2D parameters, pass through.
    void projectOnTargetLocationSurface(double uMin, double uMax, double vMin, double vMax, int columns, int rows,
                                        std::map<Point<int, 2>, Point<double, 3>>& grid) const override;

    [[nodiscard]] const TargetLocatorParams& getTargetLocatorParams() const override;

    /// Returns the border of the pixel space from (0, 0) along y = 0, back along the last row, down to (0, 0), in steps
    /// of whole pixels: width and height divided by `samplesPerEdge` - 1, remainder dropped. Corners may come twice.
    /// The screen is continued past its edges. Empty without a screen, for fewer than two samples, and for more of them
    /// than the pixel space has steps.
    std::vector<Point<double, 3>> projectBoundaryOnTargetLocationSurface(int samplesPerEdge) const override;

    [[nodiscard]] Point<int, 2> getResolution() const { return m_params.resolution; }
    [[nodiscard]] const CustomPlanarScreenToChannelMap& getTransform() const { return m_transform; }

private:
    CustomPlanarScreenToChannelMap m_transform;
    CustomPlanarTargetLocatorParams m_params;
};
