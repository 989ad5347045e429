#include "Configuration/detail/DisplayFormat.h"

#include <algorithm>
#include <numbers>

namespace Veltrani {

namespace {

constexpr bool REQUIRED = true;
constexpr bool OPTIONAL = false;

// Attributes

constexpr AttributeRule DISPLAY_ATTRIBUTES[] = {{"version", ValueType::Version, REQUIRED}};
constexpr AttributeRule UNITS_ATTRIBUTES[] = {{"native", ValueType::NativeUnit, REQUIRED}};
constexpr AttributeRule POSITION_ATTRIBUTES[] = {
    {"x", ValueType::Length, REQUIRED}, {"y", ValueType::Length, REQUIRED}, {"z", ValueType::Length, REQUIRED}};
constexpr AttributeRule ORIENTATION_ATTRIBUTES[] = {
    {"z", ValueType::Angle, REQUIRED}, {"x", ValueType::Angle, REQUIRED}, {"y", ValueType::Angle, REQUIRED}};
constexpr AttributeRule RADIUS_ATTRIBUTES[] = {{"value", ValueType::PositiveLength, REQUIRED}};
constexpr AttributeRule FLAT_SIZE_ATTRIBUTES[] = {{"width", ValueType::PositiveLength, REQUIRED},
                                                  {"height", ValueType::PositiveLength, REQUIRED}};
constexpr AttributeRule CYLINDER_SIZE_ATTRIBUTES[] = {{"height", ValueType::PositiveLength, REQUIRED}};
// A round shape that states no limits is whole.
constexpr double HALF_TURN = std::numbers::pi;
constexpr double QUARTER_TURN = 0.5 * std::numbers::pi;
constexpr AttributeRule AZIMUTH_ATTRIBUTES[] = {{"min", ValueType::Angle, REQUIRED, -HALF_TURN},
                                                {"max", ValueType::Angle, REQUIRED, HALF_TURN}};
constexpr AttributeRule ELEVATION_ATTRIBUTES[] = {{"min", ValueType::Angle, REQUIRED, -QUARTER_TURN},
                                                  {"max", ValueType::Angle, REQUIRED, QUARTER_TURN}};
constexpr AttributeRule FILE_ATTRIBUTES[] = {{"file", ValueType::NonEmptyText, REQUIRED}};
constexpr AttributeRule IMPORT_ATTRIBUTES[] = {{"up", ValueType::Axis, REQUIRED},
                                               {"forward", ValueType::Axis, REQUIRED}};
constexpr AttributeRule SCREEN_ATTRIBUTES[] = {{"shape", ValueType::Shape, REQUIRED},
                                               {"fileUnit", ValueType::FileUnit, OPTIONAL},
                                               {"scale", ValueType::PositiveNumber, OPTIONAL}};
constexpr AttributeRule MIRROR_ATTRIBUTES[] = {{"radius", ValueType::PositiveLength, REQUIRED}};
constexpr AttributeRule PAIR_ATTRIBUTES[] = {{"measured", ValueType::Angle, REQUIRED},
                                             {"corrected", ValueType::Angle, REQUIRED}};
constexpr AttributeRule TARGET_DATA_ATTRIBUTES[] = {{"type", ValueType::TargetData, REQUIRED}};
constexpr AttributeRule RESOLUTION_ATTRIBUTES[] = {{"width", ValueType::PixelCount, REQUIRED},
                                                   {"height", ValueType::PixelCount, REQUIRED}};
constexpr AttributeRule POND_ATTRIBUTES[] = {{"sizes", ValueType::FourBytes, REQUIRED}};
constexpr AttributeRule MODEL_ATTRIBUTES[] = {{"name", ValueType::ModelName, REQUIRED},
                                              {"file", ValueType::NonEmptyText, OPTIONAL}};
constexpr AttributeRule FRUSTUM_ATTRIBUTES[] = {{"left", ValueType::Angle, REQUIRED},
                                                {"right", ValueType::Angle, REQUIRED},
                                                {"bottom", ValueType::Angle, REQUIRED},
                                                {"top", ValueType::Angle, REQUIRED}};
constexpr AttributeRule SCREEN_AREA_ATTRIBUTES[] = {{"left", ValueType::Number, OPTIONAL},
                                                    {"right", ValueType::Number, OPTIONAL},
                                                    {"bottom", ValueType::Number, OPTIONAL},
                                                    {"top", ValueType::Number, OPTIONAL}};
constexpr AttributeRule LAYOUT_ATTRIBUTES[] = {{"xMin", ValueType::Length, REQUIRED},
                                               {"xMax", ValueType::Length, REQUIRED},
                                               {"yMin", ValueType::Length, REQUIRED},
                                               {"yMax", ValueType::Length, REQUIRED}};
constexpr AttributeRule PROJECTOR_ATTRIBUTES[] = {{"id", ValueType::NonEmptyText, REQUIRED},
                                                  {"section", ValueType::NonEmptyText, OPTIONAL},
                                                  {"oldId", ValueType::Text, OPTIONAL}};

// Elements without children of their own. The order of the members: name, attributes, children, content.

constexpr ElementRule UNITS{"Units", UNITS_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule EYE_POINT{"EyePoint", POSITION_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule CENTRE{"Centre", POSITION_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule POSITION{"Position", POSITION_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule TARGET_POSITION{"TargetPosition", POSITION_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule POINT{"Point", POSITION_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule ORIENTATION{"Orientation", ORIENTATION_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule RADIUS{"Radius", RADIUS_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule FLAT_SIZE{"Size", FLAT_SIZE_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule CYLINDER_SIZE{"Size", CYLINDER_SIZE_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule AZIMUTH{"Azimuth", AZIMUTH_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule ELEVATION{"Elevation", ELEVATION_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule CONTENT_MESH{"ContentMesh", FILE_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule MEASURED_MESH{"MeasuredMesh", FILE_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule MODEL_CLOUD{"ModelCloud", FILE_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule IMPORT{"ImportOrientation", IMPORT_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule PAIR{"Pair", PAIR_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule NAME{"Name", {}, {}, ElementContent::Text, {}, {}};
constexpr ElementRule NOTE{"Note", {}, {}, ElementContent::Text, {}, {}};
constexpr ElementRule DEVICE{"Device", {}, {}, ElementContent::Anything, {}, {}};
constexpr ElementRule RESOLUTION{"Resolution", RESOLUTION_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule POND{"PondOfMirror", POND_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule CUSTOM_MAP{"CustomPlanarMap", FILE_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule MODEL{"ProjectionModel", MODEL_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule FRUSTUM{"Frustum", FRUSTUM_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule SCREEN_AREA{"ScreenArea", SCREEN_AREA_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};
constexpr ElementRule LAYOUT{"Layout", LAYOUT_ATTRIBUTES, {}, ElementContent::Elements, {}, {}};

// Elements with children: element, least, most.

constexpr ChildRule RAIL_CHILDREN[] = {{&POINT, 2, ANY_NUMBER}};
constexpr ElementRule LOWER_RAIL{"LowerRail", {}, RAIL_CHILDREN, ElementContent::Elements, {}, {}};
constexpr ElementRule UPPER_RAIL{"UpperRail", {}, RAIL_CHILDREN, ElementContent::Elements, {}, {}};

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
constexpr ElementRule SCREEN{"Screen", SCREEN_ATTRIBUTES, SCREEN_CHILDREN, ElementContent::Elements,
                             "shape",  SHAPE_VARIANTS};

constexpr ChildRule MIRROR_CHILDREN[] = {{&ORIENTATION, 0, 1}, {&POSITION, 0, 1}};
constexpr ElementRule MIRROR{"Mirror", MIRROR_ATTRIBUTES, MIRROR_CHILDREN, ElementContent::Elements, {}, {}};
constexpr ChildRule TABLE_CHILDREN[] = {{&PAIR, 2, ANY_NUMBER}};
constexpr ElementRule YAW_TABLE{"YawTable", {}, TABLE_CHILDREN, ElementContent::Elements, {}, {}};
constexpr ElementRule PITCH_TABLE{"PitchTable", {}, TABLE_CHILDREN, ElementContent::Elements, {}, {}};
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
constexpr ElementRule TARGET_DATA{"TargetData", TARGET_DATA_ATTRIBUTES, TARGET_DATA_CHILDREN, ElementContent::Elements,
                                  "type",       TARGET_DATA_VARIANTS};

constexpr ChildRule PROJECTOR_CHILDREN[] = {{&NAME, 0, 1},        {&DEVICE, 0, 1},     {&RESOLUTION, 0, 1},
                                            {&POND, 0, 1},        {&CUSTOM_MAP, 0, 1}, {&MODEL, 0, 1},
                                            {&ORIENTATION, 0, 1}, {&FRUSTUM, 0, 1},    {&POSITION, 0, 1},
                                            {&SCREEN_AREA, 0, 1}, {&LAYOUT, 0, 1},     {&NOTE, 0, 1}};
constexpr ElementRule PROJECTOR{"Projector", PROJECTOR_ATTRIBUTES, PROJECTOR_CHILDREN, ElementContent::Elements, {},
                                {}};
constexpr ChildRule PROJECTORS_CHILDREN[] = {{&PROJECTOR, 0, ANY_NUMBER}};
constexpr ElementRule PROJECTORS{"Projectors", {}, PROJECTORS_CHILDREN, ElementContent::Elements, {}, {}};

constexpr ChildRule DISPLAY_CHILDREN[] = {{&UNITS, 1, 1}, {&SCREEN, 0, 1}, {&TARGET_DATA, 0, 1}, {&PROJECTORS, 0, 1}};
constexpr ElementRule DISPLAY{"Display", DISPLAY_ATTRIBUTES, DISPLAY_CHILDREN, ElementContent::Elements, {}, {}};

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
    return holds(element, [](const AttributeRule& attribute) { return attribute.type == ValueType::Angle; });
}

const VariantRule* variantOf(const ElementRule& element, std::string_view selected) {
    for (const VariantRule& variant : element.variants) {
        if (variant.value == selected) {
            return &variant;
        }
    }
    return nullptr;
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

}  // namespace Veltrani
