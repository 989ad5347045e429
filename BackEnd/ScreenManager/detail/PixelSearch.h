#pragma once

#include <array>
#include <cstddef>
#include <limits>
#include <optional>

namespace Veltrani::ScreenManagerDetail {

/// Finds the pixel of a channel whose layout point is nearest to a wanted one, from coarse to fine.
///
/// While the window, at first the whole grid of (width + 1) x (height + 1) corners of pixels, is 10 pixels and more in
/// both directions, five columns and five rows of samples lie over it, the last ones on its far edges; it then shrinks
/// to the samples around the best one. What is left is searched pixel by pixel, without its far edges: a pixel there
/// can be lost. This is intended, as are the order of the samples and that the first of equally near ones is taken:
/// recorded calibrations rely on them.
class PixelSearch {
public:
    struct Pixel {
        int x = 0;
        int y = 0;
    };

    /// Squared distance up to which a pixel is taken: 0.0005 layout units. Narrower pixels cannot be distinguished in
    /// any case.
    static constexpr double ACCEPTED_SCORE = 2.5e-7;

    /// A size of zero or less has no pixels: nothing is found.
    PixelSearch(int width, int height) : m_columns{0, width}, m_rows{0, height} {}

    /// @param score gets x and y of a pixel, 0 <= x <= width and 0 <= y <= height, and returns the squared distance of
    ///     its layout point; a NaN counts as no score
    /// @param announce gets x and y of pixels that are about to be scored, so that their memory can be fetched
    /// @return nothing when no sample of a pass has a score, or the best pixel is not near enough
    template <class Score, class Announce>
    [[nodiscard]] std::optional<Pixel> nearest(const Score& score, const Announce& announce) {
        while (m_columns.size() >= FEWEST_TO_SAMPLE && m_rows.size() >= FEWEST_TO_SAMPLE) {
            announceSamples(m_columns.samples(), m_rows.samples(), announce);
            const Best best = bestSample(m_columns.samples(), m_rows.samples(), score);
            if (best.score == NO_SCORE) {
                return std::nullopt;
            }
            if (best.score <= ACCEPTED_SCORE) {
                return best.pixel;
            }
            m_columns = m_columns.around(best.column);
            m_rows = m_rows.around(best.row);
        }
        announceWindow(announce);
        return bestOfWindow(score);
    }

    template <class Score>
    [[nodiscard]] std::optional<Pixel> nearest(const Score& score) {
        return nearest(score, [](int, int) {});
    }

private:
    static constexpr int FEWEST_TO_SAMPLE = 10;
    static constexpr std::size_t SAMPLES = 5;
    /// The score of a pixel that is not to be taken; infinitely far ones are not taken either.
    static constexpr double NO_SCORE = std::numeric_limits<double>::max();

    using Samples = std::array<int, SAMPLES>;

    /// A part of one direction.
    struct Window {
        int begin = 0;
        int end = 0;

        [[nodiscard]] int size() const { return end - begin; }
        /// Four even steps in whole pixels; what they leave over makes the last one longer.
        [[nodiscard]] Samples samples() const {
            const int step = size() / static_cast<int>(SAMPLES - 1);
            return {begin, begin + step, begin + 2 * step, begin + 3 * step, end};
        }
        /// Returns the window from the sample before to the one behind; at an edge it begins or ends at the edge.
        [[nodiscard]] Window around(std::size_t sample) const {
            const Samples all = samples();
            return {all[sample == 0 ? sample : sample - 1], all[sample == SAMPLES - 1 ? sample : sample + 1]};
        }
    };

    struct Best {
        double score = NO_SCORE;
        Pixel pixel;
        std::size_t column = 0;
        std::size_t row = 0;
    };

    template <class Announce>
    static void announceSamples(const Samples& columns, const Samples& rows, const Announce& announce) {
        for (const int row : rows) {
            for (const int column : columns) {
                announce(column, row);
            }
        }
    }

    template <class Announce>
    void announceWindow(const Announce& announce) const {
        // Neighbours in a row lie in one line of the processor's cache, or the next.
        constexpr int STEP = 2;
        // What sampling leaves is narrow, or low; the rest is too much to be fetched ahead.
        constexpr int WIDEST = 1024;
        const bool isSmall = m_columns.size() <= WIDEST && m_rows.size() <= WIDEST;
        for (int y = m_rows.begin; y < m_rows.end && isSmall; ++y) {
            for (int across = 0; across < m_columns.size(); across += STEP) {
                announce(m_columns.begin + across, y);
            }
        }
    }

    template <class Score>
    static Best bestSample(const Samples& columns, const Samples& rows, const Score& score) {
        Best best;
        for (std::size_t row = 0; row < SAMPLES; ++row) {
            for (std::size_t column = 0; column < SAMPLES; ++column) {
                const double candidate = score(columns[column], rows[row]);
                if (candidate < best.score) {
                    best = {candidate, {columns[column], rows[row]}, column, row};
                }
            }
        }
        return best;
    }

    /// Column by column, unlike the samples.
    template <class Score>
    std::optional<Pixel> bestOfWindow(const Score& score) const {
        double best = NO_SCORE;
        Pixel pixel;
        for (int x = m_columns.begin; x < m_columns.end; ++x) {
            for (int y = m_rows.begin; y < m_rows.end; ++y) {
                const double candidate = score(x, y);
                if (candidate < best) {
                    best = candidate;
                    pixel = {x, y};
                }
            }
        }
        return best <= ACCEPTED_SCORE ? std::optional(pixel) : std::nullopt;
    }

    Window m_columns;
    Window m_rows;
};

}  // namespace Veltrani::ScreenManagerDetail
