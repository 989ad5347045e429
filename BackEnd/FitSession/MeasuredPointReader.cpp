#include "FitSession/MeasuredPointReader.h"

#include "Common/DecimalText.h"
#include "Common/QuotedText.h"
#include "Common/RegularFile.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/TableReader.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "FitSession/MeasuredColumns.h"
#include "FitSession/MeasuredUnit.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <fstream>
#include <map>
#include <utility>

namespace Veltrani::FitSession {

namespace {

using DisplayReport::ChannelChoice;
using DisplayReport::ReportHead;
using DisplayReport::TableReader;

/// Nothing that can be measured is larger, and its square is far from the range of a double.
constexpr double LARGEST = 1e12;

constexpr std::size_t ROWS_PER_PULSE = 1024;

/// Positive definite, by the signs of its leading minors.
bool isCovariance(const Matrix<double, 3>& c) {
    const double two = c(0, 0) * c(1, 1) - c(0, 1) * c(0, 1);
    const double three = c(0, 0) * (c(1, 1) * c(2, 2) - c(1, 2) * c(1, 2)) -
                         c(0, 1) * (c(0, 1) * c(2, 2) - c(1, 2) * c(0, 2)) +
                         c(0, 2) * (c(0, 1) * c(1, 2) - c(1, 1) * c(0, 2));
    return c(0, 0) > 0 && two > 0 && three > 0 && std::isfinite(three);
}

/// A channel as the rows name it.
struct Channel {
    std::size_t index = 0;  ///< in the order of the configuration
    Point<int, 2> pixels;
};

/// One reading of one table.
class Reading {
public:
    Reading(std::istream& in, const std::string& document, const XMLConfigManager& config,
            const MeasuredPointReader::Options& options)
        : m_table(in, document, {"measurement", MeasuredColumns::EXAMPLE}), m_config(config), m_options(options) {}

    MeasuredPoints run();

private:
    using Cells = std::vector<std::string>;

    void readHead();
    void readRow();
    void addPoint();
    void requirePixels() const;
    void addControl();
    void requireAlike(std::size_t place, bool firstStates, bool thisStates) const;

    [[nodiscard]] bool isEmpty(std::size_t place) const { return m_cells[place].empty(); }
    /// True when a row states a group of values; throws where it states a part of it.
    template <std::size_t N>
    [[nodiscard]] bool states(const MeasuredColumns::Places<N>& places) const;
    [[nodiscard]] double number(std::size_t place) const;
    [[nodiscard]] double positive(std::size_t place) const;
    [[nodiscard]] Point<double, 3> lengths(const MeasuredColumns::Places<3>& places) const;
    [[nodiscard]] Point<double, 2> picture(const Channel& channel);
    [[nodiscard]] std::optional<Point<double, 2>> pictureDeviation(const Channel& channel) const;
    [[nodiscard]] std::optional<Matrix<double, 3>> covariance() const;
    [[nodiscard]] std::string set() const { return m_columns->set ? m_cells[m_columns->set->front()] : ""; }
    [[nodiscard]] const Channel& channel();
    [[nodiscard]] Channel findChannel(const std::string& name, std::size_t place) const;
    [[nodiscard]] Channel onlyChannel() const;
    [[noreturn]] void refuseCell(std::size_t place, const std::string& expected, const std::string& remedy) const;

    TableReader m_table;
    const XMLConfigManager& m_config;
    const MeasuredPointReader::Options& m_options;
    std::string m_unit;  ///< that the table states; empty when it states none
    int m_unitLine = 0;  ///< where it does so in a line of its own; 0 where it does not
    double m_nativePerUnit = 1;
    std::optional<MeasuredColumns> m_columns;
    Cells m_cells;                              ///< of the current row
    std::map<std::string, Channel> m_channels;  ///< by the names that the rows have
    double m_largestPixel = 0;                  ///< of all px and py
    MeasuredPoints m_points;
};

MeasuredPoints Reading::run() {
    readHead();
    int emptyLine = 0;
    while (m_table.next()) {
        if (m_table.isEmpty()) {
            emptyLine = emptyLine == 0 ? m_table.line() : emptyLine;
            continue;
        }
        if (emptyLine != 0) {
            m_table.refuse(emptyLine, "an empty line", "a measurement on every line before the last one");
        }
        auto cells = m_table.cells();
        if (!cells || cells->size() != m_columns->count()) {
            m_columns->refuseRow(m_table);
        }
        m_cells = std::move(*cells);
        if (m_options.pulse && m_points.rows % ROWS_PER_PULSE == 0) {
            m_options.pulse();
        }
        ++m_points.rows;
        readRow();
    }
    requirePixels();
    return std::move(m_points);
}

/// Places from 0 to 1 are pixels, too, and all of them would lie in the first one.
void Reading::requirePixels() const {
    constexpr std::size_t FEWEST = 4;
    if (m_columns->pixels && m_points.points.size() >= FEWEST && m_largestPixel <= 1) {
        m_table.refuse(static_cast<int>(m_points.points.front().row), "px and py from 0 to 1 in all rows",
                       "pixels of the picture",
                       {m_columns->describe(m_columns->pixels->front()), "name these columns u and v"});
    }
}

void Reading::readHead() {
    const bool hasHeader = m_table.readHead([this](std::string_view line) {
        const std::string unit = MeasuredUnit::ofComment(line);
        m_unit = unit.empty() ? m_unit : unit;
        m_unitLine = unit.empty() ? m_unitLine : m_table.line();
    });
    if (!hasHeader) {
        m_table.refuse(m_table.line() + 1, "the end of the table", "a header and measurements");
    }
    const ReportHead& head = m_table.head();
    const bool isOurs = !head.report.empty();
    if (isOurs && head.frame.empty()) {
        m_table.refuse(m_table.line(),
                       "a table of screenmanager/" + head.report + " without its line \"# x, y, z: ...\"",
                       "the frame and the unit of its places",
                       {"header", "keep the lines that begin with #, or remove all of them and state --unit"});
    }
    if (isOurs && head.frame != ReportHead::WORLD && head.frame != ReportHead::ON_SCREEN) {
        m_table.refuse(m_table.line(), "x, y, z that are " + inQuotes(head.frame), "places on the screen",
                       {"header", "write them with \"screenmanager targets\", or with \"map --xyz screen\""});
    }
    m_unit = m_unit.empty() ? head.unit : m_unit;
    m_columns.emplace(m_table);
    m_points.ignored = m_columns->ignored();
    m_nativePerUnit = MeasuredUnit::nativePerUnit(m_table, {m_unit, m_unitLine}, m_options.unit, m_config);
    m_table.holdsQuotes();
}

void Reading::readRow() {
    if (m_columns->mapped) {
        const std::size_t place = m_columns->mapped->front();
        if (m_cells[place] != "0" && m_cells[place] != "1") {
            refuseCell(place, "0 or 1", "write 0 for a place that was not measured, else 1");
        }
        if (m_cells[place] == "0") {
            ++m_points.unmapped;
            return;
        }
    }
    const bool isControl = states(m_columns->known);
    const bool isPoint = states(m_columns->normalised) || states(m_columns->pixels);
    if (isControl) {
        addControl();
    }
    if (isPoint) {
        addPoint();
    }
    m_points.withoutPicture += isControl || isPoint ? 0U : 1U;
    if (m_points.points.size() + m_points.controls.size() > MeasuredPointReader::MOST_POINTS) {
        m_table.refuse(m_table.line(), "more of them",
                       "at most " + std::to_string(MeasuredPointReader::MOST_POINTS) + " measurements",
                       {"measurement", "leave some out; a few hundred per channel are plenty"});
    }
}

void Reading::addPoint() {
    const Channel& ofRow = channel();
    MeasuredPoint point;
    point.channel = ofRow.index;
    point.picture = picture(ofRow);
    point.pictureDeviation = pictureDeviation(ofRow);
    point.world = lengths(m_columns->point);
    point.covariance = covariance();
    point.set = set();
    point.row = static_cast<std::size_t>(m_table.line());
    if (!m_points.points.empty()) {
        const MeasuredPoint& first = m_points.points.front();
        if (m_columns->pictureDeviation) {
            requireAlike(m_columns->pictureDeviation->front(), first.pictureDeviation.has_value(),
                         point.pictureDeviation.has_value());
        }
        if (m_columns->deviations || m_columns->covariance) {
            requireAlike(m_columns->deviations ? m_columns->deviations->front() : m_columns->covariance->front(),
                         first.covariance.has_value(), point.covariance.has_value());
        }
    }
    m_points.points.push_back(std::move(point));
}

/// A fit that knows how good some points are cannot weigh them against the others.
void Reading::requireAlike(std::size_t place, bool firstStates, bool thisStates) const {
    if (firstStates != thisStates) {
        refuseCell(place,
                   firstStates ? "a number, as the first measurement states one" : "none, as the first measurement",
                   "state deviations for all measurements or for none");
    }
}

void Reading::addControl() {
    m_points.controls.push_back({set(), lengths(m_columns->point), lengths(m_columns->known), m_table.line()});
}

template <std::size_t N>
bool Reading::states(const MeasuredColumns::Places<N>& places) const {
    if (!places || std::all_of(places->begin(), places->end(), [this](std::size_t place) { return isEmpty(place); })) {
        return false;
    }
    for (const std::size_t place : *places) {
        if (isEmpty(place)) {
            refuseCell(place, "a number, as the row states the others of the group",
                       "fill in all " + std::to_string(N) + " or none of them");
        }
    }
    return true;
}

double Reading::number(std::size_t place) const {
    const std::optional<double> read = parseFinite(m_cells[place]);
    if (!read) {
        const bool hasComma = m_cells[place].find(',') != std::string::npos;
        refuseCell(place, "a finite number with a decimal point",
                   hasComma ? "write a point for the comma" : "correct it, or remove the row");
    }
    if (std::abs(*read) > LARGEST) {
        refuseCell(place, "a number of at most 1e12 in size", "correct it, or remove the row");
    }
    return *read;
}

double Reading::positive(std::size_t place) const {
    const double read = number(place);
    if (read <= 0) {
        refuseCell(place, "a standard deviation above 0", "leave the columns out where it is not known");
    }
    return read;
}

Point<double, 3> Reading::lengths(const MeasuredColumns::Places<3>& places) const {
    Point<double, 3> read;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        read[axis] = number((*places)[axis]) * m_nativePerUnit;
        if (!std::isfinite(read[axis])) {
            refuseCell((*places)[axis], "a length that the unit of the display can hold", "check the unit");
        }
    }
    return read;
}

Point<double, 2> Reading::picture(const Channel& channel) {
    const bool isInPixels = states(m_columns->pixels);
    const auto& places = isInPixels ? *m_columns->pixels : *m_columns->normalised;
    Point<double, 2> read;
    for (std::size_t axis = 0; axis < 2; ++axis) {
        const double size = isInPixels ? channel.pixels[axis] : 1;
        const double value = number(places[axis]);
        if (value < 0 || value > size) {
            refuseCell(places[axis],
                       isInPixels ? "a pixel of the picture, from 0 to " + std::to_string(channel.pixels[axis])
                                  : "a place in the picture, from 0 to 1",
                       isInPixels ? "check the resolution of the channel, and that px and py are not exchanged"
                                  : "name columns of pixels px and py");
        }
        m_largestPixel = std::max(m_largestPixel, value);
        read[axis] = value / size;
        if (axis == 1 && m_options.isFromTop) {
            read[axis] = (size - value) / size;
        }
    }
    return read;
}

std::optional<Point<double, 2>> Reading::pictureDeviation(const Channel& channel) const {
    if (!states(m_columns->pictureDeviation)) {
        return std::nullopt;
    }
    const double deviation = positive(m_columns->pictureDeviation->front());
    if (states(m_columns->pixels)) {
        return Point<double, 2>{deviation / channel.pixels[0], deviation / channel.pixels[1]};
    }
    return Point<double, 2>{deviation, deviation};
}

std::optional<Matrix<double, 3>> Reading::covariance() const {
    const double squared = m_nativePerUnit * m_nativePerUnit;
    Matrix<double, 3> read;
    if (states(m_columns->deviations)) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const double deviation = positive((*m_columns->deviations)[axis]);
            read(axis, axis) = deviation * deviation * squared;
        }
    } else if (states(m_columns->covariance)) {
        std::size_t next = 0;
        for (std::size_t row = 0; row < 3; ++row) {
            for (std::size_t column = row; column < 3; ++column) {
                read(row, column) = number((*m_columns->covariance)[next++]) * squared;
                read(column, row) = read(row, column);
            }
        }
    } else {
        return std::nullopt;
    }
    if (!isCovariance(read)) {
        const bool isDiagonal = m_columns->deviations.has_value() && states(m_columns->deviations);
        refuseCell(isDiagonal ? m_columns->deviations->front() : m_columns->covariance->front(),
                   "a covariance, which is positive definite",
                   "check the order cxx,cxy,cxz,cyy,cyz,czz and the sizes, in the unit of lengths squared");
    }
    return read;
}

const Channel& Reading::channel() {
    std::string name;
    std::size_t place = 0;
    // The id first: two channels may have one name.
    for (const auto& column : {m_columns->projector, m_columns->channel}) {
        if (column && name.empty()) {
            place = column->front();
            name = m_cells[place];
        }
    }
    const bool isNamed = m_columns->projector || m_columns->channel;
    if (isNamed && name.empty()) {
        refuseCell(place, "the id or the unique name of a channel", "fill it in");
    }
    const auto known = m_channels.find(name);
    if (known != m_channels.end()) {
        return known->second;
    }
    return m_channels.emplace(name, isNamed ? findChannel(name, place) : onlyChannel()).first->second;
}

Channel Reading::findChannel(const std::string& name, std::size_t place) const {
    try {
        const ChannelChoice choice = ChannelChoice::of(m_config, name);
        return {choice.index, m_columns->pixels ? choice.pictureSize() : Point<int, 2>{}};
    } catch (const VeltraniException& fault) {
        refuseCell(place, "the id or the unique name of a channel", onOneLine(toUtf8(fault.message)));
    }
}

Channel Reading::onlyChannel() const {
    const std::vector<std::wstring> ids = m_config.getProjectorConfigIds();
    if (ids.size() != 1) {
        m_table.refuse(m_table.line(), "a row of no channel",
                       "the channel of each row, since the display has " + std::to_string(ids.size()),
                       {"measurement", "add a column named channel with ids or unique names"});
    }
    const ChannelChoice only = ChannelChoice::of(m_config, toUtf8(ids.front()));
    return {only.index, m_columns->pixels ? only.pictureSize() : Point<int, 2>{}};
}

void Reading::refuseCell(std::size_t place, const std::string& expected, const std::string& remedy) const {
    m_table.refuse(m_table.line(), inQuotes(m_cells[place]), expected, {m_columns->describe(place), remedy});
}

}  // namespace

MeasuredPointReader::MeasuredPointReader(const XMLConfigManager& config, Options options)
    : m_config(config), m_options(std::move(options)) {}

MeasuredPoints MeasuredPointReader::read(std::istream& in, const std::string& document) const {
    return Reading(in, document, m_config, m_options).run();
}

MeasuredPoints MeasuredPointReader::readFile(const std::string& utf8Path) const {
    // Refuses folders and what never ends, with the reason.
    const RegularFile file(utf8Path);
    std::ifstream in(file.nameForReopening(), std::ios::binary);
    if (!in) {
        throw VeltraniMissingFileException(fromUtf8OrBytes(utf8Path + ": cannot be opened"));
    }
    return read(in, utf8Path);
}

}  // namespace Veltrani::FitSession
