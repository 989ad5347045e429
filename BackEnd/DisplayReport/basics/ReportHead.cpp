#include "DisplayReport/basics/ReportHead.h"

#include "Common/QuotedText.h"

namespace Veltrani::DisplayReport {

std::string ReportHead::comment() const {
    if (report.empty()) {
        return "";
    }
    return "# screenmanager/" + report + " version " + std::to_string(version) + "\n# x, y, z: " + frame + "; unit " +
           (unit.empty() ? "not known" : onOneLine(unit)) +
           "\n# u, v: place in the picture of the channel, (0, 0) bottom left, (1, 1) top right\n";
}

}  // namespace Veltrani::DisplayReport
