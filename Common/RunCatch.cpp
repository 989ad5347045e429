#include "Common/RunCatch.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "Common/VeltraniLogging.h"

namespace {

const log4cxx::LoggerPtr& logger() {
    static const log4cxx::LoggerPtr instance = log4cxx::Logger::getLogger(L"Common.RunCatch");
    return instance;
}

void logDescription(const std::string& description) {
    VELTRANI_LOG(logger(), Error, L"Caught exception: " + Veltrani::fromUtf8OrBytes(description));
}

// Both exist from the moment the library is loaded, whichever function is called first.
[[maybe_unused]] const auto& loadedHandlers = RunCatch::handlers();
[[maybe_unused]] const auto& loadedLogger = logger();

}  // namespace

std::string RunCatch::describe(std::exception_ptr exception) {
    if (!exception) {
        return {};
    }
    try {
        std::rethrow_exception(std::move(exception));
    } catch (const VeltraniException& fault) {
        return Veltrani::toUtf8(fault.fullDescription());
    } catch (const std::exception& fault) {
        return fault.what();
    } catch (...) {
        return "(...) No details";
    }
}

void RunCatch::handleCurrentException(bool rethrow) {
    const std::string description = describe(std::current_exception());
    for (const Handler& handler : handlers()) {
        handler(description);
    }
    if (rethrow) {
        throw;
    }
}

std::vector<RunCatch::Handler>& RunCatch::handlers() {
    static std::vector<Handler> list{logDescription};
    return list;
}
