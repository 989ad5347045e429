#include "Configuration/detail/MeaningChecker.h"

#include "Common/QuotedText.h"
#include "Configuration/ProjectorConfig.h"
#include "Configuration/detail/ValueRules.h"
#include "Configuration/detail/XmlNode.h"

#include <cstddef>
#include <map>
#include <optional>
#include <utility>

namespace Veltrani::ConfigurationDetail {

namespace {

/// Returns the axis without its direction.
std::string lineOfAxis(const std::string& axis) {
    return axis.starts_with('-') ? axis.substr(1) : axis;
}

std::string assignment(const char* name, const std::optional<std::string>& value) {
    return std::string(name) + "=" + inQuotes(value.value_or(""));
}

}  // namespace

void MeaningChecker::check(const xmlNode* root, FaultList& faults) {
    if (!Xml::isOwnElement(root, "Display")) {
        return;
    }
    MeaningChecker checker(ElementReader::ofDisplay(root), faults);
    if (const xmlNode* screen = Xml::child(root, "Screen")) {
        checker.checkScreen(screen);
    }
    const xmlNode* const targetData = Xml::child(root, "TargetData");
    checker.checkTable(Xml::child(targetData, "YawTable"));
    checker.checkTable(Xml::child(targetData, "PitchTable"));
    checker.checkIds(Xml::child(root, "Projectors"));
    for (const xmlNode* projector : Xml::children(Xml::child(root, "Projectors"), "Projector")) {
        checker.checkScreenArea(Xml::child(projector, "ScreenArea"));
    }
}

void MeaningChecker::checkScreen(const xmlNode* screen) {
    checkFileUnit(screen);
    checkImportOrientation(Xml::child(screen, "ImportOrientation"));
    checkAzimuth(Xml::child(screen, "Azimuth"));
    checkElevation(Xml::child(screen, "Elevation"));
    checkRails(screen);
}

void MeaningChecker::checkFileUnit(const xmlNode* screen) {
    const bool isCustom = m_reader.text(screen, "fileUnit") == "custom";
    const std::optional<std::string> scale = m_reader.text(screen, "scale");
    if (isCustom && !scale) {
        add(screen, "fileUnit=\"custom\" without a scale", "scale with the native units per unit of the files",
            "add scale=\"...\"");
    } else if (!isCustom && scale) {
        add(screen, assignment("scale", scale) + " without fileUnit=\"custom\"", "no scale: the unit has its own",
            "remove scale or set fileUnit=\"custom\"");
    }
}

void MeaningChecker::checkImportOrientation(const xmlNode* import) {
    const std::optional<std::string> up = m_reader.text(import, "up");
    const std::optional<std::string> forward = m_reader.text(import, "forward");
    if (up && forward && lineOfAxis(*up) == lineOfAxis(*forward)) {
        add(import, assignment("up", up) + " and " + assignment("forward", forward), "two axes that are not parallel",
            "name the file's own up and forward axes");
    }
}

void MeaningChecker::checkRange(const xmlNode* range) {
    const std::optional<double> min = m_reader.angle(range, "min");
    const std::optional<double> max = m_reader.angle(range, "max");
    if (min && max && !(*min < *max)) {
        add(range,
            assignment("min", m_reader.text(range, "min")) + " and " + assignment("max", m_reader.text(range, "max")),
            "min below max", "exchange or correct them");
    }
}

void MeaningChecker::checkAzimuth(const xmlNode* azimuth) {
    checkRange(azimuth);
    const double min = m_reader.angle(azimuth, "min").value_or(0.0);
    const double max = m_reader.angle(azimuth, "max").value_or(0.0);
    if (!isWithinOneTurn(min, max)) {
        add(azimuth,
            assignment("min", m_reader.text(azimuth, "min")) + " and " +
                assignment("max", m_reader.text(azimuth, "max")),
            "at most one full turn between them", "correct the limits or the angleUnit");
    }
}

void MeaningChecker::checkElevation(const xmlNode* elevation) {
    checkRange(elevation);
    for (const char* const limit : {"min", "max"}) {
        if (!isElevation(m_reader.angle(elevation, limit).value_or(0.0))) {
            add(elevation, assignment(limit, m_reader.text(elevation, limit)), "an elevation from -90 to 90 degrees",
                "correct the limit or the angleUnit");
        }
    }
}

void MeaningChecker::checkRails(const xmlNode* screen) {
    const xmlNode* const lower = Xml::child(screen, "LowerRail");
    const xmlNode* const upper = Xml::child(screen, "UpperRail");
    const std::size_t lowerCount = Xml::children(lower, "Point").size();
    const std::size_t upperCount = Xml::children(upper, "Point").size();
    if (lower != nullptr && upper != nullptr && lowerCount != upperCount) {
        add(upper, std::to_string(upperCount) + " points, and " + std::to_string(lowerCount) + " in <LowerRail>",
            "equally many points on both rails", "add or remove points: each pair of points spans one ruling");
    }
}

void MeaningChecker::checkTable(const xmlNode* table) {
    const xmlNode* previous = nullptr;
    for (const xmlNode* pair : Xml::children(table, "Pair")) {
        if (previous != nullptr) {
            checkIncreasing(pair, previous, "measured");
            checkIncreasing(pair, previous, "corrected");
        }
        previous = pair;
    }
}

void MeaningChecker::checkIncreasing(const xmlNode* pair, const xmlNode* previous, const char* attribute) {
    const std::optional<double> value = m_reader.angle(pair, attribute);
    const std::optional<double> before = m_reader.angle(previous, attribute);
    if (value && before && !(*before < *value)) {
        add(pair, assignment(attribute, m_reader.text(pair, attribute)),
            "more than the " + inQuotes(m_reader.text(previous, attribute).value_or("")) + " of the pair before",
            "put the pairs into increasing order");
    }
}

void MeaningChecker::checkIds(const xmlNode* projectors) {
    std::map<std::string, int> lineOfId;
    for (const xmlNode* projector : Xml::children(projectors, "Projector")) {
        const std::optional<std::string> id = m_reader.text(projector, "id");
        if (!id) {
            continue;
        }
        const auto [entry, isNew] = lineOfId.emplace(*id, Xml::lineOf(projector));
        if (!isNew) {
            add(projector, assignment("id", id) + " as at line " + std::to_string(entry->second),
                "an id that no other projector has", "give every projector its own id");
        }
    }
}

void MeaningChecker::checkScreenArea(const xmlNode* area) {
    for (const char* const bound : {"left", "right", "bottom", "top"}) {
        if (m_reader.number(area, bound) == ProjectorConfig::SCREEN_BOUND_NOT_CONFIGURED) {
            add(area, assignment(bound, m_reader.text(area, bound)),
                "another number: this one stands for a bound that is not configured",
                "leave the attribute out instead");
        }
    }
}

void MeaningChecker::add(const xmlNode* at, std::string found, std::string expected, std::string remedy) {
    m_faults.add(FaultList::Kind::MEANING, {Xml::lineOf(at), std::string(Xml::view(at->name)), std::move(found),
                                            std::move(expected), std::move(remedy)});
}

}  // namespace Veltrani::ConfigurationDetail
