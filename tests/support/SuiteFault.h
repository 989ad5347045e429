#pragma once

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <string>

/// What a step throws of the suite's exceptions: "missing: ", "parse: " or "general: " and the message; empty when it
/// throws nothing.
template <class Step>
[[nodiscard]] std::string suiteFaultOf(const Step& step) {
    try {
        step();
    } catch (const VeltraniMissingFileException& fault) {
        return "missing: " + Veltrani::toUtf8(fault.message);
    } catch (const VeltraniParseException& fault) {
        return "parse: " + Veltrani::toUtf8(fault.message);
    } catch (const VeltraniException& fault) {
        return "general: " + Veltrani::toUtf8(fault.message);
    }
    return {};
}
