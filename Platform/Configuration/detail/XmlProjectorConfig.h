#pragma once

#include "Configuration/ProjectorConfig.h"
#include "Configuration/detail/ElementReader.h"
#include "Configuration/detail/FolderPath.h"

#include <libxml/tree.h>

#include <array>
#include <cstddef>
#include <string>

namespace Veltrani::ConfigurationDetail {

/// One `<Projector>` of a checked document: read once, every change written through to the document.
///
/// A setter that is given what the element already states changes nothing; one that is given what the file could not
/// hold throws `VeltraniException` naming the entry, and changes nothing either.
class XmlProjectorConfig : public ProjectorConfig {
public:
    /// @param element stays in the document for as long as this object lives
    /// @param eyePoint of the screen: where the projector's frustum is seen from unless the element states it
    XmlProjectorConfig(xmlNode* element, const ElementReader& reader, const FolderPath& folder,
                       const Point<double, 3>& eyePoint);

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
    [[nodiscard]] double getFrustumTop() const override { return m_frustum.top; }
    [[nodiscard]] double getFrustumBottom() const override { return m_frustum.bottom; }
    [[nodiscard]] double getFrustumLeft() const override { return m_frustum.left; }
    [[nodiscard]] double getFrustumRight() const override { return m_frustum.right; }
    [[nodiscard]] Point<double, 3> getPosition() const override { return m_position; }
    [[nodiscard]] double getScreenLeft() const override { return m_screenArea.left; }
    [[nodiscard]] double getScreenRight() const override { return m_screenArea.right; }
    [[nodiscard]] double getScreenTop() const override { return m_screenArea.top; }
    [[nodiscard]] double getScreenBottom() const override { return m_screenArea.bottom; }
    [[nodiscard]] double getLayoutXMin() const override { return m_layout.left; }
    [[nodiscard]] double getLayoutXMax() const override { return m_layout.right; }
    [[nodiscard]] double getLayoutYMin() const override { return m_layout.bottom; }
    [[nodiscard]] double getLayoutYMax() const override { return m_layout.top; }
    [[nodiscard]] std::wstring getText(const std::wstring& element) const override;
    [[nodiscard]] std::wstring getAllowed() const override { return m_allowed; }

private:
    struct Sides {
        double left = 0.0;
        double right = 0.0;
        double bottom = 0.0;
        double top = 0.0;
    };

    void readTexts(const ElementReader& reader, const FolderPath& folder);
    void readPicture(const ElementReader& reader);
    void readGeometry(const ElementReader& reader);
    void setSize(int& side, int pixels, const wchar_t* what);
    [[nodiscard]] std::size_t pondIndex(int index) const;
    [[nodiscard]] std::wstring described(const std::wstring& what) const;
    [[nodiscard]] xmlNode* childToWrite(const char* name);
    void writeName();

    xmlNode* m_element;
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
    Sides m_frustum;
    Point<double, 3> m_position;
    Sides m_screenArea;
    Sides m_layout;
};

}  // namespace Veltrani::ConfigurationDetail
