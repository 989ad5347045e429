#include "DisplayOfTwelve.h"

#include <string>

std::unique_ptr<XMLConfigFile> displayOfTwelve() {
    std::string text =
        "<Display version='1' lengthUnit='m' angleUnit='deg'><Units native='m'/><Screen shape='Sphere'>"
        "<Centre x='0' y='0' z='0'/><EyePoint x='0' y='0' z='0'/><Radius value='5'/></Screen>"
        "<TargetData type='ProjectorCentric'/><Projectors>";
    for (int i = 0; i < CHANNELS; ++i) {
        const bool isAbove = i >= 8;
        text += "<Projector id='P" + std::to_string(i) + "'><Resolution width='1920' height='1200'/><Position x='" +
                std::to_string(0.1 * (i % 3)) + "' y='" + std::to_string(0.1 * (i % 4)) +
                "' z='0.1'/><Orientation z='" + std::to_string(isAbove ? 90 * i : 45 * i) + "' x='" +
                (isAbove ? "45" : "0") + "' y='0'/><Frustum left='-28' right='28' bottom='-28' top='28'/></Projector>";
    }
    return XMLConfigFile::parse(text + "</Projectors></Display>", "benchmark.xml");
}
