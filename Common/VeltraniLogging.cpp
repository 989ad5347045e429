#include "Common/VeltraniLogging.h"

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
