#include "ProjectorReport.h"

#include "Common/ExceptionCause.h"
#include "Common/Utf8.h"
#include "Console.h"
#include "ExitCode.h"

#include <iostream>

using Veltrani::DisplayReport::ProjectorFinding;

void reportUnusable(const std::vector<ProjectorFinding>& findings, bool replaced) {
    for (const ProjectorFinding& finding : findings) {
        if (!finding.usable()) {
            Console::say((replaced ? "warning: channel " : "error: channel ") + finding.name + " (" +
                         Veltrani::toUtf8(finding.id) + "): " + finding.fault +
                         (replaced ? "; a virtual projector stands in" : ""));
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
        Console::say("error: " + file + " has no projectors; add one with: screenmanager add " + shellWord(file) +
                     " ADDRESS");
    }
    return findings.empty();
}

void reportDeviceFailure(const std::string& subject, const std::exception_ptr& exception) {
    if (Veltrani::isOutOfMemory(exception)) {
        std::rethrow_exception(exception);
    }
    Console::say("error: " + subject + ": " + Veltrani::toUtf8(Veltrani::messageOf(exception)));
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

int finishOutput() {
    if (std::cout.flush()) {
        return EXIT_ALL_RIGHT;
    }
    Console::say("error: standard output cannot be written");
    return EXIT_OUTPUT;
}
