#pragma once

#include "DisplayReport/basics/ReportHead.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace Veltrani::ProjectorSession {

struct ChannelListing;
struct Discovery;
struct ProjectorFinding;
class ProjectorRun;

// What the commands about projectors print, for programs: each one JSON object on a line. What is not known is null.

/// @param findings those that are not usable are listed with their faults
/// @param files that it was made from
void printJson(const ChannelListing& listing, const std::vector<ProjectorFinding>& findings,
               const std::vector<DisplayReport::SourceFile>& files, std::ostream& out);

void printJson(const Discovery& discovery, std::ostream& out);

/// @param state that was wanted: "black", "gray50" or "clear"
/// @param isComplete whether every projector, real or simulated, shows it
/// @param files that it was made from
void printJson(const ProjectorRun& run, const std::string& state, bool isComplete,
               const std::vector<DisplayReport::SourceFile>& files, std::ostream& out);

}  // namespace Veltrani::ProjectorSession
