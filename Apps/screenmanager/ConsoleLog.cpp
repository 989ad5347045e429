#include "ConsoleLog.h"

#include "Common/LoadedModule.h"
#include "Common/Utf8.h"
#include "Console.h"

#include <log4cxx/appenderskeleton.h>
#include <log4cxx/helpers/transcoder.h>
#include <log4cxx/logger.h>
#include <log4cxx/spi/loggingevent.h>

#include <memory>
#include <string>
#include <string_view>

namespace {

/// A record of the library may end in the name of a type of the C++ runtime, where an exception has no other text.
std::string inWords(std::string record) {
    for (const std::string_view name : {"std::bad_alloc", "std::bad_array_new_length"}) {
        if (record.ends_with(name)) {
            record.replace(record.size() - name.size(), name.size(), "not enough memory");
        }
    }
    return record;
}

const char* prefixOf(const log4cxx::LevelPtr& level) {
    if (level->isGreaterOrEqual(log4cxx::Level::getError())) {
        return Console::ERROR;
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

    void showOnlyFatal(const std::string& logger) { m_onlyFatal = logger; }

    void close() override {}
    bool requiresLayout() const override { return false; }

protected:
    void append(const spi::LoggingEventPtr& event, helpers::Pool&) override {
        const LevelPtr& level = event->getLevel();
        if (m_onlyFatal.empty() || level->isGreaterOrEqual(Level::getFatal()) ||
            ConsoleLog::utf8(event->getLoggerName()) != m_onlyFatal) {
            Console::say(prefixOf(level) + ConsoleLog::utf8(event->getRenderedMessage()));
        }
    }

private:
    std::string m_onlyFatal;  ///< name of a logger; empty for none
};

IMPLEMENT_LOG4CXX_OBJECT(StandardErrorAppender)

namespace {

/// What `install` made.
struct Installed {
    std::shared_ptr<StandardErrorAppender> console = std::make_shared<StandardErrorAppender>();
    LoggerPtr root = Logger::getRootLogger();  ///< kept, as finding it may take memory
    bool others = false;
};

Installed& installed() {
    static Installed instance;
    return instance;
}

/// The text of a record that is not shown is not built.
void show(const LevelPtr& threshold) {
    installed().console->setThreshold(threshold);
    installed().root->setLevel(installed().others ? Level::getInfo() : threshold);
}

}  // namespace

std::string ConsoleLog::utf8(const LogString& text) {
    std::wstring wide;
    helpers::Transcoder::encode(text, wide);
    return inWords(Veltrani::toUtf8(wide));
}

void ConsoleLog::install(const LevelPtr& threshold, bool others) {
    // Where there is no memory for its first appender, log4cxx ends the program without a word.
    constexpr std::size_t NEEDED = std::size_t{2} << 20;
    Veltrani::requireAddressSpace(NEEDED);
    installed().others = others;
    installed().root->addAppender(installed().console);
    show(threshold);
}

void ConsoleLog::showOnlyFatal(const std::string& logger) {
    installed().console->showOnlyFatal(logger);
}

ConsoleLog::ErrorsOnly::ErrorsOnly(bool enabled) : m_before(installed().console->getThreshold()) {
    if (enabled) {
        show(Level::getError());
    }
}

/// Also while an exception ends the run because memory ran out: what needs more of it leaves errors alone to be shown.
ConsoleLog::ErrorsOnly::~ErrorsOnly() {
    try {
        show(m_before);
    } catch (...) {
        return;
    }
}
