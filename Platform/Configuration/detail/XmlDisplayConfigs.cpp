#include "Configuration/detail/XmlDisplayConfigs.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Configuration/detail/DisplayFormat.h"
#include "Configuration/detail/ValueRules.h"
#include "Configuration/detail/ValueText.h"
#include "Configuration/detail/XmlNode.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Veltrani::ConfigurationDetail {

namespace {

// A file without stated axes is taken to be in the world frame: z up, y forward.
constexpr const char* USUAL_UP = "Z";
constexpr const char* USUAL_FORWARD = "Y";

constexpr const wchar_t* OWNER_OF_MIRROR = L"Target data, mirror";
// A rail spans a surface, and a table an interval, from two on.
constexpr std::size_t FEWEST_ROWS = 2;
const RowForm LOWER_RAIL{"LowerRail", "Point", {"x", "y", "z"}};
const RowForm UPPER_RAIL{"UpperRail", "Point", {"x", "y", "z"}};

std::wstring at(const std::vector<std::wstring>& files, int index) {
    const bool isThere = index >= 0 && static_cast<std::size_t>(index) < files.size();
    return isThere ? files[static_cast<std::size_t>(index)] : std::wstring();
}

std::vector<std::wstring> filesOf(const xmlNode* screen, const char* name, const ElementReader& reader,
                                  const FolderPath& folder) {
    std::vector<std::wstring> files;
    for (const xmlNode* element : Xml::children(screen, name)) {
        files.push_back(folder.resolve(fromUtf8(reader.text(element, "file").value_or(""))));
    }
    return files;
}

std::vector<Point<double, 3>> pointsOf(const xmlNode* rail, const ElementReader& reader) {
    std::vector<Point<double, 3>> points;
    for (const xmlNode* point : Xml::children(rail, "Point")) {
        points.push_back(reader.position(point));
    }
    return points;
}

std::vector<std::pair<double, double>> pairsOf(const xmlNode* table, const ElementReader& reader) {
    std::vector<std::pair<double, double>> pairs;
    for (const xmlNode* pair : Xml::children(table, "Pair")) {
        pairs.emplace_back(reader.angle(pair, "measured").value_or(0.0), reader.angle(pair, "corrected").value_or(0.0));
    }
    return pairs;
}

std::vector<std::vector<double>> rowsOf(const std::vector<Point<double, 3>>& points) {
    std::vector<std::vector<double>> rows;
    for (const Point<double, 3>& point : points) {
        rows.push_back({point[0], point[1], point[2]});
    }
    return rows;
}

std::vector<std::vector<double>> rowsOf(const std::vector<std::pair<double, double>>& pairs) {
    std::vector<std::vector<double>> rows;
    for (const auto& [measured, corrected] : pairs) {
        rows.push_back({measured, corrected});
    }
    return rows;
}

/// Returns whether two lists of points or pairs are equal to the last bit.
template <class List>
bool isSame(const List& a, const List& b) {
    const auto isSameRow = [&](const auto& x, const auto& y) {
        return std::equal(x.begin(), x.end(), y.begin(), y.end(), isSameNumber);
    };
    const auto rowsOfA = rowsOf(a);
    const auto rowsOfB = rowsOf(b);
    return std::equal(rowsOfA.begin(), rowsOfA.end(), rowsOfB.begin(), rowsOfB.end(), isSameRow);
}

std::string limitsText(const std::vector<double>& limits) {
    return "min=" + inQuotes(numberText(limits[0])) + " and max=" + inQuotes(numberText(limits[1])) + " radians";
}

void requireIncreasing(const ElementWriter& writer, const char* child, const std::vector<double>& limits) {
    if (!(limits[0] < limits[1])) {
        writer.refuse(child, "", limitsText(limits), "min below max", "exchange or correct them");
    }
}

}  // namespace

std::vector<NumberChange> changesOfPoint(const std::array<const char*, 3>& names, Point<double, 3>& current,
                                         const Point<double, 3>& wanted) {
    std::vector<NumberChange> changes;
    for (std::size_t i = 0; i < names.size(); ++i) {
        changes.push_back({names[i], &current[i], wanted[i]});
    }
    return changes;
}

XmlUnitsConfig::XmlUnitsConfig(const xmlNode* units)
    : m_unitName(fromUtf8(Xml::attribute(units, "native").value_or(""))) {}

XmlScreenConfig::XmlScreenConfig(xmlNode* screen, DisplayContext& display, std::wstring nativeUnit)
    : m_screen(screen),
      m_display(display),
      m_shape(fromUtf8(display.reader.text(screen, "shape").value_or(""))),
      m_allowed(fromUtf8(display.reader.text(screen, "allow").value_or(""))),
      m_fileUnit(std::move(nativeUnit)) {
    if (const std::optional<std::string> unit = display.reader.text(screen, "fileUnit")) {
        m_fileUnit = fromUtf8(*unit);
    }
    m_scale = display.reader.number(screen, "scale").value_or(1.0);
    display.eyePoint = display.reader.position(Xml::child(screen, "EyePoint"));
    readFiles();
    readShape();
    readLimits();
}

void XmlScreenConfig::readFiles() {
    const ElementReader& reader = m_display.reader;
    m_contentMeshes = filesOf(m_screen, "ContentMesh", reader, m_display.folder);
    m_measuredMeshes = filesOf(m_screen, "MeasuredMesh", reader, m_display.folder);
    m_modelClouds = filesOf(m_screen, "ModelCloud", reader, m_display.folder);
    const xmlNode* const import = Xml::child(m_screen, "ImportOrientation");
    m_up = fromUtf8(reader.text(import, "up").value_or(USUAL_UP));
    m_forward = fromUtf8(reader.text(import, "forward").value_or(USUAL_FORWARD));
}

void XmlScreenConfig::readShape() {
    const ElementReader& reader = m_display.reader;
    m_centre = reader.position(Xml::child(m_screen, "Centre"));
    m_orientation = reader.orientation(Xml::child(m_screen, "Orientation"));
    m_radius = reader.length(Xml::child(m_screen, "Radius"), "value").value_or(0.0);
    m_width = reader.length(Xml::child(m_screen, "Size"), "width").value_or(0.0);
    m_height = reader.length(Xml::child(m_screen, "Size"), "height").value_or(0.0);
    m_lowerRail = pointsOf(Xml::child(m_screen, LOWER_RAIL.table), reader);
    m_upperRail = pointsOf(Xml::child(m_screen, UPPER_RAIL.table), reader);
}

void XmlScreenConfig::readLimits() {
    const std::string shape = toUtf8(m_shape);
    const auto limit = [&](const char* child, const char* attribute) {
        return m_display.reader.angle(Xml::child(m_screen, child), attribute)
            .value_or(withoutElement(shape, child, attribute));
    };
    m_azimuthMin = limit("Azimuth", "min");
    m_azimuthMax = limit("Azimuth", "max");
    m_elevationMin = limit("Elevation", "min");
    m_elevationMax = limit("Elevation", "max");
}

std::wstring XmlScreenConfig::getContentMeshFile(int index) const {
    return at(m_contentMeshes, index);
}

std::wstring XmlScreenConfig::getMeasuredMeshFile(int index) const {
    return at(m_measuredMeshes, index);
}

std::wstring XmlScreenConfig::getModelPcdFile(int index) const {
    return at(m_modelClouds, index);
}

void XmlScreenConfig::setEyePoint(const Point<double, 3>& position) {
    writer().writeNumbers("EyePoint", changesOfPoint(POSITION_NAMES, m_display.eyePoint, position));
}

void XmlScreenConfig::setCentre(const Point<double, 3>& position) {
    writer().writeNumbers("Centre", changesOfPoint(POSITION_NAMES, m_centre, position));
}

void XmlScreenConfig::setOrientation(const Point<double, 3>& angles) {
    writer().writeNumbers("Orientation", changesOfPoint(ORIENTATION_NAMES, m_orientation, angles));
}

void XmlScreenConfig::setRadius(double length) {
    writer().writeNumbers("Radius", {{"value", &m_radius, length}});
}

void XmlScreenConfig::setWidth(double length) {
    writer().writeNumbers("Size", {{"width", &m_width, length}});
}

void XmlScreenConfig::setHeight(double length) {
    writer().writeNumbers("Size", {{"height", &m_height, length}});
}

void XmlScreenConfig::setAzimuth(double min, double max) {
    writer().writeNumbers("Azimuth", {{"min", &m_azimuthMin, min}, {"max", &m_azimuthMax, max}},
                          [&](const std::vector<double>& limits) {
                              requireIncreasing(writer(), "Azimuth", limits);
                              if (!isWithinOneTurn(limits[0], limits[1])) {
                                  writer().refuse("Azimuth", "", limitsText(limits),
                                                  "at most one full turn between them", "correct the limits");
                              }
                          });
}

void XmlScreenConfig::setElevation(double min, double max) {
    writer().writeNumbers("Elevation", {{"min", &m_elevationMin, min}, {"max", &m_elevationMax, max}},
                          [&](const std::vector<double>& limits) {
                              requireIncreasing(writer(), "Elevation", limits);
                              if (!isElevation(limits[0]) || !isElevation(limits[1])) {
                                  writer().refuse("Elevation", "", limitsText(limits),
                                                  "elevations from -90 to 90 degrees", "correct the limits");
                              }
                          });
}

void XmlScreenConfig::setRails(const std::vector<Point<double, 3>>& lower, const std::vector<Point<double, 3>>& upper) {
    if (isSame(lower, m_lowerRail) && isSame(upper, m_upperRail)) {
        return;
    }
    if (lower.size() != upper.size() || lower.size() < FEWEST_ROWS) {
        writer().refuse(
            UPPER_RAIL.table, "",
            std::to_string(upper.size()) + " points, and " + std::to_string(lower.size()) + " in <LowerRail>",
            "equally many points on both rails, at least two", "add or remove points");
    }
    const std::vector<StatedRow> lowerRows = writer().statedRows(LOWER_RAIL, rowsOf(lower));
    const std::vector<StatedRow> upperRows = writer().statedRows(UPPER_RAIL, rowsOf(upper));
    writer().requireRemovableRows(UPPER_RAIL, upperRows.size());
    writer().writeRows(LOWER_RAIL, lowerRows);
    writer().writeRows(UPPER_RAIL, upperRows);
    readShape();
}

ElementWriter XmlScreenConfig::writer() const {
    return ElementWriter(m_screen, m_display.reader, L"Screen");
}

XmlTargetLocatorConfig::XmlTargetLocatorConfig(xmlNode* targetData, const DisplayContext& display)
    : m_targetData(targetData),
      m_display(display),
      m_type(fromUtf8(display.reader.text(targetData, "type").value_or(""))) {
    const ElementReader& reader = display.reader;
    if (const xmlNode* position = Xml::child(targetData, "TargetPosition")) {
        m_position = reader.position(position);
    }
    const xmlNode* const mirror = Xml::child(targetData, "Mirror");
    m_mirrorOrientation = reader.orientation(Xml::child(mirror, "Orientation"));
    m_mirrorPosition = reader.position(Xml::child(mirror, "Position"));
    m_mirrorRadius = reader.length(mirror, "radius").value_or(0.0);
    m_yawTable = pairsOf(Xml::child(targetData, "YawTable"), reader);
    m_pitchTable = pairsOf(Xml::child(targetData, "PitchTable"), reader);
}

void XmlTargetLocatorConfig::setTargetPosition(const Point<double, 3>& position) {
    Point<double, 3> current = getTargetPosition();
    if (writer().writeNumbers("TargetPosition", changesOfPoint(POSITION_NAMES, current, position))) {
        m_position = current;
    }
}

void XmlTargetLocatorConfig::setMirrorOrientation(const Point<double, 3>& angles) {
    writeMirror("Orientation", ORIENTATION_NAMES, m_mirrorOrientation, angles);
}

void XmlTargetLocatorConfig::setMirrorPosition(const Point<double, 3>& position) {
    writeMirror("Position", POSITION_NAMES, m_mirrorPosition, position);
}

void XmlTargetLocatorConfig::setMirrorRadius(double length) {
    writer().writeNumbers("Mirror", {{"radius", &m_mirrorRadius, length}});
}

void XmlTargetLocatorConfig::writeMirror(const char* child, const std::array<const char*, 3>& names,
                                         Point<double, 3>& current, const Point<double, 3>& wanted) {
    const std::vector<NumberChange> changes = changesOfPoint(names, current, wanted);
    if (xmlNode* const mirror = Xml::child(m_targetData, "Mirror")) {
        ElementWriter(mirror, m_display.reader, OWNER_OF_MIRROR).writeNumbers(child, changes);
    } else if (!isSame(std::vector{current}, std::vector{wanted})) {
        writer().refuse("Mirror", "radius", "no <Mirror>", "one with a radius", "set the radius of the mirror first");
    }
}

void XmlTargetLocatorConfig::writeTable(const char* name, Table& current, const Table& wanted) {
    const RowForm form{name, "Pair", {"measured", "corrected"}};
    if (isSame(current, wanted)) {
        return;
    }
    if (wanted.empty()) {
        writer().remove(name);
    } else if (wanted.size() < FEWEST_ROWS) {
        writer().refuse(name, "", "1 of <Pair>", "at least 2", "add <Pair>");
    } else {
        const std::vector<StatedRow> rows = writer().statedRows(form, rowsOf(wanted));
        for (std::size_t i = 1; i < rows.size(); ++i) {
            requireFollowing(form, rows[i - 1], rows[i]);
        }
        writer().writeRows(form, rows);
    }
    current = pairsOf(Xml::child(m_targetData, name), m_display.reader);
}

void XmlTargetLocatorConfig::requireFollowing(const RowForm& form, const StatedRow& before,
                                              const StatedRow& row) const {
    for (std::size_t i = 0; i < row.size(); ++i) {
        if (!(before[i].value < row[i].value)) {
            writer().refuse(form.row, form.attributes[i], numberText(row[i].value),
                            "more than the " + numberText(before[i].value) + " of the pair before",
                            "put the pairs into increasing order");
        }
    }
}

ElementWriter XmlTargetLocatorConfig::writer() const {
    return ElementWriter(m_targetData, m_display.reader, L"Target data");
}

}  // namespace Veltrani::ConfigurationDetail
