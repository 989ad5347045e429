#include "Configuration/detail/XmlTargetLocatorConfig.h"

#include "Common/Utf8.h"
#include "Configuration/detail/XmlNode.h"

namespace Veltrani {

namespace {

std::vector<std::pair<double, double>> pairsOf(const xmlNode* table, const ElementReader& reader) {
    std::vector<std::pair<double, double>> pairs;
    for (const xmlNode* pair : Xml::children(table, "Pair")) {
        pairs.emplace_back(reader.angle(pair, "measured").value_or(0.0), reader.angle(pair, "corrected").value_or(0.0));
    }
    return pairs;
}

}  // namespace

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

}  // namespace Veltrani
