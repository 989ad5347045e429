#include "Common/ExceptionCause.h"

#include "Common/RunCatch.h"
#include "Common/Utf8.h"

namespace Veltrani {

std::wstring causeOf(const VeltraniExceptionBase& fault) {
    const auto* const carrier = dynamic_cast<const std::nested_exception*>(&fault);
    if (carrier == nullptr || !carrier->nested_ptr()) {
        return {};
    }
    try {
        carrier->rethrow_nested();
    } catch (const VeltraniExceptionBase& cause) {
        return cause.fullDescription();
    } catch (...) {
        return fromUtf8OrBytes(RunCatch::describe(std::current_exception()));
    }
}

}  // namespace Veltrani
