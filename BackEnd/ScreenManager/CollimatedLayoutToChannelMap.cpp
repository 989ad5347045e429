#include "ScreenManager/CollimatedLayoutToChannelMap.h"

#include "KelvoControl/KelvoProjector.h"
#include "ScreenManager/detail/ChannelEntries.h"
#include "ScreenManager/detail/EyeRays.h"
#include "ScreenManager/detail/PixelSearch.h"

#include <limits>
#include <optional>
#include <typeinfo>

using Veltrani::ScreenManagerDetail::EyeRays;
using Veltrani::ScreenManagerDetail::PixelSearch;

namespace {

using Vector = Point<double, 3>;

/// Stands in the cache where no layout point was calculated yet, in every component.
constexpr double LARGEST = std::numeric_limits<double>::max();
constexpr Vector NOT_COMPUTED{LARGEST, LARGEST, LARGEST};

const Frustum& frustumOf(const KelvoProjector& projector) {
    return projector.getBlend().getSphericalBlendExtents();
}

/// Returns one more than there are pixels: the last one stands for the far edge.
std::size_t placesAlong(int pixels) {
    return pixels < 0 ? 0 : static_cast<std::size_t>(pixels) + 1;
}

std::size_t placesFor(const Viewport& picture) {
    return placesAlong(picture.height) * placesAlong(picture.width);
}

double squaredDistance(const Vector& a, const Vector& b) {
    const double dx = a[0] - b[0];
    const double dy = a[1] - b[1];
    const double dz = a[2] - b[2];
    return dx * dx + dy * dy + dz * dz;
}

}  // namespace

// Passed by value, as the callers' interface has it.
// NOLINTBEGIN(performance-unnecessary-value-param)
CollimatedLayoutToChannelMap::CollimatedLayoutToChannelMap(
    XMLConfigManager* config, std::shared_ptr<KelvoControl::Configuration> channelMapConfig, bool useCache)
    : LayoutToChannelMap(config) {
    // NOLINTEND(performance-unnecessary-value-param)
    m_eyePoint = Veltrani::ScreenManagerDetail::eyePointOf(config);
    m_blendOwners = Veltrani::ScreenManagerDetail::blendOwners(config, channelMapConfig.get());
    m_locators = Veltrani::ScreenManagerDetail::targetLocators(config, projectors());
    if (useCache) {
        for (const KelvoProjector* owner : m_blendOwners) {
            m_caches.push_back(emptyCache(frustumOf(*owner)));
        }
    }
}

CollimatedLayoutToChannelMap::Cache CollimatedLayoutToChannelMap::emptyCache(const Viewport& picture) {
    const std::size_t count = placesFor(picture);
    return {std::make_shared<Vector[]>(count, NOT_COMPUTED), count};
}

bool CollimatedLayoutToChannelMap::mapLayoutToChannel(const Point<double, 3>& layout, Point<double, 2>& channel,
                                                      std::size_t channelIndex) {
    const Frustum& frustum = frustumOf(*m_blendOwners[channelIndex]);
    const int width = frustum.width;
    const int height = frustum.height;
    const auto inPicture = [width, height](int x, int y) {
        return Point<double, 2>{static_cast<double>(x) / width, static_cast<double>(y) / height};
    };
    PixelSearch search(width, height);
    std::optional<PixelSearch::Pixel> found;
    if (m_caches.empty() || m_caches[channelIndex].count < placesFor(frustum)) {
        found = search.nearest([&](int x, int y) {
            Vector place;
            mapChannelToLayout(inPicture(x, y), place, channelIndex);
            return squaredDistance(layout, place);
        });
    } else {
        Vector* const cache = m_caches[channelIndex].places.get();
        const auto placeOf = [&](int x, int y) {
            return cache + static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
        };
        const auto score = [&](int x, int y) {
            Vector& place = *placeOf(x, y);
            if (place == NOT_COMPUTED) {
                mapChannelToLayout(inPicture(x, y), place, channelIndex);
            }
            return squaredDistance(layout, place);
        };
        // A warm cache waits for memory more than for anything else.
        found = search.nearest(score, [&](int x, int y) { __builtin_prefetch(placeOf(x, y)); });
    }
    if (!found) {
        return false;
    }
    channel = inPicture(found->x, found->y);
    return true;
}

bool CollimatedLayoutToChannelMap::mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout,
                                                      std::size_t channelIndex) {
    return EyeRays(*m_blendOwners[channelIndex], m_locators[channelIndex].get(), m_eyePoint)
        .mapToLayout(channel, layout);
}

void CollimatedLayoutToChannelMap::mapChannelPointsToLayout(std::span<const Point<double, 2>> channel,
                                                            std::span<LayoutPoint> layout, std::size_t channelIndex) {
    const bool isThisKind = typeid(*this) == typeid(CollimatedLayoutToChannelMap);
    if (!isThisKind || channel.empty() || channel.size() != layout.size() ||
        !EyeRays(*m_blendOwners[channelIndex], m_locators[channelIndex].get(), m_eyePoint)
             .mapToLayoutAtOnce(channel, layout)) {
        LayoutToChannelMap::mapChannelPointsToLayout(channel, layout, channelIndex);
    }
}
