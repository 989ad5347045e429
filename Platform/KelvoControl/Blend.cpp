#include "KelvoControl/Blend.h"

#include "Common/VeltraniException.h"
#include "KelvoControl/detail/LensKinds.h"
#include "KelvoControl/detail/LensModel.h"

#include <algorithm>
#include <utility>

namespace {

using Veltrani::KelvoControlDetail::LensKind;
using Veltrani::KelvoControlDetail::LensName;

const LensKind& kindNamed(const std::wstring& name) {
    const std::vector<LensKind>& kinds = Veltrani::KelvoControlDetail::lensKinds();
    const auto found =
        std::find_if(kinds.begin(), kinds.end(), [&](const LensKind& kind) { return kind.name == name; });
    if (found != kinds.end()) {
        return *found;
    }
    std::wstring names;
    for (const LensKind& kind : kinds) {
        names += (names.empty() ? L"" : L", ") + kind.name + (kind.needsFile ? L":file" : L"");
    }
    throw VeltraniException(__FILE__, __LINE__,
                            L"Unknown projection model \"" + name + L"\", expected one of: " + names);
}

}  // namespace

Blend::Blend(const Frustum& extents, std::shared_ptr<ProjectionModel> model)
    : m_extents(extents), m_model(std::move(model)) {}

Blend::~Blend() = default;

const Frustum& Blend::getSphericalBlendExtents() const {
    return m_extents;
}

std::shared_ptr<ProjectionModel> Blend::getProjectionModel() const {
    return m_model;
}

// Both texts by value, as the callers' interface has it.
// NOLINTBEGIN(performance-unnecessary-value-param)
std::shared_ptr<ProjectionModel> Blend::createProjectionModel(Viewport viewport, std::wstring name, std::wstring file) {
    const LensName given = LensName::of(name, file);
    const LensKind& kind = kindNamed(given.kind);
    if (kind.needsFile && given.file.empty()) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"Projection model " + given.kind + L" needs a calibration file: write \"" +
                                    given.kind + L":\" and its path");
    }
    if (!kind.needsFile && !given.file.empty()) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"Projection model " + given.kind + L" takes no file, found \"" + given.file + L"\"");
    }
    return kind.make(viewport, name, file);
}
// NOLINTEND(performance-unnecessary-value-param)
