#include "support/LogTrap.h"

#include "Common/Utf8.h"
#include "support/Trace.h"

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/helpers/transcoder.h>
#include <log4cxx/spi/loggingevent.h>

#include <functional>

namespace {

std::string utf8(const log4cxx::LogString& text) {
    std::wstring wide;
    log4cxx::helpers::Transcoder::encode(text, wide);
    return Veltrani::toUtf8(wide);
}

}  // namespace

// The registration macros of log4cxx name its types without their namespace.
using namespace log4cxx;

class LogTrapAppender : public AppenderSkeleton {
public:
    DECLARE_LOG4CXX_OBJECT(LogTrapAppender)
    BEGIN_LOG4CXX_CAST_MAP()
    LOG4CXX_CAST_ENTRY(LogTrapAppender)
    LOG4CXX_CAST_ENTRY_CHAIN(AppenderSkeleton)
    END_LOG4CXX_CAST_MAP()

    LogTrapAppender() = default;

    std::function<void(const LogTrap::Record&)> receive;

    void close() override {}
    bool requiresLayout() const override { return false; }

protected:
    void append(const spi::LoggingEventPtr& event, helpers::Pool&) override {
        const spi::LocationInfo& location = event->getLocationInformation();
        receive({utf8(event->getLevel()->toString()), utf8(event->getLoggerName()), utf8(event->getRenderedMessage()),
                 location.getFileName(), location.getClassName(), location.getMethodName(), location.getLineNumber()});
    }
};

IMPLEMENT_LOG4CXX_OBJECT(LogTrapAppender)

LogTrap::LogTrap(const log4cxx::LevelPtr& level, Trace* trace)
    : m_trace(trace), m_appender(std::make_shared<LogTrapAppender>()) {
    m_appender->receive = [this](const Record& record) {
        m_records.push_back(record);
        if (m_trace != nullptr) {
            m_trace->add(record.level + " " + record.logger + ": " + record.message);
        }
    };
    const log4cxx::LoggerPtr root = log4cxx::Logger::getRootLogger();
    m_previousLevel = root->getLevel();
    m_previousAppenders = root->getAllAppenders();
    root->removeAllAppenders();
    root->addAppender(m_appender);
    root->setLevel(level);
}

LogTrap::~LogTrap() {
    const log4cxx::LoggerPtr root = log4cxx::Logger::getRootLogger();
    root->removeAllAppenders();
    for (const log4cxx::AppenderPtr& appender : m_previousAppenders) {
        root->addAppender(appender);
    }
    root->setLevel(m_previousLevel);
}

const std::vector<LogTrap::Record>& LogTrap::records() const {
    return m_records;
}

std::vector<std::string> LogTrap::messages() const {
    std::vector<std::string> texts;
    texts.reserve(m_records.size());
    for (const Record& record : m_records) {
        texts.push_back(record.level + " " + record.message);
    }
    return texts;
}

void LogTrap::clear() {
    m_records.clear();
}
