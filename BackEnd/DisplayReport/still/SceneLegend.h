#pragma once

#include "DisplayReport/scene/SceneShading.h"
#include "DisplayReport/still/Drawing.h"
#include "DisplayReport/still/TakenAreas.h"

#include <cstddef>
#include <string>
#include <vector>

namespace Veltrani::DisplayReport {

struct DisplayScene;
struct SceneChannel;

/// The words of a still: its heading, all channels with their numbers, names and counts, what the shades of the screen
/// mean, and the first notes.
///
/// Channels are numbered by their places in the configuration, from 1, since there are more of them than colours. Where
/// they do not all fit with their counts below each other, they stand in several columns, then smaller, then with their
/// names alone.
class SceneLegend {
public:
    /// @param width, height of the whole picture, pixels
    SceneLegend(int width, int height, const DisplayScene& scene);

    /// Where the scene itself is drawn, from the left edge of the picture on; pixels.
    [[nodiscard]] double sceneWidth() const { return m_width - m_list.width; }
    [[nodiscard]] double sceneTop() const { return 4 * m_size; }
    [[nodiscard]] double sceneHeight() const { return m_height - sceneTop() - 2 * m_size; }
    /// Height of a capital letter; pixels.
    [[nodiscard]] double letterSize() const { return m_size; }
    /// Below the channels, free for what residuals mean; empty for a scene without them.
    [[nodiscard]] PaperArea residualKey() const;

    void addTo(Drawing& drawing) const;

    /// A text of outside data that is cut where it does not fit.
    [[nodiscard]] static std::string fitting(const std::string& text, double length, double size);

private:
    /// How the channels stand.
    struct List {
        double size = 0;    ///< height of a capital letter
        double row = 0;     ///< from channel to channel
        double column = 0;  ///< width of one
        double width = 0;   ///< of all columns
        std::size_t rows = 0;
        std::size_t columns = 1;
        bool hasFacts = true;  ///< counts, remarks, and what else channels state

        [[nodiscard]] std::size_t room() const { return rows * columns; }
        /// For a line below a name, in heights of its letters.
        [[nodiscard]] double factRoom() const;
    };

    /// A line below the name of a channel.
    struct Fact {
        std::string text;
        Colour ink;
    };

    [[nodiscard]] List list() const;
    /// The first list of that kind that holds all channels; one of the smallest letters where none does.
    [[nodiscard]] List listWith(bool hasFacts, double smallest, double mostWidth) const;
    [[nodiscard]] List listOf(double size, std::size_t columns, bool hasFacts) const;
    /// @param room for a line, in heights of its letters
    [[nodiscard]] std::vector<Fact> factsOf(const SceneChannel& channel, double room) const;
    /// The longest counts, in heights of a capital letter of the names.
    [[nodiscard]] double widthOfCounts() const;
    void addChannels(Drawing& drawing) const;
    void addChannel(Drawing& drawing, std::size_t number, double left, double down) const;
    void addFacts(Drawing& drawing, const SceneChannel& channel, double left, double down, double room) const;
    void addShades(Drawing& drawing) const;
    void addNotes(Drawing& drawing) const;
    /// Of what the shades mean, at the lower end, of what residuals mean above it, and of both; pixels.
    [[nodiscard]] double shadesHeight() const;
    [[nodiscard]] double keyHeight() const;
    [[nodiscard]] double footHeight() const { return shadesHeight() + keyHeight(); }

    const DisplayScene& m_scene;
    double m_width;
    double m_height;
    double m_size;
    double m_countsWidth;
    std::vector<ShadeEntry> m_shades;
    List m_list;
};

/// A colour of a shading as stills have it: pale enough for the outlines and the targets on it.
[[nodiscard]] Colour softShade(const Colour& shade);

/// What stands on a disc or beside a picture of a channel: "1" for the first.
[[nodiscard]] std::string numberText(std::size_t channel);

/// Black or white, whichever is read more easily on that colour.
[[nodiscard]] Colour inkOn(const Colour& colour);

}  // namespace Veltrani::DisplayReport
