#include "DisplayReport/still/SceneLegend.h"

#include "Common/QuotedText.h"
#include "DisplayReport/basics/TextTable.h"
#include "DisplayReport/scene/DisplayScene.h"

#include <algorithm>
#include <cstddef>

namespace Veltrani::DisplayReport {

namespace {

constexpr Colour INK{35, 40, 46};
constexpr Colour PALE_INK{95, 103, 112};
constexpr Colour FAULT_INK{150, 60, 0};
constexpr Colour PAPER{255, 255, 255};

/// Height of a capital letter as a share of the picture's height, and the least one that can be read; pixels.
constexpr double LETTER_SHARE = 0.0115;
constexpr double SMALLEST_LETTER = 6;
/// Width of the list of channels as a share of the picture's width.
constexpr double COLUMN_SHARE = 0.22;
/// From line to line of what a channel states, as a share of the height of a capital letter.
constexpr double FACT_LINE = 1.5;
/// The most lines of small text below the scene.
constexpr std::size_t MOST_NOTES = 4;
/// Width of a letter with its space, as a share of the height of a capital one: of the widest ones.
constexpr double LETTER_WIDTH = 0.95;

std::string countsOf(const SceneChannel& channel) {
    const ChannelTargets& targets = channel.targets;
    if (channel.placed + targets.gridMissed == 0) {
        return "outline alone, " + std::to_string(channel.samples) + " samples";
    }
    return std::to_string(channel.placed) + " targets, " + std::to_string(targets.gridMissed) + " missed";
}

}  // namespace

SceneLegend::SceneLegend(int width, int height)
    : m_width(width),
      m_height(height),
      m_size(std::max(SMALLEST_LETTER, LETTER_SHARE * height)),
      m_columnWidth(COLUMN_SHARE * width) {}

std::string SceneLegend::fitting(const std::string& text, double length, double size) const {
    return shortened(onOneLine(text), static_cast<std::size_t>(std::max(1.0, length / (LETTER_WIDTH * size))));
}

void SceneLegend::addTo(Drawing& drawing, const DisplayScene& scene) const {
    drawing.title = scene.title;
    const double left = 1.5 * m_size;
    const double heading = 1.3 * m_size;
    drawing.texts.push_back({left, 3 * m_size, fitting(scene.title, sceneWidth() - 2 * left, heading), heading, INK,
                             Drawing::Anchor::LEFT});
    addChannels(drawing, scene);
    addNotes(drawing, scene);
}

void SceneLegend::addChannels(Drawing& drawing, const DisplayScene& scene) const {
    const double left = sceneWidth() + m_size;
    std::size_t facts = 0;
    for (const SceneChannel& channel : scene.channels) {
        facts = std::max(facts, channel.facts.size());
    }
    const double row = (4.6 + FACT_LINE * static_cast<double>(facts)) * m_size;
    drawing.boxes.push_back({sceneWidth(), 0, m_columnWidth, m_height, PAPER});
    const auto rows = static_cast<std::size_t>(std::max(1.0, (m_height - 2 * m_size) / row)) - 1;
    const double room = m_columnWidth - 4 * m_size;
    for (std::size_t i = 0; i < std::min(rows, scene.channels.size()); ++i) {
        const SceneChannel& channel = scene.channels[i];
        const double down = 3 * m_size + row * static_cast<double>(i);
        drawing.discsOnTop.push_back({{left + m_size, down - m_size / 2, 0}, channel.colour, 0.7 * m_size});
        drawing.texts.push_back({left + 2.6 * m_size, down, fitting(channel.targets.name, room, m_size), m_size, INK,
                                 Drawing::Anchor::LEFT});
        const bool isFaulty = !channel.targets.fault.empty();
        const std::string text = isFaulty ? channel.targets.fault : countsOf(channel);
        const double small = 0.8 * m_size;
        drawing.texts.push_back({left + 2.6 * m_size, down + 1.7 * m_size, fitting(text, room, small), small,
                                 isFaulty ? FAULT_INK : PALE_INK, Drawing::Anchor::LEFT});
        for (std::size_t fact = 0; fact < channel.facts.size(); ++fact) {
            drawing.texts.push_back({left + 2.6 * m_size,
                                     down + (1.7 + FACT_LINE * static_cast<double>(fact + 1)) * m_size,
                                     fitting(channel.facts[fact], room, small), small, INK, Drawing::Anchor::LEFT});
        }
    }
    if (scene.channels.size() > rows) {
        drawing.texts.push_back({left, m_height - m_size,
                                 "and " + std::to_string(scene.channels.size() - rows) + " more channels", m_size,
                                 PALE_INK, Drawing::Anchor::LEFT});
    }
}

void SceneLegend::addNotes(Drawing& drawing, const DisplayScene& scene) const {
    const double small = 0.8 * m_size;
    const double left = 1.5 * m_size;
    const double line = 2 * small;
    std::vector<std::string> lines(scene.notes.begin(), scene.notes.begin() + static_cast<std::ptrdiff_t>(std::min(
                                                                                  MOST_NOTES, scene.notes.size())));
    if (scene.notes.size() > MOST_NOTES) {
        lines.back() = "and " + std::to_string(scene.notes.size() - MOST_NOTES + 1) + " further notes";
    }
    double down = m_height - small - line * (static_cast<double>(lines.size()) - 1);
    for (const std::string& note : lines) {
        drawing.texts.push_back({left, down, fitting(note, sceneWidth() - 2 * left, small), small,
                                 scene.complete ? PALE_INK : FAULT_INK, Drawing::Anchor::LEFT});
        down += line;
    }
}

}  // namespace Veltrani::DisplayReport
