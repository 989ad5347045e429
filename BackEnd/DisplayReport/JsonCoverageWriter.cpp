#include "DisplayReport/JsonCoverageWriter.h"

#include "DisplayReport/CoverageReport.h"

#include <nlohmann/json.hpp>

#include <cmath>
#include <ostream>
#include <string>

namespace Veltrani::DisplayReport {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t COUNTED_ALONE = 3;  ///< 0, 1 and 2 projectors; more are taken together

Json numberOrNull(bool isKnown, double number) {
    return isKnown ? Json(number) : Json(nullptr);
}

Json pixelsOf(const ChannelCoverage& channel, double part) {
    return channel.pixels() > 0 ? Json(std::llround(part * channel.pixels())) : Json(nullptr);
}

Json jsonOf(const ChannelCoverage& channel, const CoverageReport& report) {
    const bool isKnown = channel.isLighting;
    const bool hasPitch = isKnown && channel.pitch.measured > 0;
    return {{"name", channel.name},
            {"projector", channel.projectorId},
            {"fault", channel.fault},
            {"width", channel.width},
            {"height", channel.height},
            {"area", numberOrNull(isKnown, channel.area)},
            {"partOfScreen", numberOrNull(isKnown, report.partOfScreen(channel.area))},
            {"missed", numberOrNull(isKnown, channel.missed())},
            {"missedPixels", isKnown ? pixelsOf(channel, channel.missed()) : Json(nullptr)},
            {"pitch",
             {{"least", numberOrNull(hasPitch, channel.pitch.least)},
              {"mean", numberOrNull(isKnown && channel.pixels() > 0, channel.meanPitch())},
              {"most", numberOrNull(hasPitch, channel.pitch.most)}}}};
}

Json jsonOf(const ChannelOverlap& overlap, const CoverageReport& report) {
    const ChannelCoverage& first = report.channels[overlap.first];
    const ChannelCoverage& second = report.channels[overlap.second];
    const auto side = [](const ChannelCoverage& channel, double part) {
        return Json{{"name", channel.name},
                    {"projector", channel.projectorId},
                    {"part", part},
                    {"pixels", pixelsOf(channel, part)}};
    };
    return {{"area", overlap.area},
            {"first", side(first, overlap.partOfFirst)},
            {"second", side(second, overlap.partOfSecond)}};
}

Json litBy(const CoverageReport& report) {
    Json list = Json::array();
    const auto add = [&](std::size_t projectors, bool orMore, double area) {
        list.push_back({{"projectors", projectors},
                        {"orMore", orMore},
                        {"area", area},
                        {"partOfScreen", report.partOfScreen(area)}});
    };
    for (std::size_t count = 0; count < COUNTED_ALONE; ++count) {
        add(count, false, report.areaLitBy(count));
    }
    add(COUNTED_ALONE, true, report.areaLitByAtLeast(COUNTED_ALONE));
    return list;
}

std::string textOf(const Json& json) {
    return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

/// One by one: a tree of thousands needs memory when it goes, and has none where memory ran out.
template <class Items>
void writeList(const char* name, const Items& items, const CoverageReport& report, std::ostream& out) {
    out << ",\"" << name << "\":[";
    const char* separator = "";
    for (const auto& item : items) {
        out << separator << textOf(jsonOf(item, report));
        separator = ",";
    }
    out << ']';
}

}  // namespace

void JsonCoverageWriter::write(const CoverageReport& report, std::ostream& out) {
    out << R"({"unit":)" << textOf(report.unit) << R"(,"fault":)" << textOf(report.fault) << R"(,"screenArea":)"
        << textOf(report.screenArea) << R"(,"litBy":)" << textOf(litBy(report));
    writeList("channels", report.channels, report, out);
    writeList("overlaps", report.overlaps, report, out);
    out << "}\n";
}

}  // namespace Veltrani::DisplayReport
