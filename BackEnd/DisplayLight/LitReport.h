#pragma once

#include "DisplayLight/LitPicture.h"
#include "DisplayReport/basics/ReportHead.h"

#include <iosfwd>
#include <string>
#include <vector>

namespace Veltrani::DisplayLight {

/// The figures of a picture of added light.
class LitReport {
public:
    /// @param unit name of the native unit; empty where it is not known
    LitReport(const LitPicture& picture, std::string unit);

    /// The figures of places in words, a sentence each without a line end.
    [[nodiscard]] static std::vector<std::string> linesOf(const LitFigures& all, const LitDisplay& display,
                                                          const std::string& unit);

    /// For people.
    void writeText(std::ostream& out) const;
    /// For programs; the schema is docs/schemas/light.schema.json.
    /// @param sources the configuration, the files that it names, and the manifest
    void writeJson(const std::vector<DisplayReport::SourceFile>& sources, std::ostream& out) const;

private:
    const LitPicture& m_picture;
    LitFigures m_figures;
    std::string m_unit;
};

}  // namespace Veltrani::DisplayLight
