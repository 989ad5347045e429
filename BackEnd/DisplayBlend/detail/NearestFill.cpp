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
    struct Pixel {
        std::int32_t x = NONE;
        std::int32_t y = NONE;
    };
    static constexpr std::int32_t NONE = -1;

    Sources(std::size_t width, std::size_t height, const std::vector<bool>& isMissing)
        : m_width(static_cast<std::int32_t>(width)), m_height(static_cast<std::int32_t>(height)) {
        m_sources.resize(isMissing.size());
        for (std::int32_t y = 0; y < m_height; ++y) {
            for (std::int32_t x = 0; x < m_width; ++x) {
                at(x, y) = isMissing[indexOf(x, y)] ? Pixel() : Pixel{x, y};
            }
        }
        for (std::int32_t y = 0; y < m_height; ++y) {
            sweepRow(y, -1);
        }
        for (std::int32_t y = m_height; y-- > 0;) {
            sweepRow(y, 1);
        }
    }

    [[nodiscard]] const std::vector<Pixel>& all() const { return m_sources; }

private:
    [[nodiscard]] std::size_t indexOf(std::int32_t x, std::int32_t y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_width) + static_cast<std::size_t>(x);
    }
    Pixel& at(std::int32_t x, std::int32_t y) { return m_sources[indexOf(x, y)]; }

    /// Both ways along a row, after the row at `up` of it.
    void sweepRow(std::int32_t y, std::int32_t up) {
        for (std::int32_t x = 0; x < m_width; ++x) {
            take(x, y, -1, up);
        }
        for (std::int32_t x = m_width; x-- > 0;) {
            take(x, y, 1, up);
        }
    }

    static std::int64_t squaredDistance(std::int32_t x, std::int32_t y, const Pixel& source) {
        const std::int64_t dx = source.x - x;
        const std::int64_t dy = source.y - y;
        return source.x == NONE ? std::numeric_limits<std::int64_t>::max() : dx * dx + dy * dy;
    }

    /// From the neighbour behind and the three of the row before.
    void take(std::int32_t x, std::int32_t y, std::int32_t behind, std::int32_t up) {
        Pixel& own = at(x, y);
        std::int64_t least = squaredDistance(x, y, own);
        if (least == 0) {
            return;
        }
        const std::array<std::array<std::int32_t, 2>, 4> ways{{{behind, 0}, {behind, up}, {0, up}, {-behind, up}}};
        for (const auto& [dx, dy] : ways) {
            if (x + dx < 0 || x + dx >= m_width || y + dy < 0 || y + dy >= m_height) {
                continue;
            }
            const Pixel& source = at(x + dx, y + dy);
            if (const std::int64_t distance = squaredDistance(x, y, source); distance < least) {
                own = source;
                least = distance;
            }
        }
    }

    std::int32_t m_width;
    std::int32_t m_height;
    std::vector<Pixel> m_sources;
};

}  // namespace

void fillFromNearest(DisplayBlend::BlendPicture& picture, const std::vector<bool>& isMissing) {
    if (std::find(isMissing.begin(), isMissing.end(), true) == isMissing.end()) {
        return;
    }
    const Sources sources(picture.width, picture.height, isMissing);
    for (std::size_t i = 0; i < isMissing.size(); ++i) {
        if (const Sources::Pixel& from = sources.all()[i]; isMissing[i] && from.x != Sources::NONE) {
            picture.light[i] = picture.at(static_cast<std::size_t>(from.x), static_cast<std::size_t>(from.y));
        }
    }
}

}  // namespace Veltrani::DisplayBlendDetail
