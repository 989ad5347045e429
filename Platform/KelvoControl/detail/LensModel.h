#pragma once

#include "Common/Matrix.h"
#include "KelvoControl/ProjectionModel.h"

#include <string>

namespace Veltrani::KelvoControlDetail {

/// The meaning of the two texts that a projection model is made from.
struct LensName {
    std::wstring kind;
    std::wstring file;  ///< empty without one

    /// @param first the kind, or "kind:file" while `second` is empty; the file begins behind the first colon
    /// @param second the file
    [[nodiscard]] static LensName of(const std::wstring& first, const std::wstring& second);
};

/// What all projection models share: the viewport, the names, and the way from the projector's own frame (+x right,
/// +y forward, +z up) to the world frame. A kind of lens adds the two operations at the end.
class LensModel : public ProjectionModel {
public:
    /// @param name,file the two texts that the model is made from, kept as they are
    ///
    /// Throws `VeltraniException` when position or orientation is not finite or the picture has no pixels.
    LensModel(const Viewport& viewport, std::wstring name, std::wstring file);

    [[nodiscard]] const Viewport& viewport() const override { return m_viewport; }
    bool unproject(const Point<double, 2>& normalised, Point<double, 3>& direction) const override;
    bool unprojectPixel(const Point<double, 2>& pixel, Point<double, 3>& direction) const override;
    bool project(const Point<double, 3>& layoutPoint, Point<int, 2>& pixel) const override;
    [[nodiscard]] std::wstring firstName() const override { return m_name; }
    [[nodiscard]] std::wstring secondName() const override { return m_file; }
    bool projectNormalised(const Point<double, 3>& layoutPoint, Point<double, 2>& normalised) const override;

protected:
    /// The direction, in the projector's frame and of any length above zero, of a normalised picture point; false, with
    /// `ray` untouched, when the lens has none.
    virtual bool rayOf(const Point<double, 2>& normalised, Point<double, 3>& ray) const = 0;

    /// The counterpart: the normalised picture point of a direction in the projector's frame, of any length.
    virtual bool pictureOf(const Point<double, 3>& ray, Point<double, 2>& normalised) const = 0;

private:
    Viewport m_viewport;
    std::wstring m_name;
    std::wstring m_file;
    Matrix<double, 3> m_world_from_projector;
    Matrix<double, 3> m_projector_from_world;
};

/// Throws `VeltraniException` when the viewport's extents are not finite or span nothing: for the lenses that use them.
void requireExtents(const Viewport& viewport, const std::wstring& name);

}  // namespace Veltrani::KelvoControlDetail
