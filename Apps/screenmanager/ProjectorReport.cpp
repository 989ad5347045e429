#include "ProjectorReport.h"

#include "Common/RunCatch.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "DisplayReport/TextTable.h"

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

bool reportNone(const std::vector<ProjectorFinding>& findings, const std::string& file) {
    if (findings.empty()) {
        std::cerr << "error: " + file + " has no projectors; add one with: screenmanager add " + file + " ADDRESS\n";
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
