#include "ExportFiles/ExportManifest.h"

#include "DisplayReport/basics/JsonText.h"
#include "ExportFiles/ViewJson.h"

namespace Veltrani::ExportFiles {

using DisplayReport::jsonList;
using DisplayReport::JsonObject;
using DisplayReport::ReportHead;

std::string manifestOf(const ExportRequest& request, const std::string& unit,
                       const std::vector<DisplayReport::SourceFile>& sources, const std::vector<std::string>& views) {
    ReportHead head;
    head.report = "export";
    head.unit = unit;
    head.files = sources;
    const bool isRepeated = request.seam == DisplayExport::Seam::CONTINUE;
    const std::string json =
        JsonObject(head.members())
            .addJson("angles", DisplayReport::jsonOf(std::string("radians")))
            .addJson("convention", jsonOf(request.convention))
            .addJson("formats",
                     jsonList(request.formats, [](WarpFormat format) { return DisplayReport::jsonOf(nameOf(format)); }))
            .add("seam", std::string(isRepeated ? "continued" : "cut"))
            .add("error", request.error)
            .addJson("views", jsonList(views, [](const std::string& view) { return view; }))
            .text();
    return DisplayReport::safeForTerminals(json) + '\n';
}

}  // namespace Veltrani::ExportFiles
