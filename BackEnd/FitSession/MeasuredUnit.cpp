#include "FitSession/MeasuredUnit.h"

#include "Common/QuotedText.h"
#include "Common/Utf8.h"
#include "Configuration/IUnitsConfig.h"
#include "Configuration/UnitConversionTable.h"
#include "Configuration/XMLConfigManager.h"
#include "DisplayReport/basics/TableReader.h"

#include <algorithm>

namespace Veltrani::FitSession::MeasuredUnit {

namespace {

constexpr const char* UNITS = "mm, cm, m, in or ft";

double metresPer(const std::string& unit) {
    return UnitConversionTable::metresPer(UnitConversionTable::getUnitSubTypeFromName(fromUtf8(unit)));
}

[[noreturn]] void refuse(const DisplayReport::TableReader& table, int line, const std::string& found,
                         const std::string& expected, const std::string& remedy) {
    table.refuse(line > 0 ? line : table.line(), found, expected, {"unit of lengths", remedy});
}

}  // namespace

std::string ofComment(std::string_view line) {
    constexpr std::string_view WORD = "unit";
    constexpr std::string_view GAPS = " \t#";
    const auto skip = [&line](std::string_view characters) {
        line.remove_prefix(std::min(line.find_first_not_of(characters), line.size()));
    };
    skip(GAPS);
    if (DisplayReport::inLowerCase(line.substr(0, WORD.size())) != WORD) {
        return "";
    }
    line.remove_prefix(WORD.size());
    if (line.empty() || std::string_view(" \t:=").find(line.front()) == std::string_view::npos) {
        return "";
    }
    skip(" \t:=");
    return std::string(line.substr(0, line.find_last_not_of(" \t") + 1));
}

double nativePerUnit(const DisplayReport::TableReader& table, const Stated& ofTable, const std::string& ofCaller,
                     const XMLConfigManager& config) {
    const std::string& stated = ofCaller.empty() ? ofTable.name : ofCaller;
    if (stated.empty()) {
        refuse(table, ofTable.line, "none", UNITS,
               "state --unit, or begin the table with a line such as \"# unit mm\"");
    }
    const IUnitsConfig* const units = config.getNativeUnitsConfig();
    const std::string native = units == nullptr ? "" : toUtf8(units->getUnitName());
    const bool isNative = stated == native;
    if (!isNative && metresPer(stated) <= 0) {
        refuse(table, ofTable.line, inQuotes(stated), UNITS, "write one of these, or convert the lengths to it");
    }
    if (!isNative && metresPer(native) <= 0) {
        refuse(table, ofTable.line, inQuotes(stated), "the unit of the display, " + inQuotes(native),
               "convert the lengths, since that unit has no length of its own");
    }
    const std::string& inTable = ofTable.name;
    if (!inTable.empty() && inTable != stated && metresPer(inTable) != metresPer(stated)) {
        refuse(table, ofTable.line, inQuotes(inTable) + " in the table", "--unit " + stated,
               "leave --unit out, or mend the table");
    }
    return isNative ? 1 : metresPer(stated) / metresPer(native);
}

}  // namespace Veltrani::FitSession::MeasuredUnit
