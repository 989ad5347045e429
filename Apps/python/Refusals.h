#pragma once

#include <string>

/// What a script has passed cannot be used. The text begins with the name of the argument.
struct ArgumentFault {
    std::string text;
    bool isOfWrongType = false;  ///< else of a wrong shape or value
};

/// A call inside of another one.
struct BusyFault {
    std::string text;
};
