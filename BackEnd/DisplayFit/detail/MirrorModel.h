#pragma once

#include "DisplayFit/detail/ChannelModel.h"
#include "DisplayFit/detail/PictureModel.h"
#include "DisplayFit/detail/ScreenPlane.h"
#include "ScreenManager/CollimatedTargetLocator.h"

#include <memory>
#include <optional>
#include <vector>

namespace Veltrani::DisplayFitDetail {

/// A channel whose rays are bent by heading tables and reflected in a mirror. Residuals on the screen, native
/// units: where the ray of the stated place meets the plane through the measured point and across the ray of the base,
/// minus the measured point. The way of the rays is that of the target locators; derivatives are differences.
class MirrorModel : public ChannelModel {
public:
    /// @param points must outlive the model
    /// @param camera the eye, the tables and the mirror; its frustum and orientation are not used
    MirrorModel(const FitPoints& points, const PictureView& view, const PictureModel::Held& held,
                const CollimatedTargetLocatorParams& camera);

    [[nodiscard]] const std::vector<Unknown>& unknowns() const override { return m_picture.unknowns(); }
    [[nodiscard]] const FitPoints& points() const override { return m_points; }
    void evaluate(const double* step, std::size_t first, std::size_t count, double* residuals, double* jacobian,
                  bool* isMapped) const override;
    bool spreadOf(std::size_t point, Spread& spread) const override;
    void move(const double* step) override;
    void write(const double* step, DisplayFit::ChannelValues& values) const override { m_picture.write(step, values); }
    bool missInPicture(std::size_t point, Point<double, 2>& pixels) const override;
    bool missOnScreen(std::size_t point, Point<double, 3>& lengths) const override;
    bool landing(std::size_t point, Point<double, 3>& place) const override;
    /// As of the picture before its rays are bent: what bends them depends on the ray alone.
    bool rowsAt(const Point<double, 2>& picture, double distance, double* rows) const override {
        return m_picture.rowsAt(picture, distance, rows);
    }
    [[nodiscard]] double extent() const override { return m_extent; }
    [[nodiscard]] Point<int, 2> isReversed() const override { return m_picture.isReversed(); }

private:
    [[nodiscard]] CollimatedTargetLocatorParams cameraAt(const double* step) const;
    /// The ray that reaches the screen from a place of the picture.
    static bool rayOf(const CollimatedTargetLocator& locator, const Point<double, 2>& picture, Ray& ray);
    bool missOf(const CollimatedTargetLocator& locator, std::size_t point, const Point<double, 2>& picture,
                Point<double, 2>& miss) const;
    /// Makes the locator of the base, and lays a plane across the ray of each point.
    void layPlanes();

    const FitPoints& m_points;
    PictureModel m_picture;  ///< turns steps into views; its residuals are not used
    CollimatedTargetLocatorParams m_camera;
    DisplayFit::ChannelValues m_values;  ///< the angles that views are written as
    std::unique_ptr<const CollimatedTargetLocator> m_base;
    std::vector<std::optional<ScreenPlane>> m_planes;
    double m_extent = 0;  ///< of the points, native units
};

}  // namespace Veltrani::DisplayFitDetail
