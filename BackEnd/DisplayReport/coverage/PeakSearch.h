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
/// cell of the lattice and shows in none of its corners is found when it is offered. Where a function is so jagged that
/// cells promise everywhere, and a great many of them lead to nothing greater, the rest is left.
class PeakSearch {
public:
    /// The function; NaN for a pixel that has no value.
    using Function = std::function<double(int column, int row)>;

    /// In units of the function: cells that promise less than this above the greatest value are left.
    static constexpr double TOLERANCE = 2e-4;

    /// @param function is called once for every pixel that is looked at, or more often
    /// @param columns, rows of the lattice, rising
    PeakSearch(Function function, const std::vector<int>& columns, const std::vector<int>& rows);

    /// At most so many whole numbers from the first to the last, these among them, evenly spread and rising.
    /// @param most at least 2, or first = last
    [[nodiscard]] static std::vector<int> spread(int first, int last, int most);

    /// Looks at a part of the picture more closely: at its corners, its edges and its middle, and on from there.
    void offer(const PixelWindow& window);
    /// Looks at every pixel of a part, within the lattice.
    void scan(const PixelWindow& window);

    /// The greatest value; minus infinity when no pixel that was looked at has one.
    [[nodiscard]] double greatest();

private:
    /// The function on the pixels of some columns and rows.
    class Lattice;

    /// A part of the picture whose corners were looked at.
    struct Cell {
        PixelWindow window;
        double slack = 0;         ///< by how much the function may exceed its corners
        double promise = 0;       ///< what it may reach
        bool isOnBorder = false;  ///< some corners have no value
    };

    /// The function, of which the greatest value is kept.
    double look(int column, int row);
    /// Keeps the cells that promise more than what was found.
    void add(const Lattice& lattice, double leastSlack, double usualSlope);
    void quarter(const Cell& cell);
    /// The cells in turn that may lead to nothing greater.
    [[nodiscard]] std::size_t patience() const;
    /// From the greatest value to greater ones beside it: cells that have values in no corner are not looked into, and
    /// a wedge may end in one.
    void climb();

    Function m_function;
    PixelWindow m_all;          ///< of the lattice
    bool m_hasBorder = false;   ///< the function has no values in some places
    std::vector<Cell> m_cells;  ///< a heap
    double m_greatest;
    int m_column = 0;  ///< where it stands
    int m_row = 0;
    double m_climbed;  ///< the greatest value that nothing around exceeds
    std::size_t m_quartered = 0;
    std::size_t m_patience = 0;  ///< cells to quarter until something greater is to be found
    bool m_isCutShort = false;   ///< cells that promised were left
};

}  // namespace Veltrani::DisplayReport
