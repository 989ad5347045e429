#pragma once

#include "KelvoScreen/detail/Box.h"
#include "KelvoScreen/detail/TriangleMath.h"

#include <cstdint>
#include <limits>
#include <vector>

namespace Veltrani::KelvoScreenDetail {

/// The source of triangles while a search structure is built over them.
class TriangleSource {
public:
    virtual ~TriangleSource() = default;
    /// Returns false for a triangle that is to be left out.
    virtual bool corners(std::uint32_t triangle, Corners& out) const = 0;
};

/// The boxes that a search structure holds in place of triangles.
///
/// Two triangles that follow each other and fill nearly the same box, as the halves of a quadrilateral do, share one.
///
/// Of triangles with the same corners in the same winding the lowest alone has a box: where it is met, the others are
/// met at the same place. A mesh that repeats a face ten thousand times costs what the face costs.
///
/// Where the boxes are so many on top of each other that a ray passes very many of them, as those of the long slivers
/// of a fan are, they are taken in slices along their longest edge, with a box for each.
class TriangleBoxes {
public:
    /// Stands for the number of a box: for a triangle that is left out, and for the second of a pair.
    static constexpr std::uint32_t NO_BOX = std::numeric_limits<std::uint32_t>::max();

    /// Makes the boxes of the triangles 0 to count - 1. Throws `std::bad_alloc` when memory runs out.
    TriangleBoxes(std::uint32_t count, const TriangleSource& source);

    std::vector<Box> boxes;
    /// Holds for each triangle the number of the box whose lowest it is; then those of the further slices, as many as
    /// `furtherOf`.
    std::vector<std::uint32_t> numbers;
    std::vector<bool> isPaired;            ///< for each triangle whether it shares its box with the next one
    std::vector<std::uint32_t> furtherOf;  ///< for each further slice the triangle
    Box all;                               ///< around all triangles that were not left out
    double typicalSize = 0;                ///< the longest side of the box of a triangle, on average

private:
    /// Forms the boxes as if no triangles were equal. Returns false when some may be.
    [[nodiscard]] bool formAll(std::uint32_t count, const TriangleSource& source);
    template <class IsNew>
    void form(std::uint32_t count, const TriangleSource& source, const IsNew& isNew);
    void addBox(std::uint32_t triangle, const Box& box, bool& isOpen);
    /// Returns true when a ray through the whole passes very many boxes.
    [[nodiscard]] bool isCrowded() const;
    void slice(std::uint32_t count, const TriangleSource& source);
    void addSlices(std::uint32_t triangle, const std::vector<Box>& slices);
};

}  // namespace Veltrani::KelvoScreenDetail
