#include "ExportFiles/ExportViews.h"

#include "Common/Utf8.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/targets/TargetPlacer.h"

#include <algorithm>
#include <optional>

namespace Veltrani::ExportFiles {

using DisplayReport::ChannelChoice;

std::vector<ExportView> ExportViews::of(const XMLConfigManager& config, std::vector<std::string> channels,
                                        const std::vector<Point<double, 3>>& eyes) {
    if (channels.empty()) {
        for (const std::wstring& id : config.getProjectorConfigIds()) {
            channels.push_back(toUtf8(id));
        }
    }
    std::vector<ChannelChoice> chosen;
    for (const std::string& name : channels) {
        chosen.push_back(ChannelChoice::of(config, name));
    }
    std::sort(chosen.begin(), chosen.end(),
              [](const ChannelChoice& a, const ChannelChoice& b) { return a.index < b.index; });
    chosen.erase(std::unique(chosen.begin(), chosen.end(),
                             [](const ChannelChoice& a, const ChannelChoice& b) { return a.index == b.index; }),
                 chosen.end());
    std::vector<ExportView> views;
    for (const ChannelChoice& channel : chosen) {
        if (eyes.empty()) {
            views.push_back({channel, std::nullopt, 1, 1});
        }
        for (std::size_t i = 0; i < eyes.size(); ++i) {
            views.push_back({channel, eyes[i], i + 1, eyes.size()});
        }
    }
    return views;
}

void ExportViews::placeTargets(XMLConfigManager& config, std::vector<ExportView>& views,
                               const DisplayReport::Progress& progress) {
    const auto survey = DisplayReport::TargetPlacer({}, progress).place(config);
    for (ExportView& view : views) {
        if (view.channel.index < survey.channels.size()) {
            for (const auto& target : survey.channels[view.channel.index].grid) {
                view.targets.push_back(target.picture);
            }
        }
    }
}

}  // namespace Veltrani::ExportFiles
