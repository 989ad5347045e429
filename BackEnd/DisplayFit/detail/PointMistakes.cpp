#include "DisplayFit/detail/PointMistakes.h"

#include "DisplayFit/detail/ConfiguredLight.h"
#include "DisplayFit/detail/MixedFrames.h"
#include "DisplayFit/detail/MovedFrame.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iterator>
#include <limits>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace Veltrani::DisplayFitDetail {

namespace {

using DisplayFit::ChannelFit;
using DisplayFit::DisplayFitResult;
using DisplayFit::FitFinding;
using DisplayFit::FitOutcome;
using Kind = FitFinding::Kind;
using Lights = std::map<std::size_t, ConfiguredLight>;

// Median distances from where the configured light lands, in widths of the picture.

/// A channel that is further off may have a mistake in its points although something could be fitted to them.
constexpr double SUSPECT = 0.3;
/// A mistake explains the points when they are nearer than this without it,
constexpr double EXPLAINED = 0.4;
/// and nearer than this part of what they are with it: where nothing could be fitted, and where something could.
constexpr double BETTER = 0.5;
constexpr double MUCH_BETTER = 1.0 / 3;
/// Two mistakes that explain the points as well as this cannot be told apart.
constexpr double ALIKE = 0.02;

/// A movement of the frame leaves less than one part in this of what an exchange of the channels leaves, or it is none.
constexpr double LESS = 2;

/// More outliers than this part of the points are not wrong one by one.
constexpr double MANY = 0.1;
/// Residuals above this part of the picture are no noise.
constexpr double ROUGH = 0.005;

/// This part of the channels at least have the mistake of a whole table.
constexpr double MOST = 0.66;

/// What was done to a point, and is undone.
struct Mistake {
    Kind kind = Kind::NOT_FITTING;
    std::string text;
    std::string remedy;
    ConfiguredLight::PictureChange picture = nullptr;
    std::optional<Matrix<double, 3>> display_from_table;

    [[nodiscard]] double missOf(const ConfiguredLight& light) const {
        return picture != nullptr ? light.missWith(picture) : light.missWith(*display_from_table);
    }
};

/// The matrix that takes coordinate `from[i]`, times `sign[i]`, for coordinate i.
Matrix<double, 3> taking(const std::array<std::size_t, 3>& from, const std::array<double, 3>& sign) {
    Matrix<double, 3> matrix;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            matrix(row, column) = column == from[row] ? sign[row] : 0;
        }
    }
    return matrix;
}

void addMistakesOfPicture(std::vector<Mistake>& mistakes) {
    mistakes.push_back({Kind::U_REVERSED,
                        "left and right of the picture are exchanged: u is reversed",
                        "give u, or px, from the left edge of the picture",
                        [](const Point<double, 2>& at) {
                            return Point<double, 2>{1 - at[0], at[1]};
                        },
                        {}});
    mistakes.push_back(
        {Kind::V_REVERSED,
         "bottom and top of the picture are exchanged: v is reversed",
         "give v, or py, from the bottom edge of the picture, or state that its origin is at the top left",
         [](const Point<double, 2>& at) {
             return Point<double, 2>{at[0], 1 - at[1]};
         },
         {}});
    mistakes.push_back({Kind::UV_EXCHANGED,
                        "u and v are exchanged",
                        "exchange the columns u and v",
                        [](const Point<double, 2>& at) {
                            return Point<double, 2>{at[1], at[0]};
                        },
                        {}});
    mistakes.push_back(
        {Kind::V_REVERSED,
         "the picture is upside down: u and v are both reversed",
         "check whether the projector hangs; else give u and v from the bottom left corner of its picture",
         [](const Point<double, 2>& at) {
             return Point<double, 2>{1 - at[0], 1 - at[1]};
         },
         {}});
}

void addMistakesOfSpace(std::vector<Mistake>& mistakes) {
    const std::array names{"x", "y", "z"};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::string name = names[axis];
        std::array<double, 3> sign{1, 1, 1};
        sign[axis] = -1;
        mistakes.push_back({Kind::AXIS_MIRRORED, name + " has the wrong sign: space is mirrored",
                            "reverse the sign of " + name + " in the table", nullptr, taking({0, 1, 2}, sign)});
        std::array<std::size_t, 3> from{0, 1, 2};
        std::swap(from[axis], from[(axis + 1) % 3]);
        const std::string pair = axis < 2 ? name + " and " + names[axis + 1] : "x and z";
        mistakes.push_back({Kind::AXES_EXCHANGED, pair + " are exchanged: space is mirrored",
                            "exchange the columns " + pair, nullptr, taking(from, {1, 1, 1})});
    }
    mistakes.push_back({Kind::AXES_EXCHANGED, "the axes are named in another order: x, y, z are y, z, x of the display",
                        "rename the columns x, y, z to y, z, x", nullptr, taking({2, 0, 1}, {1, 1, 1})});
    mistakes.push_back({Kind::AXES_EXCHANGED, "the axes are named in another order: x, y, z are z, x, y of the display",
                        "rename the columns x, y, z to z, x, y", nullptr, taking({1, 2, 0}, {1, 1, 1})});
}

const std::vector<Mistake>& knownMistakes() {
    static const std::vector<Mistake> mistakes = [] {
        std::vector<Mistake> all;
        addMistakesOfPicture(all);
        addMistakesOfSpace(all);
        return all;
    }();
    return mistakes;
}

/// A channel that may have a mistake.
struct Suspect {
    ChannelFit* fit = nullptr;
    const ConfiguredLight* light = nullptr;
    double miss = 0;

    [[nodiscard]] bool isExplainedBy(double without) const {
        return without < EXPLAINED && without < (fit->outcome == FitOutcome::UNUSABLE ? BETTER : MUCH_BETTER) * miss;
    }
};

/// Findings that say no more than that something is wrong, and those that a mistake elsewhere may bring about.
bool isVague(const FitFinding& finding) {
    switch (finding.kind) {
        case Kind::OUTLIERS:
        case Kind::ILL_DETERMINED:
        case Kind::DEVIATIONS_TOO_SMALL:
        case Kind::BEYOND_FOLD:
        case Kind::NOT_DETERMINED:
        case Kind::U_REVERSED:
        case Kind::V_REVERSED:
        case Kind::IMPLAUSIBLE_VALUES:
        case Kind::NOT_FITTING:
            return true;
        case Kind::CHANGED_FOR_PLANE:
        case Kind::TOO_FEW_POINTS:
        case Kind::POINTS_ON_LINE:
        case Kind::POINTS_ON_PLANE:
        case Kind::UV_EXCHANGED:
        case Kind::AXIS_MIRRORED:
        case Kind::AXES_EXCHANGED:
        case Kind::CHANNELS_EXCHANGED:
        case Kind::WRONG_UNIT:
        case Kind::DEVIATIONS_TOO_LARGE:
        case Kind::FRAME_MOVED:
        case Kind::FRAMES_MIXED:
        case Kind::FRAME_NOT_REGISTERED:
        case Kind::CONTROL_POINT_OFF:
        case Kind::KIND_NOT_SOLVED:
            return false;
    }
    return false;
}

void name(ChannelFit& fit, Kind kind, const std::string& text, const std::string& remedy) {
    fit.findings.erase(std::remove_if(fit.findings.begin(), fit.findings.end(), isVague), fit.findings.end());
    fit.findings.push_back({kind, FitOutcome::UNUSABLE, text, remedy});
    fit.outcome = FitOutcome::UNUSABLE;
}

std::vector<Suspect> suspectsOf(const Lights& lights, DisplayFitResult& result) {
    std::vector<Suspect> suspects;
    for (ChannelFit& fit : result.channels) {
        const auto light = lights.find(fit.channel);
        const bool isNamed =
            fit.outcome == FitOutcome::UNUSABLE && std::none_of(fit.findings.begin(), fit.findings.end(), isVague);
        if (light == lights.end() || !light->second.isKnown() || isNamed) {
            continue;
        }
        const double miss = light->second.miss();
        if (fit.outcome == FitOutcome::UNUSABLE || miss > SUSPECT) {
            suspects.push_back({&fit, &light->second, miss});
        }
    }
    return suspects;
}

/// How well a mistake explains the suspects.
struct Explanation {
    std::size_t channels = 0;
    double miss = 0;  ///< the mean of those that it explains

    void add(double of) {
        miss = (miss * static_cast<double>(channels) + of) / static_cast<double>(channels + 1);
        ++channels;
    }
    [[nodiscard]] bool isBetterThan(const Explanation& other) const {
        return channels != other.channels ? channels > other.channels : channels > 0 && miss < other.miss - ALIKE;
    }
    [[nodiscard]] bool isLike(const Explanation& other) const {
        return channels == other.channels && std::abs(miss - other.miss) <= ALIKE;
    }
};

/// The channel whose light each suspect measured, by its number in the configuration.
std::map<std::size_t, std::size_t> ownersOf(const std::vector<Suspect>& suspects, const Lights& lights,
                                            Explanation& explanation) {
    std::map<std::size_t, std::size_t> owners;
    for (const Suspect& suspect : suspects) {
        double least = std::numeric_limits<double>::infinity();
        for (const auto& [channel, light] : lights) {
            const double miss = channel == suspect.fit->channel ? least : suspect.light->missAs(light);
            if (miss < least && suspect.isExplainedBy(miss)) {
                least = miss;
                owners[suspect.fit->channel] = channel;
            }
        }
        if (std::isfinite(least)) {
            explanation.add(least);
        }
    }
    return owners;
}

std::string nameOf(const DisplayFitResult& result, std::size_t channel) {
    const auto fit = std::find_if(result.channels.begin(), result.channels.end(),
                                  [channel](const ChannelFit& of) { return of.channel == channel; });
    return fit == result.channels.end() ? "" : fit->name;
}

void nameOwners(const std::map<std::size_t, std::size_t>& owners, DisplayFitResult& result) {
    for (ChannelFit& fit : result.channels) {
        const auto owner = owners.find(fit.channel);
        if (owner == owners.end()) {
            continue;
        }
        const std::string of = nameOf(result, owner->second);
        const auto here =
            std::find_if(owners.begin(), owners.end(), [&fit](const auto& pair) { return pair.second == fit.channel; });
        const bool isPair = here != owners.end() && here->first == owner->second;
        const std::string others = here == owners.end() ? ""
                                   : isPair             ? ", and those of that channel where this one's is"
                                            : ", and those of the channel " + nameOf(result, here->first) + " lie here";
        name(fit, Kind::CHANNELS_EXCHANGED, "the points lie where the picture of the channel " + of + " is" + others,
             isPair ? "exchange the two channels in the file of the points"
                    : "name the channel " + of + " in the rows of these points");
    }
}

/// Names the mistake that explains most of some channels best, of the table as a whole; returns false where there is
/// none.
bool nameMistake(const std::vector<Suspect>& suspects, const Explanation& exchange) {
    const Mistake* best = nullptr;
    const Mistake* other = nullptr;
    Explanation explanation;
    for (const Mistake& mistake : knownMistakes()) {
        Explanation own;
        for (const Suspect& suspect : suspects) {
            const double miss = mistake.missOf(*suspect.light);
            if (suspect.isExplainedBy(miss)) {
                own.add(miss);
            }
        }
        if (own.isBetterThan(explanation)) {
            best = &mistake;
            other = nullptr;
            explanation = own;
        } else if (best != nullptr && own.channels > 0 && own.isLike(explanation)) {
            other = other == nullptr ? &mistake : other;
        }
    }
    const bool isOfMost = static_cast<double>(explanation.channels) > MOST * static_cast<double>(suspects.size());
    if (best == nullptr || !isOfMost || !explanation.isBetterThan(exchange)) {
        return false;
    }
    const std::string also = other == nullptr ? "" : "; or " + other->text;
    for (const Suspect& suspect : suspects) {
        if (suspect.isExplainedBy(best->missOf(*suspect.light))) {
            name(*suspect.fit, best->kind, best->text + also,
                 best->remedy + (other == nullptr ? "" : ", or " + other->remedy));
        }
    }
    return true;
}

/// Names the channels whose points are of two frames; returns false where there are none.
bool nameMixtures(const Lights& lights, const std::map<std::size_t, ChannelSetup>& setups,
                  std::span<const DisplayFit::MeasuredPoint> given, DisplayFitResult& result) {
    bool isAny = false;
    for (ChannelFit& fit : result.channels) {
        const bool isUnexplained = std::any_of(fit.findings.begin(), fit.findings.end(),
                                               [](const FitFinding& of) { return of.kind == Kind::NOT_FITTING; });
        const bool areMany = static_cast<double>(fit.outliers) > MANY * static_cast<double>(fit.residuals.size());
        const Point<double, 2> pixels = setups.at(fit.channel).pixels();
        const bool isRough = fit.isSolved && fit.pixelsAfter.rms > ROUGH * std::max(pixels[0], pixels[1]);
        const auto light = lights.find(fit.channel);
        if (light == lights.end() || !(isUnexplained || areMany || isRough)) {
            continue;
        }
        if (const auto mixed = mixedFrames(light->second, given, result.unit)) {
            isAny = true;
            if (fit.outcome == FitOutcome::UNUSABLE) {
                name(fit, mixed->kind, mixed->text, mixed->remedy);
            } else {
                fit.findings.push_back(*mixed);
                fit.outcome = std::max(fit.outcome, mixed->outcome);
            }
        }
    }
    return isAny;
}

/// What a fit of points in another frame says about its channel follows from that alone.
void nameMoved(const MovedFrames& moved, const std::map<std::size_t, FitPoints>& points,
               std::span<const DisplayFit::MeasuredPoint> given, DisplayFitResult& result) {
    for (ChannelFit& fit : result.channels) {
        const std::vector<std::size_t>& own = points.at(fit.channel).given;
        const bool areVague = std::all_of(fit.findings.begin(), fit.findings.end(), [](const FitFinding& finding) {
            return finding.outcome != FitOutcome::UNUSABLE || isVague(finding);
        });
        const bool areMoved =
            std::all_of(own.begin(), own.end(), [&](std::size_t i) { return moved.sets.count(given[i].set) > 0; });
        if (fit.outcome == FitOutcome::UNUSABLE && areVague && areMoved) {
            name(fit, Kind::FRAME_MOVED, "no values explain the points where they lie: they are in another frame",
                 "see what is found about the frame of all points");
        }
    }
}

/// Returns whether channels are exchanged rather than the frame moved. A ring of channels can be exchanged by a turn of
/// the frame, too; then the mistake that is made more often is meant.
bool isExchange(const std::map<std::size_t, std::size_t>& owners, const Explanation& exchange, std::size_t suspects,
                std::size_t channels, double missOfMovement) {
    std::set<std::size_t> different;
    for (const auto& [channel, owner] : owners) {
        different.insert(owner);
    }
    const bool areAll = owners.size() == channels && different.size() == channels;
    return !owners.empty() && exchange.channels == suspects &&
           (areAll || exchange.miss < LESS * missOfMovement + ALIKE);
}

}  // namespace

void nameMistakes(const std::map<std::size_t, ChannelSetup>& setups, const std::map<std::size_t, FitPoints>& points,
                  std::span<const DisplayFit::MeasuredPoint> given, DisplayFitResult& result) {
    Lights lights;
    for (const auto& [channel, own] : points) {
        lights.try_emplace(channel, setups.at(channel), own);
    }
    const std::vector<Suspect> suspects = suspectsOf(lights, result);
    Explanation exchange;
    const auto owners = ownersOf(suspects, lights, exchange);
    if (nameMistake(suspects, exchange) || nameMixtures(lights, setups, given, result)) {
        return;
    }
    MovedFrames moved = MovedFrames::of(lights, given, result.unit);
    if (!moved.findings.empty() && !isExchange(owners, exchange, suspects.size(), lights.size(), moved.miss)) {
        nameMoved(moved, points, given, result);
        std::move(moved.findings.begin(), moved.findings.end(), std::back_inserter(result.findings));
        return;
    }
    nameOwners(owners, result);
    // Where the mistake is not one of the whole table, each channel may have one of its own.
    for (const Suspect& suspect : suspects) {
        if (owners.count(suspect.fit->channel) == 0) {
            nameMistake({suspect}, {});
        }
    }
}

}  // namespace Veltrani::DisplayFitDetail
