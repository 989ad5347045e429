#include "DisplayLight/LitReport.h"

#include "Common/QuotedText.h"
#include "DisplayReport/basics/JsonText.h"
#include "DisplayReport/basics/NumberText.h"

#include <array>
#include <cmath>
#include <ostream>
#include <utility>

namespace Veltrani::DisplayLight {

namespace {

using DisplayReport::JsonObject;
using DisplayReport::jsonOf;
using DisplayReport::significantText;

const char* nameOf(EyeView::Kind kind) {
    switch (kind) {
        case EyeView::Kind::FLAT:
            return "flat";
        case EyeView::Kind::FISHEYE:
            return "fisheye";
        case EyeView::Kind::PANORAMA:
            break;
    }
    return "panorama";
}

std::string jsonOfPlace(const Point<double, 3>& point) {
    return DisplayReport::jsonList(std::array{point[0], point[1], point[2]}, [](double part) { return jsonOf(part); });
}

}  // namespace

LitReport::LitReport(const LitPicture& picture, std::string unit)
    : m_picture(picture), m_figures(picture.figures()), m_unit(std::move(unit)) {}

std::vector<std::string> LitReport::linesOf(const LitFigures& all, const LitDisplay& display, const std::string& unit) {
    const auto count = [](std::size_t number, const char* what) { return std::to_string(number) + ' ' + what; };
    std::vector<std::string> lines{"places: " + count(all.lit, "lit, ") + count(all.unlit, "on the screen not lit")};
    lines.push_back(all.compared == 0
                        ? "content: not compared"
                        : "content: off by " + significantText(all.largestShift) + " pixels at most, " +
                              significantText(all.meanShift) + " in the mean, at " + count(all.compared, "places; ") +
                              count(all.shifted, "by more than one; ") + count(all.withoutContent, "without content"));
    constexpr double PER_CENT = 100;
    lines.push_back("light: up to " + significantText(PER_CENT * all.mostLight) + " % too much and " +
                    significantText(PER_CENT * std::abs(all.leastLight)) + " % too little, " +
                    significantText(PER_CENT * all.meanUnevenness) + " % in the mean; " +
                    count(all.tooBright, "places beyond white"));
    lines.push_back("coarsest: " + onOneLine(display.coarsest) + ", a pixel is " +
                    significantText(display.coarsestPixel) + (unit.empty() ? "" : " ") + onOneLine(unit) + " wide");
    return lines;
}

void LitReport::writeText(std::ostream& out) const {
    for (const std::string& line : linesOf(m_figures, m_picture, m_unit)) {
        out << line << '\n';
    }
    for (const std::string& note : m_picture.notes) {
        out << "note: " << onOneLine(note) << '\n';
    }
}

void LitReport::writeJson(const std::vector<DisplayReport::SourceFile>& sources, std::ostream& out) const {
    const LitFigures& all = m_figures;
    DisplayReport::ReportHead head;
    head.report = "light";
    head.unit = m_unit;
    head.files = sources;
    const std::string content = JsonObject()
                                    .add("places", all.compared)
                                    .add("largest", all.largestShift)
                                    .add("mean", all.meanShift)
                                    .add("beyondPixel", all.shifted)
                                    .add("withoutContent", all.withoutContent)
                                    .text();
    const std::string json =
        JsonObject(head.members())
            .addJson("view", JsonObject()
                                 .add("kind", std::string(nameOf(m_picture.view.kind())))
                                 .addJson("eye", jsonOfPlace(m_picture.view.frame().eye))
                                 .addJson("forward", jsonOfPlace(m_picture.view.frame().forward))
                                 .add("width", m_picture.view.width())
                                 .add("height", m_picture.view.height())
                                 .text())
            .add("lit", all.lit)
            .add("unlit", all.unlit)
            .addJson("content", all.compared > 0 ? content : "null")
            .addJson("light", JsonObject()
                                  .add("places", all.lit)
                                  .add("most", all.mostLight)
                                  .add("least", all.leastLight)
                                  .add("mean", all.meanUnevenness)
                                  .add("beyondWhite", all.tooBright)
                                  .text())
            .addJson("coarsest",
                     JsonObject().add("channel", m_picture.coarsest).add("pixel", m_picture.coarsestPixel).text())
            .addJson("notes",
                     DisplayReport::jsonList(m_picture.notes, [](const std::string& note) { return jsonOf(note); }))
            .text();
    out << DisplayReport::safeForTerminals(json) << '\n';
}

}  // namespace Veltrani::DisplayLight
