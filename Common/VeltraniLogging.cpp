#include "Common/VeltraniLogging.h"

#include <log4cxx/logmanager.h>
#include <log4cxx/spi/loggerrepository.h>

namespace {

/// The first logger of a process makes log4cxx look for a configuration in the working folder and in the environment,
/// and obey it. A folder that was received from elsewhere could so empty any file of the user. A repository that counts
/// as configured is left alone until the application itself configures it.
///
/// The loader runs the initialisers of this library before those of the libraries that use it, and this one, by its
/// number (the first that is not reserved), before the loggers of this library itself.
[[gnu::constructor(101)]] void switchOffAutomaticConfiguration() {
    log4cxx::LogManager::getLoggerRepository()->setConfigured(true);
}

}  // namespace

void VeltraniLogging::multiLineLog(const log4cxx::LoggerPtr& logger, const std::wstring& header,
                                   const std::wstring& body) {
    if (!logger->isInfoEnabled()) {
        return;
    }
    logger->forcedLog(log4cxx::Level::getInfo(), header, LOG4CXX_LOCATION);

    std::wstring::size_type start = 0;
    while (true) {
        const auto end = body.find(L'\n', start);
        VELTRANI_LOG(logger, Info, body.substr(start, end - start));
        if (end == std::wstring::npos) {
            return;
        }
        start = end + 1;
    }
}
