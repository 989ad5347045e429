#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace KelvoScreenDetail {

/// Which triangles stand in the boxes of a search structure: each box holds the next triangle, or the next two.
///
/// Two bits per triangle or less, so that the answers stay in the cache while rays jump between boxes.
class TriangleBoxes {
public:
    struct Content {
        std::uint32_t first;  ///< the triangle, or the lower of two
        bool isPair;          ///< whether the triangle after it stands in the box as well
    };

    /// A new box with the next triangle.
    void addSingle() {
        if (m_count % BOXES_PER_BLOCK == 0) {
            m_blocks.push_back({0, m_triangles});
        }
        ++m_count;
        ++m_triangles;
    }

    /// The next triangle stands in the last box, which holds one so far.
    void addToLast() {
        m_blocks.back().pairs |= bitOf(m_count - 1);
        ++m_triangles;
    }

    /// The number of boxes.
    [[nodiscard]] std::uint32_t size() const { return m_count; }

    [[nodiscard]] Content operator[](std::uint32_t box) const {
        const Block& block = m_blocks[box / BOXES_PER_BLOCK];
        const std::uint64_t bit = bitOf(box);
        return {block.first + box % BOXES_PER_BLOCK + pairsBefore(block, box), (block.pairs & bit) != 0};
    }

private:
    static constexpr std::uint32_t BOXES_PER_BLOCK = 64;

    struct Block {
        std::uint64_t pairs;  ///< a bit for each box, the lowest for its first
        std::uint32_t first;  ///< triangle of its first box
    };

    [[nodiscard]] static std::uint64_t bitOf(std::uint32_t box) { return std::uint64_t{1} << (box % BOXES_PER_BLOCK); }

    /// Grids have pairs only: without a count of bits, for which not every processor has an instruction.
    [[nodiscard]] static std::uint32_t pairsBefore(const Block& block, std::uint32_t box) {
        const std::uint64_t all = bitOf(box) - 1;
        const std::uint64_t pairs = block.pairs & all;
        return pairs == all ? box % BOXES_PER_BLOCK : static_cast<std::uint32_t>(std::popcount(pairs));
    }

    std::vector<Block> m_blocks;
    std::uint32_t m_count = 0;
    std::uint32_t m_triangles = 0;
};

}  // namespace KelvoScreenDetail
