#include "DisplayFit/detail/PictureView.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::ChannelValues;

LensFormula formulaOf(const LensNumbers& lens) {
    return {lens.kind == LensNumbers::Kind::FISHEYE ? LensFormula::Kind::FISHEYE : LensFormula::Kind::BROWN_CONRADY,
            lens.distortion};
}

}  // namespace

PictureView PictureView::of(const ChannelValues& values, LensFormula::Kind kind, const Point<int, 2>& pixels) {
    PictureView view;
    view.world_from_projector =
        Veltrani::rotationZXY(values.orientation[0], values.orientation[1], values.orientation[2]);
    view.position = values.position;
    view.pixels = {std::max(pixels[0], 1), std::max(pixels[1], 1)};
    if (values.lens) {
        const LensNumbers& lens = *values.lens;
        view.lens = formulaOf(lens);
        view.factor = {lens.fx / lens.imageWidth, lens.fy / lens.imageHeight};
        // Pixels of a calibration have their centres at whole numbers, the first one at the top left.
        view.shift = {(lens.cx + 0.5) / lens.imageWidth, 1 - (lens.cy + 0.5) / lens.imageHeight};
        return view;
    }
    view.lens = LensFormula(kind, {});
    const auto edge = [kind](double angle) { return kind == LensFormula::Kind::EQUIDISTANT ? angle : std::tan(angle); };
    const auto& frustum = values.frustum;
    view.factor = {1 / (edge(frustum.right) - edge(frustum.left)), 1 / (edge(frustum.top) - edge(frustum.bottom))};
    view.shift = {-edge(frustum.left) * view.factor[0], -edge(frustum.bottom) * view.factor[1]};
    return view;
}

}  // namespace Veltrani::DisplayFitDetail
