#pragma once

#include <cstddef>
#include <functional>
#include <vector>

namespace Veltrani::DisplayReport {

/// Whole numbers from the first to the last of both ways, these included.
struct PixelWindow {
    int left = 0;
    int right = 0;
    int bottom = 0;
    int top = 0;
};

/// Searches a function over the pixels of a picture for its greatest value.
///
/// The function is looked at on a lattice. Cells of the lattice in which it may rise above the greatest value so far,
/// by its slopes and its bends there, are quartered, the most promising one first, until none promises more than
/// `TOLERANCE`: inside, along the border of where the function has values, and in its corners. What is smaller than a
/// cell of the lattice and shows in none of its corners is found when it is offered.
class PeakSearch {
public:
    /// The function; NaN for a pixel that has no value.
    using Function = std::function<double(int column, int row)>;

    /// Of the function: what cells promise less than this above the greatest value is left.
    static constexpr double TOLERANCE = 2e-4;

    /// @param function is called once for every pixel that is looked at, or more often
    /// @param columns, rows of the lattice, rising
    PeakSearch(Function function, const std::vector<int>& columns, const std::vector<int>& rows);

    /// At most so many whole numbers from the first to the last, these among them, evenly spread and rising.
    /// @param most at least 2, or first = last
    [[nodiscard]] static std::vector<int> spread(int first, int last, int most);

    /// Looks at a part of the picture more closely.
    void offer(const PixelWindow& window);

    /// The greatest value; minus infinity when no pixel that was looked at has one.
    [[nodiscard]] double greatest();

private:
    /// The function on the pixels of some columns and rows.
    class Lattice;

    /// A part of the picture whose corners were looked at.
    struct Cell {
        PixelWindow window;
        double slack = 0;    ///< by how much the function may exceed its corners
        double promise = 0;  ///< what it may reach
    };

    void add(const Lattice& lattice, double leastSlack);
    void quarter(const Cell& cell);

    Function m_function;
    std::vector<Cell> m_cells;  ///< a heap
    double m_greatest;
    std::size_t m_quartered = 0;
};

}  // namespace Veltrani::DisplayReport
