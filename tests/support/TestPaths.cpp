#include "support/TestPaths.h"

std::string sourceFolder() {
    return SM_SOURCE_DIR;
}

std::string extraData() {
    return SM_EXTRA_DATA;
}

std::string programFile() {
    return SM_PROGRAM;
}

std::string exampleGenerator() {
    return SM_EXAMPLE_GENERATOR;
}

std::string failingAllocations() {
    return SM_FAILING_ALLOCATIONS;
}

std::string failingClose() {
    return SM_FAILING_CLOSE;
}

std::string simulatorFile() {
    return SM_PJLINK_SIMULATOR;
}
