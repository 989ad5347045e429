#include "FitSession/MeasuredColumns.h"

#include "Common/QuotedText.h"
#include "DisplayReport/basics/TableReader.h"

#include <algorithm>

namespace Veltrani::FitSession {

namespace {

using DisplayReport::TableReader;

constexpr const char* WITH_COMMAS = "write commas between the columns, and decimal points";

bool hasOtherSeparators(const TableReader& table) {
    return table.text().find_first_of(";\t") != std::string::npos;
}

/// X, Y, Z are not x, y, z: the one are known, the other measured.
std::string columnName(const std::string& cell) {
    return cell == "X" || cell == "Y" || cell == "Z" ? cell : DisplayReport::inLowerCase(cell);
}

template <std::size_t N>
std::string listOf(const std::array<const char*, N>& names) {
    std::string text;
    for (const char* const name : names) {
        text += (text.empty() ? "" : ",") + std::string(name);
    }
    return text;
}

[[noreturn]] void refuseHeader(const TableReader& table, const std::string& expected, const std::string& remedy) {
    table.refuse(table.line(), inQuotes(table.text()), expected, {"header", remedy});
}

}  // namespace

MeasuredColumns::MeasuredColumns(const TableReader& table) {
    const auto cells = table.cells();
    if (!cells) {
        refuseHeader(table, "names of columns, quotes closed", "close the quotes around each name");
    }
    std::transform(cells->begin(), cells->end(), std::back_inserter(m_names), columnName);
    m_isTaken.resize(m_names.size());
    point = take<3>(table, {"x", "y", "z"});
    known = take<3>(table, {"X", "Y", "Z"});
    normalised = take<2>(table, {"u", "v"});
    pixels = take<2>(table, {"px", "py"});
    deviations = take<3>(table, {"sx", "sy", "sz"});
    covariance = take<6>(table, {"cxx", "cxy", "cxz", "cyy", "cyz", "czz"});
    pictureDeviation = take<1>(table, {"suv"});
    channel = take<1>(table, {"channel"});
    projector = take<1>(table, {"projector"});
    set = take<1>(table, {"set"});
    mapped = take<1>(table, {"mapped"});
    requireWhatIsNeeded(table);
}

template <std::size_t N>
MeasuredColumns::Places<N> MeasuredColumns::take(const TableReader& table, const std::array<const char*, N>& names) {
    std::array<std::size_t, N> places{};
    std::size_t found = 0;
    for (std::size_t i = 0; i < N; ++i) {
        const auto count = std::count(m_names.begin(), m_names.end(), names[i]);
        if (count > 1) {
            refuseHeader(table, "the column " + std::string(names[i]) + " once", "rename or remove the other one");
        }
        if (count == 1) {
            places[i] = static_cast<std::size_t>(std::find(m_names.begin(), m_names.end(), names[i]) - m_names.begin());
            m_isTaken[places[i]] = true;
            ++found;
        }
    }
    if (found == 0) {
        return std::nullopt;
    }
    if (found < N) {
        std::string missing;
        for (const char* const name : names) {
            if (std::find(m_names.begin(), m_names.end(), name) == m_names.end()) {
                missing += (missing.empty() ? "" : ", ") + std::string(name);
            }
        }
        refuseHeader(table, "all of the columns " + listOf(names) + " or none of them",
                     "add " + missing + ", or name that column so");
    }
    return places;
}

void MeasuredColumns::requireWhatIsNeeded(const TableReader& table) const {
    constexpr const char* NAMES = "name the columns in the first line, such as channel,u,v,x,y,z";
    if (m_names.size() == 1 && hasOtherSeparators(table)) {
        refuseHeader(table, "columns apart by commas", WITH_COMMAS);
    }
    if (!point) {
        refuseHeader(table, "the columns x,y,z of the places measured",
                     known ? "write x,y,z small: X,Y,Z are the places of control points" : NAMES);
    }
    if (!normalised && !pixels && !known) {
        refuseHeader(table, "the columns u,v or px,py of the places in the picture", NAMES);
    }
    if (normalised && pixels) {
        refuseHeader(table, "u,v or px,py, not both", "remove the one pair");
    }
    if (deviations && covariance) {
        refuseHeader(table, "sx,sy,sz or cxx,cxy,cxz,cyy,cyz,czz, not both", "remove the one group");
    }
    if (pictureDeviation && !normalised && !pixels) {
        refuseHeader(table, "u,v or px,py beside suv", "add the places in the picture, or remove suv");
    }
}

void MeasuredColumns::refuseRow(const TableReader& table) const {
    const auto cells = table.cells();
    std::string remedy = EXAMPLE;
    if (table.text().find_first_not_of(" \t") == table.text().find('#')) {
        remedy = "remove the line: remarks stand above the header";
    } else if (cells && cells->size() == 1 && hasOtherSeparators(table)) {
        remedy = WITH_COMMAS;
    } else if (cells && cells->size() > count()) {
        remedy = "write decimal points: commas part the columns";
    }
    table.refuse(table.line(), inQuotes(table.text()), std::to_string(count()) + " columns, as the header names them",
                 {"measurement", remedy});
}

std::string MeasuredColumns::describe(std::size_t place) const {
    return "column " + std::to_string(place + 1) + ", " + onOneLine(m_names[place]);
}

std::vector<std::string> MeasuredColumns::ignored() const {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < m_names.size(); ++i) {
        if (!m_isTaken[i] && !m_names[i].empty()) {
            names.push_back(m_names[i]);
        }
    }
    return names;
}

}  // namespace Veltrani::FitSession
