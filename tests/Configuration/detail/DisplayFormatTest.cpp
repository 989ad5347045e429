#include "Configuration/detail/DisplayFormat.h"

#include <gtest/gtest.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

namespace {

using Veltrani::ConfigurationDetail::ChildRule;
using Veltrani::ConfigurationDetail::ElementRule;
using Veltrani::ConfigurationDetail::VariantRule;

void visit(const ElementRule& rule, const std::function<void(const ElementRule&)>& action) {
    action(rule);
    for (const ChildRule& child : rule.children) {
        visit(*child.element, action);
    }
    for (const VariantRule& variant : rule.variants) {
        for (const ChildRule& child : variant.children) {
            visit(*child.element, action);
        }
    }
}

const ElementRule& ruleOf(const std::string& name) {
    const ElementRule* found = nullptr;
    visit(Veltrani::ConfigurationDetail::displayFormat(), [&](const ElementRule& rule) {
        if (rule.name == name) {
            found = &rule;
        }
    });
    return *found;
}

TEST(DisplayFormat, NoElementHasAnAttributeOrAChildTwice) {
    int elements = 0;
    visit(Veltrani::ConfigurationDetail::displayFormat(), [&](const ElementRule& rule) {
        ++elements;
        std::set<std::string_view> names{"lengthUnit", "angleUnit"};
        for (const auto& attribute : rule.attributes) {
            EXPECT_TRUE(names.insert(attribute.name).second) << rule.name << " " << attribute.name;
        }
        std::set<std::string_view> children;
        for (const ChildRule& child : rule.children) {
            EXPECT_TRUE(children.insert(child.element->name).second) << rule.name << " " << child.element->name;
        }
    });
    EXPECT_GT(elements, 40);
}

TEST(DisplayFormat, UnitsStandWhereSuchValuesAre) {
    for (const char* name : {"Display", "Screen", "EyePoint", "Size", "LowerRail", "TargetData", "Mirror", "Projectors",
                             "Projector", "Position", "Layout"}) {
        EXPECT_TRUE(Veltrani::ConfigurationDetail::holdsLengths(ruleOf(name))) << name;
    }
    for (const char* name : {"Display", "Screen", "Orientation", "Azimuth", "YawTable", "Pair", "Mirror", "Projectors",
                             "Projector", "Frustum"}) {
        EXPECT_TRUE(Veltrani::ConfigurationDetail::holdsAngles(ruleOf(name))) << name;
    }
    for (const char* name :
         {"Units", "Name", "Device", "Resolution", "ScreenArea", "ContentMesh", "ImportOrientation"}) {
        EXPECT_FALSE(Veltrani::ConfigurationDetail::holdsLengths(ruleOf(name))) << name;
        EXPECT_FALSE(Veltrani::ConfigurationDetail::holdsAngles(ruleOf(name))) << name;
    }
    EXPECT_FALSE(Veltrani::ConfigurationDetail::holdsLengths(ruleOf("Frustum")));
    EXPECT_FALSE(Veltrani::ConfigurationDetail::holdsAngles(ruleOf("Layout")));
}

TEST(DisplayFormat, EveryShapeAndKindOfTargetDataHasItsVariant) {
    for (const char* shape : {"Flat", "Sphere", "Cylinder", "Ruled", "Mesh"}) {
        EXPECT_NE(Veltrani::ConfigurationDetail::variantOf(ruleOf("Screen"), shape), nullptr) << shape;
    }
    for (const char* type : {"PlanarBasic", "PlanarAdvanced", "Spherical", "SphericalCollimated", "CustomPlanar",
                             "ProjectorCentric", "3D"}) {
        EXPECT_NE(Veltrani::ConfigurationDetail::variantOf(ruleOf("TargetData"), type), nullptr) << type;
    }
    EXPECT_EQ(Veltrani::ConfigurationDetail::variantOf(ruleOf("Screen"), ""), nullptr);
    EXPECT_EQ(Veltrani::ConfigurationDetail::variantOf(ruleOf("Screen"), "flat"), nullptr);
}

TEST(DisplayFormat, NewChildrenAreWrittenInTheOrderOfThePage) {
    using Names = std::vector<std::string_view>;
    const auto order = [](const char* element, const char* selected) {
        return Veltrani::ConfigurationDetail::writingOrder(ruleOf(element), selected);
    };
    EXPECT_EQ(order("Screen", "Sphere"), (Names{"EyePoint", "Centre", "Orientation", "Radius", "Azimuth", "Elevation",
                                                "MeasuredMesh", "ModelCloud", "ImportOrientation"}));
    EXPECT_EQ(order("TargetData", "3D"), (Names{"TargetPosition", "Mirror", "YawTable", "PitchTable"}));
    EXPECT_EQ(order("Mirror", ""), (Names{"Orientation", "Position"}));
    EXPECT_EQ(order("Projector", "").front(), "Name");
}

}  // namespace
