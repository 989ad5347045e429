#pragma once

#include "DisplayReport/basics/Progress.h"
#include "DisplayReport/coverage/CoverageReport.h"

#include <vector>

class XMLConfigManager;

namespace Veltrani::DisplayReport {

/// Measures how the channels of a display cover the current screen of the `ScreenManager`.
///
///     std::vector<CoveredPiece> pieces;
///     const CoverageReport report = CoverageSurvey().keepPieces(pieces).of(config);
///
/// Areas are right to about a part in ten thousand, parts of pictures to one in a thousand. The kind of target data of
/// the configuration decides how a picture comes to the screen, by the target locators of the `TargetLocatorManager`.
class CoverageSurvey {
public:
    /// @param progress called with steps of about equal length
    explicit CoverageSurvey(Progress progress = {});

    /// Hands out the pieces of the surface, too; they take some 80 bytes each.
    /// @param pieces must live as long as the survey
    CoverageSurvey& keepPieces(std::vector<CoveredPiece>& pieces);

    /// A channel whose light is not known or misses the screen reports that in its `fault`, and does not keep the
    /// others from being measured. A screen without surface, or none, is reported in the `fault` of the report.
    [[nodiscard]] CoverageReport of(const XMLConfigManager& config) const;

private:
    Progress m_progress;
    std::vector<CoveredPiece>* m_pieces = nullptr;
};

}  // namespace Veltrani::DisplayReport
