#include "DisplayExport/RenderConvention.h"

#include <array>
#include <utility>

namespace Veltrani::DisplayExport {

namespace {

template <class Value, std::size_t N>
using Names = std::array<std::pair<const char*, Value>, N>;

constexpr Names<RenderConvention::Depth, 3> DEPTHS{{{"opengl", RenderConvention::Depth::OPENGL},
                                                    {"direct3d", RenderConvention::Depth::DIRECT3D},
                                                    {"reversed-z", RenderConvention::Depth::REVERSED_Z}}};
constexpr Names<RenderConvention::World, 2> WORLDS{
    {{"z-up", RenderConvention::World::Z_UP}, {"y-up", RenderConvention::World::Y_UP}}};
constexpr Names<RenderConvention::Handed, 2> HANDS{
    {{"right", RenderConvention::Handed::RIGHT}, {"left", RenderConvention::Handed::LEFT}}};

template <class Value, std::size_t N>
std::optional<Value> named(const Names<Value, N>& names, const std::string& name) {
    for (const auto& [known, value] : names) {
        if (name == known) {
            return value;
        }
    }
    return std::nullopt;
}

template <class Value, std::size_t N>
std::string nameIn(const Names<Value, N>& names, Value wanted) {
    for (const auto& [name, value] : names) {
        if (value == wanted) {
            return name;
        }
    }
    return {};
}

template <class Value, std::size_t N>
std::vector<std::string> listOf(const Names<Value, N>& names) {
    std::vector<std::string> list;
    list.reserve(N);
    for (const auto& [name, value] : names) {
        list.emplace_back(name);
    }
    return list;
}

}  // namespace

std::optional<RenderConvention::Depth> RenderConvention::depthOf(const std::string& name) {
    return named(DEPTHS, name);
}

std::optional<RenderConvention::World> RenderConvention::worldOf(const std::string& name) {
    return named(WORLDS, name);
}

std::optional<RenderConvention::Handed> RenderConvention::handedOf(const std::string& name) {
    return named(HANDS, name);
}

std::string RenderConvention::nameOf(Depth depth) {
    return nameIn(DEPTHS, depth);
}

std::string RenderConvention::nameOf(World world) {
    return nameIn(WORLDS, world);
}

std::string RenderConvention::nameOf(Handed handed) {
    return nameIn(HANDS, handed);
}

std::vector<std::string> RenderConvention::depthNames() {
    return listOf(DEPTHS);
}

std::vector<std::string> RenderConvention::worldNames() {
    return listOf(WORLDS);
}

std::vector<std::string> RenderConvention::handedNames() {
    return listOf(HANDS);
}

Matrix<double, 3> RenderConvention::engineFromWorld() const {
    constexpr Point<double, 3> RIGHTWARD{1.0, 0.0, 0.0};
    constexpr Point<double, 3> AHEAD{0.0, 1.0, 0.0};
    constexpr Point<double, 3> ABOVE{0.0, 0.0, 1.0};
    const bool isRightHanded = handed == Handed::RIGHT;
    std::array<Point<double, 3>, 3> rows{RIGHTWARD, AHEAD, ABOVE};
    if (world == World::Y_UP) {
        rows = {RIGHTWARD, ABOVE, isRightHanded ? -AHEAD : AHEAD};
    } else if (!isRightHanded) {
        rows = {AHEAD, RIGHTWARD, ABOVE};
    }
    Matrix<double, 3> matrix;
    for (std::size_t r = 0; r < 3; ++r) {
        for (std::size_t c = 0; c < 3; ++c) {
            // No zero with a sign, which would be written as one.
            matrix(r, c) = rows[r][c] + 0.0;
        }
    }
    return matrix;
}

}  // namespace Veltrani::DisplayExport
