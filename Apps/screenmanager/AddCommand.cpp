#include "Common/Utf8.h"
#include "Configuration/ConfigurationChangedException.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/XMLConfigFile.h"
#include "DeviceFramework2/DeviceManager.h"
#include "DisplayFile.h"
#include "FailureReport.h"
#include "ProjectorSession/ProjectorAddition.h"
#include "Projectors.h"

#include <memory>
#include <optional>

namespace {

using Veltrani::fromUtf8;
using Veltrani::toUtf8;
using Veltrani::DeviceFramework2::DeviceManager;
using Veltrani::DeviceFramework2::MacAddress;
using Veltrani::DeviceFramework2::ProjectorAddress;
using Veltrani::ProjectorSession::ProjectorAddition;

struct Options : DeviceOptions {
    std::string file;  ///< the configuration, which is replaced as a whole, or not at all
    ProjectorAddition::Target target;
};

/// Refuses the command line for what is no MAC address.
MacAddress readMac(const std::string& text) {
    const auto mac = MacAddress::parse(fromUtf8(text));
    if (!mac) {
        OptionList::refuse("--mac", "\"" + text + "\" is not a MAC address such as 02:00:00:00:00:01");
    }
    return *mac;
}

/// Refuses the command line when another MAC address was stated already: as PROJECTOR or with --mac.
void setMac(const MacAddress& mac, ProjectorAddition::Target& target) {
    if (target.mac && *target.mac != mac) {
        OptionList::refuse("--mac", "PROJECTOR and --mac state different MAC addresses, " + toUtf8(target.mac->text()) +
                                        " and " + toUtf8(mac.text()));
    }
    target.mac = mac;
}

/// Refuses the command line for what is neither an address nor a MAC address.
void readTarget(const std::string& text, ProjectorAddition::Target& target) {
    if (const auto mac = MacAddress::parse(fromUtf8(text))) {
        setMac(*mac, target);
        return;
    }
    target.address = ProjectorAddress::parse(text);
    if (!target.address) {
        OptionList::refuse("PROJECTOR", "\"" + text + "\" is neither an IP address with or without a port, " +
                                            "such as 192.0.2.10, 192.0.2.10:4352 or [2001:db8::1]:4352, nor a " +
                                            "MAC address such as 02:00:00:00:00:01");
    }
}

/// Refuses the command line for a name that no channel can have.
std::wstring readName(const std::string& text) {
    std::wstring name = fromUtf8(text);
    if (name.empty()) {
        OptionList::refuse("--name", "a name has at least one character, in UTF-8");
    }
    return name;
}

void printAdded(const ProjectorAddition::Added& added) {
    const bool sized = added.width > 0 && added.height > 0;
    Console::print("added " + toUtf8(added.uid) + ": channel " + toUtf8(added.name) + ", " + toUtf8(added.place) +
                   ", " +
                   (sized ? std::to_string(added.width) + " x " + std::to_string(added.height)
                          : "resolution not reported; state it in the file"));
}

/// False when the file has several names, which has been reported then: found before a projector is contacted in vain.
bool isReplaceable(const std::string& file) {
    try {
        XMLConfigFile::requireOneName(file);
        return true;
    } catch (...) {
        reportFailure(file, std::current_exception());
        return false;
    }
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
std::unique_ptr<XMLConfigFile> repeatInNewer(const ProjectorConfig& entry, const Options& options, ExitCode& code) {
    const std::string& file = options.file;
    std::unique_ptr<XMLConfigFile> newer = DisplayFile::read(file);
    if (!newer) {
        Console::error(file +
                       " was changed while the projector was queried, and nothing was added: mend the file, then add "
                       "the projector again");
        code = EXIT_INPUT;
        return nullptr;
    }
    try {
        ProjectorAddition::repeat(entry, options.target.name, *newer);
    } catch (...) {
        reportDeviceFailure(file, std::current_exception());
        code = EXIT_INCOMPLETE;
        return nullptr;
    }
    return newer;
}

/// Saves a new entry. The file cannot stay locked for as long as a projector may take to reply: when it was changed
/// meanwhile, the entry goes to the newer file, if it fits there.
ExitCode save(const XMLConfigFile& config, const ProjectorConfig& entry, const Options& options) {
    // Every further try means that another program has saved a change of its own this moment.
    constexpr int MOST_TRIES = 1000;
    if (const auto code = trySave(config, options.file)) {
        return *code;
    }
    for (int i = 1; i < MOST_TRIES; ++i) {
        ExitCode code = EXIT_ALL_RIGHT;
        const auto newer = repeatInNewer(entry, options, code);
        if (!newer) {
            return code;
        }
        if (const auto saved = trySave(*newer, options.file)) {
            if (*saved == EXIT_ALL_RIGHT && options.isTalkative()) {
                Console::say(options.file +
                             " was changed while the projector was queried: it was added to the newer file");
            }
            return *saved;
        }
    }
    Console::error(options.file + " is changed all the time, and nothing was added: see what changes it");
    return EXIT_OUTPUT;
}

int run(const Options& options) {
    const std::unique_ptr<XMLConfigFile> config = DisplayFile::read(options.file);
    if (!config) {
        return EXIT_INPUT;
    }
    if (!isReplaceable(options.file)) {
        return EXIT_OUTPUT;
    }
    ProjectorAddition::Added added;
    try {
        DeviceManager devices(options.settings());
        added = ProjectorAddition(*config, devices).add(options.target);
    } catch (...) {
        reportDeviceFailure(options.file, std::current_exception());
        return EXIT_INCOMPLETE;
    }
    if (const ExitCode code = save(*config, *config->getProjectorConfig(added.uid), options); code != EXIT_ALL_RIGHT) {
        return code;
    }
    printAdded(added);
    return Console::finishOutput();
}

Command::Run addTo(OptionList& line) {
    const auto options = std::make_shared<Options>();
    ProjectorAddition::Target& target = options->target;
    line.add("FILE", options->file, "Configuration of the display (XML), which is changed").required();
    line.addRead(
            "PROJECTOR", [&target](const std::string& text) { readTarget(text, target); },
            "Its IP address, or its MAC address to search for it")
        .required()
        .typeName("ADDRESS|MAC");
    line.addRead(
            "--mac", [&target](const std::string& text) { setMac(readMac(text), target); },
            "MAC address of the projector at ADDRESS, for one that does not report it")
        .typeName("MAC");
    line.addRead(
            "--name", [&target](const std::string& text) { target.name = readName(text); },
            "Name of the channel (default: where the projector is)")
        .typeName("NAME");
    addTimeout(line, *options);
    addBroadcast(line, *options);
    return Command::with(options, run);
}

}  // namespace

const Command ADD_COMMAND{.name = "add",
                          .summary = "Add a projector to a configuration",
                          .example = "screenmanager add display.xml 192.0.2.10 --name Left",
                          .addTo = addTo};
