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

/// Native units per unit of the table. Throws `VeltraniParseException` at the current line of the table when no unit is
/// stated, or one without a length, or two that differ.
/// @param ofTable that the table states; empty when it states none
/// @param ofCaller the same of the caller, who need not repeat it
[[nodiscard]] double nativePerUnit(const DisplayReport::TableReader& table, const std::string& ofTable,
                                   const std::string& ofCaller, const XMLConfigManager& config);

}  // namespace Veltrani::FitSession::MeasuredUnit
