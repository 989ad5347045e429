#include "DisplayReport/coverage/CoverageWriter.h"

#include "Common/QuotedText.h"
#include "DisplayReport/basics/ChannelPalette.h"
#include "DisplayReport/basics/FormatList.h"
#include "DisplayReport/basics/JsonText.h"
#include "DisplayReport/basics/NumberText.h"
#include "DisplayReport/basics/TextTable.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <ostream>
#include <string>
#include <utility>

namespace Veltrani::DisplayReport {

namespace {

const char* const NOTHING = "-";

/// Two decimals: a part in ten thousand is what the numbers are right to.
std::string percent(double part) {
    return roundedText(std::round(1e4 * part) / 100) + " %";
}

std::string withUnit(const std::string& what, const std::string& unit) {
    return unit.empty() ? what : what + " (" + unit + ")";
}

std::string squared(const std::string& unit) {
    return unit.empty() ? unit : unit + "^2";
}

/// The pixels of a part of a channel's picture, as "230400 (10 %)".
std::string pixelText(const ChannelCoverage& channel, double part) {
    return channel.pixels() > 0 ? roundedText(std::round(part * channel.pixels())) + " (" + percent(part) + ")"
                                : percent(part);
}

void addChannel(const ChannelCoverage& channel, const CoverageReport& report, TextTable& table) {
    const bool hasPixels = channel.pixels() > 0;
    const std::string size = std::to_string(channel.width) + " x " + std::to_string(channel.height);
    std::vector<std::string> cells{channel.name, hasPixels ? size : NOTHING};
    if (channel.isLighting) {
        cells.insert(cells.end(), {significantText(channel.area), percent(report.partOfScreen(channel.area)),
                                   percent(channel.missed())});
        const bool hasPitch = channel.pitch.measured > 0;
        cells.push_back(hasPitch ? significantText(channel.pitch.least) : NOTHING);
        cells.push_back(hasPixels ? significantText(channel.meanPitch()) : NOTHING);
        cells.push_back(hasPitch ? significantText(channel.pitch.most) : NOTHING);
    } else {
        cells.insert(cells.end(), 6, NOTHING);
    }
    table.add(std::move(cells));
}

void printChannels(const CoverageReport& report, std::ostream& out) {
    TextTable table({"channel", "resolution", withUnit("area", squared(report.unit)), "of the screen", "missed",
                     withUnit("pixel least", report.unit), "mean", "most"});
    for (const ChannelCoverage& channel : report.channels) {
        addChannel(channel, report, table);
    }
    table.print(out);
}

void printCounts(const CoverageReport& report, std::ostream& out) {
    TextTable table({"lit by", withUnit("area", squared(report.unit)), "of the screen"});
    constexpr std::array<const char*, 3> EXACTLY{"no projector", "1 projector", "2 projectors"};
    const auto add = [&](const char* who, double area) {
        table.add({who, significantText(area), percent(report.partOfScreen(area))});
    };
    for (std::size_t count = 0; count < EXACTLY.size(); ++count) {
        add(EXACTLY[count], report.areaLitBy(count));
    }
    add("3 and more", report.areaLitByAtLeast(EXACTLY.size()));
    add("the screen", report.screenArea);
    table.print(out);
}

void printOverlaps(const CoverageReport& report, std::ostream& out) {
    if (report.overlaps.empty()) {
        out << "no two channels overlap\n";
        return;
    }
    TextTable table(
        {"overlap of", "and", withUnit("area", squared(report.unit)), "pixels of the first", "pixels of the second"});
    for (const ChannelOverlap& overlap : report.overlaps) {
        const ChannelCoverage& first = report.channels[overlap.first];
        const ChannelCoverage& second = report.channels[overlap.second];
        table.add({first.name, second.name, significantText(overlap.area), pixelText(first, overlap.partOfFirst),
                   pixelText(second, overlap.partOfSecond)});
    }
    table.print(out);
}

/// A report for people: a table of the channels, what part of the screen is lit by how many of them, the pairs
/// that overlap, and what is wrong.
class TextCoverageWriter : public CoverageWriter {
public:
    void write(const CoverageReport& report, const std::vector<CoveredPiece>& /*pieces*/,
               std::ostream& out) const override;
};

void TextCoverageWriter::write(const CoverageReport& report, const std::vector<CoveredPiece>& /*pieces*/,
                               std::ostream& out) const {
    if (!report.fault.empty()) {
        out << onOneLine(report.fault) << '\n';
        return;
    }
    if (!report.channels.empty()) {
        printChannels(report, out);
        out << '\n';
    }
    printCounts(report, out);
    if (report.channels.empty()) {
        out << "\nthe configuration has no projectors\n";
        return;
    }
    out << '\n';
    printOverlaps(report, out);
    for (const ChannelCoverage& channel : report.channels) {
        if (!channel.fault.empty()) {
            out << "channel " << onOneLine(channel.name) << ": " << onOneLine(channel.fault) << '\n';
        }
    }
}

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
    return safeForTerminals(json.dump(-1, ' ', false, Json::error_handler_t::replace));
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

/// A report as one JSON object, which is valid whatever the names and numbers are: numbers that were not
/// measured are null.
class JsonCoverageWriter : public CoverageWriter {
public:
    void write(const CoverageReport& report, const std::vector<CoveredPiece>& /*pieces*/,
               std::ostream& out) const override;
};

void JsonCoverageWriter::write(const CoverageReport& report, const std::vector<CoveredPiece>& /*pieces*/,
                               std::ostream& out) const {
    ReportHead head{"coverage", report.unit};
    head.files = sources();
    out << '{' << head.members() << R"(,"unit":)" << textOf(report.unit) << R"(,"fault":)" << textOf(report.fault)
        << R"(,"screenArea":)" << textOf(report.screenArea) << R"(,"litBy":)" << textOf(litBy(report));
    writeList("channels", report.channels, report, out);
    writeList("overlaps", report.overlaps, report, out);
    out << "}\n";
}

/// As pictures of the display have it, but for the dark part: on the light ground of many viewers nearly black.
Colour colourOf(std::size_t projectors) {
    constexpr Colour DARK{40, 40, 40};
    return projectors == 0 ? DARK : countColour(projectors);
}

/// Pieces that meet share the vertices between them when they have the same colour.
class Vertices {
public:
    std::size_t add(const Point<double, 3>& place, std::size_t projectors) {
        const auto [entry, isNew] = m_numbers.try_emplace({projectors, place}, m_list.size());
        if (isNew) {
            m_list.push_back(&entry->first);
        }
        return entry->second;
    }

    [[nodiscard]] std::size_t size() const { return m_list.size(); }

    void write(std::ostream& out) const {
        for (const Key* vertex : m_list) {
            const auto& [projectors, place] = *vertex;
            std::string line;
            for (std::size_t axis = 0; axis < 3; ++axis) {
                line += exactText(place[axis]) + ' ';
            }
            const Colour colour = colourOf(projectors);
            for (const int part : {colour.red, colour.green, colour.blue}) {
                line += std::to_string(part) + ' ';
            }
            out << line << projectors << '\n';
        }
    }

private:
    using Key = std::pair<std::size_t, Point<double, 3>>;

    std::map<Key, std::size_t> m_numbers;
    std::vector<const Key*> m_list;
};

/// The screen's surface as a PLY mesh (ascii 1.0), with a colour per number of projectors that light it: black for
/// none, blue for one, orange for two, yellow for three and more, which grow brighter in this order for colour-blind
/// eyes too. Besides x, y, z (double, native units) and the colour, each vertex has `projectors`, their number.
class PlyCoverageWriter : public CoverageWriter {
public:
    void write(const CoverageReport& report, const std::vector<CoveredPiece>& pieces, std::ostream& out) const override;
    [[nodiscard]] bool showsPieces() const override { return true; }
};

void PlyCoverageWriter::write(const CoverageReport& report, const std::vector<CoveredPiece>& pieces,
                              std::ostream& out) const {
    Vertices vertices;
    std::vector<std::array<std::size_t, 3>> faces;
    for (const CoveredPiece& piece : pieces) {
        std::array<std::size_t, 3> face{};
        for (std::size_t i = 0; i < 3; ++i) {
            face[i] = vertices.add(piece.corners[i], piece.channels);
        }
        if (face[0] != face[1] && face[1] != face[2] && face[2] != face[0]) {
            faces.push_back(face);
        }
    }
    out << "ply\nformat ascii 1.0\ncomment lengths in " << onOneLine(report.unit) << '\n'
        << "comment colours by number of projectors: black 0, blue 1, orange 2, yellow 3 and more\n"
        << "element vertex " << vertices.size() << '\n'
        << "property double x\nproperty double y\nproperty double z\n"
           "property uchar red\nproperty uchar green\nproperty uchar blue\nproperty int projectors\n"
        << "element face " << faces.size() << "\nproperty list uchar int vertex_indices\nend_header\n";
    vertices.write(out);
    for (const auto& face : faces) {
        out << "3 " << face[0] << ' ' << face[1] << ' ' << face[2] << '\n';
    }
}

constexpr FormatList<CoverageWriter, 3> FORMATS{{{{"text", makeWriter<CoverageWriter, TextCoverageWriter>},
                                                  {"json", makeWriter<CoverageWriter, JsonCoverageWriter>},
                                                  {"ply", makeWriter<CoverageWriter, PlyCoverageWriter>}}}};

}  // namespace

std::vector<std::string> CoverageWriter::formats() {
    return FORMATS.names();
}

std::unique_ptr<CoverageWriter> CoverageWriter::ofFormat(const std::string& format) {
    return FORMATS.writerOf(format);
}

}  // namespace Veltrani::DisplayReport
