#pragma once

#include "DisplayFit/FitOptions.h"
#include "FitSession/FitReport.h"
#include "FitSession/MeasuredPointReader.h"

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>

class XMLConfigFile;

namespace Veltrani::FitSession {

/// The steps of a fit, from the table to the report. Their code is opened with the first of them: it brings the library
/// of fits into the process, which no other command needs, and is in a module of its own beside the libraries.
class FitWork {
public:
    using Progress = std::function<void(std::size_t, std::size_t)>;

    FitWork() = default;
    FitWork(const FitWork&) = delete;
    FitWork& operator=(const FitWork&) = delete;
    virtual ~FitWork() = default;

    /// Opens the module at the first call; it stays open. Throws `VeltraniException` when it cannot be opened,
    /// `std::bad_alloc` when memory runs out; the next call tries again.
    [[nodiscard]] static const FitWork& get();

    /// Fills `measured`, `combined` and `frames`: reads the table, moves it into the frame of the display if it is to
    /// be registered, and combines what was measured repeatedly. Throws what `MeasuredPointReader` and
    /// `FrameRegistration` throw.
    virtual void read(const XMLConfigFile& config, const MeasuredPointReader::Options& options,
                      std::optional<RegistrationKind> registration, FitReport& report) const = 0;
    /// Fills `result`. Throws what `DisplayFitter::fit` throws.
    virtual DisplayFit::FitOutcome fit(const XMLConfigFile& config, const DisplayFit::FitOptions& options,
                                       const Progress& progress, FitReport& report) const = 0;
    /// Writes the configuration with its lens files, and fills `written` and `lensFiles`. Throws what `FittedDisplay`
    /// throws; nothing has been written then.
    /// @param utf8Path as `FittedDisplay` takes it
    virtual void write(XMLConfigFile& config, const std::string& utf8Path, FitReport& report) const = 0;
    virtual void print(const FitReport& report, bool isJson, std::ostream& out) const = 0;
};

}  // namespace Veltrani::FitSession
