#include "KelvoControl/Blend.h"

#include "Common/VeltraniException.h"
#include "KelvoControl/detail/LensKinds.h"

#include <algorithm>
#include <utility>

namespace {

using KelvoControlDetail::LensKind;

/// "kind:file" into its two parts, unless the file is given apart.
void splitName(std::wstring& name, std::wstring& file) {
    const std::size_t colon = name.find(L':');
    if (file.empty() && colon != std::wstring::npos) {
        file = name.substr(colon + 1);
        name.erase(colon);
    }
}

const LensKind& kindNamed(const std::wstring& name) {
    const std::vector<LensKind>& kinds = KelvoControlDetail::lensKinds();
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

std::shared_ptr<ProjectionModel> Blend::createProjectionModel(Viewport viewport, std::wstring name, std::wstring file) {
    splitName(name, file);
    const LensKind& kind = kindNamed(name);
    if (kind.needsFile && file.empty()) {
        throw VeltraniException(
            __FILE__, __LINE__,
            L"Projection model " + name + L" needs a calibration file: write \"" + name + L":\" and its path");
    }
    if (!kind.needsFile && !file.empty()) {
        throw VeltraniException(__FILE__, __LINE__,
                                L"Projection model " + name + L" takes no file, found \"" + file + L"\"");
    }
    return kind.make(viewport, name, file);
}
