#include "Configuration/detail/XmlProjectorConfig.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Configuration/detail/FaultList.h"
#include "Configuration/detail/NodePlacement.h"
#include "Configuration/detail/ValueText.h"
#include "Configuration/detail/XmlDocument.h"
#include "Configuration/detail/XmlNode.h"

#include <string_view>
#include <vector>

namespace Veltrani::ConfigurationDetail {

namespace {

// A snippet is parsed at the depth that it will have in the file, where the parser limits the depth.
constexpr std::string_view BEFORE_SNIPPET = "<Display><Projectors><Projector><Device>";
constexpr std::string_view BEHIND_SNIPPET = "</Device></Projector></Projectors></Display>";

// In the order of `XmlProjectorConfig::Side`.
constexpr std::array<const char*, 4> SIDES{"left", "right", "bottom", "top"};
constexpr std::array<const char*, 4> EXTENTS{"xMin", "xMax", "yMin", "yMax"};

/// The change of one of four numbers that are stated together.
std::vector<NumberChange> changesOfSide(const std::array<const char*, 4>& names, std::array<double, 4>& current,
                                        std::size_t side, double wanted) {
    std::vector<NumberChange> changes;
    for (std::size_t i = 0; i < names.size(); ++i) {
        changes.push_back({names[i], &current[i], i == side ? wanted : current[i]});
    }
    return changes;
}

/// Returns the element that encloses the snippet. Null when the snippet closed it early and opened others in its place:
/// then there is something beside it at some level.
const xmlNode* soleDevice(const XmlDocument& document) {
    const xmlNode* node = document.root();
    for (int level = 0; level < 3; ++level) {
        if (node->children != node->last) {
            return nullptr;
        }
        node = node->children;
    }
    return node;
}

}  // namespace

XmlProjectorConfig::XmlProjectorConfig(xmlNode* element, const DisplayContext& display)
    : m_element(element), m_display(display) {
    readTexts();
    readModel();
    readPicture();
    readGeometry();
}

void XmlProjectorConfig::readTexts() {
    const ElementReader& reader = m_display.reader;
    m_id = fromUtf8(reader.text(m_element, "id").value_or(""));
    const std::optional<std::string> section = reader.text(m_element, "section");
    m_section = section ? fromUtf8(*section) : m_id;
    m_oldId = fromUtf8(reader.text(m_element, "oldId").value_or(""));
    m_allowed = fromUtf8(reader.text(m_element, "allow").value_or(""));
    const xmlNode* const name = Xml::child(m_element, "Name");
    m_name = name == nullptr ? m_id : fromUtf8(Xml::content(name));
    m_customPlanarFile = fromUtf8(reader.text(Xml::child(m_element, "CustomPlanarMap"), "file").value_or(""));
}

void XmlProjectorConfig::readModel() {
    const xmlNode* const model = Xml::child(m_element, "ProjectionModel");
    m_projectionModel = fromUtf8(m_display.reader.text(model, "name").value_or(""));
    if (const std::optional<std::string> file = m_display.reader.text(model, "file")) {
        m_projectionModel += L":" + m_display.folder.resolve(fromUtf8(*file));
    }
}

void XmlProjectorConfig::readPicture() {
    const ElementReader& reader = m_display.reader;
    const xmlNode* const resolution = Xml::child(m_element, "Resolution");
    m_width = reader.pixels(resolution, "width").value_or(0);
    m_height = reader.pixels(resolution, "height").value_or(0);
    const std::string sizes = reader.text(Xml::child(m_element, "PondOfMirror"), "sizes").value_or("");
    m_pondOfMirror = parseFourBytes(sizes).value_or(std::array<unsigned char, 4>{});
}

void XmlProjectorConfig::readGeometry() {
    const ElementReader& reader = m_display.reader;
    m_orientation = reader.orientation(Xml::child(m_element, "Orientation"));
    if (const xmlNode* position = Xml::child(m_element, "Position")) {
        m_position = reader.position(position);
    }
    const xmlNode* const frustum = Xml::child(m_element, "Frustum");
    const xmlNode* const area = Xml::child(m_element, "ScreenArea");
    const xmlNode* const layout = Xml::child(m_element, "Layout");
    for (std::size_t i = 0; i < SIDES.size(); ++i) {
        m_frustum[i] = reader.angle(frustum, SIDES[i]).value_or(0.0);
        m_screenArea[i] = reader.number(area, SIDES[i]).value_or(SCREEN_BOUND_NOT_CONFIGURED);
        m_layout[i] = reader.length(layout, EXTENTS[i]).value_or(0.0);
    }
}

void XmlProjectorConfig::setPosition(const Point<double, 3>& position) {
    Point<double, 3> current = getPosition();
    if (writer().writeNumbers("Position", changesOfPoint(POSITION_NAMES, current, position))) {
        m_position = current;
    }
}

void XmlProjectorConfig::writeOrientation(std::size_t axis, double angle) {
    Point<double, 3> wanted = m_orientation;
    wanted[axis] = angle;
    writer().writeNumbers("Orientation", changesOfPoint(ORIENTATION_NAMES, m_orientation, wanted));
}

void XmlProjectorConfig::writeFrustum(Side side, double angle) {
    writer().writeNumbers("Frustum", changesOfSide(SIDES, m_frustum, side, angle));
}

void XmlProjectorConfig::writeLayout(Side side, double length) {
    writer().writeNumbers("Layout", changesOfSide(EXTENTS, m_layout, side, length));
}

void XmlProjectorConfig::writeScreenBound(Side side, double bound) {
    if (bound == SCREEN_BOUND_NOT_CONFIGURED) {
        writer().removeAttribute("ScreenArea", SIDES[side]);
        m_screenArea[side] = bound;
        return;
    }
    // The others are not stated where they are not configured.
    writer().writeNumbers("ScreenArea", {{SIDES[side], &m_screenArea[side], bound}});
}

void XmlProjectorConfig::setProjectionModelName(const std::wstring& name) {
    if (name == m_projectionModel) {
        return;
    }
    if (name.empty()) {
        writer().remove("ProjectionModel");
    } else {
        const std::wstring::size_type colon = name.find(L':');
        const bool hasFile = colon != std::wstring::npos;
        std::optional<std::wstring> file;
        if (hasFile) {
            file = m_display.folder.relative(name.substr(colon + 1));
        }
        writer().writeTexts("ProjectionModel", {{"name", name.substr(0, colon)}, {"file", file}});
    }
    readModel();
}

void XmlProjectorConfig::setCustomPlanarFile(const std::wstring& file) {
    if (file == m_customPlanarFile) {
        return;
    }
    if (file.empty()) {
        writer().remove("CustomPlanarMap");
    } else {
        writer().writeTexts("CustomPlanarMap", {{"file", file}});
    }
    m_customPlanarFile = file;
}

void XmlProjectorConfig::rename(const std::wstring& newId) {
    const std::string text = xmlText(newId, described(L"the new id"));
    Xml::setAttribute(m_element, "section", toUtf8(m_section));
    writeName();
    Xml::setAttribute(m_element, "oldId", toUtf8(m_id));
    Xml::setAttribute(m_element, "id", text);
    m_oldId = m_id;
    m_id = newId;
}

void XmlProjectorConfig::setName(const std::wstring& name) {
    if (name == m_name) {
        return;
    }
    static_cast<void>(xmlText(name, described(L"the name")));
    m_name = name;
    writeName();
}

void XmlProjectorConfig::writeName() {
    const std::string name = toUtf8(m_name);
    xmlNode* const element = writer().childToWrite("Name");
    if (Xml::content(element) != name) {
        Xml::setContent(element, name);
    }
}

std::wstring XmlProjectorConfig::getDeviceSnippet() const {
    const xmlNode* const device = Xml::child(m_element, "Device");
    return device == nullptr ? std::wstring() : fromUtf8(Xml::innerXml(device));
}

std::wstring XmlProjectorConfig::getText(const std::wstring& element) const {
    const xmlNode* const child = Xml::child(m_element, toUtf8(element).c_str());
    return child == nullptr ? std::wstring() : fromUtf8(Xml::content(child));
}

void XmlProjectorConfig::setDeviceSnippet(const std::wstring& snippet) {
    if (snippet == getDeviceSnippet()) {
        return;
    }
    const std::wstring what = described(L"the device snippet");
    FaultList faults(toUtf8(what));
    const std::string text = std::string(BEFORE_SNIPPET) + xmlText(snippet, what) + std::string(BEHIND_SNIPPET);
    const XmlDocument document = XmlDocument::parse(text, faults);
    const xmlNode* const parsed = faults.empty() ? soleDevice(document) : nullptr;
    if (parsed == nullptr) {
        const std::wstring reason = faults.empty() ? L"it closes an element that it did not open" : faults.message();
        throw VeltraniException(__FILE__, __LINE__, what + L" is not well-formed XML: " + reason);
    }
    Xml::setInnerXml(writer().childToWrite("Device"), parsed);
}

void XmlProjectorConfig::setWidth(int pixels) {
    setSize(m_width, pixels, L"the width");
}

void XmlProjectorConfig::setHeight(int pixels) {
    setSize(m_height, pixels, L"the height");
}

void XmlProjectorConfig::setSize(int& side, int pixels, const wchar_t* what) {
    if (pixels <= 0) {
        throw VeltraniException(__FILE__, __LINE__, described(what) + L" is not a number of pixels above 0");
    }
    if (side == pixels) {
        return;
    }
    side = pixels;
    // Half a resolution is none: the first of the two waits for the other.
    if (m_width > 0 && m_height > 0) {
        xmlNode* const resolution = writer().childToWrite("Resolution");
        Xml::setAttribute(resolution, "width", numberText(m_width));
        Xml::setAttribute(resolution, "height", numberText(m_height));
    }
}

void XmlProjectorConfig::setPondOfMirror(int index, unsigned char size) {
    unsigned char& entry = m_pondOfMirror[pondIndex(index)];
    if (entry != size) {
        entry = size;
        Xml::setAttribute(writer().childToWrite("PondOfMirror"), "sizes", fourBytesText(m_pondOfMirror));
    }
}

int XmlProjectorConfig::getPondOfMirror(int index) const {
    return m_pondOfMirror[pondIndex(index)];
}

std::size_t XmlProjectorConfig::pondIndex(int index) const {
    if (index < 0 || static_cast<std::size_t>(index) >= m_pondOfMirror.size()) {
        throw VeltraniException(
            __FILE__, __LINE__,
            described(L"the pond-of-mirror index " + std::to_wstring(index)) + L" is not one of 0 to 3");
    }
    return static_cast<std::size_t>(index);
}

std::wstring XmlProjectorConfig::described(const std::wstring& what) const {
    return L"Projector \"" + m_id + L"\": " + what;
}

ElementWriter XmlProjectorConfig::writer() const {
    return ElementWriter(m_element, m_display.reader, L"Projector \"" + m_id + L"\"");
}

}  // namespace Veltrani::ConfigurationDetail
