#include "ConsoleLog.h"

#include "Common/Utf8.h"

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/helpers/transcoder.h>
#include <log4cxx/logger.h>
#include <log4cxx/spi/loggingevent.h>

#include <iostream>
#include <memory>
#include <string>

namespace {

std::string utf8(const log4cxx::LogString& text) {
    std::wstring wide;
    log4cxx::helpers::Transcoder::encode(text, wide);
    return Veltrani::toUtf8(wide);
}

const char* prefixOf(const log4cxx::LevelPtr& level) {
    if (level->isGreaterOrEqual(log4cxx::Level::getError())) {
        return "error: ";
    }
    return level->isGreaterOrEqual(log4cxx::Level::getWarn()) ? "warning: " : "info: ";
}

}  // namespace

// The registration macros of log4cxx name its types without their namespace.
using namespace log4cxx;

class StandardErrorAppender : public AppenderSkeleton {
public:
    DECLARE_LOG4CXX_OBJECT(StandardErrorAppender)
    BEGIN_LOG4CXX_CAST_MAP()
    LOG4CXX_CAST_ENTRY(StandardErrorAppender)
    LOG4CXX_CAST_ENTRY_CHAIN(AppenderSkeleton)
    END_LOG4CXX_CAST_MAP()

    StandardErrorAppender() = default;

    void close() override {}
    bool requiresLayout() const override { return false; }

protected:
    void append(const spi::LoggingEventPtr& event, helpers::Pool&) override {
        std::cerr << prefixOf(event->getLevel()) + utf8(event->getRenderedMessage()) + '\n';
    }
};

IMPLEMENT_LOG4CXX_OBJECT(StandardErrorAppender)

void ConsoleLog::install(const log4cxx::LevelPtr& threshold) {
    const LoggerPtr root = Logger::getRootLogger();
    root->removeAllAppenders();
    root->addAppender(std::make_shared<StandardErrorAppender>());
    root->setLevel(threshold);
}

void ConsoleLog::showOnlyFatal(const std::wstring& logger) {
    Logger::getLogger(logger)->setLevel(Level::getFatal());
}

ConsoleLog::ErrorsOnly::ErrorsOnly(bool enabled) : m_before(Logger::getRootLogger()->getLevel()) {
    if (enabled) {
        Logger::getRootLogger()->setLevel(Level::getError());
    }
}

ConsoleLog::ErrorsOnly::~ErrorsOnly() {
    Logger::getRootLogger()->setLevel(m_before);
}
