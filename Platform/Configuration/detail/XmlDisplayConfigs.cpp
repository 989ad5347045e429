#include "Configuration/detail/XmlDisplayConfigs.h"

#include "Common/Utf8.h"
#include "Configuration/detail/DisplayFormat.h"
#include "Configuration/detail/XmlNode.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace Veltrani::ConfigurationDetail {

namespace {

// A file without stated axes is taken to be in the world frame: z up, y forward.
constexpr const char* USUAL_UP = "Z";
constexpr const char* USUAL_FORWARD = "Y";

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

}  // namespace

XmlUnitsConfig::XmlUnitsConfig(const xmlNode* units)
    : m_unitName(fromUtf8(Xml::attribute(units, "native").value_or(""))) {}

XmlScreenConfig::XmlScreenConfig(const xmlNode* screen, const ElementReader& reader, const FolderPath& folder,
                                 std::wstring nativeUnit)
    : m_shape(fromUtf8(reader.text(screen, "shape").value_or(""))),
      m_allowed(fromUtf8(reader.text(screen, "allow").value_or(""))),
      m_fileUnit(std::move(nativeUnit)) {
    if (const std::optional<std::string> unit = reader.text(screen, "fileUnit")) {
        m_fileUnit = fromUtf8(*unit);
    }
    m_scale = reader.number(screen, "scale").value_or(1.0);
    m_eyePoint = reader.position(Xml::child(screen, "EyePoint"));
    readFiles(screen, reader, folder);
    readShape(screen, reader);
    readLimits(screen, reader);
}

void XmlScreenConfig::readFiles(const xmlNode* screen, const ElementReader& reader, const FolderPath& folder) {
    m_contentMeshes = filesOf(screen, "ContentMesh", reader, folder);
    m_measuredMeshes = filesOf(screen, "MeasuredMesh", reader, folder);
    m_modelClouds = filesOf(screen, "ModelCloud", reader, folder);
    const xmlNode* const import = Xml::child(screen, "ImportOrientation");
    m_up = fromUtf8(reader.text(import, "up").value_or(USUAL_UP));
    m_forward = fromUtf8(reader.text(import, "forward").value_or(USUAL_FORWARD));
}

void XmlScreenConfig::readShape(const xmlNode* screen, const ElementReader& reader) {
    m_centre = reader.position(Xml::child(screen, "Centre"));
    m_orientation = reader.orientation(Xml::child(screen, "Orientation"));
    m_radius = reader.length(Xml::child(screen, "Radius"), "value").value_or(0.0);
    m_width = reader.length(Xml::child(screen, "Size"), "width").value_or(0.0);
    m_height = reader.length(Xml::child(screen, "Size"), "height").value_or(0.0);
    m_lowerRail = pointsOf(Xml::child(screen, "LowerRail"), reader);
    m_upperRail = pointsOf(Xml::child(screen, "UpperRail"), reader);
}

void XmlScreenConfig::readLimits(const xmlNode* screen, const ElementReader& reader) {
    const std::string shape = toUtf8(m_shape);
    const auto limit = [&](const char* child, const char* attribute) {
        return reader.angle(Xml::child(screen, child), attribute).value_or(withoutElement(shape, child, attribute));
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

XmlTargetLocatorConfig::XmlTargetLocatorConfig(const xmlNode* targetData, const ElementReader& reader,
                                               const Point<double, 3>& eyePoint)
    : m_type(fromUtf8(reader.text(targetData, "type").value_or(""))), m_position(eyePoint) {
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

}  // namespace Veltrani::ConfigurationDetail
