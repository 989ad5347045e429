#include "Command.h"
#include "DisplayReport/check/DisplayCheck.h"
#include "DisplayReport/check/DisplayDescription.h"

#include <iostream>

namespace {

using namespace Veltrani::DisplayReport;

struct Options : CommandOptions {
    std::string file;  ///< the configuration
};

int run(const Options& options) {
    const DisplayDescription description = DisplayCheck::ofFile(options.file);
    print(description, std::cout);
    if (const ExitCode code = Console::finishOutput(); code != EXIT_ALL_RIGHT) {
        return code;
    }
    if (!description.readable) {
        return EXIT_INPUT;
    }
    return description.faults.empty() ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

Command::Run addTo(OptionList& line) {
    const auto options = std::make_shared<Options>();
    addDisplayFile(line, options->file);
    return Command::with(options, run);
}

}  // namespace

const Command CHECK_COMMAND{.name = "check",
                            .summary = "Load everything that a configuration names; print the display and every fault",
                            .addTo = addTo,
                            .printsFaults = true};
