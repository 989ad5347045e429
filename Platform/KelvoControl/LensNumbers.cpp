#include "KelvoControl/LensNumbers.h"

#include "KelvoControl/Blend.h"
#include "KelvoControl/detail/LensKinds.h"
#include "KelvoControl/detail/LensModel.h"

#include <algorithm>

namespace Veltrani {

std::optional<LensNumbers> LensNumbers::of(const std::wstring& modelName) {
    const auto name = KelvoControlDetail::LensName::of(modelName, L"");
    for (const KelvoControlDetail::LensKind& kind : KelvoControlDetail::lensKinds()) {
        if (kind.name == name.kind && kind.needsFile && !name.file.empty()) {
            return kind.numbers(name.file);
        }
    }
    // What is no model is refused in the words of the code that makes models.
    static_cast<void>(Blend::createProjectionModel(Viewport{}, modelName, L""));
    return std::nullopt;
}

std::shared_ptr<ProjectionModel> LensNumbers::model(const Viewport& viewport) const {
    const auto& kinds = KelvoControlDetail::lensKinds();
    const auto own =
        std::find_if(kinds.begin(), kinds.end(), [this](const auto& lens) { return lens.meaning == kind; });
    return own->makeOf(viewport, *this);
}

}  // namespace Veltrani
