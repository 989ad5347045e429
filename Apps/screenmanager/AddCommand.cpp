#include "AddCommand.h"

#include "Common/Utf8.h"
#include "Configuration/ConfigurationChangedException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "Console.h"
#include "DeviceFramework2/DeviceManager.h"
#include "DisplayFile.h"
#include "ExitCode.h"
#include "FailureReport.h"
#include "ProjectorReport.h"

#include <memory>
#include <optional>

namespace {

using Veltrani::toUtf8;
using Veltrani::DisplayReport::ProjectorAddition;

void printAdded(const ProjectorAddition::Added& added) {
    const bool sized = added.width > 0 && added.height > 0;
    Console::print("added " + toUtf8(added.uid) + ": channel " + toUtf8(added.name) + ", " + toUtf8(added.place) +
                   ", " +
                   (sized ? std::to_string(added.width) + " x " + std::to_string(added.height)
                          : "resolution not told; state it in the file"));
}

/// None when the file is no longer the one that was read: then the change has to be repeated in the newer one.
std::optional<ExitCode> trySave(const XMLConfigFile& config, const std::string& file) {
    try {
        config.save(file);
        return EXIT_ALL_RIGHT;
    } catch (const ConfigurationChangedException& change) {
        if (!change.isRemoved) {
            return std::nullopt;
        }
        reportFailure(file, std::current_exception());
    } catch (...) {
        reportFailure(file, std::current_exception());
    }
    return EXIT_OUTPUT;
}

/// Adds the entry to the file as it is now. Null when it cannot be read or has something like it, which has been
/// reported then; `code` says which.
std::unique_ptr<XMLConfigFile> repeatInNewer(const ProjectorConfig& entry, const std::string& file, ExitCode& code) {
    std::unique_ptr<XMLConfigFile> newer = DisplayFile::read(file);
    if (!newer) {
        Console::say("error: " + file +
                     " was changed while the projector was asked, and nothing was added: mend the file, then add "
                     "the projector again");
        code = EXIT_INPUT;
        return nullptr;
    }
    try {
        ProjectorAddition::repeat(entry, *newer);
    } catch (...) {
        reportDeviceFailure(file, std::current_exception());
        code = EXIT_INCOMPLETE;
        return nullptr;
    }
    return newer;
}

/// Saves a new entry. Nobody could lock the file for as long as a projector may be asked: when it was changed
/// meanwhile, the entry goes to the newer file, if it fits there.
ExitCode save(const XMLConfigFile& config, const ProjectorConfig& entry, const AddCommand::Options& options) {
    // Every further try means that somebody else has saved a change of his own this moment.
    constexpr int MOST_TRIES = 1000;
    if (const auto code = trySave(config, options.file)) {
        return *code;
    }
    for (int i = 1; i < MOST_TRIES; ++i) {
        ExitCode code = EXIT_ALL_RIGHT;
        const auto newer = repeatInNewer(entry, options.file, code);
        if (!newer) {
            return code;
        }
        if (const auto saved = trySave(*newer, options.file)) {
            if (*saved == EXIT_ALL_RIGHT && options.devices.talkative()) {
                Console::say(options.file +
                             " was changed while the projector was asked: it was added to the newer file");
            }
            return *saved;
        }
    }
    Console::say("error: " + options.file + " is changed all the time, and nothing was added: see what changes it");
    return EXIT_OUTPUT;
}

}  // namespace

int AddCommand::run(const Options& options) {
    const std::unique_ptr<XMLConfigFile> config = DisplayFile::read(options.file);
    if (!config) {
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
    if (const ExitCode code = save(*config, *config->getProjectorConfig(added.uid), options); code != EXIT_ALL_RIGHT) {
        return code;
    }
    printAdded(added);
    return finishOutput();
}
