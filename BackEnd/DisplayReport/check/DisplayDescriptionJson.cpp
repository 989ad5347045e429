#include "DisplayReport/check/DisplayDescriptionJson.h"

#include "DisplayReport/basics/JsonText.h"
#include "DisplayReport/check/DisplayDescription.h"

#include <ostream>

namespace Veltrani::DisplayReport {

namespace {

std::string jsonOfFact(const DisplayFact& fact) {
    return JsonObject().add("label", fact.label).add("value", fact.value).text();
}

std::string jsonOfChannel(const ChannelDescription& channel) {
    return JsonObject()
        .add("name", channel.name)
        .add("projector", channel.projectorId)
        .addJson("facts", jsonList(channel.facts, jsonOfFact))
        .text();
}

std::string jsonOfText(const std::string& text) {
    return jsonOf(text);
}

/// What could not be loaded or built has no rule.
std::string jsonOfFault(const Fault& fault) {
    return JsonObject()
        .add("severity", std::string(nameOf(Severity::FAULT)))
        .addJson("rule", "null")
        .add("where", fault.where)
        .add("what", fault.what)
        .addJson("causes", jsonList(fault.causes, jsonOfText))
        .text();
}

std::string jsonOfFinding(const Finding& finding) {
    return JsonObject()
        .add("severity", std::string(nameOf(finding.severity)))
        .add("rule", finding.rule)
        .add("where", finding.where)
        .add("what", finding.what)
        .addJson("causes", jsonList(finding.causes, jsonOfText))
        .text();
}

}  // namespace

void printJson(const DisplayDescription& description, ReportHead head, std::ostream& out) {
    head.report = "check";
    for (const DisplayFact& fact : description.facts) {
        head.unit = fact.label == "units" ? fact.value : head.unit;
    }
    const JsonObject counts = JsonObject()
                                  .add("faults", description.count(Severity::FAULT))
                                  .add("warnings", description.count(Severity::WARNING))
                                  .add("remarks", description.count(Severity::REMARK));
    out << JsonObject(head.members())
                   .add("file", description.file)
                   .add("readable", description.readable)
                   .addJson("counts", counts.text())
                   .addJson("facts", jsonList(description.facts, jsonOfFact))
                   .addJson("channels", jsonList(description.channels, jsonOfChannel))
                   .addJson("faults", jsonList(description.faults, jsonOfFault))
                   .addJson("findings", jsonList(description.findings, jsonOfFinding))
                   .addJson("notJudged", jsonList(description.leftOut, jsonOfText))
                   .text() +
               '\n';
}

}  // namespace Veltrani::DisplayReport
