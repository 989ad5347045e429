#pragma once

#include "DisplayReport/still/Drawing.h"

namespace Veltrani::DisplayReport {

struct DisplayScene;

/// The words of a still: its heading, the channels with their counts, and the first notes.
class SceneLegend {
public:
    /// @param width, height of the whole picture, pixels
    SceneLegend(int width, int height);

    /// Where the scene itself is drawn, from the left edge of the picture on; pixels.
    [[nodiscard]] double sceneWidth() const { return m_width - m_columnWidth; }
    [[nodiscard]] double sceneTop() const { return 4 * m_size; }
    [[nodiscard]] double sceneHeight() const { return m_height - sceneTop() - 2 * m_size; }
    /// Height of a capital letter; pixels.
    [[nodiscard]] double letterSize() const { return m_size; }

    void addTo(Drawing& drawing, const DisplayScene& scene) const;

private:
    void addChannels(Drawing& drawing, const DisplayScene& scene) const;
    void addNotes(Drawing& drawing, const DisplayScene& scene) const;
    /// As many letters as fit on a length.
    [[nodiscard]] std::string fitting(const std::string& text, double length, double size) const;

    double m_width;
    double m_height;
    double m_size;
    double m_columnWidth;
};

}  // namespace Veltrani::DisplayReport
