#include "DisplayBlend/BlendCurve.h"

#include "Common/DecimalText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <sstream>

namespace Veltrani::DisplayBlend {

namespace {

constexpr double LEAST_GAMMA = 0.2;
constexpr double GREATEST_GAMMA = 5.0;

constexpr double SRGB_EXPONENT = 2.4;
constexpr double SRGB_OFFSET = 0.055;
constexpr double SRGB_SLOPE = 12.92;
/// The code value up to which the curve of sRGB is a line.
constexpr double SRGB_LINE = 0.04045;

constexpr const char* SRGB = "srgb";

[[noreturn]] void refuse(const std::string& found) {
    throw VeltraniException(__FILE__, __LINE__,
                            L"The gamma of a blend is \"" + fromUtf8OrBytes(found) +
                                L"\": expected a number from 0.2 to 5, 1 for linear, or srgb");
}

std::string textOf(double gamma) {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << gamma;
    return text.str();
}

}  // namespace

BlendCurve BlendCurve::ofGamma(double gamma) {
    if (!(gamma >= LEAST_GAMMA && gamma <= GREATEST_GAMMA)) {
        refuse(textOf(gamma));
    }
    return BlendCurve(gamma);
}

BlendCurve BlendCurve::srgb() {
    return BlendCurve(0.0);
}

BlendCurve BlendCurve::named(const std::string& utf8Name) {
    if (utf8Name == SRGB) {
        return srgb();
    }
    const std::optional<double> gamma = parseFinite(utf8Name);
    if (!gamma || !(*gamma >= LEAST_GAMMA && *gamma <= GREATEST_GAMMA)) {
        refuse(utf8Name);
    }
    return BlendCurve(*gamma);
}

double BlendCurve::lightOf(double code) const {
    code = std::clamp(code, 0.0, 1.0);
    if (m_gamma > 0.0) {
        return std::pow(code, m_gamma);
    }
    return code <= SRGB_LINE ? code / SRGB_SLOPE : std::pow((code + SRGB_OFFSET) / (1 + SRGB_OFFSET), SRGB_EXPONENT);
}

double BlendCurve::codeOf(double light) const {
    light = std::clamp(light, 0.0, 1.0);
    if (light == 1.0) {
        // White is white, whatever the factors of a curve round to.
        return 1.0;
    }
    if (m_gamma > 0.0) {
        return std::pow(light, 1 / m_gamma);
    }
    return light <= SRGB_LINE / SRGB_SLOPE ? light * SRGB_SLOPE
                                           : (1 + SRGB_OFFSET) * std::pow(light, 1 / SRGB_EXPONENT) - SRGB_OFFSET;
}

std::string BlendCurve::name() const {
    return m_gamma > 0.0 ? textOf(m_gamma) : SRGB;
}

}  // namespace Veltrani::DisplayBlend
