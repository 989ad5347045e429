#pragma once

#include "Common/VeltraniException.h"
#include "DisplayExport/ChannelWarp.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayExport/RenderFrustum.h"
#include "DisplayReport/channels/ChannelChoice.h"
#include "DisplayReport/targets/TargetSurvey.h"
#include "ExportFiles/BlendFiles.h"
#include "ExportFiles/ContentPicture.h"
#include "ExportFiles/WarpFile.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class XMLConfigManager;

namespace Veltrani::ExportFiles {

/// What is exported of every channel.
struct ExportRequest {
    DisplayExport::InputChoice input;
    DisplayExport::RenderConvention convention;
    std::vector<WarpFormat> formats{WarpFormat::MESH};  ///< each once
    std::optional<Point<int, 2>> nodes;                 ///< columns and rows; none: the fewest that keep the error
    double error = 0.25;                                ///< pixels of the input
    DisplayExport::Seam seam = DisplayExport::Seam::CONTINUE;
    bool hasTestPictures = false;
    std::shared_ptr<const ContentPicture> content;  ///< null: none
    std::optional<BlendRequest> blend;              ///< none: neither blends nor lifts, and full brightness
    std::function<void()> pulse{};                  ///< called now and then; what it throws ends the work; may be empty
};

/// One channel, as it is seen by one eye.
struct ExportView {
    DisplayReport::ChannelChoice channel;
    std::optional<Point<double, 3>> eye;         ///< world frame, native units; none: the eye of the channel
    std::size_t eyeNumber = 1;                   ///< from 1
    std::size_t eyes = 1;                        ///< of this display
    std::vector<Point<double, 2>> targets = {};  ///< in the picture, of test pictures

    /// What the names of its files begin with: "02-Lower_left", "02-Lower_left-eye1". ASCII; the number keeps the names
    /// of channels apart.
    [[nodiscard]] std::string stem() const;
};

/// What an export has written of one view.
struct ViewRecord {
    std::string json;     ///< member of `views` of the manifest
    std::string summary;  ///< for people: "97 x 61 nodes, ..."
    std::string warning;  ///< for people: that nothing of the channel is mapped, and what to change; else empty
};

/// Writes the files of one view.
class ViewExport {
public:
    /// A file cannot be written, whatever the view: there is no room, or no right to write there.
    struct UnwrittenFile : VeltraniException {
        using VeltraniException::VeltraniException;
    };

    /// Build the screen first. Looks up how the pictures of all channels lie to each other, where blends are requested;
    /// throws what `DisplayBlender` throws.
    /// @param config, request must outlive this
    ViewExport(XMLConfigManager& config, const ExportRequest& request);

    /// Channels whose light the blends of the others do not know of, each with the reason, UTF-8.
    [[nodiscard]] std::vector<std::string> withoutLight() const;

    /// Throws `UnwrittenFile`, naming the file, when one of them cannot be
    /// written, and `VeltraniException`, naming the channel or the file, when the view cannot be exported.
    /// @param folder that exists
    [[nodiscard]] ViewRecord write(const ExportView& view, const std::string& folder,
                                   const DisplayReport::Progress& progress) const;

private:
    XMLConfigManager& m_config;
    const ExportRequest& m_request;
    std::unique_ptr<const DisplayBlend::DisplayBlender> m_blender;  ///< null without blends
};

}  // namespace Veltrani::ExportFiles
