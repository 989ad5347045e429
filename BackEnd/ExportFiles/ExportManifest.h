#pragma once

#include "DisplayReport/basics/ReportHead.h"
#include "ExportFiles/ViewExport.h"

#include <string>
#include <vector>

namespace Veltrani::ExportFiles {

/// The manifest of an export as JSON; its schema is docs/schemas/export.schema.json.
/// @param unit name of the native unit; empty where it is not known
/// @param sources the configuration, the files that it names, and the content
/// @param views each `ViewRecord::json`, in the order of the channels
[[nodiscard]] std::string manifestOf(const ExportRequest& request, const std::string& unit,
                                     const std::vector<DisplayReport::SourceFile>& sources,
                                     const std::vector<std::string>& views);

}  // namespace Veltrani::ExportFiles
