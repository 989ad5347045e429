// A program of somebody else that decides about its log: not at all, or in one of the ways that log4cxx has for it.
#include "ScreenManager/ScreenManager.h"

#include <log4cxx/basicconfigurator.h>
#include <log4cxx/defaultconfigurator.h>
#include <log4cxx/logger.h>
#include <log4cxx/logmanager.h>
#include <log4cxx/propertyconfigurator.h>
#include <log4cxx/xml/domconfigurator.h>

#include <iostream>
#include <string>

int main(int argc, char** argv) {
    const std::string way = argc > 1 ? argv[1] : "";
    const std::string file = argc > 2 ? argv[2] : "";
    if (way == "basic") {
        log4cxx::BasicConfigurator::configure();  // everything on standard output
    } else if (way == "properties") {
        log4cxx::PropertyConfigurator::configure(file);
    } else if (way == "xml") {
        log4cxx::xml::DOMConfigurator::configure(file);
    } else if (way == "search") {
        log4cxx::DefaultConfigurator::configure(log4cxx::LogManager::getLoggerRepository());
    }
    LOG4CXX_WARN(log4cxx::Logger::getLogger("Application"), "a record of the application");
    ScreenManager::getInstance();  // logs at info that it is there
    ScreenManager::deleteInstance();
    std::cout << "appenders " << log4cxx::Logger::getRootLogger()->getAllAppenders().size() << '\n';
}
