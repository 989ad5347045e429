#include "DisplayFile.h"

#include "ConsoleLog.h"
#include "DisplayReport/ScreenLoader.h"
#include "FailureReport.h"
#include "ProgressMeter.h"

#include <vector>

using namespace Veltrani::DisplayReport;

std::unique_ptr<XMLConfigFile> DisplayFile::read(const std::string& file) {
    try {
        return XMLConfigFile::load(file);
    } catch (...) {
        reportFailure(file, std::current_exception());
        return nullptr;
    }
}

bool DisplayFile::buildScreen(XMLConfigFile& config, const std::string& file, Verbosity verbosity) {
    std::vector<Fault> faults;
    {
        ProgressMeter progress(verbosity != Verbosity::QUIET, "building the screen");
        progress.begin();
        // Every fault is reported below; the library's warning of the first would only repeat it.
        const ConsoleLog::ErrorsOnly quieter(verbosity == Verbosity::NORMAL);
        faults = ScreenLoader::load(config);
    }
    for (const Fault& fault : faults) {
        reportFault(file, fault);
    }
    return faults.empty();
}
