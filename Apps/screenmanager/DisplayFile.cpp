#include "DisplayFile.h"

#include "ConsoleLog.h"
#include "DisplayReport/channels/ScreenLoader.h"
#include "FailureReport.h"
#include "ProgressMeter.h"

using namespace Veltrani::DisplayReport;

std::unique_ptr<XMLConfigFile> DisplayFile::read(const std::string& file) {
    try {
        return XMLConfigFile::load(file);
    } catch (...) {
        reportConfigurationFailure(file, std::current_exception());
        return nullptr;
    }
}

std::vector<Fault> DisplayFile::loadScreen(XMLConfigFile& config, Verbosity verbosity) {
    ProgressMeter progress(verbosity != Verbosity::QUIET, "building the screen");
    progress.begin();
    // Every fault is returned; the library's warning of the first would only repeat it.
    const ConsoleLog::ErrorsOnly quieter(verbosity == Verbosity::NORMAL);
    return ScreenLoader::load(config);
}

bool DisplayFile::buildScreen(XMLConfigFile& config, const std::string& file, Verbosity verbosity) {
    const std::vector<Fault> faults = loadScreen(config, verbosity);
    for (const Fault& fault : faults) {
        reportFault(file, fault);
    }
    return faults.empty();
}
