#include "KelvoScreen/ScreenShape.h"

#include "Configuration/BaseConfig.h"
#include "Configuration/IScreenConfig.h"
#include "KelvoScreen/CylinderScreen.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/RuledSurfaceScreen.h"
#include "KelvoScreen/SphericalScreen.h"

#include <algorithm>

namespace {

template <class Screen>
std::shared_ptr<ScreenGeometry> make(const IScreenConfig* screen) {
    return std::make_shared<Screen>(screen);
}

template <class Screen>
ScreenShape givenByNumbers(std::wstring_view name) {
    return {name, make<Screen>, Screen::calcUniqueDataHash};
}

ScreenShape readFromFile(std::wstring_view name) {
    return {name, nullptr, nullptr};
}

}  // namespace

std::span<const ScreenShape> ScreenShape::all() {
    static const std::array SHAPES{
        givenByNumbers<SphericalScreen>(BaseConfig::SHAPE_SPHERE),
        givenByNumbers<CylinderScreen>(BaseConfig::SHAPE_CYLINDER),
        givenByNumbers<RuledSurfaceScreen>(BaseConfig::SHAPE_RULED),
        givenByNumbers<FlatScreen>(BaseConfig::SHAPE_FLAT),
        readFromFile(BaseConfig::SHAPE_MESH),
    };
    return SHAPES;
}

const ScreenShape* ScreenShape::named(std::wstring_view name) {
    const std::span<const ScreenShape> shapes = all();
    const auto found =
        std::find_if(shapes.begin(), shapes.end(), [&](const ScreenShape& shape) { return shape.name == name; });
    return found == shapes.end() ? nullptr : &*found;
}

bool ScreenShape::isReadFromFile(const IScreenConfig* screen) {
    const ScreenShape* const shape = screen != nullptr ? named(screen->getShape()) : nullptr;
    return shape != nullptr && shape->isReadFromFile();
}
