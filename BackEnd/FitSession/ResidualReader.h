#pragma once

#include "DisplayReport/scene/SceneResiduals.h"

#include <cstddef>
#include <string>
#include <string_view>

class XMLConfigManager;

namespace Veltrani::FitSession {

/// Reads the residuals after the fit out of a report for programs, as `FitReport::printJson` writes it and
/// `docs/schemas/fit.schema.json` describes it.
///
/// Of the report its schema, its version, its unit of lengths and the members `projector` and `residuals` of its
/// channels are looked at; of a residual `lines`, `picture`, `point`, `pixelsAfter`, `screenAfter` and `outlier`.
class ResidualReader {
public:
    /// More is no report that a fit wrote of a display: it would only fill the memory.
    static constexpr std::size_t MOST_BYTES = std::size_t{256} << 20U;

    /// @param config the display, which must outlive the reader
    explicit ResidualReader(const XMLConfigManager& config) : m_config(config) {}

    /// Throws `VeltraniParseException`, on one line with document, element (line and column where the text is no JSON),
    /// what was found, what is expected and the remedy, for the first fault: another schema or version, another unit of
    /// lengths than that of the display, a channel that the display does not have or that is there twice, and numbers
    /// that are none.
    /// @param document named in messages, UTF-8
    [[nodiscard]] DisplayReport::DisplayResiduals read(std::string_view json, const std::string& document) const;
    /// Throws `VeltraniMissingFileException` when the file cannot be read, too.
    [[nodiscard]] DisplayReport::DisplayResiduals readFile(const std::string& utf8Path) const;

private:
    const XMLConfigManager& m_config;
};

}  // namespace Veltrani::FitSession
