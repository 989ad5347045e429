#include "DisplayLight/PictureFinder.h"

#include "DisplayExport/ChannelSight.h"
#include "DisplayLight/LatticeFinder.h"
#include "DisplayReport/channels/ChannelLocator.h"
#include "DisplayReport/coverage/ChannelLight.h"
#include "ScreenManager/DisplayKinds.h"
#include "ScreenManager/SphereTargetLocator.h"

#include <cstddef>
#include <utility>

namespace Veltrani::DisplayLight {

namespace {

using DisplayReport::ChannelLight;
using DisplayReport::SurfacePoint;

/// Straight rays, whose picture point is known of every place.
class RayFinder : public PictureFinder {
public:
    explicit RayFinder(std::unique_ptr<const ChannelLight> light)
        : m_light(std::move(light)), m_box(DisplayReport::LandingExtent::of(*m_light).box) {
        const double margin = MARGIN * norm(m_box.size());
        m_lower = m_box.minimum() - P3{margin, margin, margin};
        m_upper = m_box.maximum() + P3{margin, margin, margin};
    }

    void find(const EyeGrid& grid, SeenSide side, std::vector<FoundPlace>& found) const override {
        found.assign(grid.places.size(), FoundPlace());
        std::vector<SurfacePoint> points;
        std::vector<std::size_t> numbers;
        std::vector<ChannelLight::Reach> reaches;
        const std::size_t width = grid.view.width();
        for (std::size_t first = 0; first < found.size(); first += width) {
            points.clear();
            numbers.clear();
            for (std::size_t i = first; i < first + width; ++i) {
                if (grid.places[i].isSeen && mayBeLit(grid.places[i].point)) {
                    points.push_back({grid.places[i].point, {}, false});
                    numbers.push_back(i);
                }
            }
            reaches.resize(points.size());
            m_light->reach(points, reaches);
            for (std::size_t k = 0; k < numbers.size(); ++k) {
                const int product = reaches[k].side * grid.places[numbers[k]].side;
                const bool isOnSide = side == SeenSide::LIT ? product >= 0 : product <= 0;
                if (reaches[k].inSight && isOnSide && isInPicture(reaches[k].picture)) {
                    found[numbers[k]] = {reaches[k].picture, true};
                }
            }
        }
    }

private:
    using P3 = Point<double, 3>;

    /// Of the box around what a lattice over the picture lands on: what lies between its nodes reaches no further.
    static constexpr double MARGIN = 1.0 / 16;

    /// Far from all that the picture lands on, nothing has to be looked for.
    [[nodiscard]] bool mayBeLit(const P3& place) const {
        return m_box.empty() || (place[0] >= m_lower[0] && place[0] <= m_upper[0] && place[1] >= m_lower[1] &&
                                 place[1] <= m_upper[1] && place[2] >= m_lower[2] && place[2] <= m_upper[2]);
    }

    std::unique_ptr<const ChannelLight> m_light;
    DisplayReport::Extent m_box;
    P3 m_lower;
    P3 m_upper;
};

bool isStraight(const TargetLocator& locator) {
    const LocatorKind::Path path = LocatorKind::of(locator).path;
    if (path == LocatorKind::Path::FRUSTUM) {
        const auto& camera = static_cast<const SphereTargetLocatorParams&>(locator.getTargetLocatorParams());
        return camera.pitchTable.empty() && camera.yawTable.empty();
    }
    return path == LocatorKind::Path::LENS;
}

}  // namespace

PictureFinder::~PictureFinder() = default;

std::unique_ptr<const PictureFinder> PictureFinder::of(const XMLConfigManager& config,
                                                       const DisplayExport::ChannelSight& sight,
                                                       const std::shared_ptr<const ScreenGeometry>& surface) {
    const auto found = DisplayReport::ChannelLocator::of(config, *sight.channel().projector);
    if (!found.locator) {
        sight.channel().refuse(found.fault);
    }
    if (isStraight(*found.locator)) {
        return std::make_unique<RayFinder>(ChannelLight::of(found.locator, surface));
    }
    return std::make_unique<LatticeFinder>(sight);
}

}  // namespace Veltrani::DisplayLight
