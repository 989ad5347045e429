#pragma once

#include "KelvoScreen/MeshOracle.h"
#include "KelvoScreen/RoundOracle.h"
#include "KelvoScreen/ScreenGeometry.h"

#include <functional>
#include <string>
#include <vector>

/// Rays at a round screen in every situation that is hard on the arithmetic.
namespace roundrays {

struct Situation {
    std::string name;
    std::function<Ray(const ScreenConfigDouble&, const oracle::RoundOracle&, oracle::Random&)> ray;
};

[[nodiscard]] const std::vector<Situation>& situations();

/// The same shape, larger or smaller by a factor, centre included.
[[nodiscard]] ScreenConfigDouble scaled(ScreenConfigDouble config, double factor);

/// Shoots `count` rays of every situation at the screen and expects every answer, limited and whole, to agree with the
/// oracle; and that some rays of each situation hit.
void expectAgreement(const ScreenGeometry& screen, const ScreenConfigDouble& config, int count);

}  // namespace roundrays
