#include "DisplayReport/coverage/ScreenCoverage.h"

#include "DisplayReport/coverage/ScreenSampling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>

namespace Veltrani::DisplayReport {

namespace {

/// Light is looked for at steps of this part of the screen's size, or of the size of a picture on it, whichever is
/// smaller.
constexpr double COARSE = 1.0 / 64;
/// A picture is a strip of at least so many steps: this part of its width is one.
constexpr double ACROSS = 1.0 / 4;
/// But no smaller than this part of the screen's size, which bounds the time.
constexpr double LEAST = 1.0 / 16384;
/// Borders are taken for straight over this part of a step.
constexpr double FINE = 1.0 / 4;
/// Triangles between two reports of the progress.
constexpr std::size_t TRIANGLES_AT_ONCE = 64;
/// Steps along the edges of all triangles, and along those where one picture lies: a bound for meshes of a great many
/// long triangles.
constexpr double MOST_STEPS = 4e5;
/// Squares of one step on the surface, likewise: a bound for surfaces that fill a room, page behind page.
constexpr double MOST_SQUARES = 2e5;
/// The part of the way from a corner into a piece at which the corner is searched in a picture where it is not found
/// itself, by rounding, since it stands on the edge of the picture.
constexpr double INWARDS = 1e-3;

bool overlap(const Extent& a, const Extent& b) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (a.maximum()[axis] < b.minimum()[axis] || b.maximum()[axis] < a.minimum()[axis]) {
            return false;
        }
    }
    return !a.empty() && !b.empty();
}

Extent boxOf(const LitTriangle& triangle) {
    Extent box;
    for (const LitPoint& corner : triangle) {
        box.add(corner.on.place);
    }
    return box;
}

/// How closely the light is looked for: where a picture lies, more closely the smaller it is.
class Steps {
public:
    Steps(const ScreenSampling& screen, const std::vector<LandingExtent>& pictures) {
        const double size = norm(screen.extent().size());
        for (const LandingExtent& picture : pictures) {
            double step = COARSE * norm(picture.box.size());
            step = picture.narrow > 0.0 ? std::min(step, ACROSS * picture.narrow) : step;
            m_pictures.push_back({picture.box, std::max(LEAST * size, step)});
        }
        std::vector<Amount> amounts(pictures.size());
        const Amount all = addAmounts(screen, amounts);
        m_coarse = std::max(COARSE * size, all.leastStep());
        for (std::size_t i = 0; i < amounts.size(); ++i) {
            m_pictures[i].step = std::max(m_pictures[i].step, amounts[i].leastStep());
        }
    }

    /// The step for a triangle of the surface.
    [[nodiscard]] double at(const LitTriangle& triangle) const {
        const Extent box = boxOf(triangle);
        double step = m_coarse;
        for (const Picture& picture : m_pictures) {
            if (picture.step < step && overlap(box, picture.extent)) {
                step = picture.step;
            }
        }
        return step;
    }

private:
    struct Picture {
        Extent extent;
        double step = 0;
    };

    /// An amount of surface. A triangle is cut into as many pieces as its longest edge has steps, at least, and as its
    /// area has squares.
    struct Amount {
        double edges = 0;
        double area = 0;

        void add(const ScreenSampling::Triangle& triangle) {
            const Point<double, 3> ab = triangle[1].place - triangle[0].place;
            const Point<double, 3> bc = triangle[2].place - triangle[1].place;
            edges += norm(ab) + norm(bc);
            area += norm(cross(ab, bc)) / 2;
        }
        [[nodiscard]] double leastStep() const { return std::max(edges / MOST_STEPS, std::sqrt(area / MOST_SQUARES)); }
    };

    /// What lies where each picture does, and everything. Triangles that are not finite are left out.
    Amount addAmounts(const ScreenSampling& screen, std::vector<Amount>& amounts) const {
        Amount all;
        for (std::size_t i = 0; i < screen.size(); ++i) {
            const ScreenSampling::Triangle triangle = screen.triangle(i);
            Amount own;
            own.add(triangle);
            if (!std::isfinite(own.edges + own.area)) {
                continue;
            }
            all.add(triangle);
            const Extent box = boxOf({LitPoint{triangle[0], {}}, LitPoint{triangle[1], {}}, LitPoint{triangle[2], {}}});
            for (std::size_t picture = 0; picture < amounts.size(); ++picture) {
                if (overlap(box, m_pictures[picture].extent)) {
                    amounts[picture].add(triangle);
                }
            }
        }
        return all;
    }

    std::vector<Picture> m_pictures;
    double m_coarse = 0;
};

class SurfaceDomain : public LitDomain {
public:
    SurfaceDomain(const ScreenSampling& screen, const ChannelLights& lights, const std::vector<LandingExtent>& pictures)
        : m_screen(screen), m_lights(lights), m_steps(screen, pictures) {}

    [[nodiscard]] LitPoint between(const LitPoint& from, const LitPoint& to, double part,
                                   const LitBy& among) const override {
        return litPoint(m_screen.between(from.on, to.on, part), among);
    }

    [[nodiscard]] LightSteps stepsIn(const LitTriangle& triangle) const override {
        const double coarse = m_steps.at(triangle);
        return {coarse, FINE * coarse};
    }

    [[nodiscard]] double distance(const LitPoint& a, const LitPoint& b) const override {
        return norm(a.on.place - b.on.place);
    }

    [[nodiscard]] LitPoint litPoint(const SurfacePoint& on, const LitBy& among) const {
        LitPoint point{on, {}};
        for (std::size_t i = 0; i < m_lights.size(); ++i) {
            point.by[i] = among[i] && m_lights[i]->lights(on);
        }
        return point;
    }

private:
    const ScreenSampling& m_screen;
    const ChannelLights& m_lights;
    Steps m_steps;
};

/// The light on corners that were requested lately: the triangles of a mesh share each with five others.
class CornerLight {
public:
    CornerLight(const ScreenSampling& screen, const SurfaceDomain& domain)
        : m_screen(screen), m_domain(domain), m_kept(std::min(MOST_KEPT, 3 * screen.size())) {}

    LitTriangle litTriangle(std::size_t i) {
        const ScreenSampling::Triangle triangle = m_screen.triangle(i);
        const auto numbers = m_screen.cornerNumbers(i);
        LitTriangle lit;
        for (std::size_t corner = 0; corner < lit.size(); ++corner) {
            Kept& kept = m_kept[numbers[corner] % m_kept.size()];
            if (kept.number != numbers[corner] + 1) {
                kept = {numbers[corner] + 1, m_domain.litPoint(triangle[corner], LitBy().set()).by};
            }
            lit[corner] = {triangle[corner], kept.by};
        }
        return lit;
    }

private:
    /// A prime, lest vertices that are kept in one place come in turn; 5 MB.
    static constexpr std::size_t MOST_KEPT = 131071;

    struct Kept {
        std::uint64_t number = 0;  ///< of the corner, and one; 0 for none
        LitBy by;
    };

    const ScreenSampling& m_screen;
    const SurfaceDomain& m_domain;
    std::vector<Kept> m_kept;
};

/// Adds the pieces of the surface up.
class Sums {
public:
    Sums(ScreenCoverage& coverage, const ScreenSampling& screen, const ChannelLights& lights)
        : m_coverage(coverage), m_screen(screen), m_lights(lights) {
        coverage.byCount.resize(lights.size() + 1);
        coverage.sharedBy.assign(lights.size(), std::vector<double>(lights.size()));
        coverage.partShared = coverage.sharedBy;
        coverage.landed.assign(lights.size(), PictureBox::none());
        coverage.hints.resize(lights.size());
    }

    void add(const LitTriangle& piece, double area, const LitBy& by) {
        m_coverage.area += area;
        m_coverage.byCount[by.count()] += area;
        m_litBy.clear();
        for (std::size_t i = 0; by.any() && i < m_lights.size(); ++i) {
            if (by[i]) {
                m_litBy.push_back(i);
            }
        }
        for (const std::size_t i : m_litBy) {
            const double part = partOfPicture(i, piece, area);
            for (const std::size_t j : m_litBy) {
                m_coverage.sharedBy[i][j] += area;
                m_coverage.partShared[i][j] += part;
            }
        }
    }

private:
    double partOfPicture(std::size_t light, const LitTriangle& piece, double area) {
        std::array<Point<double, 2>, 3> corners;
        for (std::size_t i = 0; i < corners.size(); ++i) {
            if (!findCorner(*m_lights[light], piece, i, corners[i])) {
                return 0;
            }
        }
        for (const Point<double, 2>& corner : corners) {
            m_coverage.landed[light].add(corner);
        }
        const Point<double, 2> across = corners[1] - corners[0];
        const Point<double, 2> upwards = corners[2] - corners[0];
        const double part = std::abs(across[0] * upwards[1] - across[1] * upwards[0]) / 2;
        m_coverage.hints[light].add(corners, part, area);
        return part;
    }

    bool findCorner(const ChannelLight& light, const LitTriangle& piece, std::size_t i,
                    Point<double, 2>& corner) const {
        if (light.findPicture(piece[i].on, corner)) {
            return true;
        }
        const SurfacePoint opposite = m_screen.between(piece[(i + 1) % 3].on, piece[(i + 2) % 3].on, 0.5);
        return light.findPicture(m_screen.between(piece[i].on, opposite, INWARDS), corner);
    }

    ScreenCoverage& m_coverage;
    const ScreenSampling& m_screen;
    const ChannelLights& m_lights;
    std::vector<std::size_t> m_litBy;
};

}  // namespace

ScreenCoverage ScreenCoverage::of(const ScreenSampling& screen, const ChannelLights& lights,
                                  const std::vector<LandingExtent>& extents, const Take& take,
                                  const Progress& progress) {
    ScreenCoverage coverage;
    Sums sums(coverage, screen, lights);
    const SurfaceDomain domain(screen, lights, extents);
    const LightCutter cutter(domain, [&](const LitTriangle& piece, const LitBy& by) {
        const double pieceArea = screen.area({piece[0].on, piece[1].on, piece[2].on});
        if (!(pieceArea > 0.0)) {
            return;
        }
        sums.add(piece, pieceArea, by);
        if (take) {
            take(piece, pieceArea, by);
        }
    });
    CornerLight corners(screen, domain);
    for (std::size_t i = 0; i < screen.size(); ++i) {
        if (progress && i % TRIANGLES_AT_ONCE == 0) {
            progress(i, screen.size());
        }
        cutter.cut(corners.litTriangle(i));
    }
    return coverage;
}

}  // namespace Veltrani::DisplayReport
