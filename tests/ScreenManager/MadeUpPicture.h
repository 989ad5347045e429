#pragma once

#include "CollimatedSearches.h"
#include "ScreenManager/CollimatedLayoutToChannelMap.h"

#include <cmath>
#include <string>
#include <utility>
#include <vector>

/// A collimated map whose layout points are those of a formula; keeps the pixels that it was asked for.
class MadeUpPicture : public CollimatedLayoutToChannelMap {
public:
    MadeUpPicture(XMLConfigManager* config, std::shared_ptr<KelvoControl::Configuration> table, bool useCache,
                  Point<int, 2> size, collimatedSearches::Formula formula)
        : CollimatedLayoutToChannelMap(config, std::move(table), useCache), m_size(size), m_formula(formula) {}

    /// In order.
    std::vector<Point<int, 2>> asked;
    bool isAlwaysAskedForPixels = true;

    bool mapChannelToLayout(const Point<double, 2>& channel, Point<double, 3>& layout, std::size_t) override {
        const auto pixel = [&](std::size_t i) { return static_cast<int>(std::lround(channel[i] * m_size[i])); };
        asked.emplace_back(pixel(0), pixel(1));
        isAlwaysAskedForPixels = isAlwaysAskedForPixels && channel == at(asked.back());
        return m_formula(channel[0], channel[1], layout);
    }

    /// The picture point of a pixel.
    [[nodiscard]] Point<double, 2> at(const Point<int, 2>& pixel) const {
        return {static_cast<double>(pixel[0]) / m_size[0], static_cast<double>(pixel[1]) / m_size[1]};
    }

    /// The layout point that is shown at a pixel; false where there is none. Not counted as asked.
    bool show(const Point<int, 2>& pixel, Point<double, 3>& layout) const {
        return m_formula(at(pixel)[0], at(pixel)[1], layout);
    }

    /// The pixel that a search answers, as "x,y", or "none"; something else when it answers what is no pixel, or writes
    /// without an answer.
    [[nodiscard]] std::string search(const Point<double, 3>& wanted) {
        constexpr Point<double, 2> UNTOUCHED{-7.0, -8.0};
        Point<double, 2> channel = UNTOUCHED;
        if (!mapLayoutToChannel(wanted, channel, 0)) {
            return channel == UNTOUCHED ? "none" : "written without an answer";
        }
        const Point<int, 2> pixel{static_cast<int>(std::lround(channel[0] * m_size[0])),
                                  static_cast<int>(std::lround(channel[1] * m_size[1]))};
        return channel == at(pixel) ? text(pixel) : "not a pixel";
    }

    [[nodiscard]] static std::string text(const Point<int, 2>& pixel) {
        return std::to_string(pixel[0]) + "," + std::to_string(pixel[1]);
    }

private:
    Point<int, 2> m_size;
    collimatedSearches::Formula m_formula;
};
