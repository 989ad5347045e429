#include "DisplayReport/scene/SceneShading.h"

#include "DisplayReport/basics/NumberText.h"

#include <algorithm>
#include <cmath>

namespace Veltrani::DisplayReport {

namespace {

bool isLitBy(const ShadedRegion& region, std::size_t channel) {
    return std::binary_search(region.channels.begin(), region.channels.end(), channel);
}

template <class IsWanted>
double partOf(const SceneShading& shading, IsWanted&& isWanted) {
    double area = 0;
    for (const ShadedRegion& region : shading.regions) {
        area += isWanted(region) ? region.area : 0.0;
    }
    return shading.area > 0 ? area / shading.area : 0.0;
}

/// The hundredths of a percent in a part, which the report of the coverage rounds to as well.
long long hundredthsOf(double part) {
    constexpr double HUNDREDTHS = 1e4;
    return std::llround(HUNDREDTHS * part);
}

/// Decimals that percentages of these hundredths need: as many in every line of a legend.
int decimalsOf(const std::vector<double>& parts) {
    int decimals = 0;
    for (const double part : parts) {
        const long long hundredths = hundredthsOf(part);
        decimals = std::max(decimals, hundredths % 100 == 0 ? 0 : hundredths % 10 == 0 ? 1 : 2);
    }
    return decimals;
}

void addParts(std::vector<ShadeEntry>& legend, const std::vector<double>& parts) {
    const int decimals = decimalsOf(parts);
    for (std::size_t i = 0; i < legend.size(); ++i) {
        const auto hundredths = hundredthsOf(parts[i]);
        const std::string percent =
            hundredths > 0 ? fixedText(static_cast<double>(hundredths) / 100, decimals) : "below 0.01";
        legend[i].text += ", " + percent + " % of the screen";
    }
}

std::string countText(std::size_t count) {
    if (count == 0) {
        return "no projector";
    }
    if (count >= MOST_COUNTED) {
        return std::to_string(count) + " and more projectors";
    }
    return std::to_string(count) + (count == 1 ? " projector" : " projectors");
}

std::vector<ShadeEntry> legendByCount(const SceneShading& shading) {
    std::vector<ShadeEntry> legend;
    std::vector<double> parts;
    for (std::size_t count = 0; count <= MOST_COUNTED; ++count) {
        const double part = shading.partLitBy(count, count == MOST_COUNTED);
        if (part > 0) {
            legend.push_back({{countColour(count)}, countText(count)});
            parts.push_back(part);
        }
    }
    addParts(legend, parts);
    return legend;
}

std::vector<ShadeEntry> legendByChannel(const SceneShading& shading, const std::vector<std::string>& names) {
    std::vector<ShadeEntry> legend;
    std::vector<double> parts;
    if (const double dark = shading.partLitBy(0, false); dark > 0) {
        legend.push_back({{countColour(0)}, countText(0)});
        parts.push_back(dark);
    }
    for (std::size_t channel = 0; channel < names.size(); ++channel) {
        if (const double part = shading.partLitByChannel(channel); part > 0) {
            legend.push_back({{channelColour(channel)}, names[channel], channel});
            parts.push_back(part);
        }
    }
    addParts(legend, parts);
    return legend;
}

}  // namespace

double SceneShading::partLitBy(std::size_t count, bool orMore) const {
    return partOf(*this, [=](const ShadedRegion& region) {
        return region.channels.size() == count || (orMore && region.channels.size() > count);
    });
}

double SceneShading::partLitByChannel(std::size_t channel) const {
    return partOf(*this, [channel](const ShadedRegion& region) { return isLitBy(region, channel); });
}

std::vector<Colour> coloursOf(const ShadedRegion& region, ShadeBy by) {
    if (by == ShadeBy::COUNT || region.channels.empty()) {
        return {countColour(region.channels.size())};
    }
    std::vector<Colour> colours;
    for (const std::size_t channel : region.channels) {
        colours.push_back(channelColour(channel));
    }
    return colours;
}

std::vector<ShadeEntry> legendOf(const SceneShading& shading, ShadeBy by, const std::vector<std::string>& names) {
    return by == ShadeBy::COUNT ? legendByCount(shading) : legendByChannel(shading, names);
}

}  // namespace Veltrani::DisplayReport
