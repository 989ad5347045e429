#pragma once

#include "KelvoScreen/ScreenGeometry.h"
#include "KelvoScreen/TriangleMesh.h"

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

/// One screen of each kind, by name; the shapes are small enough for rays to miss them.
namespace screenKinds {

/// A bumpy floor with a hole and a fold, 30 x 30 cells.
[[nodiscard]] TriangleMesh bumpyMesh();

[[nodiscard]] std::vector<std::pair<std::string, std::shared_ptr<ScreenGeometry>>> all();

/// Equal to the last bit: 0.0 and -0.0 differ.
[[nodiscard]] inline bool areSameBits(const Point<double, 3>& a, const Point<double, 3>& b) {
    return std::memcmp(&a, &b, sizeof a) == 0;
}

}  // namespace screenKinds
