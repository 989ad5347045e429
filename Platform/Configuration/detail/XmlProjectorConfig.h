#pragma once

#include "Configuration/ProjectorConfig.h"
#include "Configuration/detail/ElementWriter.h"
#include "Configuration/detail/XmlDisplayConfigs.h"

#include <libxml/tree.h>

#include <array>
#include <cstddef>
#include <optional>
#include <string>

namespace Veltrani::ConfigurationDetail {

/// One `<Projector>` of a checked document: read once, every change written through to the document.
///
/// A setter that is given what the element already states changes nothing; one that is given what the file could not
/// hold throws `VeltraniException` naming the entry, and changes nothing either.
class XmlProjectorConfig : public ProjectorConfig {
public:
    /// @param element stays in the document for as long as this object lives
    /// @param display lives longer; its eye point is where the projector's frustum is seen from unless the element
    ///        states another place
    XmlProjectorConfig(xmlNode* element, const DisplayContext& display);

    [[nodiscard]] xmlNode* element() const { return m_element; }

    /// Gives the entry another id, which must be neither empty nor taken. The old id is noted; a name and a section
    /// that stood for the id are written out, so that they stay what they were.
    void rename(const std::wstring& newId);

    [[nodiscard]] std::wstring getIdentity() const override { return m_id; }
    [[nodiscard]] std::wstring getSectionID() const override { return m_section; }
    [[nodiscard]] std::wstring getName() const override { return m_name; }
    void setName(const std::wstring& name) override;
    [[nodiscard]] std::wstring getOldUID() const override { return m_oldId; }
    [[nodiscard]] std::wstring getDeviceSnippet() const override;
    void setDeviceSnippet(const std::wstring& snippet) override;
    [[nodiscard]] int getWidth() const override { return m_width; }
    void setWidth(int pixels) override;
    [[nodiscard]] int getHeight() const override { return m_height; }
    void setHeight(int pixels) override;
    void setPondOfMirror(int index, unsigned char size) override;
    [[nodiscard]] int getPondOfMirror(int index) const override;
    [[nodiscard]] std::wstring getCustomPlanarFile() const override { return m_customPlanarFile; }
    [[nodiscard]] std::wstring getProjectionModelName() const override { return m_projectionModel; }
    [[nodiscard]] double getOrientationZ() const override { return m_orientation[0]; }
    [[nodiscard]] double getOrientationX() const override { return m_orientation[1]; }
    [[nodiscard]] double getOrientationY() const override { return m_orientation[2]; }
    [[nodiscard]] double getFrustumTop() const override { return m_frustum[TOP]; }
    [[nodiscard]] double getFrustumBottom() const override { return m_frustum[BOTTOM]; }
    [[nodiscard]] double getFrustumLeft() const override { return m_frustum[LEFT]; }
    [[nodiscard]] double getFrustumRight() const override { return m_frustum[RIGHT]; }
    [[nodiscard]] Point<double, 3> getPosition() const override { return m_position.value_or(m_display.eyePoint); }
    [[nodiscard]] double getScreenLeft() const override { return m_screenArea[LEFT]; }
    [[nodiscard]] double getScreenRight() const override { return m_screenArea[RIGHT]; }
    [[nodiscard]] double getScreenTop() const override { return m_screenArea[TOP]; }
    [[nodiscard]] double getScreenBottom() const override { return m_screenArea[BOTTOM]; }
    [[nodiscard]] double getLayoutXMin() const override { return m_layout[LEFT]; }
    [[nodiscard]] double getLayoutXMax() const override { return m_layout[RIGHT]; }
    [[nodiscard]] double getLayoutYMin() const override { return m_layout[BOTTOM]; }
    [[nodiscard]] double getLayoutYMax() const override { return m_layout[TOP]; }
    [[nodiscard]] std::wstring getText(const std::wstring& element) const override;
    [[nodiscard]] std::wstring getAllowed() const override { return m_allowed; }

    void setPosition(const Point<double, 3>& position) override;
    void setOrientationZ(double angle) override { writeOrientation(0, angle); }
    void setOrientationX(double angle) override { writeOrientation(1, angle); }
    void setOrientationY(double angle) override { writeOrientation(2, angle); }
    void setFrustumTop(double angle) override { writeFrustum(TOP, angle); }
    void setFrustumBottom(double angle) override { writeFrustum(BOTTOM, angle); }
    void setFrustumLeft(double angle) override { writeFrustum(LEFT, angle); }
    void setFrustumRight(double angle) override { writeFrustum(RIGHT, angle); }
    void setScreenLeft(double bound) override { writeScreenBound(LEFT, bound); }
    void setScreenRight(double bound) override { writeScreenBound(RIGHT, bound); }
    void setScreenTop(double bound) override { writeScreenBound(TOP, bound); }
    void setScreenBottom(double bound) override { writeScreenBound(BOTTOM, bound); }
    void setLayoutXMin(double length) override { writeLayout(LEFT, length); }
    void setLayoutXMax(double length) override { writeLayout(RIGHT, length); }
    void setLayoutYMin(double length) override { writeLayout(BOTTOM, length); }
    void setLayoutYMax(double length) override { writeLayout(TOP, length); }
    void setProjectionModelName(const std::wstring& name) override;
    void setCustomPlanarFile(const std::wstring& file) override;

private:
    /// The places of the sides of a rectangle; xMin, xMax, yMin and yMax of a layout.
    enum Side : std::size_t { LEFT, RIGHT, BOTTOM, TOP };
    using Sides = std::array<double, 4>;

    void readTexts();
    void readModel();
    void readPicture();
    void readGeometry();
    void writeOrientation(std::size_t axis, double angle);
    void writeFrustum(Side side, double angle);
    void writeScreenBound(Side side, double bound);
    void writeLayout(Side side, double length);
    [[nodiscard]] ElementWriter writer() const;
    void setSize(int& side, int pixels, const wchar_t* what);
    [[nodiscard]] std::size_t pondIndex(int index) const;
    [[nodiscard]] std::wstring described(const std::wstring& what) const;
    void writeName();

    xmlNode* m_element;
    const DisplayContext& m_display;
    std::wstring m_id;
    std::wstring m_section;
    std::wstring m_name;
    std::wstring m_oldId;
    std::wstring m_allowed;
    int m_width = 0;
    int m_height = 0;
    std::array<unsigned char, 4> m_pondOfMirror{};
    std::wstring m_customPlanarFile;
    std::wstring m_projectionModel;
    Point<double, 3> m_orientation;  // angles Z, X, Y
    Sides m_frustum{};
    std::optional<Point<double, 3>> m_position;  // none: the eye point
    Sides m_screenArea{};
    Sides m_layout{};
};

}  // namespace Veltrani::ConfigurationDetail
