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

/// A sphere of five metres around the origin.
inline const std::string SPHERE =
    "<Screen shape='Sphere'><Radius value='5'/><Azimuth min='-180' max='180'/><Elevation min='-90' max='90'/></Screen>";

/// A map file: the picture of a channel of 1920 x 1200 pixels shows the whole screen.
inline const std::string WHOLE_MAP =
    "2\n2 2\n-1.6 -1 0 0 1\n1.6 -1 1 0 1\n-1.6 1 0 1 1\n1.6 1 1 1 1\npixels 1920 1200\n";

}  // namespace displays
