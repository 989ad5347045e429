#pragma once

#include "DisplayFit/FitResult.h"
#include "DisplayReport/basics/ReportHead.h"
#include "FitSession/FrameRegistration.h"
#include "FitSession/MeasuredPoints.h"

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

namespace Veltrani::FitSession {

/// What came of a fit, for people and for programs.
struct FitReport {
    std::string configuration;                     ///< its file, as it was named
    std::string table;                             ///< the same of the measurements
    MeasuredPoints measured;                       ///< in the frame of the display
    CombinedPoints combined;                       ///< those that were fitted, by whose indices residuals name them
    std::vector<Registration> frames;              ///< of the stations; empty without registration
    DisplayFit::DisplayFitResult result;           ///< what the fit returned
    std::string written;                           ///< the configuration that was written; empty for none
    bool isUnchanged = false;                      ///< the fit changes no number of the configuration
    std::vector<std::string> lensFiles;            ///< those that were written with it
    std::vector<DisplayReport::SourceFile> files;  ///< that it was made from

    /// For people: each channel in a row, then what must be known of it.
    void printText(std::ostream& out) const;
    /// For programs, as `docs/schemas/fit.schema.json` has it.
    /// @param pulse called now and then, as it may take seconds for a million points; what it throws comes out
    void printJson(std::ostream& out, const std::function<void()>& pulse = nullptr) const;

    /// "good", "doubtful", "unusable".
    [[nodiscard]] static std::string nameOf(DisplayFit::FitOutcome outcome);
    /// "position, orientation, frustum"; "nothing".
    [[nodiscard]] static std::vector<std::string> namesOf(const DisplayFit::SolvedGroups& groups);
};

}  // namespace Veltrani::FitSession
