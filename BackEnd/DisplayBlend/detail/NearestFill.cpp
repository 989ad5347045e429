#include "DisplayBlend/detail/NearestFill.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace Veltrani::DisplayBlendDetail {

namespace {

/// The pixel that each one takes its value from, handed on from neighbour to neighbour in two sweeps.
class Sources {
public:
    Sources(std::size_t width, std::size_t height, const std::vector<bool>& isMissing)
        : m_width(static_cast<std::int64_t>(width)), m_height(static_cast<std::int64_t>(height)) {
        m_sources.resize(isMissing.size());
        for (std::size_t i = 0; i < isMissing.size(); ++i) {
            m_sources[i] = isMissing[i] ? NONE : static_cast<std::int64_t>(i);
        }
        for (std::int64_t y = 0; y < m_height; ++y) {
            for (std::int64_t x = 0; x < m_width; ++x) {
                take(x, y, {{{-1, 0}, {-1, -1}, {0, -1}, {1, -1}}});
            }
            for (std::int64_t x = m_width; x-- > 0;) {
                take(x, y, {{{1, 0}, {1, -1}, {0, -1}, {-1, -1}}});
            }
        }
        for (std::int64_t y = m_height; y-- > 0;) {
            for (std::int64_t x = m_width; x-- > 0;) {
                take(x, y, {{{1, 0}, {1, 1}, {0, 1}, {-1, 1}}});
            }
            for (std::int64_t x = 0; x < m_width; ++x) {
                take(x, y, {{{-1, 0}, {-1, 1}, {0, 1}, {1, 1}}});
            }
        }
    }

    /// Negative when there is none.
    [[nodiscard]] std::int64_t of(std::size_t pixel) const { return m_sources[pixel]; }

private:
    static constexpr std::int64_t NONE = -1;
    using Neighbours = std::array<std::array<std::int64_t, 2>, 4>;

    [[nodiscard]] std::int64_t squaredDistance(std::int64_t x, std::int64_t y, std::int64_t source) const {
        if (source < 0) {
            return std::numeric_limits<std::int64_t>::max();
        }
        const std::int64_t dx = source % m_width - x;
        const std::int64_t dy = source / m_width - y;
        return dx * dx + dy * dy;
    }

    void take(std::int64_t x, std::int64_t y, const Neighbours& neighbours) {
        std::int64_t& own = m_sources[static_cast<std::size_t>(y * m_width + x)];
        if (own == y * m_width + x) {
            return;
        }
        std::int64_t least = squaredDistance(x, y, own);
        for (const auto& [dx, dy] : neighbours) {
            if (x + dx < 0 || x + dx >= m_width || y + dy < 0 || y + dy >= m_height) {
                continue;
            }
            const std::int64_t source = m_sources[static_cast<std::size_t>((y + dy) * m_width + x + dx)];
            if (const std::int64_t distance = squaredDistance(x, y, source); distance < least) {
                own = source;
                least = distance;
            }
        }
    }

    std::int64_t m_width;
    std::int64_t m_height;
    std::vector<std::int64_t> m_sources;
};

}  // namespace

void fillFromNearest(DisplayBlend::BlendPicture& picture, const std::vector<bool>& isMissing) {
    if (std::find(isMissing.begin(), isMissing.end(), true) == isMissing.end()) {
        return;
    }
    const Sources sources(picture.width, picture.height, isMissing);
    for (std::size_t i = 0; i < isMissing.size(); ++i) {
        if (isMissing[i] && sources.of(i) >= 0) {
            picture.light[i] = picture.light[static_cast<std::size_t>(sources.of(i))];
        }
    }
}

}  // namespace Veltrani::DisplayBlendDetail
