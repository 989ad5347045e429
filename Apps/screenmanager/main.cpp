#include "CommandLine.h"
#include "EndingSignals.h"
#include "FailureReport.h"
#include "ScreenManager/ScreenManager.h"
#include "ScreenManager/TargetLocatorManager.h"

#include <exception>

int main(int argc, char** argv) {
    EndingSignals::handle();
    try {
        CommandLine commandLine;
        try {
            commandLine.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            return commandLine.report(error);
        }
        const int code = commandLine.run();
        TargetLocatorManager::deleteInstance();
        ScreenManager::deleteInstance();
        return code;
    } catch (...) {
        return reportEnd(std::current_exception());
    }
}
