#include "Common/VeltraniException.h"
#include "KelvoControl/detail/BrownConradyDistortion.h"
#include "KelvoControl/detail/FisheyeDistortion.h"
#include "KelvoControl/detail/LensCalibration.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>

/// Any bytes are either read as a lens that answers every question or refused in one line that names the place.

namespace {

using Veltrani::KelvoControlDetail::BrownConradyDistortion;
using Veltrani::KelvoControlDetail::FisheyeDistortion;
using Veltrani::KelvoControlDetail::LensCalibration;
using Veltrani::KelvoControlDetail::LensFamily;
using P2 = Point<double, 2>;

void require(bool holds, const char* law) {
    if (!holds) {
        std::fprintf(stderr, "broken law: %s\n", law);
        std::abort();
    }
}

std::optional<LensCalibration> read(std::string_view text, LensFamily family) {
    try {
        return LensCalibration::parse(text, "lens", family);
    } catch (const VeltraniParseException& fault) {
        require(fault.message.compare(0, 5, L"lens:") == 0, "a refusal names its file");
        require(fault.message.find(L": found ") != std::wstring::npos, "a refusal says what was found");
        require(fault.message.find(L'\n') == std::wstring::npos && fault.message.size() < 600, "a refusal is one line");
        return std::nullopt;
    }
}

void requireSound(const LensCalibration& lens) {
    require(lens.imageWidth > 0 && lens.imageHeight > 0 && lens.fx > 0 && lens.fy > 0, "a lens has a picture");
    require(std::all_of(lens.distortion.begin(), lens.distortion.end(), [](double k) { return std::isfinite(k); }),
            "every coefficient is finite");
}

/// Whatever comes back is finite and leads to where it came from.
template <class Lens, class Plain>
void requireRoundTrip(const Lens& lens, const P2& distorted) {
    Plain plain;
    P2 again;
    if (!lens.undistort(distorted, plain)) {
        return;
    }
    require(std::isfinite(norm(plain)), "an undistorted point is finite");
    if (lens.distort(plain, again)) {
        require(norm(again - distorted) <= 1e-9 * (1 + norm(distorted)), "the way back leads back");
    }
}

template <class Lens, class Plain>
void question(const LensCalibration& calibration, const Lens& lens) {
    for (const double u : {0.0, 0.3, 0.5, 1.0}) {
        for (const double v : {0.0, 0.6, 1.0}) {
            requireRoundTrip<Lens, Plain>(lens, calibration.lensFromPicture({u, v}));
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    if (const auto lens = read(text, LensFamily::BrownConrady)) {
        requireSound(*lens);
        question<BrownConradyDistortion, P2>(*lens, BrownConradyDistortion(lens->distortion));
    }
    if (const auto lens = read(text, LensFamily::Fisheye)) {
        requireSound(*lens);
        const auto& k = lens->distortion;
        require(k.size() == 4, "a fisheye has four coefficients");
        question<FisheyeDistortion, Point<double, 3>>(*lens, FisheyeDistortion({k[0], k[1], k[2], k[3]}));
    }
    return 0;
}
