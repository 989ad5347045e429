#include "DisplayReport/still/SceneLegend.h"

#include "DisplayReport/basics/TextTable.h"
#include "DisplayReport/scene/DisplayScene.h"
#include "DisplayReport/still/PaintedDrawing.h"
#include "DisplayReport/still/ResidualPen.h"
#include "DisplayReport/still/StillLibrary.h"

#include <algorithm>
#include <sstream>

namespace Veltrani::DisplayReport {

namespace {

constexpr Colour INK{35, 40, 46};
constexpr Colour PALE_INK{95, 103, 112};
constexpr Colour FAULT_INK{150, 60, 0};
constexpr Colour PAPER{255, 255, 255};
constexpr Colour BLACK{0, 0, 0};

/// Height of a capital letter as a share of the picture's height, and the least one that can be read; pixels.
constexpr double LETTER_SHARE = 0.0115;
constexpr double SMALLEST_LETTER = 6;
/// How much smaller letters become from one try to the next.
constexpr double SMALLER = 0.9;
/// Width of the list of channels as a share of the picture's width: usual, and the most.
constexpr double COLUMN_SHARE = 0.22;
constexpr double MOST_SHARE = 0.5;
/// The same of a list with counts, and the smallest letters of its names in usual ones.
constexpr double MOST_SHARE_WITH_FACTS = 0.36;
constexpr double SMALLEST_WITH_FACTS = 0.7;
/// Width of a column of names beside others, from line to line of channels and of what a channel states, and what a
/// name with lines below it takes beside these, in heights of a capital letter.
constexpr double COLUMN = 11;
constexpr double LINE = 2.1;
constexpr double FACT_LINE = 1.5;
constexpr double WITH_NAME = 3.1;
constexpr double FIRST_FACT = 1.7;
/// The most lines of a remark.
constexpr std::size_t MOST_REMARK_LINES = 3;
/// From the left edge of a column to the names, and radius of the discs with the numbers, in the same.
constexpr double NAME = 3.2;
constexpr double DISC = 0.95;
/// From the top to the line of the first channel, and from that of the last to the bottom, where a last line counts
/// what does not fit.
constexpr double FIRST = 3;
constexpr double LAST = 2.2;
/// From line to line of what the shades mean.
constexpr double SHADE_LINE = 1.8;
/// Height of small letters in that of others.
constexpr double SMALL = 0.8;
/// The most lines of small text below the scene.
constexpr std::size_t MOST_NOTES = 4;
/// The most characters of one text that are looked at.
constexpr std::size_t LONGEST = 1000;

std::string countsOf(const SceneChannel& channel) {
    const ChannelTargets& targets = channel.targets;
    if (channel.placed + targets.gridMissed == 0) {
        return "outline alone, " + std::to_string(channel.samples) + " samples";
    }
    return std::to_string(channel.placed) + " targets, " + std::to_string(targets.gridMissed) + " missed";
}

/// Words in lines that are no longer than that; the last one is cut where there are too many.
std::vector<std::string> wrapped(const std::string& text, double room, std::size_t mostLines) {
    std::vector<std::string> lines;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        const bool isLast = lines.size() == mostLines;
        if (!lines.empty() && (isLast || StillLibrary::get().width(lines.back() + " " + word, 1) <= room)) {
            lines.back() += " " + word;
        } else {
            lines.push_back(word);
        }
    }
    return lines;
}

std::vector<ShadeEntry> shadesOf(const DisplayScene& scene) {
    if (scene.surfaces.empty() || !scene.surfaces.back().shading) {
        return {};
    }
    return legendOf(*scene.surfaces.back().shading, ShadeBy::COUNT, {});
}

}  // namespace

std::string numberText(std::size_t channel) {
    return std::to_string(channel + 1);
}

Colour inkOn(const Colour& colour) {
    // The eye takes that much of its light from each part.
    const double light = 0.299 * colour.red + 0.587 * colour.green + 0.114 * colour.blue;
    constexpr double MIDDLE = 115;
    return light > MIDDLE ? BLACK : PAPER;
}

Colour softShade(const Colour& shade) {
    constexpr double PALENESS = 0.45;
    return mixed(shade, PAPER, PALENESS);
}

SceneLegend::SceneLegend(int width, int height, const DisplayScene& scene)
    : m_scene(scene),
      m_width(width),
      m_height(height),
      m_size(std::max(SMALLEST_LETTER, LETTER_SHARE * height)),
      m_countsWidth(widthOfCounts()),
      m_shades(shadesOf(scene)),
      m_list(list()) {}

std::string SceneLegend::fitting(const std::string& text, double length, double size) {
    return StillLibrary::get().fitting(shortened(drawableText(text), LONGEST), size, length);
}

double SceneLegend::widthOfCounts() const {
    double width = 0;
    for (const SceneChannel& channel : m_scene.channels) {
        width = std::max(width, SMALL * StillLibrary::get().width(countsOf(channel), 1));
    }
    return width;
}

SceneLegend::List SceneLegend::listOf(double size, std::size_t columns, bool hasFacts) const {
    List list;
    list.size = size;
    list.columns = columns;
    list.hasFacts = hasFacts;
    const double usual = COLUMN_SHARE * m_width;
    const double least = (hasFacts ? NAME + m_countsWidth + 1 : COLUMN) * size;
    list.width = columns == 1 ? usual : std::max(usual, static_cast<double>(columns) * least);
    list.column = list.width / static_cast<double>(columns);
    std::size_t facts = 0;
    if (hasFacts) {
        for (const SceneChannel& channel : m_scene.channels) {
            facts = std::max(facts, factsOf(channel, list.factRoom()).size());
        }
    }
    const double ofFacts = FACT_LINE * static_cast<double>(facts);
    list.row = (hasFacts ? WITH_NAME + ofFacts : LINE) * size;
    const double below = LAST * m_size + ofFacts * size;
    list.rows =
        1 + static_cast<std::size_t>(std::max(0.0, (m_height - footHeight() - FIRST * m_size - below) / list.row));
    return list;
}

double SceneLegend::List::factRoom() const {
    return (column / size - NAME - 0.5) / SMALL;
}

SceneLegend::List SceneLegend::list() const {
    const List full = listWith(true, std::max(SMALLEST_LETTER, SMALLEST_WITH_FACTS * m_size), MOST_SHARE_WITH_FACTS);
    return full.room() >= m_scene.channels.size() ? full : listWith(false, SMALLEST_LETTER, MOST_SHARE);
}

SceneLegend::List SceneLegend::listWith(bool hasFacts, double smallest, double mostWidth) const {
    const double perLetter = hasFacts ? NAME + m_countsWidth + 1 : COLUMN;
    for (double size = m_size;; size = std::max(smallest, SMALLER * size)) {
        const auto most = static_cast<std::size_t>(std::max(1.0, mostWidth * m_width / (perLetter * size)));
        List best;
        for (std::size_t columns = 1; columns <= most; ++columns) {
            best = listOf(size, columns, hasFacts);
            if (best.room() >= m_scene.channels.size()) {
                return best;
            }
        }
        if (size <= smallest) {
            return best;
        }
    }
}

void SceneLegend::addTo(Drawing& drawing) const {
    drawing.title = m_scene.title;
    const double left = 1.5 * m_size;
    const double heading = 1.3 * m_size;
    drawing.texts.push_back({left, 3 * m_size, fitting(m_scene.title, sceneWidth() - 2 * left, heading), heading, INK,
                             Drawing::Anchor::LEFT});
    addChannels(drawing);
    addShades(drawing);
    addNotes(drawing);
}

double SceneLegend::shadesHeight() const {
    return m_shades.empty() ? 0 : SHADE_LINE * m_size * (static_cast<double>(m_shades.size()) + 1);
}

double SceneLegend::keyHeight() const {
    return m_scene.residuals ? ResidualPen::keyHeight(m_size) : 0;
}

PaperArea SceneLegend::residualKey() const {
    const double left = sceneWidth() + m_size;
    const double bottom = m_height - shadesHeight() - m_size;
    return {left, bottom - std::max(0.0, keyHeight() - m_size), m_width - m_size, bottom};
}

void SceneLegend::addShades(Drawing& drawing) const {
    const double small = SMALL * m_size;
    const double line = SHADE_LINE * m_size;
    const double left = sceneWidth() + m_size;
    double down = m_height - shadesHeight();
    if (!m_shades.empty()) {
        drawing.texts.push_back({left, down, "lit by", small, PALE_INK, Drawing::Anchor::LEFT});
    }
    for (const ShadeEntry& shade : m_shades) {
        down += line;
        drawing.boxes.push_back(
            {left, down - small - 0.2 * m_size, 1.8 * m_size, small + 0.4 * m_size, softShade(shade.colours.front())});
        const double room = m_list.width - 4 * m_size;
        drawing.texts.push_back(
            {left + 2.4 * m_size, down, fitting(shade.text, room, small), small, INK, Drawing::Anchor::LEFT});
    }
}

void SceneLegend::addChannels(Drawing& drawing) const {
    drawing.boxes.push_back({sceneWidth(), 0, m_list.width, m_height, PAPER});
    const std::size_t listed = std::min(m_list.room(), m_scene.channels.size());
    for (std::size_t i = 0; i < listed; ++i) {
        const std::size_t column = i / m_list.rows;
        const std::size_t row = i % m_list.rows;
        addChannel(drawing, i, sceneWidth() + m_list.column * static_cast<double>(column),
                   FIRST * m_size + m_list.row * static_cast<double>(row));
    }
    if (m_scene.channels.size() > listed) {
        drawing.texts.push_back({sceneWidth() + m_list.size, m_height - footHeight() - 1.2 * m_size,
                                 "and " + std::to_string(m_scene.channels.size() - listed) + " more channels",
                                 m_list.size, PALE_INK, Drawing::Anchor::LEFT});
    }
}

void SceneLegend::addChannel(Drawing& drawing, std::size_t number, double left, double down) const {
    const SceneChannel& channel = m_scene.channels[number];
    const double size = m_list.size;
    const double middle = left + 1.5 * size;
    drawing.discsOnTop.push_back({{middle, down - size / 2, 0}, channel.colour, DISC * size});
    const double digits = (number + 1 < 100 ? SMALL : 0.6) * size;
    drawing.texts.push_back({middle, down - size / 2 + digits / 2, numberText(number), digits, inkOn(channel.colour),
                             Drawing::Anchor::MIDDLE});
    const double room = m_list.column - (NAME + 0.5) * size;
    const bool isFaulty = !channel.targets.fault.empty();
    drawing.texts.push_back({left + NAME * size, down, fitting(channel.targets.name, room, size), size,
                             isFaulty ? FAULT_INK : INK, Drawing::Anchor::LEFT});
    if (m_list.hasFacts) {
        addFacts(drawing, channel, left + NAME * size, down, room);
    }
}

std::vector<SceneLegend::Fact> SceneLegend::factsOf(const SceneChannel& channel, double room) const {
    const ChannelTargets& targets = channel.targets;
    std::vector<Fact> facts;
    if (targets.fault.empty()) {
        facts.push_back({countsOf(channel), PALE_INK});
    } else {
        facts.push_back({targets.fault, FAULT_INK});
    }
    for (const std::string& line : wrapped(drawableText(targets.remark), room, MOST_REMARK_LINES)) {
        facts.push_back({line, PALE_INK});
    }
    for (const std::string& fact : channel.facts) {
        facts.push_back({fact, INK});
    }
    return facts;
}

void SceneLegend::addFacts(Drawing& drawing, const SceneChannel& channel, double left, double down, double room) const {
    const double small = SMALL * m_list.size;
    double line = down + FIRST_FACT * m_list.size;
    for (const Fact& fact : factsOf(channel, m_list.factRoom())) {
        drawing.texts.push_back({left, line, fitting(fact.text, room, small), small, fact.ink, Drawing::Anchor::LEFT});
        line += FACT_LINE * m_list.size;
    }
}

void SceneLegend::addNotes(Drawing& drawing) const {
    const double small = SMALL * m_size;
    const double left = 1.5 * m_size;
    const double line = 2 * small;
    std::vector<std::string> lines(
        m_scene.notes.begin(),
        m_scene.notes.begin() + static_cast<std::ptrdiff_t>(std::min(MOST_NOTES, m_scene.notes.size())));
    if (m_scene.notes.size() > MOST_NOTES) {
        lines.back() = "and " + std::to_string(m_scene.notes.size() - MOST_NOTES + 1) + " further notes";
    }
    double down = m_height - small - line * (static_cast<double>(lines.size()) - 1);
    for (const std::string& note : lines) {
        drawing.texts.push_back({left, down, fitting(note, sceneWidth() - 2 * left, small), small,
                                 m_scene.complete ? PALE_INK : FAULT_INK, Drawing::Anchor::LEFT});
        down += line;
    }
}

}  // namespace Veltrani::DisplayReport
