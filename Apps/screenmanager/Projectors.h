#pragma once

#include "Command.h"
#include "DeviceFramework2/DeviceManager.h"
#include "DeviceFramework2/ProjectorAddress.h"
#include "ProjectorSession/ProjectorFinding.h"

#include <chrono>
#include <exception>
#include <optional>
#include <string>
#include <vector>

/// What every command that talks to projectors can be given.
struct DeviceOptions : CommandOptions {
    std::optional<std::chrono::milliseconds> timeout;  ///< for each wait; without: the limits of the standard
    /// The address that a search is sent to; without: all networks of the machine.
    std::optional<Veltrani::DeviceFramework2::ProjectorAddress> broadcast;

    [[nodiscard]] Veltrani::DeviceFramework2::DeviceManager::Settings settings() const;
};

/// `--timeout`. Values are filled by parsing here and below, and must outlive the command line.
void addTimeout(OptionList& line, DeviceOptions& options);
/// `--broadcast`, of the commands that search.
void addBroadcast(OptionList& line, DeviceOptions& options);

/// Reports which projectors are not usable, one line each: "error: channel NAME (ID): cause; remedy".
/// @param replaced virtual projectors stand in for them, so that these are warnings
void reportUnusable(const std::vector<Veltrani::ProjectorSession::ProjectorFinding>& findings, bool replaced);

/// True when there are no projectors at all, which has been reported then.
bool reportNone(const std::vector<Veltrani::ProjectorSession::ProjectorFinding>& findings, const std::string& file);

/// Reports what went wrong with projectors or their entries, in one line: "error: SUBJECT: message".
/// Unlike `reportFailure` without the place in the source: it is no fault of the program.
void reportDeviceFailure(const std::string& subject, const std::exception_ptr& exception);

/// Reports which entries contradict each other. True if any do: no channels can be made of them.
bool reportConflicts(const std::vector<Veltrani::ProjectorSession::ProjectorFinding>& findings);

/// A text as one word of a command line that a user can copy.
std::string shellWord(const std::string& text);
