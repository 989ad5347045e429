#include "KelvoControl/Blend.h"

#include "Common/VeltraniException.h"

#include <utility>

Blend::Blend(const Frustum& extents, std::shared_ptr<ProjectionModel> model)
    : m_extents(extents), m_model(std::move(model)) {}

Blend::~Blend() = default;

const Frustum& Blend::getSphericalBlendExtents() const {
    return m_extents;
}

std::shared_ptr<ProjectionModel> Blend::getProjectionModel() const {
    return m_model;
}

std::shared_ptr<ProjectionModel> Blend::createProjectionModel(Viewport /*viewport*/, std::wstring name,
                                                              std::wstring /*file*/) {
    throw VeltraniException(__FILE__, __LINE__, L"Unknown projection model \"" + name + L"\"");
}
