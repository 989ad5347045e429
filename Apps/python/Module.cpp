#include "Bindings.h"
#include "Exceptions.h"

#include <log4cxx/level.h>
#include <log4cxx/logger.h>
#include <pthread.h>

namespace {

void afterFork() {
    Entry::afterFork();
}

}  // namespace

PYBIND11_MODULE(_native, module) {
    // Faults are raised. Without an appender, log4cxx would print a notice of its own for the first record.
    log4cxx::Logger::getRootLogger()->setLevel(log4cxx::Level::getOff());
    pthread_atfork(nullptr, nullptr, afterFork);
    pybind11::module_::import("atexit").attr("register")(pybind11::cpp_function(&Entry::end));
    registerExceptions(module);
    DisplayClass display(module, "Display");
    bindDisplay(display);
    bindChannels(display);
    bindRecords(display);
    bindScreen(display);
    bindMaps(display);
    bindTargets(display);
    bindReports(display);
    bindFits(display);
    bindExports(display);
    bindClouds(display);
}
