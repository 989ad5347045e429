#pragma once

#include "Common/Point.h"
#include "DisplayBlend/BlendCurve.h"
#include "DisplayExport/ContentInput.h"
#include "DisplayExport/RenderFrustum.h"
#include "DisplayReport/basics/ReportHead.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Veltrani::ExportFiles {

/// A file of an export, as its manifest states it.
struct ExportedFile {
    std::string name;    ///< in the folder; no way out of it
    std::string kind;    ///< "mesh", "content", "blend", ...
    std::string sha256;  ///< 64 lower-case hexadecimal digits
    int bits = 0;        ///< of blends and lifts: 16 or 8; else 0
};

/// The blend of a channel.
struct ExportedBlend {
    bool isAlpha = false;  ///< whether its files hold 1 - factor as opacity
    DisplayBlend::BlendCurve curve = DisplayBlend::BlendCurve::ofGamma(DisplayBlend::BlendCurve::USUAL_GAMMA);
    double residual = 0;   ///< light of the channel when it shows black, as a part of its white
    bool hasLift = false;  ///< whether there are files of the kind "lift"
};

/// One channel as one eye sees it, as a manifest describes it.
struct ExportedChannelView {
    std::size_t number = 1;  ///< of the channel, from 1
    std::string name;
    std::string projectorId;
    Point<int, 2> pixels;       ///< of its picture
    Point<double, 3> eye;       ///< world frame, native units
    std::size_t eyeNumber = 1;  ///< from 1
    bool isInMirror = false;
    DisplayExport::InputChoice input;      ///< kind, aperture and pixels; of nothing else a meaning
    DisplayExport::RenderFrustum frustum;  ///< how the input stands; its tangents for a frustum alone
    bool wrapsAround = false;              ///< whether the left edge of the input goes on at its right one
    std::optional<ExportedBlend> blend;
    std::vector<ExportedFile> files;

    /// "channel Left (020000000001)", UTF-8.
    [[nodiscard]] std::string describe() const;
    /// Of several of a kind the one with the most bits; null when there is none.
    [[nodiscard]] const ExportedFile* fileOf(std::string_view kind) const;
};

/// What an export has written of a display: its manifest, and the files beside it. The reader of what `ViewExport`,
/// `manifestOf` and `ExportFolder` write.
class ExportedDisplay {
public:
    /// Reads the manifest of a folder. Throws `VeltraniMissingFileException` without one, and what `parse` throws.
    /// @param utf8Folder that an export has written
    [[nodiscard]] static ExportedDisplay read(const std::string& utf8Folder);
    /// Throws `VeltraniParseException` in one line, with the place in the file, what was found and what was expected.
    /// @param manifest its text
    /// @param name of the manifest, for messages
    /// @param utf8Folder that its files lie in
    [[nodiscard]] static ExportedDisplay parse(std::string_view manifest, const std::string& name,
                                               const std::string& utf8Folder);

    /// One or more, in the order of the configuration.
    [[nodiscard]] const std::vector<ExportedChannelView>& views() const { return m_views; }
    /// What the export was made from.
    [[nodiscard]] const std::vector<DisplayReport::SourceFile>& sources() const { return m_sources; }
    [[nodiscard]] const std::string& manifestPath() const { return m_manifest; }
    [[nodiscard]] std::string pathOf(const ExportedFile& file) const { return m_folder + '/' + file.name; }

    /// The content of a file. Throws `VeltraniMissingFileException` when it cannot be read, and
    /// `VeltraniParseException` when its checksum is another one than the manifest states.
    [[nodiscard]] std::string bytesOf(const ExportedFile& file) const;

private:
    std::string m_folder;
    std::string m_manifest;
    std::vector<ExportedChannelView> m_views;
    std::vector<DisplayReport::SourceFile> m_sources;
};

}  // namespace Veltrani::ExportFiles
