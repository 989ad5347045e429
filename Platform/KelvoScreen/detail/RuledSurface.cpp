#include "KelvoScreen/detail/RuledSurface.h"

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/detail/RayAim.h"
#include "KelvoScreen/detail/Rounding.h"
#include "KelvoScreen/detail/ScreenSampling.h"
#include "KelvoScreen/detail/SurfaceLimits.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <utility>

namespace Veltrani::KelvoScreenDetail {

namespace {

/// How far the surface continues past its edges, in widths and heights of the patch there. Further out the coordinates
/// of a twisted patch have no digits left.
constexpr double CONTINUATION = 1e6;
/// The error of a point of a patch, in units of ROUNDING: it takes more operations than those of the other shapes.
constexpr double PATCH_ROUNDING = 4 * ROUNDING;
/// Meetings this near to each other, in units of the uncertainty of each, are one on the ruling or edge between them.
constexpr double SAME = 4;
/// A patch that is this many times further from a point than a touching one does not touch it, whatever was rounded.
constexpr double FAR_FROM_OTHERS = 4;

}  // namespace

/// The line of a ray, relative to the centre of the surface and moved to the point nearest to it: however far away the
/// ray starts, what enters the patches is of their own size.
struct RuledSurface::AimedLine : Line {
    double middle = 0;  ///< distance along the ray from its start to `origin`
    double length = 1;  ///< of the direction of the ray
    double scale = 1;   ///< see `RayAim::scale`
    double tolerance = 0;

    [[nodiscard]] double uncertainty(double cosine) const { return uncertaintyAlong(tolerance, cosine); }
};

/// Collects the meetings with the patches as hits of the surface: in front of the start, once each.
class RuledSurface::Collector {
public:
    Collector(const RuledSurface& surface, const AimedLine& line, const int* sign)
        : m_surface(surface), m_line(line), m_sign(sign) {}

    void add(std::size_t patch, PatchMeeting meeting) {
        const RuledPatch& where = m_surface.m_patches[patch];
        const Point<double, 3> normal = where.normalAt(meeting.place);
        const double cosine = dot(normal, m_line.direction);
        const bool isAtTip = where.moveToTip(m_line, m_line.tolerance, SAME * m_line.uncertainty(cosine), meeting);
        // Those that are repeated are remembered too: they are what the next patch may repeat.
        const bool isKnown = isRepeated(patch, meeting, cosine) || (isAtTip && isHit(meeting.point));
        remember(patch, meeting);
        if (!isKnown) {
            addHit(patch, meeting, isAtTip ? where.normalAt(meeting.place) : normal);
        }
    }

    [[nodiscard]] bool isEmpty() const { return m_hits.empty(); }
    /// Returns the patch of the first hit, when there is one.
    [[nodiscard]] std::size_t nearestPatch() const { return m_nearestPatch; }
    /// Moves the hits out; to be called once, at the end.
    [[nodiscard]] IntersectionSet takeHits() { return std::move(m_hits); }

private:
    struct Memory {
        std::size_t patch = 0;
        std::array<PatchMeeting, 2> meetings;
        std::size_t count = 0;
    };

    void addHit(std::size_t patch, const PatchMeeting& meeting, const Point<double, 3>& normal) {
        double along = m_line.middle + meeting.along;
        if (along < 0 && along >= -m_line.uncertainty(dot(normal, m_line.direction))) {
            along = 0;
        }
        const double inDirections = along / m_line.length;
        const double t = along == 0 ? 0.0 : inDirections * m_line.scale;
        const bool isWanted = m_sign == nullptr || sideOfSurface(m_line.direction, normal) == *m_sign;
        if (t >= 0 && std::isfinite(t) && isWanted) {
            m_nearestPatch = m_hits.empty() || t < m_hits.first().t ? patch : m_nearestPatch;
            m_hits.add({m_surface.m_centre + meeting.point, t});
        }
    }

    /// Returns true when this very point, a tip that several patches have in common, is a hit already.
    [[nodiscard]] bool isHit(const Point<double, 3>& point) const {
        std::size_t i = 0;
        while (i < m_hits.size() && m_hits[i].point != m_surface.m_centre + point) {
            ++i;
        }
        return i < m_hits.size();
    }

    /// Returns true for a meeting on the ruling of two patches that the other one has reported, or on an edge, where
    /// the line may meet the continuation of the patch once more: moved onto it, both are the same.
    [[nodiscard]] bool isRepeated(std::size_t patch, const PatchMeeting& meeting, double cosine) const {
        const bool isLast = patch + 1 == m_surface.m_patches.size();
        const bool isOnEdge = meeting.place.isAtEnd() || m_previous.meetings[0].place.isAtEnd();
        const bool mayRepeat = m_previous.patch + 1 == patch || (m_previous.patch == patch && isOnEdge);
        return (mayRepeat && repeats(m_previous, meeting, cosine)) ||
               (m_surface.m_isClosed && isLast && repeats(m_first, meeting, cosine));
    }

    [[nodiscard]] bool repeats(const Memory& neighbour, const PatchMeeting& meeting, double cosine) const {
        return std::any_of(
            neighbour.meetings.begin(), neighbour.meetings.begin() + static_cast<std::ptrdiff_t>(neighbour.count),
            [&](const PatchMeeting& known) {
                const Point<double, 3> normal = m_surface.m_patches[neighbour.patch].normalAt(known.place);
                const double smaller = std::min(std::abs(cosine), std::abs(dot(normal, m_line.direction)));
                return std::abs(known.along - meeting.along) <= SAME * m_line.uncertainty(smaller);
            });
    }

    void remember(std::size_t patch, const PatchMeeting& meeting) {
        if (m_previous.patch != patch) {
            m_previous = {patch, {}, 0};
        }
        m_previous.meetings[m_previous.count++] = meeting;
        if (patch == 0) {
            m_first = m_previous;
        }
    }

    const RuledSurface& m_surface;
    const AimedLine& m_line;
    const int* m_sign;  ///< null: both sides
    Memory m_previous, m_first;
    IntersectionSet m_hits;
    std::size_t m_nearestPatch = 0;
};

RuledSurface::RuledSurface(RuledNumbers numbers) : m_numbers(std::move(numbers)) {
    if (faultOfRails().empty()) {
        build();
    }
}

std::wstring RuledSurface::faultOfRails() const {
    const auto areFinite = [](const std::vector<Point<double, 3>>& rail) {
        return std::all_of(rail.begin(), rail.end(), [](const Point<double, 3>& point) { return isFinite(point); });
    };
    const std::size_t lower = m_numbers.lower.size();
    const std::size_t upper = m_numbers.upper.size();
    if (lower < 2 || lower != upper) {
        return L"its rails have " + std::to_wstring(lower) + L" points (lower) and " + std::to_wstring(upper) +
               L" (upper), expected as many on both, two at least: correct LowerRail and UpperRail";
    }
    if (!areFinite(m_numbers.lower) || !areFinite(m_numbers.upper)) {
        return L"a point of its rails is not finite: correct LowerRail and UpperRail";
    }
    return {};
}

std::wstring RuledSurface::fault() const {
    const std::wstring ofRails = faultOfRails();
    return m_isValid || !ofRails.empty()
               ? ofRails
               : L"there is no area between its rails: move LowerRail and UpperRail apart, and their points";
}

void RuledSurface::build() {
    const auto& [lower, upper] = m_numbers;
    Point<double, 3> low = lower[0];
    Point<double, 3> high = lower[0];
    for (const auto* rail : {&lower, &upper}) {
        for (const Point<double, 3>& point : *rail) {
            for (std::size_t i = 0; i < 3; ++i) {
                low[i] = std::min(low[i], point[i]);
                high[i] = std::max(high[i], point[i]);
            }
            m_extent = std::max(m_extent, largestComponent(point));
        }
    }
    m_centre = low * 0.5 + high * 0.5;
    const double length = parameterised();
    m_isClosed = m_patches.size() > 1 && widthBetween(0, lower.size() - 1) <= m_dust;
    m_isValid = length > 0 && std::isfinite(length * length) &&
                std::any_of(m_patches.begin(), m_patches.end(), [](const RuledPatch& p) { return p.hasArea(); });
}

double RuledSurface::widthBetween(std::size_t left, std::size_t right) const {
    const auto& [lower, upper] = m_numbers;
    return (norm(lower[right] - lower[left]) + norm(upper[right] - upper[left])) / 2;
}

std::vector<std::size_t> RuledSurface::rulings(double dust) const {
    std::vector<std::size_t> kept{0};
    const std::size_t last = m_numbers.lower.size() - 1;
    for (std::size_t i = 1; i < last; ++i) {
        if (widthBetween(kept.back(), i) > dust) {
            kept.push_back(i);
        }
    }
    // The surface ends exactly at the last points: those before them are removed.
    while (kept.size() > 1 && !(widthBetween(kept.back(), last) > dust)) {
        kept.pop_back();
    }
    if (widthBetween(kept.back(), last) > dust) {
        kept.push_back(last);
    }
    return kept;
}

double RuledSurface::parameterised() {
    const auto& [lower, upper] = m_numbers;
    double total = 0;
    for (std::size_t i = 0; i + 1 < lower.size(); ++i) {
        total += widthBetween(i, i + 1);
    }
    m_dust = ROUNDING * std::max(m_extent, total);
    m_rulings = rulings(m_dust);
    double length = 0;
    for (std::size_t i = 0; i + 1 < m_rulings.size(); ++i) {
        const std::size_t left = m_rulings[i];
        const std::size_t right = m_rulings[i + 1];
        length += widthBetween(left, right);
        m_patches.emplace_back(lower[left] - m_centre, lower[right] - m_centre, upper[left] - m_centre,
                               upper[right] - m_centre);
        m_ends.push_back(length);
    }
    for (double& end : m_ends) {
        end /= length;
    }
    return length;
}

RuledSurface::AimedLine RuledSurface::aimedLine(const Point<double, 3>& from, const RayAim& aim) const {
    AimedLine line;
    line.length = std::sqrt(aim.length2);
    line.scale = aim.scale;
    line.direction = aim.direction * (1 / line.length);
    line.origin = from - m_centre;
    // The first step rounds in units of the distance of the start, the second in units of what is left.
    for (int step = 0; step < 2; ++step) {
        const double ahead = -dot(line.origin, line.direction);
        line.origin += ahead * line.direction;
        line.middle += ahead;
    }
    line.tolerance = PATCH_ROUNDING * (largestComponent(from) + m_extent);
    return line;
}

PatchRange RuledSurface::rangeOf(std::size_t patch, bool continued) const {
    PatchRange range;
    if (continued) {
        range.vMin = -CONTINUATION;
        range.vMax = 1 + CONTINUATION;
        if (patch == 0 && !m_isClosed) {
            range.uMin = -CONTINUATION;
        }
        if (patch + 1 == m_patches.size() && !m_isClosed) {
            range.uMax = 1 + CONTINUATION;
        }
    }
    return range;
}

void RuledSurface::collect(const AimedLine& line, bool continued, Collector& collector) const {
    std::array<PatchMeeting, 2> meetings;
    for (std::size_t i = 0; i < m_patches.size(); ++i) {
        if (continued || m_patches[i].mayMeet(line, line.tolerance)) {
            const std::size_t count = m_patches[i].meet(line, rangeOf(i, continued), line.tolerance, meetings);
            for (std::size_t j = 0; j < count; ++j) {
                collector.add(i, meetings[j]);
            }
        }
    }
}

IntersectionSet RuledSurface::intersect(const Point<double, 3>& from, const Point<double, 3>& to) const {
    const RayAim aim(from, to);
    if (!m_isValid || !aim.isUsable()) {
        return {};
    }
    const AimedLine line = aimedLine(from, aim);
    Collector collector(*this, line, nullptr);
    collect(line, false, collector);
    return collector.takeHits();
}

void RuledSurface::nearestHits(std::span<const Ray> rays, std::span<SurfaceHit> hits) const {
    std::transform(rays.begin(), rays.end(), hits.begin(), [this](const Ray& ray) { return nearestHit(ray); });
}

SurfaceHit RuledSurface::nearestHit(const Ray& ray) const {
    const RayAim aim(ray.first, ray.second);
    if (!m_isValid || !aim.isUsable()) {
        return {};
    }
    const AimedLine line = aimedLine(ray.first, aim);
    Collector collector(*this, line, nullptr);
    collect(line, false, collector);
    if (collector.isEmpty()) {
        return {};
    }
    const Intersection nearest = collector.takeHits().first();
    const Point<double, 3> unit = normalOn(collector.nearestPatch(), nearest.point);
    return {nearest.point, unit, nearest.t, sideOfSurface(ray.second - ray.first, unit), true};
}

IntersectionSet RuledSurface::intersectContinued(const Point<double, 3>& from, const Point<double, 3>& to,
                                                 int sign) const {
    const RayAim aim(from, to);
    if (!m_isValid || !aim.isUsable()) {
        return {};
    }
    const AimedLine line = aimedLine(from, aim);
    for (const bool continued : {false, true}) {
        Collector collector(*this, line, &sign);
        collect(line, continued, collector);
        if (!collector.isEmpty()) {
            return collector.takeHits();
        }
    }
    return {};
}

Point<double, 3> RuledSurface::normal(const Point<double, 3>& point) const {
    if (!m_isValid || !isFinite(point)) {
        return {};
    }
    const Point<double, 3> relative = point - m_centre;
    PatchPlace place;
    const std::size_t patch = nearestPatch(relative, place);
    return m_patches[patch].normalAt(m_patches[patch].refineClosest(relative, place, rangeOf(patch, true)));
}

Point<double, 3> RuledSurface::normalOn(std::size_t patch, const Point<double, 3>& point) const {
    // When this patch touches the point and no other one does, `nearestPatch` finds it, after it has measured others in
    // vain.
    const double touching = PATCH_ROUNDING * m_extent;
    const Point<double, 3> relative = point - m_centre;
    if (isFinite(point) && isFarFromOthers(patch, relative, FAR_FROM_OTHERS * touching)) {
        const RuledPatch& where = m_patches[patch];
        const PatchPlace place = where.closest(relative, touching);
        if (norm(where.pointAt(place) - relative) <= touching) {
            return where.normalAt(where.refineClosest(relative, place, rangeOf(patch, true)));
        }
    }
    return normal(point);
}

bool RuledSurface::isFarFromOthers(std::size_t patch, const Point<double, 3>& relative, double distance) const {
    const RuledPatch& own = m_patches[patch];
    return std::all_of(m_patches.begin(), m_patches.end(), [&](const RuledPatch& other) {
        return &other == &own || other.distanceBound(relative) > distance ||
               own.isApart(other, &other > &own, relative, distance);
    });
}

std::size_t RuledSurface::nearestPatch(const Point<double, 3>& point, PatchPlace& place) const {
    // A likely patch comes first: most others are excluded then.
    std::size_t nearest = 0;
    double leastBound = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < m_patches.size(); ++i) {
        const double bound = m_patches[i].distanceBound(point);
        if (bound < leastBound) {
            leastBound = bound;
            nearest = i;
        }
    }
    const double touching = PATCH_ROUNDING * m_extent;
    place = m_patches[nearest].closest(point, touching);
    double smallest = norm(m_patches[nearest].pointAt(place) - point);
    for (std::size_t i = 0; i < m_patches.size() && smallest > touching; ++i) {
        if (m_patches[i].distanceBound(point) < smallest) {
            const PatchPlace candidate = m_patches[i].closest(point, touching);
            const double distance = norm(m_patches[i].pointAt(candidate) - point);
            if (distance < smallest) {
                smallest = distance;
                nearest = i;
                place = candidate;
            }
        }
    }
    return nearest;
}

bool RuledSurface::pointAt(double s, double t, Point<double, 3>& out) const {
    const bool isOutside = s < 0 || s > 1;
    const double turned = m_isClosed && isOutside ? s - std::floor(s) : s;
    const auto end = std::upper_bound(m_ends.begin(), m_ends.end() - 1, turned);
    const std::size_t patch = static_cast<std::size_t>(end - m_ends.begin());
    const double start = patch == 0 ? 0.0 : m_ends[patch - 1];
    const PatchPlace place{(turned - start) / (*end - start), t};
    const PatchRange range = rangeOf(patch, true);
    if (!(place.u >= range.uMin && place.u <= range.uMax && t >= range.vMin && t <= range.vMax)) {
        return false;
    }
    // Calculated from the rails themselves, not relative to the centre: their points are mapped to the last bit.
    const auto onRail = [&](const std::vector<Point<double, 3>>& rail) {
        return (1 - place.u) * rail[m_rulings[patch]] + place.u * rail[m_rulings[patch + 1]];
    };
    return storeIfFinite((1 - t) * onRail(m_numbers.lower) + t * onRail(m_numbers.upper), out);
}

}  // namespace Veltrani::KelvoScreenDetail
