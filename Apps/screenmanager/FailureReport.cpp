#include "FailureReport.h"

#include "Common/ExceptionCause.h"
#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Console.h"

#include <unistd.h>

#include <string_view>

namespace {

using Veltrani::onOneLine;
using Veltrani::DisplayReport::Fault;

constexpr std::string_view OUT_OF_MEMORY =
    "error: not enough memory: allow the program more, or use smaller meshes, clouds, grids or pictures\n";

std::string headOf(const std::string& where, const Fault& fault) {
    // A message that names the file already, in whatever form, does not need it once more.
    const bool named = onOneLine(fault.what).starts_with(onOneLine(where) + ":");
    return named ? fault.what : onOneLine(where) + ": " + fault.what;
}

void sayCauses(const Fault& fault) {
    for (const std::string& cause : fault.causes) {
        Console::say("  because: " + cause);
    }
}

/// The message is written without any memory.
void sayThatMemoryRanOut() noexcept {
    [[maybe_unused]] const auto written = ::write(STDERR_FILENO, OUT_OF_MEMORY.data(), OUT_OF_MEMORY.size());
}

/// What could not be done, where an exception of the suite states it.
void sayWhatNeedsMemory(const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const VeltraniExceptionBase& fault) {
        Console::say("  while: " + Veltrani::toUtf8(fault.message));
    } catch (...) {
        return;
    }
}

}  // namespace

void reportFailure(const std::string& subject, const std::exception_ptr& exception) {
    const Fault fault = Veltrani::DisplayReport::faultOf(subject, exception);
    Console::error(headOf(subject, fault));
    sayCauses(fault);
}

void reportConfigurationFailure(const std::string& file, const std::exception_ptr& exception) {
    try {
        std::rethrow_exception(exception);
    } catch (const VeltraniParseException&) {
        Console::errorLines(headOf(file, Veltrani::DisplayReport::faultOf(file, exception)));
    } catch (...) {
        reportFailure(file, exception);
    }
}

void reportFault(const std::string& subject, const Fault& fault) {
    Console::error(headOf(subject + ": " + fault.where, fault));
    sayCauses(fault);
}

int reportEnd(const std::exception_ptr& exception) noexcept {
    const bool isMemory = Veltrani::isOutOfMemory(exception);
    try {
        if (isMemory) {
            sayThatMemoryRanOut();
            sayWhatNeedsMemory(exception);
        } else {
            Console::error("internal fault: " + Veltrani::toUtf8(Veltrani::messageOf(exception)));
        }
    } catch (...) {
        // The cause of the first fault is known; there is no memory to report more.
        if (!isMemory) {
            sayThatMemoryRanOut();
        }
    }
    return EXIT_INTERNAL;
}
