#pragma once

#include <log4cxx/level.h>
#include <log4cxx/logger.h>
#include <log4cxx/spi/location/locationinfo.h>

#include <string>

/// Logging helpers. Log text is wide everywhere: log4cxx decodes narrow text with the locale of the process, which
/// turns UTF-8 into question marks under the C locale.
///
/// Once the library is loaded, log4cxx no longer looks for a configuration by itself, in the working folder or in the
/// environment; an application configures it (docs/logging.md).
class VeltraniLogging {
public:
    VeltraniLogging() = delete;

    /// Logs a text of several lines at info: the header as one record, then every piece of the body between line feeds
    /// as a record of its own, so n line feeds give n + 1 records after the header. Logs nothing when info is off at
    /// the start; the level is tested again before each piece. The records carry the location of this helper.
    static void multiLineLog(const log4cxx::LoggerPtr& logger, const std::wstring& header, const std::wstring& body);
};

/// The log statement of the suite: tests the level first, builds the wide text only when it is enabled, and logs it
/// with the location of the statement. `level` is one of Info, Warn, Error, Fatal.
///
///     VELTRANI_LOG(log, Info, L"initialize: replaceMissingWithOffline " + std::to_wstring(flag));
#define VELTRANI_LOG(logger, level, wideText) VELTRANI_LOG_AT(LOG4CXX_LOCATION, logger, level, wideText)

/// The same at the place of another statement: the parts of an operation log at the place of the operation, which
/// passes its `LOG4CXX_LOCATION` on to them.
#define VELTRANI_LOG_AT(location, logger, level, wideText)                                         \
    do {                                                                                           \
        if ((logger)->is##level##Enabled()) {                                                      \
            (logger)->forcedLog(::log4cxx::Level::get##level(), std::wstring(wideText), location); \
        }                                                                                          \
    } while (false)
