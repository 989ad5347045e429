#include "ProjectorSession/SessionJson.h"

#include "Common/Utf8.h"
#include "DisplayReport/basics/JsonText.h"
#include "ProjectorSession/ChannelListing.h"
#include "ProjectorSession/ProjectorDiscovery.h"
#include "ProjectorSession/ProjectorFinding.h"
#include "ProjectorSession/ProjectorRun.h"

#include <ostream>

namespace Veltrani::ProjectorSession {

namespace {

using DisplayReport::jsonList;
using DisplayReport::JsonObject;
using DisplayReport::SourceFile;

/// What the table of channels shows where nothing is known.
constexpr const char* UNKNOWN = "-";

/// Such a report has no places, and so neither a frame nor lengths.
JsonObject begun(const char* report, const std::vector<SourceFile>& files) {
    DisplayReport::ReportHead head{report, {}, {}};
    head.files = files;
    return JsonObject(head.members());
}

std::string jsonOfLine(const ChannelLine& line) {
    const auto isKnown = [](const std::string& cell) { return cell != UNKNOWN; };
    JsonObject object;
    object.add("name", line.name).add("id", line.id).addKnown("device", isKnown(line.device), line.device);
    object.add("state", line.state);
    for (const char* const column : {"resolution", "input", "firmware"}) {
        object.addKnown(column, isKnown(line.answer(column)), line.answer(column));
    }
    return object.text();
}

std::string jsonOfFault(const DisplayReport::Fault& fault) {
    return JsonObject().add("where", fault.where).add("what", fault.what).text();
}

std::string jsonOfProjector(const DiscoveredProjector& projector) {
    const bool isAsked = projector.fault.empty();
    return JsonObject()
        .add("mac", toUtf8(projector.mac.text()))
        .add("address", projector.address)
        .addKnown("name", isAsked || !projector.name.empty(), projector.name)
        .addKnown("model", isAsked, projector.model)
        .add("fault", projector.fault)
        .text();
}

std::string jsonOfText(const std::string& text) {
    return DisplayReport::jsonOf(text);
}

std::string jsonOfFinding(const ProjectorFinding& finding) {
    return JsonObject()
        .add("name", finding.name)
        .add("id", toUtf8(finding.id))
        .add("usable", finding.usable())
        .add("fault", finding.fault)
        .text();
}

}  // namespace

void printJson(const ChannelListing& listing, const std::vector<ProjectorFinding>& findings,
               const std::vector<SourceFile>& files, std::ostream& out) {
    std::vector<DisplayReport::Fault> faults;
    for (const ProjectorFinding& finding : findings) {
        if (!finding.usable()) {
            faults.push_back({"channel " + finding.name, finding.fault, {}});
        }
    }
    faults.insert(faults.end(), listing.faults.begin(), listing.faults.end());
    out << begun("channels", files)
                   .addJson("channels", jsonList(listing.lines, jsonOfLine))
                   .addJson("faults", jsonList(faults, jsonOfFault))
                   .text() +
               '\n';
}

void printJson(const Discovery& discovery, std::ostream& out) {
    out << begun("discover", {})
                   .addJson("projectors", jsonList(discovery.projectors, jsonOfProjector))
                   .addJson("leftOut", jsonList(discovery.leftOut, jsonOfText))
                   .text() +
               '\n';
}

void printJson(const ProjectorRun& run, const std::string& state, bool isComplete, const std::vector<SourceFile>& files,
               std::ostream& out) {
    const auto jsonOfRecord = [&run](const CommandRecord& record) {
        return JsonObject()
            .add("command", record.command)
            .add("channel", run.nameOf(record.uid))
            .add("device", toUtf8(record.uid))
            .add("simulated", run.isSimulated(record.uid))
            .add("failed", record.failed)
            .text();
    };
    out << begun("prepare", files)
                   .add("state", state)
                   .add("complete", isComplete)
                   .addJson("channels", jsonList(run.findings(), jsonOfFinding))
                   .addJson("sent", jsonList(run.records(), jsonOfRecord))
                   .text() +
               '\n';
}

}  // namespace Veltrani::ProjectorSession
