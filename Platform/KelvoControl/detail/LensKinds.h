#pragma once

#include "KelvoControl/LensNumbers.h"
#include "KelvoControl/ProjectionModel.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Veltrani::KelvoControlDetail {

/// One kind of projection model.
struct LensKind {
    std::wstring name;
    bool needsFile = false;
    /// Makes the model from the viewport and the two texts that name the kind and the file, see `LensName`; called with
    /// a file only when one is needed, and without one otherwise.
    std::function<std::shared_ptr<ProjectionModel>(const Viewport&, const std::wstring&, const std::wstring&)> make;
    /// Reads the numbers of a file; empty for a kind that needs none.
    std::function<LensNumbers(const std::wstring&)> numbers;
    /// What the coefficients of its numbers mean; nothing for a kind that needs no file.
    std::optional<LensNumbers::Kind> meaning;
    /// Makes the model from numbers of this meaning instead of a file; empty for a kind that needs none. Throws
    /// `VeltraniException` for numbers that no file may have.
    std::function<std::shared_ptr<ProjectionModel>(const Viewport&, const LensNumbers&)> makeOf;
};

/// Every kind that there is: the only list of them.
[[nodiscard]] const std::vector<LensKind>& lensKinds();

}  // namespace Veltrani::KelvoControlDetail
