#include "Command.h"
#include "DisplayReport/check/DisplayCheck.h"
#include "DisplayReport/check/DisplayDescription.h"
#include "DisplayReport/check/DisplayDescriptionJson.h"
#include "DisplayReport/check/Rule.h"
#include "OutputFormats.h"

#include <iostream>
#include <utility>

namespace {

using namespace Veltrani::DisplayReport;

struct Options : CommandOptions {
    std::string file;       ///< the configuration
    bool isStrict = false;  ///< whether warnings count
    std::string format;     ///< "text" or "json"
    CheckOptions check;
};

int run(const Options& options) {
    const DisplayDescription description = DisplayCheck::ofFile(options.file, options.check);
    if (options.format == "json") {
        ReportHead head;
        head.files = ReportHead::sourcesOf(options.file);
        printJson(description, std::move(head), std::cout);
    } else {
        print(description, std::cout);
    }
    if (const ExitCode code = Console::finishOutput(); code != EXIT_ALL_RIGHT) {
        return code;
    }
    if (!description.readable) {
        return EXIT_INPUT;
    }
    const bool isSound =
        description.count(Severity::FAULT) == 0 && (!options.isStrict || description.count(Severity::WARNING) == 0);
    return isSound ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}

/// A misspelt name would allow nothing.
void refuseUnknown(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
        if (!Rule::canBeAllowed(name)) {
            OptionList::refuse("--allow", "no rule that can be allowed is called " + name + ", expected one of " +
                                              Rule::namesToAllow());
        }
    }
}

Command::Run addTo(OptionList& line) {
    const auto options = std::make_shared<Options>();
    addDisplayFile(line, options->file);
    addFormat(line, options->format, OutputFormats{{"text", "json"}}, false);
    line.addFlag("--strict", options->isStrict, "Warnings count as faults do: exit with 1");
    line.addFlag("--quick", options->check.quick,
                 "Leave out the rules that need light, and name them: faster where screens are large");
    line.add("--allow", options->check.allowed, "Leave out a rule by the name that its findings have in brackets")
        .typeName("NAME")
        .oneValueEach();
    line.whenComplete([&said = *options] { refuseUnknown(said.check.allowed); });
    return Command::with(options, run);
}

}  // namespace

const Command CHECK_COMMAND{.name = "check",
                            .summary = "Load everything that a configuration names; print and judge the display",
                            .example = "screenmanager check display.xml --strict",
                            .addTo = addTo,
                            .printsFaults = true,
                            .bendsMillionsOfRays = true};
