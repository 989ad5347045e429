#include "Projectors.h"

#include "Common/ExceptionCause.h"
#include "Common/Utf8.h"

#include <algorithm>
#include <sstream>

namespace {

using namespace Veltrani::DeviceFramework2;
using Veltrani::ProjectorSession::ProjectorFinding;

/// Bounds of a wait in seconds: a reply on a local network takes milliseconds, and nobody waits for longer than an
/// hour.
constexpr double SHORTEST_TIMEOUT = 0.01;
constexpr double LONGEST_TIMEOUT = 3600.0;

/// Refuses the command line for a wait that is none, NaN included.
std::chrono::milliseconds readTimeout(double seconds) {
    if (!(seconds >= SHORTEST_TIMEOUT && seconds <= LONGEST_TIMEOUT)) {
        std::ostringstream text;
        text << seconds << " s is not a wait of " << SHORTEST_TIMEOUT << " to " << LONGEST_TIMEOUT << " s";
        OptionList::refuse("--timeout", text.str());
    }
    return std::chrono::round<std::chrono::milliseconds>(std::chrono::duration<double>(seconds));
}

/// Refuses the command line for what is no IPv4 address.
ProjectorAddress readBroadcast(const std::string& text) {
    const auto address = ProjectorAddress::parse(text);
    if (!address || !address->isIpv4()) {
        OptionList::refuse("--broadcast", "\"" + text + "\" is not an IPv4 address with or without a port, " +
                                              "such as 192.0.2.255 or 192.0.2.255:4352");
    }
    return *address;
}

void limit(DeviceManager::Settings& settings, std::chrono::milliseconds timeout) {
    settings.pjlink.connectLimit = timeout;
    settings.pjlink.greetingLimit = timeout;
    settings.pjlink.replyLimit = timeout;
    settings.search.duration = timeout;
    // All requests of a short search are still sent within it.
    settings.search.interval = std::min(settings.search.interval, timeout / (settings.search.requests + 1));
}

}  // namespace

DeviceManager::Settings DeviceOptions::settings() const {
    DeviceManager::Settings settings;
    if (timeout) {
        limit(settings, *timeout);
    }
    if (broadcast) {
        settings.search.targets = {broadcast->host};
        settings.search.targetPort = broadcast->port;
        settings.search.ownPort = PjlinkSearchSettings::ownPortFor(broadcast->port);
    }
    return settings;
}

void addTimeout(OptionList& line, DeviceOptions& options) {
    line.addNumber(
            "--timeout", [&options](double seconds) { options.timeout = readTimeout(seconds); },
            "Longest wait for each reply of a projector, and for a search (default 3 to 10, search 30)")
        .typeName("SECONDS");
}

void addBroadcast(OptionList& line, DeviceOptions& options) {
    line.addRead(
            "--broadcast", [&options](const std::string& text) { options.broadcast = readBroadcast(text); },
            "Where to search (default: on all networks of this machine)")
        .typeName("ADDRESS[:PORT]");
}

void reportUnusable(const std::vector<ProjectorFinding>& findings, bool replaced) {
    for (const ProjectorFinding& finding : findings) {
        if (!finding.usable()) {
            const std::string text =
                "channel " + finding.name + " (" + Veltrani::toUtf8(finding.id) + "): " + finding.fault;
            if (replaced) {
                Console::say("warning: " + text + "; a virtual projector stands in");
            } else {
                Console::error(text);
            }
        }
    }
}

bool reportConflicts(const std::vector<ProjectorFinding>& findings) {
    bool any = false;
    for (const ProjectorFinding& finding : findings) {
        if (!finding.replaceable) {
            any = true;
            reportUnusable({finding}, false);
        }
    }
    return any;
}

bool reportNone(const std::vector<ProjectorFinding>& findings, const std::string& file) {
    if (findings.empty()) {
        Console::error(file + " has no projectors; add one with: screenmanager add " + shellWord(file) + " ADDRESS");
    }
    return findings.empty();
}

void reportDeviceFailure(const std::string& subject, const std::exception_ptr& exception) {
    if (Veltrani::isOutOfMemory(exception)) {
        std::rethrow_exception(exception);
    }
    Console::error(subject + ": " + Veltrani::toUtf8(Veltrani::messageOf(exception)));
}

std::string shellWord(const std::string& text) {
    constexpr const char* PLAIN = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_./+,:@%-";
    if (!text.empty() && text.find_first_not_of(PLAIN) == std::string::npos) {
        return text;
    }
    std::string quoted = "'";
    for (const char character : text) {
        quoted += character == '\'' ? "'\\''" : std::string(1, character);
    }
    return quoted + '\'';
}
