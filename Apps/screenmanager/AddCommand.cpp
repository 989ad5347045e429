#include "AddCommand.h"

#include "Common/Utf8.h"
#include "Configuration/XMLConfigFile.h"
#include "DeviceFramework2/DeviceManager.h"
#include "DisplayReport/TextTable.h"
#include "ExitCode.h"
#include "FailureReport.h"
#include "ProjectorReport.h"

#include <iostream>
#include <memory>

namespace {

using Veltrani::toUtf8;
using Veltrani::DisplayReport::ProjectorAddition;

void printAdded(const ProjectorAddition::Added& added) {
    const bool sized = added.width > 0 && added.height > 0;
    std::cout << "added " + toUtf8(added.uid) + ": channel " + Veltrani::DisplayReport::printable(toUtf8(added.name)) +
                     ", " + toUtf8(added.place) + ", " +
                     (sized ? std::to_string(added.width) + " x " + std::to_string(added.height)
                            : "resolution not told; state it in the file") +
                     '\n';
}

}  // namespace

int AddCommand::run(const Options& options) {
    std::unique_ptr<XMLConfigFile> config;
    try {
        config = XMLConfigFile::load(options.file);
    } catch (...) {
        reportFailure(options.file, std::current_exception());
        return EXIT_INPUT;
    }
    ProjectorAddition::Added added;
    try {
        Veltrani::DeviceFramework2::DeviceManager devices(options.devices.settings());
        added = ProjectorAddition(*config, devices).add(options.target);
    } catch (...) {
        reportDeviceFailure(options.file, std::current_exception());
        return EXIT_INCOMPLETE;
    }
    try {
        config->save(options.file);
    } catch (...) {
        reportFailure(options.file, std::current_exception());
        return EXIT_OUTPUT;
    }
    printAdded(added);
    return finishOutput();
}
