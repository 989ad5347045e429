#pragma once

#include "DisplayExport/ChannelSight.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayLight/LitPicture.h"
#include "DisplayLight/PictureFinder.h"
#include "DisplayLight/ReachFinder.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "ExportFiles/ExportedDisplay.h"
#include "ExportFiles/PlayerWarp.h"

#include <memory>
#include <span>
#include <vector>

class ScreenGeometry;
class XMLConfigManager;

namespace Veltrani::DisplayLight {

/// One channel of a display with what was exported of it.
class LitChannel {
public:
    /// @param config must outlive this
    /// @param view of the channel; must outlive this
    LitChannel(const XMLConfigManager& config, const DisplayReport::ChannelChoice& channel,
               const ExportFiles::ExportedChannelView& view, const std::shared_ptr<const ScreenGeometry>& surface);

    [[nodiscard]] const ExportFiles::ExportedChannelView& view() const { return *m_view; }
    [[nodiscard]] const DisplayExport::ChannelSight& sight() const { return *m_sight; }
    [[nodiscard]] const PictureFinder& finder() const { return *m_finder; }
    /// As `ReachFinder::forPlaces`.
    [[nodiscard]] std::unique_ptr<const ReachFinder> finderForPlaces(bool hasParameters) const {
        return ReachFinder::forPlaces(*m_config, *m_sight, m_surface, hasParameters);
    }

    /// Directions, from the eye, of places all over its picture that are seen.
    [[nodiscard]] const std::vector<Point<double, 3>>& directions() const { return m_directions; }
    /// The width of a square as large as one of its pixels on the screen in the mean, native units; 0 where nothing
    /// lands.
    [[nodiscard]] double pixel() const { return m_pixel; }

    /// Adds the light of the pictures of the channel.
    /// @param places, found as many as the grid has
    /// @param isSharp whether places show the light at their middle, and not its mean as far as to the next ones
    void addLight(const ExportFiles::ExportedDisplay& exported, const PlaceGrid& grid,
                  std::span<const FoundPlace> found, bool isSharp, std::span<LitPlace> places);

    /// Compares the content that the warp shows with the one that belongs to the places, after `addLight`.
    /// @param coarsest width of the pixel that differences are stated in, native units
    void compare(const ExportFiles::ExportedDisplay& exported, const PlaceGrid& grid, std::span<const FoundPlace> found,
                 double coarsest, std::span<LitPlace> places) const;

private:
    void measure();
    void compareRow(const ExportFiles::PlayerWarp& warp, const DisplayExport::ContentInput& input,
                    const PlaceGrid& grid, std::span<const FoundPlace> found, std::size_t first, double scale,
                    std::span<LitPlace> places) const;

    const XMLConfigManager* m_config;
    const ExportFiles::ExportedChannelView* m_view;
    std::shared_ptr<const ScreenGeometry> m_surface;
    std::unique_ptr<const DisplayExport::ChannelSight> m_sight;
    std::unique_ptr<const PictureFinder> m_finder;
    std::vector<Point<double, 3>> m_directions;
    double m_pixel = 0;
    std::vector<float> m_weights;  ///< of the places that were added last
};

}  // namespace Veltrani::DisplayLight
