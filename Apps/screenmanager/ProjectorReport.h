#pragma once

#include "DisplayReport/ProjectorFinding.h"

#include <exception>
#include <string>
#include <vector>

/// Tells on standard error which projectors do not do, one line each: "error: channel NAME (ID): cause; remedy".
/// @param replaced virtual projectors stand in for them, so that these are warnings
void reportUnusable(const std::vector<Veltrani::DisplayReport::ProjectorFinding>& findings, bool replaced);

/// True when there are no projectors at all, which has been reported then.
bool reportNone(const std::vector<Veltrani::DisplayReport::ProjectorFinding>& findings, const std::string& file);

/// Tells on standard error what went wrong with projectors or their entries, in one line: "error: SUBJECT: message".
/// Unlike `reportFailure` without the place in the source: it is no fault of the program.
void reportDeviceFailure(const std::string& subject, const std::exception_ptr& exception);

/// Says which entries contradict each other, if any do. True then: no channels can be made of them.
bool reportConflicts(const std::vector<Veltrani::DisplayReport::ProjectorFinding>& findings);

/// A text as one word of a command line that a user can copy.
std::string shellWord(const std::string& text);

/// The exit code of a command that has printed everything: that of a fault, which is reported, when standard output
/// does not take it.
int finishOutput();
