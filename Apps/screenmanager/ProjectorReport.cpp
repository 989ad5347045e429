#include "ProjectorReport.h"

#include "Common/RunCatch.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/TextTable.h"
#include "ExitCode.h"

#include <iostream>

using Veltrani::DisplayReport::printable;
using Veltrani::DisplayReport::ProjectorFinding;

void reportUnusable(const std::vector<ProjectorFinding>& findings, bool replaced) {
    for (const ProjectorFinding& finding : findings) {
        if (!finding.usable()) {
            std::cerr << (replaced ? "warning: channel " : "error: channel ") + printable(finding.name) + " (" +
                             printable(Veltrani::toUtf8(finding.id)) + "): " + finding.fault +
                             (replaced ? "; a virtual projector stands in\n" : "\n");
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
        std::cerr << "error: " + file + " has no projectors; add one with: screenmanager add " + shellWord(file) +
                         " ADDRESS\n";
    }
    return findings.empty();
}

void reportDeviceFailure(const std::string& subject, const std::exception_ptr& exception) {
    std::string message;
    try {
        std::rethrow_exception(exception);
    } catch (const VeltraniExceptionBase& fault) {
        message = Veltrani::toUtf8(fault.message);
    } catch (...) {
        message = RunCatch::describe(exception);
    }
    std::cerr << "error: " + subject + ": " + printable(message) + '\n';
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
    std::cerr << "error: standard output cannot be written\n";
    return EXIT_OUTPUT;
}
