#include "CheckCommand.h"

#include "Console.h"
#include "DisplayReport/DisplayCheck.h"
#include "DisplayReport/DisplayDescriptionPrinter.h"
#include "ExitCode.h"

#include <iostream>

int CheckCommand::run(const std::string& file) {
    using namespace Veltrani::DisplayReport;
    const DisplayDescription description = DisplayCheck::ofFile(file);
    print(description, std::cout);
    if (!std::cout.flush()) {
        Console::say("error: standard output cannot be written");
        return EXIT_OUTPUT;
    }
    if (!description.readable) {
        return EXIT_INPUT;
    }
    return description.faults.empty() ? EXIT_ALL_RIGHT : EXIT_INCOMPLETE;
}
