#include "Configuration/detail/DisplayFormat.h"

#include <algorithm>
#include <cstddef>
#include <numbers>

namespace Veltrani::ConfigurationDetail {

namespace {

constexpr bool REQUIRED = true;
constexpr bool OPTIONAL = false;

// Attributes

constexpr AttributeRule DISPLAY_ATTRIBUTES[] = {{"version", ValueType::VERSION, REQUIRED}};
constexpr AttributeRule UNITS_ATTRIBUTES[] = {{"native", ValueType::NATIVE_UNIT, REQUIRED}};
constexpr AttributeRule POSITION_ATTRIBUTES[] = {
    {"x", ValueType::LENGTH, REQUIRED}, {"y", ValueType::LENGTH, REQUIRED}, {"z", ValueType::LENGTH, REQUIRED}};
constexpr AttributeRule ORIENTATION_ATTRIBUTES[] = {
    {"z", ValueType::ANGLE, REQUIRED}, {"x", ValueType::ANGLE, REQUIRED}, {"y", ValueType::ANGLE, REQUIRED}};
constexpr AttributeRule RADIUS_ATTRIBUTES[] = {{"value", ValueType::POSITIVE_LENGTH, REQUIRED}};
constexpr AttributeRule FLAT_SIZE_ATTRIBUTES[] = {{"width", ValueType::POSITIVE_LENGTH, REQUIRED},
                                                  {"height", ValueType::POSITIVE_LENGTH, REQUIRED}};
constexpr AttributeRule CYLINDER_SIZE_ATTRIBUTES[] = {{"height", ValueType::POSITIVE_LENGTH, REQUIRED}};
// A round shape that states no limits is whole.
constexpr double HALF_TURN = std::numbers::pi;
constexpr double QUARTER_TURN = 0.5 * std::numbers::pi;
constexpr AttributeRule AZIMUTH_ATTRIBUTES[] = {{"min", ValueType::ANGLE, REQUIRED, -HALF_TURN},
                                                {"max", ValueType::ANGLE, REQUIRED, HALF_TURN}};
constexpr AttributeRule ELEVATION_ATTRIBUTES[] = {{"min", ValueType::ANGLE, REQUIRED, -QUARTER_TURN},
                                                  {"max", ValueType::ANGLE, REQUIRED, QUARTER_TURN}};
constexpr AttributeRule FILE_ATTRIBUTES[] = {{"file", ValueType::NON_EMPTY_TEXT, REQUIRED}};
constexpr AttributeRule IMPORT_ATTRIBUTES[] = {{"up", ValueType::AXIS, REQUIRED},
                                               {"forward", ValueType::AXIS, REQUIRED}};
constexpr AttributeRule SCREEN_ATTRIBUTES[] = {{"shape", ValueType::SHAPE, REQUIRED},
                                               {"fileUnit", ValueType::FILE_UNIT, OPTIONAL},
                                               {"scale", ValueType::POSITIVE_NUMBER, OPTIONAL},
                                               {"allow", ValueType::TEXT, OPTIONAL}};
constexpr AttributeRule MIRROR_ATTRIBUTES[] = {{"radius", ValueType::POSITIVE_LENGTH, REQUIRED}};
constexpr AttributeRule PAIR_ATTRIBUTES[] = {{"measured", ValueType::ANGLE, REQUIRED},
                                             {"corrected", ValueType::ANGLE, REQUIRED}};
constexpr AttributeRule TARGET_DATA_ATTRIBUTES[] = {{"type", ValueType::TARGET_DATA, REQUIRED}};
constexpr AttributeRule RESOLUTION_ATTRIBUTES[] = {{"width", ValueType::PIXEL_COUNT, REQUIRED},
                                                   {"height", ValueType::PIXEL_COUNT, REQUIRED}};
constexpr AttributeRule POND_ATTRIBUTES[] = {{"sizes", ValueType::FOUR_BYTES, REQUIRED}};
constexpr AttributeRule MODEL_ATTRIBUTES[] = {{"name", ValueType::MODEL_NAME, REQUIRED},
                                              {"file", ValueType::NON_EMPTY_TEXT, OPTIONAL}};
constexpr AttributeRule FRUSTUM_ATTRIBUTES[] = {{"left", ValueType::ANGLE, REQUIRED},
                                                {"right", ValueType::ANGLE, REQUIRED},
                                                {"bottom", ValueType::ANGLE, REQUIRED},
                                                {"top", ValueType::ANGLE, REQUIRED}};
constexpr AttributeRule SCREEN_AREA_ATTRIBUTES[] = {{"left", ValueType::NUMBER, OPTIONAL},
                                                    {"right", ValueType::NUMBER, OPTIONAL},
                                                    {"bottom", ValueType::NUMBER, OPTIONAL},
                                                    {"top", ValueType::NUMBER, OPTIONAL}};
constexpr AttributeRule LAYOUT_ATTRIBUTES[] = {{"xMin", ValueType::LENGTH, REQUIRED},
                                               {"xMax", ValueType::LENGTH, REQUIRED},
                                               {"yMin", ValueType::LENGTH, REQUIRED},
                                               {"yMax", ValueType::LENGTH, REQUIRED}};
constexpr AttributeRule PROJECTOR_ATTRIBUTES[] = {{"id", ValueType::NON_EMPTY_TEXT, REQUIRED},
                                                  {"section", ValueType::NON_EMPTY_TEXT, OPTIONAL},
                                                  {"oldId", ValueType::TEXT, OPTIONAL},
                                                  {"allow", ValueType::TEXT, OPTIONAL}};

// Elements without children of their own. The order of the members: name, attributes, children, content.

constexpr ElementRule UNITS{"Units", UNITS_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule EYE_POINT{"EyePoint", POSITION_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule CENTRE{"Centre", POSITION_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule POSITION{"Position", POSITION_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule TARGET_POSITION{"TargetPosition", POSITION_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule POINT{"Point", POSITION_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule ORIENTATION{"Orientation", ORIENTATION_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule RADIUS{"Radius", RADIUS_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule FLAT_SIZE{"Size", FLAT_SIZE_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule CYLINDER_SIZE{"Size", CYLINDER_SIZE_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule AZIMUTH{"Azimuth", AZIMUTH_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule ELEVATION{"Elevation", ELEVATION_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule CONTENT_MESH{"ContentMesh", FILE_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule MEASURED_MESH{"MeasuredMesh", FILE_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule MODEL_CLOUD{"ModelCloud", FILE_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule IMPORT{"ImportOrientation", IMPORT_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule PAIR{"Pair", PAIR_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule NAME{"Name", {}, {}, ElementContent::TEXT, {}, {}};
constexpr ElementRule NOTE{"Note", {}, {}, ElementContent::TEXT, {}, {}};
constexpr ElementRule DEVICE{"Device", {}, {}, ElementContent::ANYTHING, {}, {}};
constexpr ElementRule RESOLUTION{"Resolution", RESOLUTION_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule POND{"PondOfMirror", POND_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule CUSTOM_MAP{"CustomPlanarMap", FILE_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule MODEL{"ProjectionModel", MODEL_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule FRUSTUM{"Frustum", FRUSTUM_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule SCREEN_AREA{"ScreenArea", SCREEN_AREA_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule LAYOUT{"Layout", LAYOUT_ATTRIBUTES, {}, ElementContent::ELEMENTS, {}, {}};

// Elements with children: element, least, most.

constexpr ChildRule RAIL_CHILDREN[] = {{&POINT, 2, ANY_NUMBER}};
constexpr ElementRule LOWER_RAIL{"LowerRail", {}, RAIL_CHILDREN, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule UPPER_RAIL{"UpperRail", {}, RAIL_CHILDREN, ElementContent::ELEMENTS, {}, {}};

constexpr ChildRule SCREEN_CHILDREN[] = {
    {&EYE_POINT, 0, 1}, {&MEASURED_MESH, 0, 1}, {&MODEL_CLOUD, 0, 1}, {&IMPORT, 0, 1}};
constexpr ChildRule FLAT_CHILDREN[] = {{&CENTRE, 0, 1}, {&ORIENTATION, 0, 1}, {&FLAT_SIZE, 1, 1}};
constexpr ChildRule SPHERE_CHILDREN[] = {
    {&CENTRE, 0, 1}, {&ORIENTATION, 0, 1}, {&RADIUS, 1, 1}, {&AZIMUTH, 0, 1}, {&ELEVATION, 0, 1}};
constexpr ChildRule CYLINDER_CHILDREN[] = {
    {&CENTRE, 0, 1}, {&ORIENTATION, 0, 1}, {&RADIUS, 1, 1}, {&CYLINDER_SIZE, 1, 1}, {&AZIMUTH, 0, 1}};
constexpr ChildRule RULED_CHILDREN[] = {{&LOWER_RAIL, 1, 1}, {&UPPER_RAIL, 1, 1}};
constexpr ChildRule MESH_CHILDREN[] = {{&CONTENT_MESH, 0, ANY_NUMBER}};
constexpr VariantRule SHAPE_VARIANTS[] = {{"Flat", FLAT_CHILDREN},
                                          {"Sphere", SPHERE_CHILDREN},
                                          {"Cylinder", CYLINDER_CHILDREN},
                                          {"Ruled", RULED_CHILDREN},
                                          {"Mesh", MESH_CHILDREN}};
constexpr ElementRule SCREEN{"Screen", SCREEN_ATTRIBUTES, SCREEN_CHILDREN, ElementContent::ELEMENTS,
                             "shape",  SHAPE_VARIANTS};

constexpr ChildRule MIRROR_CHILDREN[] = {{&ORIENTATION, 0, 1}, {&POSITION, 0, 1}};
constexpr ElementRule MIRROR{"Mirror", MIRROR_ATTRIBUTES, MIRROR_CHILDREN, ElementContent::ELEMENTS, {}, {}};
constexpr ChildRule TABLE_CHILDREN[] = {{&PAIR, 2, ANY_NUMBER}};
constexpr ElementRule YAW_TABLE{"YawTable", {}, TABLE_CHILDREN, ElementContent::ELEMENTS, {}, {}};
constexpr ElementRule PITCH_TABLE{"PitchTable", {}, TABLE_CHILDREN, ElementContent::ELEMENTS, {}, {}};
constexpr ChildRule TARGET_DATA_CHILDREN[] = {{&TARGET_POSITION, 0, 1}, {&YAW_TABLE, 0, 1}, {&PITCH_TABLE, 0, 1}};
constexpr ChildRule COLLIMATED_CHILDREN[] = {{&MIRROR, 1, 1}};
constexpr ChildRule OTHER_TARGET_CHILDREN[] = {{&MIRROR, 0, 1}};
constexpr VariantRule TARGET_DATA_VARIANTS[] = {{"PlanarBasic", OTHER_TARGET_CHILDREN},
                                                {"PlanarAdvanced", OTHER_TARGET_CHILDREN},
                                                {"Spherical", OTHER_TARGET_CHILDREN},
                                                {"SphericalCollimated", COLLIMATED_CHILDREN},
                                                {"CustomPlanar", OTHER_TARGET_CHILDREN},
                                                {"ProjectorCentric", OTHER_TARGET_CHILDREN},
                                                {"3D", OTHER_TARGET_CHILDREN}};
constexpr ElementRule TARGET_DATA{"TargetData", TARGET_DATA_ATTRIBUTES, TARGET_DATA_CHILDREN, ElementContent::ELEMENTS,
                                  "type",       TARGET_DATA_VARIANTS};

constexpr ChildRule PROJECTOR_CHILDREN[] = {{&NAME, 0, 1},        {&DEVICE, 0, 1},     {&RESOLUTION, 0, 1},
                                            {&POND, 0, 1},        {&CUSTOM_MAP, 0, 1}, {&MODEL, 0, 1},
                                            {&ORIENTATION, 0, 1}, {&FRUSTUM, 0, 1},    {&POSITION, 0, 1},
                                            {&SCREEN_AREA, 0, 1}, {&LAYOUT, 0, 1},     {&NOTE, 0, 1}};
constexpr ElementRule PROJECTOR{"Projector", PROJECTOR_ATTRIBUTES, PROJECTOR_CHILDREN, ElementContent::ELEMENTS, {},
                                {}};
constexpr ChildRule PROJECTORS_CHILDREN[] = {{&PROJECTOR, 0, ANY_NUMBER}};
constexpr ElementRule PROJECTORS{"Projectors", {}, PROJECTORS_CHILDREN, ElementContent::ELEMENTS, {}, {}};

constexpr ChildRule DISPLAY_CHILDREN[] = {{&UNITS, 1, 1}, {&SCREEN, 0, 1}, {&TARGET_DATA, 0, 1}, {&PROJECTORS, 0, 1}};
constexpr ElementRule DISPLAY{"Display", DISPLAY_ATTRIBUTES, DISPLAY_CHILDREN, ElementContent::ELEMENTS, {}, {}};

template <class Predicate>
bool holds(const ElementRule& element, const Predicate& isWanted) {
    const auto inChild = [&](const ChildRule& child) { return holds(*child.element, isWanted); };
    const auto inVariant = [&](const VariantRule& variant) {
        return std::any_of(variant.children.begin(), variant.children.end(), inChild);
    };
    return std::any_of(element.attributes.begin(), element.attributes.end(), isWanted) ||
           std::any_of(element.children.begin(), element.children.end(), inChild) ||
           std::any_of(element.variants.begin(), element.variants.end(), inVariant);
}

}  // namespace

const ElementRule& displayFormat() {
    return DISPLAY;
}

bool holdsLengths(const ElementRule& element) {
    return holds(element, [](const AttributeRule& attribute) { return isLength(attribute.type); });
}

bool holdsAngles(const ElementRule& element) {
    return holds(element, [](const AttributeRule& attribute) { return attribute.type == ValueType::ANGLE; });
}

const VariantRule* variantOf(const ElementRule& element, std::string_view selected) {
    for (const VariantRule& variant : element.variants) {
        if (variant.value == selected) {
            return &variant;
        }
    }
    return nullptr;
}

std::vector<ChildRule> childrenOf(const ElementRule& element, std::string_view selected) {
    std::vector<ChildRule> children(element.children.begin(), element.children.end());
    if (const VariantRule* variant = variantOf(element, selected)) {
        children.insert(children.end(), variant->children.begin(), variant->children.end());
        return children;
    }
    for (const VariantRule& variant : element.variants) {
        for (const ChildRule& child : variant.children) {
            children.push_back({child.element, 0, ANY_NUMBER});
        }
    }
    return children;
}

std::vector<std::string_view> writingOrder(const ElementRule& element, std::string_view selected) {
    std::vector<std::string_view> names;
    for (const ChildRule& child : childrenOf(element, selected)) {
        names.push_back(child.element->name);
    }
    if (!element.variants.empty()) {
        const auto variant = names.begin() + static_cast<std::ptrdiff_t>(element.children.size());
        std::rotate(names.begin() + 1, variant, names.end());
    }
    return names;
}

std::span<const VariantRule> screenShapes() {
    return SHAPE_VARIANTS;
}

std::span<const VariantRule> targetDataTypes() {
    return TARGET_DATA_VARIANTS;
}

double withoutElement(std::string_view shape, std::string_view child, std::string_view attribute) {
    const VariantRule* const variant = variantOf(SCREEN, shape);
    const std::span<const ChildRule> children = variant != nullptr ? variant->children : std::span<const ChildRule>();
    for (const ChildRule& rule : children) {
        for (const AttributeRule& candidate : rule.element->attributes) {
            if (rule.element->name == child && candidate.name == attribute) {
                return candidate.withoutElement;
            }
        }
    }
    return 0.0;
}

}  // namespace Veltrani::ConfigurationDetail
