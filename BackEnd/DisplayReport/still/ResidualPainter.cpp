#include "DisplayReport/still/ResidualPainter.h"

#include "Common/Finite.h"
#include "DisplayReport/scene/DisplayScene.h"
#include "DisplayReport/scene/SceneCamera.h"
#include "DisplayReport/still/ResidualPen.h"
#include "DisplayReport/still/SceneLegend.h"

#include <optional>
#include <vector>

namespace Veltrani::DisplayReport {

namespace {

/// How much darker vectors are than the pictures of their channels that they lie on.
constexpr double DARKER = 0.55;
constexpr Colour BLACK{0, 0, 0};

}  // namespace

void ResidualPainter::addTo(Drawing& drawing, const DisplayScene& scene) const {
    if (!scene.residuals) {
        return;
    }
    const auto placed = [this](const Point<double, 3>& world) -> std::optional<ResidualPen::Place> {
        const auto place = m_camera.place(world);
        return place ? std::optional(ResidualPen::Place{(*place)[0], (*place)[1] + m_legend.sceneTop()}) : std::nullopt;
    };
    const ResidualPen pen(m_pixel, m_legend.letterSize());
    std::vector<ResidualPen::Vector> vectors;
    for (const SceneChannel& channel : scene.channels) {
        for (const SceneResidual& residual : channel.residuals) {
            const auto from = placed(residual.point);
            if (!from) {
                continue;
            }
            ResidualPen::Vector vector{*from, {},           mixed(channel.colour, BLACK, DARKER), residual.isOutlier,
                                       false, residual.line};
            if (isFinite(residual.offset)) {
                const auto [offset, isCut] =
                    drawnResidual(residual.offset, scene.residuals->onScreen, scene.residuals->longestOnScreen);
                vector.to = placed(residual.point + offset);
                vector.isCut = isCut && vector.to;
            }
            pen.add(drawing, vector);
            vectors.push_back(vector);
        }
    }
    pen.addLabels(drawing, vectors);
    pen.addKey(drawing, m_legend.residualKey(),
               {"from measured to fitted place", scene.residuals->onScreen, m_camera.magnification(), scene.unit,
                " in the middle"});
}

}  // namespace Veltrani::DisplayReport
