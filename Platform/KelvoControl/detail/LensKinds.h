#pragma once

#include "KelvoControl/ProjectionModel.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace KelvoControlDetail {

/// One kind of projection model.
struct LensKind {
    std::wstring name;
    bool needsFile = false;
    /// From the viewport and the two texts that name the kind and the file, see `LensName`; only called with a file
    /// when one is needed and without one else.
    std::function<std::shared_ptr<ProjectionModel>(const Viewport&, const std::wstring&, const std::wstring&)> make;
};

/// Every kind that there is: the one place where a kind is made known.
[[nodiscard]] const std::vector<LensKind>& lensKinds();

}  // namespace KelvoControlDetail
