#pragma once

#include <string>
#include <string_view>

class XMLConfigManager;

namespace Veltrani::DisplayReport {
class TableReader;
}

/// The unit of the lengths of a table of measured points.
namespace Veltrani::FitSession::MeasuredUnit {

/// The unit that a line "# unit mm" states, in any case, with a colon or an equals sign or without; empty for another
/// line.
[[nodiscard]] std::string ofComment(std::string_view line);

/// A unit that a table states.
struct Stated {
    std::string name;  ///< empty when it states none
    int line = 0;      ///< 0: the current one
};

/// Native units per unit of the table. Throws `VeltraniParseException` when no unit is stated, or one without a length,
/// or two that differ.
/// @param ofCaller the same of the caller, who need not repeat it
[[nodiscard]] double nativePerUnit(const DisplayReport::TableReader& table, const Stated& ofTable,
                                   const std::string& ofCaller, const XMLConfigManager& config);

}  // namespace Veltrani::FitSession::MeasuredUnit
