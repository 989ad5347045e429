#include "Configuration/XMLConfigFile.h"
#include "DisplayFit/DisplayFitter.h"
#include "FitSession/FitWork.h"
#include "FitSession/FittedDisplay.h"

namespace Veltrani::FitSession {

namespace {

class Work : public FitWork {
public:
    void read(const XMLConfigFile& config, const MeasuredPointReader::Options& options,
              std::optional<RegistrationKind> registration, FitReport& report) const override {
        report.measured = MeasuredPointReader(config, options).readFile(report.table);
        if (registration) {
            report.frames = FrameRegistration::apply(report.measured, *registration);
        }
        report.combined = combineRepeated(report.measured.points);
    }

    DisplayFit::FitOutcome fit(const XMLConfigFile& config, const DisplayFit::FitOptions& options,
                               const Progress& progress, FitReport& report) const override {
        report.result = DisplayFit::DisplayFitter(options, progress).fit(config, report.combined.points);
        return report.result.outcome();
    }

    void write(XMLConfigFile& config, const std::string& utf8Path, FitReport& report) const override {
        FittedDisplay fitted(config, utf8Path, report.configuration);
        for (const DisplayFit::ChannelFit& channel : report.result.channels) {
            fitted.take(channel);
        }
        fitted.save();
        report.written = fitted.path();
        report.lensFiles = fitted.lensFiles();
    }

    void print(const FitReport& report, bool isJson, std::ostream& out) const override {
        if (isJson) {
            report.printJson(out);
        } else {
            report.printText(out);
        }
    }
};

}  // namespace

}  // namespace Veltrani::FitSession

extern "C" const Veltrani::FitSession::FitWork* SM_FIT_WORK_MODULE_FUNCTION();

/// Returns the entry of the module; its name carries the version.
extern "C" const Veltrani::FitSession::FitWork* SM_FIT_WORK_MODULE_FUNCTION() {
    static const Veltrani::FitSession::Work work;
    return &work;
}
