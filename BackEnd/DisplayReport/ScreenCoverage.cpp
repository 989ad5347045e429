#include "DisplayReport/ScreenCoverage.h"

#include "DisplayReport/ScreenSampling.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace Veltrani::DisplayReport {

namespace {

/// Light is looked for at steps of this part of the screen's size, or of the size of a picture on it, whichever is
/// smaller.
constexpr double COARSE = 1.0 / 128;
/// But no smaller than this part of the screen's size, which bounds the time.
constexpr double LEAST = 1.0 / 16384;
/// Borders are taken for straight over this part of a step.
constexpr double FINE = 1.0 / 2;
/// Triangles between two words on the progress.
constexpr std::size_t TRIANGLES_AT_ONCE = 64;
/// Pieces that long steps may not exceed, for meshes of a great many long triangles.
constexpr double MOST_PIECES = 4e6;

bool overlap(const Extent& a, const Extent& b) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
        if (a.maximum()[axis] < b.minimum()[axis] || b.maximum()[axis] < a.minimum()[axis]) {
            return false;
        }
    }
    return !a.empty() && !b.empty();
}

/// How closely the light is looked for: where a picture lies, more closely the smaller it is.
class Steps {
public:
    Steps(const ScreenSampling& screen, const std::vector<Extent>& pictures) : m_pictures(pictures) {
        const double size = norm(screen.extent().size());
        m_coarse = std::max(COARSE * size, longestAllowed(screen));
        m_least = LEAST * size;
    }

    /// For a triangle of the surface.
    [[nodiscard]] double at(const LitTriangle& triangle) const {
        Extent box;
        for (const LitPoint& corner : triangle) {
            box.add(corner.on.place);
        }
        double step = m_coarse;
        for (const Extent& picture : m_pictures) {
            if (overlap(box, picture)) {
                step = std::min(step, std::max(m_least, COARSE * norm(picture.size())));
            }
        }
        return step;
    }

private:
    /// Each triangle of a mesh is cut into as many pieces as its longest edge has steps, at least.
    static double longestAllowed(const ScreenSampling& screen) {
        double edges = 0;
        for (std::size_t i = 0; i < screen.size(); ++i) {
            const ScreenSampling::Triangle triangle = screen.triangle(i);
            edges += norm(triangle[1].place - triangle[0].place) + norm(triangle[2].place - triangle[1].place);
        }
        return std::isfinite(edges) ? edges / MOST_PIECES : 0.0;
    }

    const std::vector<Extent>& m_pictures;
    double m_coarse = 0;
    double m_least = 0;
};

class SurfaceDomain : public LitDomain {
public:
    SurfaceDomain(const ScreenSampling& screen, const PictureCoverage::Lights& lights,
                  const std::vector<Extent>& pictures)
        : m_screen(screen), m_lights(lights), m_steps(screen, pictures) {}

    [[nodiscard]] LitPoint between(const LitPoint& from, const LitPoint& to, double part) const override {
        return litPoint(m_screen.between(from.on, to.on, part));
    }

    [[nodiscard]] LightSteps stepsIn(const LitTriangle& triangle) const override {
        const double coarse = m_steps.at(triangle);
        return {coarse, FINE * coarse};
    }

    [[nodiscard]] double distance(const LitPoint& a, const LitPoint& b) const override {
        return norm(a.on.place - b.on.place);
    }

    [[nodiscard]] LitPoint litPoint(const SurfacePoint& on) const {
        LitPoint point{{}, on, {}};
        for (std::size_t i = 0; i < m_lights.size(); ++i) {
            point.by[i] = m_lights[i]->lights(on);
        }
        return point;
    }

private:
    const ScreenSampling& m_screen;
    const PictureCoverage::Lights& m_lights;
    Steps m_steps;
};

/// The light on corners that were asked for lately: the triangles of a mesh share each with five others.
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
                kept = {numbers[corner] + 1, m_domain.litPoint(triangle[corner]).by};
            }
            lit[corner] = {{}, triangle[corner], kept.by};
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

class Sums {
public:
    Sums(ScreenCoverage& coverage, std::size_t channels) : m_coverage(coverage), m_channels(channels) {
        coverage.byCount.resize(channels + 1);
        coverage.sharedBy.assign(channels, std::vector<double>(channels));
    }

    void add(double area, const LitBy& by) {
        m_coverage.area += area;
        m_coverage.byCount[by.count()] += area;
        for (std::size_t i = 0; by.any() && i < m_channels; ++i) {
            for (std::size_t j = 0; by[i] && j < m_channels; ++j) {
                m_coverage.sharedBy[i][j] += by[j] ? area : 0.0;
            }
        }
    }

private:
    ScreenCoverage& m_coverage;
    std::size_t m_channels;
};

}  // namespace

ScreenCoverage ScreenCoverage::of(const ScreenSampling& screen, const PictureCoverage::Lights& lights,
                                  const std::vector<Extent>& pictures, const Take& take, const Progress& progress) {
    ScreenCoverage coverage;
    Sums sums(coverage, lights.size());
    const SurfaceDomain domain(screen, lights, pictures);
    const LightCutter cutter(domain, [&](const LitTriangle& piece, const LitBy& by) {
        const double area = screen.area({piece[0].on, piece[1].on, piece[2].on});
        if (!(area > 0.0)) {
            return;
        }
        sums.add(area, by);
        if (take) {
            take(piece, by);
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
