#include "ViewCommand.h"

#include "Configuration/XMLConfigFile.h"
#include "DisplayFile.h"
#include "DisplayReport/ScenePage.h"
#include "ExitCode.h"
#include "PlanOptions.h"
#include "ResultFile.h"
#include "SceneSource.h"

using namespace Veltrani::DisplayReport;

CLI::App* ViewCommand::addTo(CLI::App& program, Options& options) {
    CLI::App* const command = program.add_subcommand("view", "Write a page that shows the display in three dimensions");
    command->add_option("FILE", options.file, "Configuration of the display (XML)")->required();
    command->add_option("-o,--output", options.output, "Page to write instead of standard output (HTML)")
        ->type_name("FILE");
    addPlanOptions(*command, options.plan);
    return command;
}

int ViewCommand::run(const Options& options) {
    const auto config = DisplayFile::read(options.file);
    if (!config) {
        return EXIT_INPUT;
    }
    if (ResultFile::replacesInput(options.output, *config, options.file)) {
        return EXIT_USAGE;
    }
    const DisplayScene scene = SceneSource::collect(*config, options.file, options.plan, options.verbosity, {});
    ResultFile result(options.output);
    if (!result.open()) {
        return EXIT_OUTPUT;
    }
    ScenePage::write(scene, result.stream());
    if (!result.commit()) {
        return EXIT_OUTPUT;
    }
    return scene.complete ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}
