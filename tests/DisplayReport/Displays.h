#pragma once

#include "Configuration/XMLConfigFile.h"

#include <memory>
#include <string>

/// Small configurations for the tests of the display report.
namespace displays {

/// A configuration around a screen element and the projector elements.
inline std::string text(const std::string& screen, const std::string& projectors,
                        const std::string& targets = "<TargetData type='PlanarBasic'/>") {
    return "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/>" + screen + targets +
           "<Projectors>" + projectors + "</Projectors></Display>";
}

inline std::unique_ptr<XMLConfigFile> parsed(const std::string& screen, const std::string& projectors,
                                             const std::string& targets = "<TargetData type='PlanarBasic'/>") {
    return XMLConfigFile::parse(text(screen, projectors, targets), "display.xml");
}

/// Four metres wide and two high, around (0, 5, 1).
inline const std::string FLAT = "<Screen shape='Flat'><Centre x='0' y='5' z='1'/><Size width='4' height='2'/></Screen>";

/// A projector with further elements.
inline std::string projector(const std::string& id, const std::string& elements) {
    return "<Projector id='" + id + "'><Name>" + id + "</Name><Resolution width='1920' height='1200'/>" + elements +
           "</Projector>";
}

inline const std::string WHOLE_AREA = "<ScreenArea left='0' right='1' bottom='0' top='1'/>";

}  // namespace displays
