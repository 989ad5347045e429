#include "ScreenManager/CustomProjectionTargetLocator.h"

#include "Common/VeltraniException.h"
#include "KelvoControl/ProjectionModel.h"
#include "KelvoScreen/ScreenGeometry.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/detail/OutlinePlaces.h"

#include <string>

namespace {

/// The line that the fault of a grid has always carried; programs that read the logs find it by this number, wherever
/// the statement is now.
constexpr int GRID_FAULT_LINE = 33;

bool sameViewport(const Viewport& a, const Viewport& b) {
    return a.sy == b.sy && a.sx == b.sx && a.ox == b.ox && a.oy == b.oy && a.position == b.position &&
           a.orientation == b.orientation && a.width == b.width && a.height == b.height;
}

/// Calls `a` first, whatever order the compiler gives to operands.
bool sameText(const ProjectionModel& a, const ProjectionModel& b, std::wstring (ProjectionModel::*text)() const) {
    const std::wstring first = (a.*text)();
    return first == (b.*text)();
}

/// The rays of a model through points of its picture.
class RayBuilder {
public:
    explicit RayBuilder(const ProjectionModel& model) : m_model(model), m_origin(model.viewport().position) {}

    [[nodiscard]] Ray through(const Point<double, 2>& normalised) const {
        Point<double, 3> direction;
        // The result is not evaluated: a sample that is refused keeps its place as a ray of length zero, which the
        // screen handles.
        m_model.unproject(normalised, direction);
        return {m_origin, m_origin + direction};
    }

private:
    const ProjectionModel& m_model;
    Point<double, 3> m_origin;
};

std::vector<Ray> boundaryRays(const RayBuilder& rays, int samplesPerEdge) {
    std::vector<Ray> boundary;
    for (const Point<double, 2>& place : Veltrani::ScreenManagerDetail::borderOfPicture(samplesPerEdge)) {
        boundary.push_back(rays.through(place));
    }
    return boundary;
}

}  // namespace

bool CustomProjectionTargetLocatorParams::equals(const TargetLocatorParams& other) const {
    const auto& record = static_cast<const CustomProjectionTargetLocatorParams&>(other);
    if (!projectionModel || !record.projectionModel) {
        return !projectionModel && !record.projectionModel;
    }
    const ProjectionModel& model = *projectionModel;
    const ProjectionModel& otherModel = *record.projectionModel;
    const Viewport& viewport = model.viewport();
    return sameViewport(viewport, otherModel.viewport()) && sameText(model, otherModel, &ProjectionModel::firstName) &&
           sameText(model, otherModel, &ProjectionModel::secondName);
}

CustomProjectionTargetLocator::CustomProjectionTargetLocator(const CustomProjectionTargetLocatorParams& params)
    : m_params(params) {}

void CustomProjectionTargetLocator::projectOnTargetLocationSurface(
    double /*uMin*/, double /*uMax*/, double /*vMin*/, double /*vMax*/, int /*columns*/, int /*rows*/,
    std::map<Point<int, 2>, Point<double, 3>>& /*grid*/) const {
    throw VeltraniException(__FILE__, GRID_FAULT_LINE, L"Method Not Implemented");
}

const TargetLocatorParams& CustomProjectionTargetLocator::getTargetLocatorParams() const {
    return m_params;
}

std::vector<Point<double, 3>> CustomProjectionTargetLocator::projectBoundaryOnTargetLocationSurface(
    int samplesPerEdge) const {
    if (!m_params.projectionModel || samplesPerEdge <= 0) {
        return {};
    }
    const RayBuilder rays(*m_params.projectionModel);
    const std::vector<Ray> boundary = boundaryRays(rays, samplesPerEdge);
    const std::vector<Ray> centre{rays.through({0.5, 0.5})};
    const std::shared_ptr<ScreenGeometry> screen = ScreenManager::getInstance()->getScreenGeometry();
    return screen ? screen->intersectChannelBoundary(boundary, centre) : std::vector<Point<double, 3>>();
}
