#pragma once

#include "DisplayReport/coverage/RayLight.h"

class ProjectionModel;

namespace Veltrani::DisplayReport {

/// The light of a projector with a projection model: rays from its position through its lens.
class LensLight : public RayLight {
public:
    /// Without a model nothing is lit.
    LensLight(std::shared_ptr<const ProjectionModel> model, std::shared_ptr<const ScreenGeometry> surface);

protected:
    bool rayOf(const Point<double, 2>& picture, Point<double, 3>& direction) const override;
    bool pictureOf(const Point<double, 3>& place, Point<double, 2>& picture) const override;

private:
    std::shared_ptr<const ProjectionModel> m_model;
};

}  // namespace Veltrani::DisplayReport
