#include "Configuration/ProjectorConfig.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/check/Judgement.h"
#include "DisplayReport/check/RuleText.h"
#include "KelvoControl/ProjectionModel.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>

namespace Veltrani::DisplayReport {

namespace {

constexpr double DEGREE = std::numbers::pi / 180.0;

bool isOfKind(const ProjectionModel& lens, const std::wstring& kind) {
    const std::wstring name = lens.firstName();
    return name == kind || name.starts_with(kind + L":");
}

/// Whether a file, not the frustum, states what the lens sees.
bool isCalibrated(const ProjectionModel* lens) {
    return lens != nullptr && lens->calibratedSize()[0] > 0;
}

std::string fieldText(const ChannelView& view) {
    return degreesText(view.wide) + " x " + degreesText(view.high) + " degrees";
}

/// A side of a picture that straight lines of sight make, or a lens of equal angles.
struct Side {
    const char* name;
    double angle;
    bool isStraight;  ///< flat screens bound what a straight picture can see
    bool isCalibrated;
};

void judgeSide(const ChannelCase& c, const Side& side) {
    const Rule& rule = Rule::named("narrow-view");
    const std::string found = "the " + std::string(side.name) + " of its " + (side.isCalibrated ? "lens" : "Frustum") +
                              " is " + degreesText(side.angle) + " degrees, where projectors have 8 to 140: ";
    if (side.angle < rule.least * DEGREE) {
        c.report(rule.name,
                 found + (side.isCalibrated ? "check fx, fy and the size of the picture in its file, all in pixels"
                                            : "check its unit, angleUnit=\"rad\" or \"deg\""));
    } else if (side.isStraight && side.angle > rule.most * DEGREE) {
        c.report(rule.name,
                 found + (side.isCalibrated
                              ? "check fx, fy and the size of the picture in its file, all in pixels"
                              : "give the angles to either side of the forward direction, or a ProjectionModel for a "
                                "fisheye"));
    }
}

void judgeFisheye(const ChannelCase& c, const ChannelView& view) {
    const Rule& rule = Rule::named("fisheye-view");
    if (std::max(view.wide, view.high) < rule.least * DEGREE || std::min(view.wide, view.high) > rule.most * DEGREE) {
        c.report(rule.name, "its fisheye sees " + fieldText(view) +
                                ", where these lenses see 120 to 220: check fx, fy and the size of the picture in its "
                                "file, all in pixels, and that the file is that of this lens");
    }
}

void judgeFieldOfView(const ChannelCase& c, const ChannelView& view) {
    const ProjectionModel* const lens = c.channel.lens();
    if (lens != nullptr && isOfKind(*lens, L"Fisheye")) {
        judgeFisheye(c, view);
        return;
    }
    const bool isStraight = lens == nullptr || !isOfKind(*lens, L"Equidistant");
    judgeSide(c, {"width", view.wide, isStraight, isCalibrated(lens)});
    judgeSide(c, {"height", view.high, isStraight, isCalibrated(lens)});
}

/// Two angles to either side of forward.
struct Pair {
    const char* lower;
    const char* upper;
    double from;
    double to;
};

/// Angles to both sides that differ by a power of ten exactly are the same digits, of which one has lost its point.
void judgeDigits(const ChannelCase& c) {
    constexpr double EXACT = 1e-6;
    const ProjectorConfig& p = c.projector;
    for (const Pair& pair : {Pair{"left", "right", p.getFrustumLeft(), p.getFrustumRight()},
                             Pair{"bottom", "top", p.getFrustumBottom(), p.getFrustumTop()}}) {
        const double smaller = std::min(std::abs(pair.from), std::abs(pair.to));
        const double larger = std::max(std::abs(pair.from), std::abs(pair.to));
        const bool isToBothSides = pair.from < 0 && pair.to > 0;
        const auto isTimes = [&](double power) { return std::abs(larger - power * smaller) < EXACT * larger; };
        if (isToBothSides && (isTimes(10.0) || isTimes(100.0))) {
            c.report("decimal-point", "Frustum " + std::string(pair.lower) + " is " + degreesText(pair.from) +
                                          " deg and " + pair.upper + " " + degreesText(pair.to) +
                                          ", the same digits (to both sides alike would be " + degreesText(larger) +
                                          "): look for a decimal point that was lost, or is one too many");
        }
    }
}

/// A frustum that stands beside a file has no effect, and still states what the lens is expected to see.
void judgeLensAgainstFrustum(const ChannelCase& c, const ChannelView& view) {
    const Rule& rule = Rule::named("lens-against-frustum");
    const double wide = std::abs(c.projector.getFrustumRight() - c.projector.getFrustumLeft());
    const double high = std::abs(c.projector.getFrustumTop() - c.projector.getFrustumBottom());
    if (wide <= 0 || high <= 0) {
        return;
    }
    const auto isApart = [&](double ratio) { return ratio < rule.least || ratio > rule.most; };
    if (isApart(view.wide / wide) || isApart(view.high / high)) {
        c.report(rule.name, "its lens sees " + fieldText(view) +
                                ", and the Frustum beside it, which is not used, has " + degreesText(wide) + " x " +
                                degreesText(high) +
                                " (0.7 to 1.4 times as much is usual): check fx, fy and the size of the picture in its "
                                "file, and that the file is that of this lens; correct the Frustum, or leave it out");
    }
}

/// Lenses are shifted upwards by more than a picture, and to the side by less than half a picture.
void judgeLensCentre(const ChannelCase& c) {
    const Rule& rule = Rule::named("lens-off-centre");
    constexpr double HIGHER = 3.0;  // times as much shift as to the side
    constexpr double CENTRED = 0.05;
    const Point<int, 2> size = c.channel.lens()->calibratedSize();
    const std::optional<Point<double, 2>> axis = c.channel.axisInPicture();
    if (!axis) {
        return;
    }
    const double right = (*axis)[0] - 0.5;
    const double up = (*axis)[1] - 0.5;
    const double x = (*axis)[0] * size[0] - 0.5;
    const double y = (1.0 - (*axis)[1]) * size[1] - 0.5;
    const bool isExchanged = std::max(std::abs(right), std::abs(up)) > 2 * CENTRED &&
                             std::abs(y / size[0] - 0.5) < CENTRED && std::abs(x / size[1] - 0.5) < CENTRED;
    if (isExchanged || std::abs(right) > rule.most || std::abs(up) > HIGHER * rule.most) {
        c.report(rule.name, "the axis of its lens leaves the picture at pixel " + roundedText(x) + ", " +
                                roundedText(y) + " of " + std::to_string(size[0]) + " x " + std::to_string(size[1]) +
                                ", " + percentText(std::abs(right)) + " of the width and " + percentText(std::abs(up)) +
                                " of the height off its middle (lens shift makes up to 40 % and 120 %): " +
                                (isExchanged ? "exchange cx and cy in its file" : "check cx and cy in its file"));
    }
}

}  // namespace

void judgeView(const ChannelCase& c) {
    const ChannelView* const view = c.channel.view();
    if (view == nullptr) {
        return;
    }
    judgeFieldOfView(c, *view);
    if (!isCalibrated(c.channel.lens())) {
        judgeDigits(c);
    }
    if (isCalibrated(c.channel.lens())) {
        const Point<int, 2> size = c.channel.lens()->calibratedSize();
        judgePixels(c, "its lens", "calibrated", {static_cast<double>(size[0]), static_cast<double>(size[1])});
        judgeLensAgainstFrustum(c, *view);
        judgeLensCentre(c);
    }
}

}  // namespace Veltrani::DisplayReport
