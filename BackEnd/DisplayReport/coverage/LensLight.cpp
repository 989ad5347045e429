#include "DisplayReport/coverage/LensLight.h"

#include "KelvoControl/ProjectionModel.h"

#include <utility>

namespace Veltrani::DisplayReport {

LensLight::LensLight(std::shared_ptr<const ProjectionModel> model, std::shared_ptr<const ScreenGeometry> surface)
    : RayLight(model ? model->viewport().position : Point<double, 3>(), std::move(surface)),
      m_model(std::move(model)) {}

bool LensLight::rayOf(const Point<double, 2>& picture, Point<double, 3>& direction) const {
    return m_model && m_model->unproject(picture, direction);
}

bool LensLight::pictureOf(const Point<double, 3>& place, Point<double, 2>& picture) const {
    return m_model && m_model->projectNormalised(place, picture);
}

}  // namespace Veltrani::DisplayReport
