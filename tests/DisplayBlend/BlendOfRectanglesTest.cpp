// The weights of rectangles on a wall against sums over their edges.
#include "BlendDisplays.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

namespace {

/// Rectangles on a wall of 4 x 2 m, and their weights by sums over the edges, without any of the library.
class Rectangles {
public:
    struct Rectangle {
        double left, right, bottom, top;  ///< parts of the wall

        [[nodiscard]] bool holds(double s, double t) const { return s > left && s < right && t > bottom && t < top; }
    };

    static constexpr int PIECES = 12'000;

    /// @param pieces that each side is cut into, about
    explicit Rectangles(std::vector<Rectangle> all, int pieces = PIECES) : m_all(std::move(all)), m_pieces(pieces) {
        for (const Rectangle& own : m_all) {
            m_edges.push_back(innerEdge(own));
        }
        std::vector<double> gains;
        for (std::size_t own = 0; own < m_all.size(); ++own) {
            gains.push_back(gainOf(own));
        }
        m_gains = std::move(gains);
    }

    [[nodiscard]] const std::vector<Rectangle>& all() const { return m_all; }

    /// Of rectangle `own` at a place that it holds.
    [[nodiscard]] double weight(std::size_t own, double s, double t) const {
        const double ratio = ratioOf(own, s, t);
        return std::isinf(ratio) ? 1 : ratio / (1 + ratio);
    }

private:
    using P2 = Point<double, 2>;

    static constexpr double WIDE = 4;
    static constexpr double HIGH = 2;
    /// A short piece of an edge.
    struct Piece {
        double x, y, length;  ///< metres
    };

    /// To all others that hold the place; infinite without one.
    [[nodiscard]] double ratioOf(std::size_t own, double s, double t) const {
        double others = 0;
        for (std::size_t i = 0; i < m_all.size(); ++i) {
            others += i != own && m_all[i].holds(s, t) ? m_gains[i] / potential(i, s, t) : 0.0;
        }
        return m_gains[own] / potential(own, s, t) / others;
    }

    /// What lies inside others all over has nine times their light somewhere: the place where it has most is looked
    /// for in smaller and smaller steps.
    [[nodiscard]] double gainOf(std::size_t own) const {
        constexpr int PARTS = 12;
        constexpr double RATIO = 9;
        const Rectangle& area = m_all[own];
        P2 step{(area.right - area.left) / PARTS, (area.top - area.bottom) / PARTS};
        double most = 0;
        P2 best;
        const auto look = [&](const P2& place) {
            if (const double ratio = ratioOf(own, place[0], place[1]); ratio > most) {
                most = ratio;
                best = place;
            }
        };
        for (int i = 0; most < RATIO && i < PARTS * PARTS; ++i) {
            look({area.left + (i % PARTS + 0.5) * step[0], area.bottom + (i / PARTS + 0.5) * step[1]});
        }
        for (int halvings = 0; most < RATIO && halvings < 8; ++halvings) {
            step = step * 0.5;
            const P2 middle = best;
            for (const P2& way : {P2{-1, 0}, P2{1, 0}, P2{0, -1}, P2{0, 1}}) {
                look({middle[0] + way[0] * step[0], middle[1] + way[1] * step[1]});
            }
        }
        return most < RATIO ? RATIO / most : 1;
    }

    /// A side is cut where it enters and leaves other rectangles, so that no piece lies on both sides of a border.
    [[nodiscard]] std::vector<Piece> innerEdge(const Rectangle& own) const {
        std::vector<Piece> edge;
        for (const double t : {own.bottom, own.top}) {
            addParts(own.left, own.right, WIDE, &Rectangle::left, &Rectangle::right, edge, [t](double s) {
                return P2{s, t};
            });
        }
        for (const double s : {own.left, own.right}) {
            addParts(own.bottom, own.top, HIGH, &Rectangle::bottom, &Rectangle::top, edge, [s](double t) {
                return P2{s, t};
            });
        }
        return edge;
    }

    template <class PlaceOf>
    void addParts(double from, double to, double scale, double Rectangle::*lower, double Rectangle::*upper,
                  std::vector<Piece>& edge, const PlaceOf& placeOf) const {
        std::vector<double> cuts{from, to};
        for (const Rectangle& other : m_all) {
            cuts.push_back(std::clamp(other.*lower, from, to));
            cuts.push_back(std::clamp(other.*upper, from, to));
        }
        std::sort(cuts.begin(), cuts.end());
        for (std::size_t i = 1; i < cuts.size(); ++i) {
            const P2 middle = placeOf((cuts[i - 1] + cuts[i]) / 2);
            const auto holds = [&](const Rectangle& other) { return other.holds(middle[0], middle[1]); };
            if (!(cuts[i] > cuts[i - 1]) || std::none_of(m_all.begin(), m_all.end(), holds)) {
                continue;
            }
            const int pieces = static_cast<int>(std::ceil(m_pieces * (cuts[i] - cuts[i - 1]) / (to - from)));
            const double step = (cuts[i] - cuts[i - 1]) / pieces;
            for (int k = 0; k < pieces; ++k) {
                const P2 place = placeOf(cuts[i - 1] + (k + 0.5) * step);
                edge.push_back({WIDE * place[0], HIGH * place[1], scale * step});
            }
        }
    }

    [[nodiscard]] double potential(std::size_t i, double s, double t) const {
        double sum = 0;
        for (const Piece& piece : m_edges[i]) {
            sum += piece.length / std::pow(std::hypot(WIDE * s - piece.x, HIGH * t - piece.y), 3) / 2;
        }
        // An edge far away keeps a picture that ends nowhere inside another one from weighing infinitely.
        const Rectangle& own = m_all[i];
        return sum +
               1 / (16 * (std::pow(WIDE * (own.right - own.left), 2) + std::pow(HIGH * (own.top - own.bottom), 2)));
    }

    std::vector<Rectangle> m_all;
    int m_pieces;
    std::vector<double> m_gains = std::vector<double>(m_all.size(), 1);
    std::vector<std::vector<Piece>> m_edges;
};

class BlendOfRectanglesTest : public BlendDisplayTest {
protected:
    void expectSums(const Rectangles& rectangles, double mostOff = 2e-4) {
        std::string projectors;
        for (std::size_t i = 0; i < rectangles.all().size(); ++i) {
            const auto& own = rectangles.all()[i];
            projectors += area("P" + std::to_string(i), own.left, own.right, own.bottom, own.top);
        }
        load(displays::FLAT, projectors);
        const auto pictures = weights();
        std::size_t partly = 0;
        for (std::size_t i = 0; i < pictures.size(); ++i) {
            const auto& own = rectangles.all()[i];
            for (std::size_t row = 45; row < 1200; row += 191) {
                for (std::size_t column = 37; column < 1920; column += 161) {
                    const double s = own.left + (static_cast<double>(column) + 0.5) / 1920 * (own.right - own.left);
                    const double t = own.bottom + (static_cast<double>(row) + 0.5) / 1200 * (own.top - own.bottom);
                    const double expected = rectangles.weight(i, s, t);
                    EXPECT_NEAR(pictures[i].at(column, row), expected, mostOff) << i << ' ' << s << ' ' << t;
                    partly += expected > 0.01 && expected < 0.99 ? 1 : 0;
                }
            }
        }
        EXPECT_GT(partly, 10 * pictures.size());
    }
};

TEST_F(BlendOfRectanglesTest, FourCornersFollowTheSums) {
    expectSums(Rectangles({{0, 0.6, 0, 0.6}, {0.4, 1, 0, 0.55}, {0, 0.55, 0.4, 1}, {0.45, 1, 0.45, 1}}));
}

// Three beside each other, twice; in the middle all six meet. The middle ones are alone at the top and at the bottom:
// they are no insets.
TEST_F(BlendOfRectanglesTest, SixCornersFollowTheSums) {
    const Rectangles six({{0, 0.55, 0.1, 0.6},
                          {0.2, 0.8, 0, 0.6},
                          {0.45, 1, 0.12, 0.6},
                          {0, 0.55, 0.4, 0.9},
                          {0.2, 0.8, 0.4, 1},
                          {0.45, 1, 0.4, 0.88}});
    expectSums(six);
    double sum = 0;
    for (std::size_t i = 0; i < 6; ++i) {
        EXPECT_GT(six.weight(i, 0.5, 0.5), 0.02) << i;
        sum += six.weight(i, 0.5, 0.5);
    }
    EXPECT_NEAR(sum, 1, 1e-12);
}

/// The most light of an inset is known from a lattice, whose places may lie a hundredth of its width beside it.
constexpr double MOST_OFF_OF_INSETS = 5e-4;

// Nothing but its far edge ends the wide one.
TEST_F(BlendOfRectanglesTest, AnInsetFollowsTheSums) {
    expectSums(Rectangles({{0, 1, 0, 1}, {0.3, 0.72, 0.25, 0.7}}), MOST_OFF_OF_INSETS);
}

TEST_F(BlendOfRectanglesTest, AnInsetOverASeamFollowsTheSums) {
    expectSums(Rectangles({{0, 0.6, 0, 1}, {0.4, 1, 0, 1}, {0.3, 0.72, 0.25, 0.7}}), MOST_OFF_OF_INSETS);
}

/// The edge of the upper one lies inside others and in none of them by turns.
const std::vector<Rectangles::Rectangle> COMB{
    {0, 1, 0.4, 1}, {0.03, 0.15, 0, 0.5}, {0.22, 0.4, 0, 0.62}, {0.45, 0.6, 0, 0.5}, {0.7, 0.97, 0, 0.55}};

TEST_F(BlendOfRectanglesTest, ACombFollowsTheSums) {
    expectSums(Rectangles(COMB));
    const auto pictures = weights();
    // Its own outer edge, between two teeth, and inside one.
    EXPECT_GT(pictures[0].at(static_cast<std::size_t>(0.43 * 1920), 0), 0.999F);
    EXPECT_LT(pictures[0].at(static_cast<std::size_t>(0.31 * 1920), 0), 1e-4F);
}

TEST_F(BlendOfRectanglesTest, TheSumsDoNotDependOnTheirPieces) {
    const Rectangles coarse(COMB, 6000);
    const Rectangles fine(COMB);
    double worst = 0;
    for (std::size_t own = 0; own < COMB.size(); ++own) {
        for (double v = 0.04; v < 1; v += 0.13) {
            for (double u = 0.02; u < 1; u += 0.084) {
                const double s = COMB[own].left + u * (COMB[own].right - COMB[own].left);
                const double t = COMB[own].bottom + v * (COMB[own].top - COMB[own].bottom);
                worst = std::max(worst, std::abs(fine.weight(own, s, t) - coarse.weight(own, s, t)));
            }
        }
    }
    EXPECT_LT(worst, 1e-5) << "a twentieth of what pictures may differ by from the sums";
}

}  // namespace
