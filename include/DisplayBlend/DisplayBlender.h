#pragma once

#include "Common/Point.h"
#include "DisplayBlend/BlendPicture.h"
#include "DisplayReport/basics/Progress.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

class XMLConfigManager;

namespace Veltrani::DisplayBlend {

/// Makes one picture of those of many channels: for each a picture of weights, by which its light is multiplied, and
/// one of light that is added to its black.
///
///     const DisplayBlender blender(config);
///     for (std::size_t i = 0; i < blender.channels().size(); ++i) {
///         if (blender.channels()[i].fault.empty()) {
///             const BlendPicture weights = blender.weights(i);
///
/// The weights of all channels at a place of the screen, seen from one side of it, sum to one. A channel has none on
/// those parts of its picture's edge that lie inside another picture, and all of it where it is alone. In between they
/// follow the squares of smooth distances from these parts: with
///
///     p = (sum over the parts of the edge of the integral of ds / r^3) / 2,   r the distance from a point of the edge,
///
/// which is 1 / d^2 next to an edge at the distance d, the weight of a channel is (1 / p) / (sum of all 1 / p). Shadows
/// end a picture as its edge does. The screen is the current one of the `ScreenManager`; it and the configuration must
/// stay as they are while the blender lives.
class DisplayBlender {
public:
    /// What is known of a channel before its pictures are made.
    struct Channel {
        std::string projectorId;  ///< UTF-8
        std::string name;         ///< UTF-8
        int width = 0;            ///< pixels
        int height = 0;           ///< pixels
        std::string fault;        ///< why it has no pictures; empty when it has. A channel without a resolution lights
                                  ///< the screen, and takes part in the blends of the others
        bool lights = true;       ///< whether its light is known, and is in the blends of the others
        /// Where its outline crosses another one and the light of all ends, in its picture, (0, 0) to (1, 1). There the
        /// light differs from one by up to 0.45 when the outlines cross at right angles, by up to 0.55 where the
        /// overlap is a wedge of 60 degrees and by up to 0.8 in one of 30; r pixels beside it by 0.3 / r^2, 0.6 / r^2
        /// and 2.3 / r^2.
        std::vector<Point<double, 2>> crossings;
    };

    /// Throws `VeltraniException` without a screen.
    explicit DisplayBlender(const XMLConfigManager& config);
    ~DisplayBlender();
    DisplayBlender(const DisplayBlender&) = delete;
    DisplayBlender& operator=(const DisplayBlender&) = delete;

    /// In the order of the configuration.
    [[nodiscard]] const std::vector<Channel>& channels() const;

    /// The weights of a channel. A pixel that lands beside the screen has the weight of the nearest one that lands on
    /// it: what it shows is cut off by the warp, and a screen that is a little larger than described keeps its rim.
    /// Throws `VeltraniException`, naming the channel, for one with a fault, and `std::out_of_range`.
    /// @param progress counts rows of pixels
    [[nodiscard]] BlendPicture weights(std::size_t channel, const DisplayReport::Progress& progress = {}) const;

    /// The light that is added to a channel so that the black of the screen is everywhere that of the place which most
    /// residual light comes to. The step of the residual light where a picture ends inside another one cannot be taken
    /// back; the lift ends smoothly behind it, where the weight of that picture grows to a 64th. Faults as those of
    /// `weights`.
    /// @param residual by channel: its light when it shows black, as a part of its white, 0 to 1; throws
    /// `VeltraniException` for other values and for another number of them
    [[nodiscard]] BlendPicture lift(std::size_t channel, const std::vector<double>& residual,
                                    const DisplayReport::Progress& progress = {}) const;

    /// The black of the whole screen with its lifts, as a part of the white of one channel.
    [[nodiscard]] double liftedBlack(const std::vector<double>& residual) const;

private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

}  // namespace Veltrani::DisplayBlend
