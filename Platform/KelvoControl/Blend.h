#pragma once

#include "KelvoControl/Frustum.h"
#include "KelvoControl/ProjectionModel.h"

#include <memory>
#include <string>

/// What the channel maps know of one projector: the frustum of its picture and, when its lens is described, the
/// projection model. Immutable.
class Blend {
public:
    /// @param model may be empty: a projector of which only the frustum is known
    explicit Blend(const Frustum& extents, std::shared_ptr<ProjectionModel> model = nullptr);
    virtual ~Blend();
    Blend(const Blend&) = default;
    Blend& operator=(const Blend&) = default;

    [[nodiscard]] virtual const Frustum& getSphericalBlendExtents() const;
    /// Returns the model, shared by all callers; empty when there is none.
    [[nodiscard]] virtual std::shared_ptr<ProjectionModel> getProjectionModel() const;

    /// Makes a projection model by the name of its kind:
    ///
    /// | Name           | File                    | Picture point (u, v)                                              |
    /// |----------------|-------------------------|-------------------------------------------------------------------|
    /// | `Rectilinear`  | none                    | on the plane of the viewport                                      |
    /// | `Equidistant`  | none                    | equal steps of yaw and pitch between the viewport's edges         |
    /// | `BrownConrady` | OpenCV calibration file | across the calibration picture; the viewport's extents are unused |
    /// | `Fisheye`      | OpenCV calibration file | across the calibration picture; the viewport's extents are unused |
    ///
    /// @param name the kind, or "kind:file" while `file` is empty; the file begins behind the first colon
    /// @param file path of the lens description
    ///
    /// Throws `VeltraniException` for an unknown kind, a missing or needless file name and a viewport that is not
    /// finite or has no extent, `VeltraniMissingFileException` and `VeltraniParseException` for the file.
    [[nodiscard]] static std::shared_ptr<ProjectionModel> createProjectionModel(Viewport viewport, std::wstring name,
                                                                                std::wstring file);

private:
    Frustum m_extents;
    std::shared_ptr<ProjectionModel> m_model;
};
