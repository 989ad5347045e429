#include "KelvoControl/detail/LensKinds.h"

#include "KelvoControl/detail/BrownConradyLens.h"
#include "KelvoControl/detail/EquidistantLens.h"
#include "KelvoControl/detail/FisheyeLens.h"
#include "KelvoControl/detail/LensCalibration.h"
#include "KelvoControl/detail/RectilinearLens.h"

namespace Veltrani::KelvoControlDetail {

namespace {

template <class Lens>
LensKind fromViewport(const std::wstring& kind) {
    return {kind,
            false,
            [](const Viewport& viewport, const std::wstring& name, const std::wstring&) {
                return std::make_shared<Lens>(viewport, name);
            },
            {},
            {},
            {}};
}

template <class Lens>
LensKind fromFile(const std::wstring& kind, LensNumbers::Kind meaning, const LensFamily& family) {
    return {kind,
            true,
            [](const Viewport& viewport, const std::wstring& name, const std::wstring& file) {
                return std::make_shared<Lens>(viewport, name, file);
            },
            [meaning, family](const std::wstring& file) {
                const LensCalibration lens = LensCalibration::read(file, family);
                return LensNumbers{meaning, lens.imageWidth, lens.imageHeight, lens.fx,
                                   lens.fy, lens.cx,         lens.cy,          lens.distortion};
            },
            meaning,
            [kind, family](const Viewport& viewport, const LensNumbers& numbers) {
                return std::make_shared<Lens>(viewport, kind, LensCalibration::of(numbers, family));
            }};
}

}  // namespace

const std::vector<LensKind>& lensKinds() {
    static const std::vector<LensKind> kinds{
        fromViewport<RectilinearLens>(L"Rectilinear"),
        fromViewport<EquidistantLens>(L"Equidistant"),
        fromFile<BrownConradyLens>(L"BrownConrady", LensNumbers::Kind::BROWN_CONRADY, LensFamily::BrownConrady),
        fromFile<FisheyeLens>(L"Fisheye", LensNumbers::Kind::FISHEYE, LensFamily::Fisheye),
    };
    return kinds;
}

}  // namespace Veltrani::KelvoControlDetail
