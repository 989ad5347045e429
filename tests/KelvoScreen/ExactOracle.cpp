#include "KelvoScreen/ExactOracle.h"

#include <boost/multiprecision/cpp_int.hpp>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <tuple>
#include <utility>

namespace oracle {

namespace {

__extension__ using Quad = __float128;
using Whole = boost::multiprecision::number<boost::multiprecision::cpp_int_backend<>, boost::multiprecision::et_off>;
using Fraction =
    boost::multiprecision::number<boost::multiprecision::rational_adaptor<boost::multiprecision::cpp_int_backend<>>,
                                  boost::multiprecision::et_off>;
using Vector = Point<double, 3>;

template <class Number>
using Corners = std::array<Point<Number, 3>, 3>;

Point<Quad, 3> quad(const Vector& p) {
    return {Quad{p[0]}, Quad{p[1]}, Quad{p[2]}};
}

Corners<Quad> quad(const Triangle& triangle) {
    return {quad(triangle[0]), quad(triangle[1]), quad(triangle[2])};
}

double squareRoot(Quad square) {
    return static_cast<double>(std::sqrt(static_cast<long double>(square)));
}

/// Turns doubles into whole numbers of the largest power of two that divides all of them.
class Scale {
public:
    void include(double value) {
        int exponent = 0;
        (void)std::frexp(value, &exponent);
        if (value != 0) {
            m_exponent = std::min(m_exponent, exponent - MANTISSA);
        }
    }
    void include(const Vector& point) {
        for (std::size_t i = 0; i < 3; ++i) {
            include(point[i]);
        }
    }

    [[nodiscard]] Whole whole(double value) const {
        int exponent = 0;
        const double mantissa = std::ldexp(std::frexp(value, &exponent), MANTISSA);
        if (mantissa == 0) {
            return 0;
        }
        const Whole digits = static_cast<long long>(mantissa);
        return digits << static_cast<unsigned>(exponent - MANTISSA - m_exponent);
    }
    [[nodiscard]] Point<Whole, 3> whole(const Vector& point) const {
        return {whole(point[0]), whole(point[1]), whole(point[2])};
    }

private:
    static constexpr int MANTISSA = 53;
    int m_exponent = 0;
};

/// Without roots: the distance is |offset x direction| / |direction|.
template <class Number>
bool decideLine(const Point<Number, 3>& from, const Point<Number, 3>& to, const Point<Number, 3>& point,
                const Number& bound) {
    const Point<Number, 3> direction = to - from;
    const Point<Number, 3> across = cross(point - from, direction);
    return dot(across, across) <= bound * bound * dot(direction, direction);
}

template <class Number>
bool decideSegment(const Point<Number, 3>& start, const Point<Number, 3>& end, const Point<Number, 3>& point,
                   const Number& bound) {
    const Point<Number, 3> along = end - start;
    const Point<Number, 3> offset = point - start;
    const Number position = dot(offset, along);
    if (position <= 0 || position >= dot(along, along)) {
        const Point<Number, 3> beyond = position <= 0 ? offset : point - end;
        return dot(beyond, beyond) <= bound * bound;
    }
    return decideLine(start, end, point, bound);
}

template <class Number>
bool isAbove(const Corners<Number>& corners, const Point<Number, 3>& area, const Point<Number, 3>& point) {
    for (std::size_t i = 0; i < 3; ++i) {
        const Point<Number, 3> edge = corners[(i + 1) % 3] - corners[i];
        if (dot(cross(area, edge), point - corners[i]) < 0) {
            return false;
        }
    }
    return true;
}

template <class Number>
bool decideTriangle(const Corners<Number>& corners, const Point<Number, 3>& point, const Number& bound) {
    const Point<Number, 3> area = cross(corners[1] - corners[0], corners[2] - corners[0]);
    const Number area2 = dot(area, area);
    if (area2 > 0 && isAbove(corners, area, point)) {
        const Number height = dot(point - corners[0], area);
        return height * height <= bound * bound * area2;
    }
    return decideSegment(corners[0], corners[1], point, bound) || decideSegment(corners[1], corners[2], point, bound) ||
           decideSegment(corners[2], corners[0], point, bound);
}

Quad segmentDistance2(const Point<Quad, 3>& start, const Point<Quad, 3>& end, const Point<Quad, 3>& point) {
    const Point<Quad, 3> along = end - start;
    const Quad length2 = dot(along, along);
    const Quad position = length2 > 0 ? dot(point - start, along) / length2 : 0;
    const Point<Quad, 3> away = start + std::clamp<Quad>(position, 0, 1) * along - point;
    return dot(away, away);
}

Fraction fraction(double value) {
    Scale scale;
    scale.include(value);
    scale.include(1);
    return Fraction(scale.whole(value), scale.whole(1));
}

Point<Fraction, 2> fractions(const Point<double, 2>& p) {
    return {fraction(p[0]), fraction(p[1])};
}

Fraction area(const Point<Fraction, 2>& a, const Point<Fraction, 2>& b, const Point<Fraction, 2>& c) {
    return (b[0] - a[0]) * (c[1] - a[1]) - (b[1] - a[1]) * (c[0] - a[0]);
}

using Weights = std::array<Fraction, 3>;
using FlatTriangle = std::array<Point<Fraction, 2>, 3>;

/// The weights of the place on the edges that is nearest: the nearest of three segments. The second is its distance.
std::pair<Weights, double> weightsOnEdges(const FlatTriangle& corners, const Point<Fraction, 2>& point) {
    Weights weights;
    Fraction smallest = -1;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::size_t next = (i + 1) % 3;
        const Point<Fraction, 2> along = corners[next] - corners[i];
        const Fraction position =
            std::clamp<Fraction>(dot(point - corners[i], along) / dot(along, along), Fraction(0), Fraction(1));
        const Point<Fraction, 2> away = corners[i] + position * along - point;
        if (smallest < 0 || dot(away, away) < smallest) {
            smallest = dot(away, away);
            weights = {};
            weights[i] = 1 - position;
            weights[next] = position;
        }
    }
    return {weights, std::sqrt(static_cast<double>(smallest))};
}

}  // namespace

bool isNearLine(const Vector& from, const Vector& to, const Vector& point, double bound) {
    return decideLine<Quad>(quad(from), quad(to), quad(point), bound);
}

bool isNearTriangle(const Triangle& triangle, const Vector& point, double bound) {
    return decideTriangle<Quad>(quad(triangle), quad(point), bound);
}

bool isExactlyNearLine(const Vector& from, const Vector& to, const Vector& point, double bound) {
    Scale scale;
    scale.include(bound);
    for (const Vector& p : {from, to, point}) {
        scale.include(p);
    }
    return decideLine<Whole>(scale.whole(from), scale.whole(to), scale.whole(point), scale.whole(bound));
}

bool isExactlyNearTriangle(const Triangle& triangle, const Vector& point, double bound) {
    Scale scale;
    scale.include(bound);
    for (const Vector& p : {triangle[0], triangle[1], triangle[2], point}) {
        scale.include(p);
    }
    const Corners<Whole> corners{scale.whole(triangle[0]), scale.whole(triangle[1]), scale.whole(triangle[2])};
    return decideTriangle<Whole>(corners, scale.whole(point), scale.whole(bound));
}

double preciseDistance(const Triangle& triangle, const Vector& point) {
    const Corners<Quad> corners = quad(triangle);
    const Point<Quad, 3> place = quad(point);
    const Point<Quad, 3> area = cross(corners[1] - corners[0], corners[2] - corners[0]);
    const Quad area2 = dot(area, area);
    if (area2 > 0 && isAbove(corners, area, place)) {
        const Quad height = dot(place - corners[0], area);
        return squareRoot(height * height / area2);
    }
    return squareRoot(
        std::min({segmentDistance2(corners[0], corners[1], place), segmentDistance2(corners[1], corners[2], place),
                  segmentDistance2(corners[2], corners[0], place)}));
}

Vector preciseNormal(const Triangle& triangle) {
    const Corners<Quad> corners = quad(triangle);
    const Point<Quad, 3> area = cross(corners[1] - corners[0], corners[2] - corners[0]);
    const long double length = std::sqrt(static_cast<long double>(dot(area, area)));
    const auto component = [&](std::size_t i) {
        return static_cast<double>(static_cast<long double>(area[i]) / length);
    };
    return {component(0), component(1), component(2)};
}

double exactArea(const Point<double, 2>& a, const Point<double, 2>& b, const Point<double, 2>& c) {
    return static_cast<double>(area(fractions(a), fractions(b), fractions(c)));
}

double exactProjection(const Point<double, 2>& a, const Point<double, 2>& b, const Point<double, 2>& c) {
    const Point<Fraction, 2> start = fractions(a);
    return static_cast<double>(dot(fractions(b) - start, fractions(c) - start));
}

MappedPlace exactlyMapped(const std::array<Point<double, 2>, 3>& texture, const Triangle& triangle,
                          const Point<double, 2>& st) {
    const FlatTriangle corners{fractions(texture[0]), fractions(texture[1]), fractions(texture[2])};
    const auto& [a, b, c] = corners;
    const Point<Fraction, 2> p = fractions(st);
    const Fraction whole = area(a, b, c);
    Weights weights{area(p, b, c) / whole, area(p, c, a) / whole, area(p, a, b) / whole};
    MappedPlace mapped;
    mapped.isInside = weights[0] >= 0 && weights[1] >= 0 && weights[2] >= 0;
    if (!mapped.isInside) {
        std::tie(weights, mapped.distance) = weightsOnEdges(corners, p);
    }
    for (std::size_t k = 0; k < 3; ++k) {
        Fraction sum = 0;
        for (std::size_t i = 0; i < 3; ++i) {
            sum += weights[i] * fraction(triangle[i][k]);
        }
        mapped.point[k] = static_cast<double>(sum);
    }
    return mapped;
}

}  // namespace oracle
