#include "SceneSource.h"

#include "Configuration/XMLConfigFile.h"
#include "Console.h"
#include "DisplayFile.h"
#include "DisplayReport/TargetPlacer.h"
#include "ProgressMeter.h"

using namespace Veltrani::DisplayReport;

DisplayScene SceneSource::collect(XMLConfigFile& config, const std::string& file, const TargetPlan& plan,
                                  Verbosity verbosity, const SceneCollector::Limits& limits) {
    const bool isTold = verbosity != Verbosity::QUIET;
    const std::vector<Fault> faults = DisplayFile::loadScreen(config, verbosity);
    ProgressMeter progress(isTold, "placing targets, channel");
    const TargetSurvey survey = TargetPlacer(plan, [&progress](std::size_t done, std::size_t total) {
                                    progress.update(done, total);
                                }).place(config);
    DisplayScene scene = SceneCollector(limits).collect(file, config, survey, faults);
    progress.end();
    if (isTold) {
        for (const std::string& note : scene.notes) {
            Console::say("note: " + note);
        }
    }
    return scene;
}
