#pragma once

#include "DisplayFit/detail/ChannelModel.h"
#include "DisplayFit/detail/SurfacePlace.h"

#include <array>
#include <optional>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// A channel that has a rectangle of the screen's 2D parameters. Residuals on the screen, native units: where the
/// stated place lies, minus the place nearest to the measured point, along the surface there. So a point at a pole,
/// where one parameter has no meaning, states nothing about it.
class AreaModel : public ChannelModel {
public:
    /// Reads the current screen of the `ScreenManager`, which must have 2D parameters, and the nearest place of it for
    /// each point.
    /// @param points must outlive the model
    AreaModel(const FitPoints& points, const DisplayFit::AreaBounds& area, const Point<int, 2>& pixels);

    [[nodiscard]] const std::vector<Unknown>& unknowns() const override { return m_unknowns; }
    [[nodiscard]] const FitPoints& points() const override { return m_points; }
    void evaluate(const double* step, std::size_t first, std::size_t count, double* residuals, double* jacobian,
                  bool* isMapped) const override;
    bool spreadOf(std::size_t point, Spread& spread) const override;
    void move(const double* step) override;
    void write(const double* step, DisplayFit::ChannelValues& values) const override;
    bool missInPicture(std::size_t point, Point<double, 2>& pixels) const override;
    bool missOnScreen(std::size_t point, Point<double, 3>& lengths) const override;
    bool landing(std::size_t point, Point<double, 3>& place) const override;
    bool rowsAt(const Point<double, 2>& picture, double distance, double* rows) const override;
    [[nodiscard]] double extent() const override { return m_extent; }
    [[nodiscard]] Point<int, 2> isReversed() const override;

    /// Start and end of the area along s, then along t.
    using Bounds = std::array<double, 4>;

private:
    /// The surface around the place of a point: unit vectors along it, and how the parameters move along these.
    struct Patch {
        Point<double, 2> parameters;
        Point<double, 3> point;
        Point<double, 3> first;
        Point<double, 3> second;
        double ss = 0;  ///< along `first`, by s
        double st = 0;  ///< along `first`, by t
        double tt = 0;  ///< along `second`, by t
        bool isAtPole = false;
    };
    /// What a point deviates along the directions of its patch, and how these move by s and t.
    struct Deviation {
        Point<double, 2> size;
        Point<double, 2> byS;
        Point<double, 2> byT;
    };

    [[nodiscard]] static Patch patchOf(const SurfacePlace& place);
    void findPoles();
    [[nodiscard]] static Deviation deviationAt(const Point<double, 2>& parameters, const Patch& patch,
                                               const ScreenGeometry* screen);
    [[nodiscard]] Bounds boundsAt(const double* step) const;

    const FitPoints& m_points;
    Bounds m_bounds;
    Bounds m_given;
    Point<double, 2> m_pixels;
    std::vector<Unknown> m_unknowns;
    std::vector<std::optional<Patch>> m_patches;
    double m_extent = 0;  ///< of the points, native units
};

}  // namespace Veltrani::DisplayFitDetail
