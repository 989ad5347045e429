#include "FitSession/ControlAgreement.h"

#include "DisplayReport/basics/NumberText.h"
#include "FitSession/ControlPlaces.h"

#include <Eigen/Core>
#include <Eigen/Geometry>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <utility>

namespace Veltrani::FitSession {

namespace {

using ControlPlaces::Places;
using DisplayReport::significantText;
using Controls = std::vector<ControlPoint>;

constexpr std::size_t FEWEST_OTHERS = 3;

/// A deviation below this part of what the control points span is of no importance.
constexpr double IMPORTANT = 1e-3;

/// Control points agree where one movement brings them this near to where they should be, as a part of what they span.
constexpr double AGREEING = 0.01;

/// Movements are tried of any three of so many of them.
constexpr std::size_t MOST_TRIED = 24;

/// The limits of an F distribution of 3 and so many degrees of freedom that one number in a thousand exceeds.
struct Limit {
    double freedom;
    double ratio;
};
constexpr std::array LIMITS{Limit{2, 999.2},  Limit{3, 141.1},  Limit{4, 56.18},  Limit{5, 33.20},
                            Limit{6, 23.70},  Limit{8, 15.83},  Limit{10, 12.55}, Limit{15, 9.335},
                            Limit{20, 8.098}, Limit{30, 7.054}, Limit{60, 6.171}};

/// The limit of the next smaller number of degrees of freedom that is known, which is larger.
double limitOf(double freedom) {
    double ratio = LIMITS.front().ratio;
    for (const Limit& limit : LIMITS) {
        ratio = limit.freedom <= freedom ? limit.ratio : ratio;
    }
    return ratio;
}

Controls without(const Controls& controls, std::size_t left) {
    Controls others = controls;
    others.erase(others.begin() + static_cast<std::ptrdiff_t>(left));
    return others;
}

double spanOf(const Controls& controls) {
    return ControlPlaces::spreadOf(ControlPlaces::of(controls, &ControlPoint::known)).norm();
}

Places deviationsOf(const Controls& controls, bool mayScale) {
    return ControlPlaces::deviationsOf(ControlPlaces::of(controls, &ControlPoint::measured),
                                       ControlPlaces::of(controls, &ControlPoint::known), mayScale);
}

/// Those that one movement brings near to where they should be, and the others.
struct Parts {
    Controls agreeing;
    Controls others;
};

Parts partsOf(const Controls& controls, const Eigen::Matrix4d& movement, double near) {
    const Places deviations =
        ControlPlaces::deviationsAfter(movement, ControlPlaces::of(controls, &ControlPoint::measured),
                                       ControlPlaces::of(controls, &ControlPoint::known));
    Parts parts;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const bool agrees = deviations.col(static_cast<Eigen::Index>(i)).norm() <= near;
        (agrees ? parts.agreeing : parts.others).push_back(controls[i]);
    }
    return parts;
}

/// True where more of them agree, or as many do so better by more than a little: three may agree by chance.
bool isBetter(const Parts& parts, const Parts& than, bool mayScale, double near) {
    constexpr double LITTLE = 0.01;
    if (parts.agreeing.size() != than.agreeing.size()) {
        return parts.agreeing.size() > than.agreeing.size();
    }
    return deviationsOf(parts.agreeing, mayScale).norm() + LITTLE * near < deviationsOf(than.agreeing, mayScale).norm();
}

/// The most that agree, of the movements of any three; none where no three agree.
Parts largestAgreement(const Controls& controls, bool mayScale, double near) {
    const std::size_t tried = std::min(controls.size(), MOST_TRIED);
    Parts largest;
    for (std::size_t a = 0; a < tried; ++a) {
        for (std::size_t b = a + 1; b < tried; ++b) {
            for (std::size_t c = b + 1; c < tried; ++c) {
                const Controls three{controls[a], controls[b], controls[c]};
                const Places measured = ControlPlaces::of(three, &ControlPoint::measured);
                const Places known = ControlPlaces::of(three, &ControlPoint::known);
                if (!ControlPlaces::formTriangle(measured) || !ControlPlaces::formTriangle(known)) {
                    continue;
                }
                Parts parts = partsOf(controls, Eigen::umeyama(measured, known, mayScale), near);
                if (parts.agreeing.size() >= FEWEST_OTHERS && isBetter(parts, largest, mayScale, near)) {
                    largest = std::move(parts);
                }
            }
        }
    }
    return largest;
}

/// True where two control points are each where the other one should be.
bool areExchanged(const Parts& parts, bool mayScale, double near) {
    if (parts.others.size() != 2) {
        return false;
    }
    Controls exchanged = parts.others;
    std::swap(exchanged[0].known, exchanged[1].known);
    const Eigen::Matrix4d movement = Eigen::umeyama(ControlPlaces::of(parts.agreeing, &ControlPoint::measured),
                                                    ControlPlaces::of(parts.agreeing, &ControlPoint::known), mayScale);
    return partsOf(exchanged, movement, near).others.empty();
}

}  // namespace

std::optional<Registration::Contradiction> ControlAgreement::oneAgainstAll(const Controls& controls,
                                                                           RegistrationKind kind) {
    if (controls.size() <= FEWEST_OTHERS) {
        return std::nullopt;
    }
    const bool mayScale = kind == RegistrationKind::SIMILARITY;
    const double all = deviationsOf(controls, mayScale).squaredNorm();
    const double freedom = 3 * static_cast<double>(controls.size() - 1) - (mayScale ? 7 : 6);
    const double span = spanOf(controls);
    std::optional<Registration::Contradiction> worst;
    double least = all;
    for (std::size_t i = 0; i < controls.size(); ++i) {
        const Controls others = without(controls, i);
        const Places measured = ControlPlaces::of(others, &ControlPoint::measured);
        const Places known = ControlPlaces::of(others, &ControlPoint::known);
        if (!ControlPlaces::formTriangle(measured) || !ControlPlaces::formTriangle(known)) {
            continue;
        }
        const Eigen::Matrix4d movement = Eigen::umeyama(measured, known, mayScale);
        const Places left = ControlPlaces::deviationsAfter(movement, measured, known);
        const Controls one{controls[i]};
        const double distance = ControlPlaces::rmsOf(ControlPlaces::deviationsAfter(
            movement, ControlPlaces::of(one, &ControlPoint::measured), ControlPlaces::of(one, &ControlPoint::known)));
        const double squares = left.squaredNorm();
        const bool isWrong = (all - squares) * freedom > 3 * squares * limitOf(freedom);
        if (squares < least && isWrong && distance > IMPORTANT * span) {
            worst = {controls[i].line, distance, ControlPlaces::rmsOf(left)};
            least = squares;
        }
    }
    return worst;
}

std::string ControlAgreement::whatIsWrong(const Controls& controls, RegistrationKind kind) {
    const bool mayScale = kind == RegistrationKind::SIMILARITY;
    const double near = AGREEING * spanOf(controls);
    const Parts parts = largestAgreement(controls, mayScale, near);
    if (2 * parts.agreeing.size() < controls.size() || parts.others.empty()) {
        return "";
    }
    const std::string lines = ControlPlaces::linesText(parts.others);
    if (areExchanged(parts, mayScale, near)) {
        return "the marks of " + lines + " are exchanged; exchange their X, Y, Z";
    }
    const Parts second = largestAgreement(parts.others, mayScale, near);
    if (!second.agreeing.empty() && second.others.empty()) {
        return "those of " + ControlPlaces::linesText(parts.agreeing) + " agree with each other, and so do those of " +
               lines + ", as if measured from two stations; name the station of each row in a column set";
    }
    return "without " + lines + " the others agree to " +
           significantText(ControlPlaces::rmsOf(deviationsOf(parts.agreeing, mayScale))) +
           "; measure again there, correct X, Y, Z, or name the station of these rows in the column set";
}

}  // namespace Veltrani::FitSession
