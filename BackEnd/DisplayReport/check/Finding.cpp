#include "DisplayReport/check/Finding.h"

namespace Veltrani::DisplayReport {

std::string_view nameOf(Severity severity) {
    switch (severity) {
        case Severity::FAULT:
            return "fault";
        case Severity::WARNING:
            return "warning";
        case Severity::REMARK:
            return "remark";
    }
    return {};
}

}  // namespace Veltrani::DisplayReport
