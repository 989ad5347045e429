#pragma once

#include "DisplayFit/FitOptions.h"
#include "DisplayFit/detail/ChannelModel.h"
#include "DisplayFit/detail/LensFormula.h"
#include "DisplayFit/detail/PictureView.h"

#include <algorithm>
#include <array>
#include <optional>

namespace Veltrani::DisplayFitDetail {

/// Residuals in the picture, pixels: where the picture shows the measured point, minus the stated place. The analytic
/// derivatives are those of the whole way from the unknowns to the picture. Once settled, the picture is linear between
/// the settled place of a point and the measured one.
class PictureModel : public ChannelModel {
public:
    struct Held {
        DisplayFit::SolvedGroups solved;
        bool squarePixels = false;
        bool horizontalShift = false;
    };

    /// @param points must outlive the model
    PictureModel(const FitPoints& points, const PictureView& view, const Held& held);

    [[nodiscard]] const std::vector<Unknown>& unknowns() const override { return m_unknowns; }
    [[nodiscard]] const FitPoints& points() const override { return m_points; }
    void evaluate(const double* step, std::size_t first, std::size_t count, double* residuals, double* jacobian,
                  bool* isMapped) const override;
    bool spreadOf(std::size_t point, Spread& spread) const override;
    void move(const double* step) override;
    void settle() override;
    void write(const double* step, DisplayFit::ChannelValues& values) const override;
    bool missInPicture(std::size_t point, Point<double, 2>& pixels) const override;
    bool missOnScreen(std::size_t point, Point<double, 3>& lengths) const override;
    bool landing(std::size_t point, Point<double, 3>& place) const override;
    bool rowsAt(const Point<double, 2>& picture, double distance, double* rows) const override;
    [[nodiscard]] double distanceOf(std::size_t point) const override;
    [[nodiscard]] double extent() const override { return std::max(m_view.pixels[0], m_view.pixels[1]); }
    [[nodiscard]] Point<int, 2> isReversed() const override;

    [[nodiscard]] const PictureView& view() const { return m_view; }
    /// Makes other values the base.
    void setView(const PictureView& view);
    [[nodiscard]] const Held& held() const { return m_held; }

private:
    /// Where the derivatives of each number stand in a row; -1 for one that is held.
    enum Slot { TURN = 0, SHIFT = 3, WIDTH = 6, HEIGHT, AXIS_U, AXIS_V, COEFFICIENTS, SLOTS = 18 };

    void listUnknowns();
    void add(int slot, Unknown unknown);
    struct Moved;
    /// One row of derivatives.
    void fillRow(const Moved& moved, const Point<double, 3>& ray, const LensFormula::Place& place, bool isU,
                 double* row) const;
    /// Where pixels are square: what the height grows by when the width does.
    [[nodiscard]] double heightOfStep(double wider) const;
    [[nodiscard]] PictureView viewAt(const double* step) const;
    [[nodiscard]] double stepOf(const double* step, int slot) const;
    /// The gradients of the residuals by the measured point.
    bool gradients(const Point<double, 3>& world, Point<double, 2>& picture,
                   std::array<Point<double, 3>, 2>& byWorld) const;

    const FitPoints& m_points;
    PictureView m_view;
    Held m_held;
    Point<double, 2> m_givenFactor;
    std::vector<Unknown> m_unknowns;
    std::array<int, SLOTS> m_column{};
    std::vector<Point<double, 3>> m_places;         ///< measured, or settled
    std::vector<Point<double, 2>> m_offsets;        ///< from the residuals of these to those of the measured ones
    std::vector<Point<double, 3>> m_fromProjector;  ///< the places in the projector's frame at the base
};

}  // namespace Veltrani::DisplayFitDetail
