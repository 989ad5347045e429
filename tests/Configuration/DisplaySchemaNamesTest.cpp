#include "Common/Utf8.h"
#include "Configuration/BaseConfig.h"
#include "Configuration/detail/DisplayFormat.h"
#include "Configuration/detail/FaultList.h"
#include "Configuration/detail/XmlDocument.h"
#include "Configuration/detail/XmlNode.h"
#include "Samples.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

/// Every element, attribute, shape and type of the program's own table stands in the published schema and in a sample,
/// and the schema has no others. What is missing is named: "Projector/Note" is a child, "Note@text" an attribute,
/// "Screen@shape=Cone" a choice.
namespace {

using testing::IsEmpty;
using Veltrani::ConfigurationDetail::ChildRule;
using Veltrani::ConfigurationDetail::ElementRule;
using Veltrani::ConfigurationDetail::FaultList;
using Veltrani::ConfigurationDetail::VariantRule;
using Veltrani::ConfigurationDetail::XmlDocument;
namespace Xml = Veltrani::ConfigurationDetail::Xml;

using Names = std::set<std::string>;

constexpr const char* LENGTH_UNIT = "lengthUnit";
constexpr const char* ANGLE_UNIT = "angleUnit";

Names without(const Names& names, const Names& others) {
    Names rest;
    std::set_difference(names.begin(), names.end(), others.begin(), others.end(), std::inserter(rest, rest.end()));
    return rest;
}

XmlDocument parsed(const std::string& text) {
    FaultList faults("t");
    XmlDocument document = XmlDocument::parse(text, faults);
    faults.throwIfAny();
    return document;
}

void addChildren(const ElementRule& rule, std::span<const ChildRule> children, Names& names);

void addElement(const ElementRule& rule, Names& names) {
    const std::string name(rule.name);
    for (const auto& attribute : rule.attributes) {
        names.insert(name + "@" + std::string(attribute.name));
    }
    addChildren(rule, rule.children, names);
    for (const VariantRule& variant : rule.variants) {
        names.insert(name + "@" + std::string(rule.selector) + "=" + std::string(variant.value));
        addChildren(rule, variant.children, names);
    }
}

void addChildren(const ElementRule& rule, std::span<const ChildRule> children, Names& names) {
    for (const ChildRule& child : children) {
        names.insert(std::string(rule.name) + "/" + std::string(child.element->name));
        addElement(*child.element, names);
    }
}

Names namesOfTheFormat() {
    Names names;
    addElement(Veltrani::ConfigurationDetail::displayFormat(), names);
    return names;
}

/// The attributes that say which of several forms an element has.
bool isSelector(const std::string& attribute) {
    return attribute == "shape" || attribute == "type";
}

void addSample(const xmlNode* element, Names& names) {
    const std::string name(Xml::view(element->name));
    for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
        if (attribute->ns == nullptr) {
            const std::string key(Xml::view(attribute->name));
            names.insert(name + "@" + key);
            if (isSelector(key)) {
                names.insert(name + "@" + key + "=" + Xml::attribute(element, key.c_str()).value_or(""));
            }
        }
    }
    for (const xmlNode* child = element->children; child != nullptr; child = child->next) {
        if (Xml::isOwnElement(child)) {
            names.insert(name + "/" + std::string(Xml::view(child->name)));
            addSample(child, names);
        }
    }
}

Names namesOfTheSamples() {
    Names names;
    for (const std::string& sample : validConfigurations()) {
        addSample(parsed(sample).root(), names);
    }
    return names;
}

/// The names in a RELAX NG schema, found by following its references; not by asking what it accepts.
class SchemaNames {
public:
    explicit SchemaNames(const std::string& text) : m_schema(parsed(text)) {
        const xmlNode* start = nullptr;
        for (const xmlNode* node = m_schema.root()->children; node != nullptr; node = node->next) {
            if (is(node, "define")) {
                m_definitions[attribute(node, "name")] = node;
            } else if (is(node, "start")) {
                start = node;
            }
        }
        addBelow(start, {}, {});
    }

    [[nodiscard]] const Names& names() const { return m_names; }

private:
    static bool is(const xmlNode* node, const char* name) {
        return node->type == XML_ELEMENT_NODE && Xml::view(node->name) == name;
    }
    static std::string attribute(const xmlNode* node, const char* name) {
        return Xml::attribute(node, name).value_or("");
    }

    /// @param element the element whose content this is; empty outside
    /// @param attributeName the attribute whose values these are; empty outside
    void addBelow(const xmlNode* parent, const std::string& element, const std::string& attributeName) {
        for (const xmlNode* node = parent->children; node != nullptr; node = node->next) {
            const std::string name = node->type == XML_ELEMENT_NODE ? attribute(node, "name") : std::string();
            if (is(node, "ref")) {
                addBelow(m_definitions.at(name), element, attributeName);
            } else if (is(node, "element")) {
                addElement(node, element, name);
            } else if (is(node, "attribute") && !name.empty()) {
                m_names.insert(element + "@" + name);
                addBelow(node, element, name);
            } else if (is(node, "value") && isSelector(attributeName)) {
                m_names.insert(element + "@" + attributeName + "=" + std::string(Xml::view(node->children->content)));
            } else if (node->type == XML_ELEMENT_NODE) {
                addBelow(node, element, attributeName);
            }
        }
    }

    /// Elements without a name are those of others.
    void addElement(const xmlNode* node, const std::string& parent, const std::string& name) {
        if (name.empty()) {
            return;
        }
        if (!parent.empty()) {
            m_names.insert(parent + "/" + name);
        }
        if (m_visited.insert(node).second) {
            addBelow(node, name, {});
        }
    }

    XmlDocument m_schema;
    std::map<std::string, const xmlNode*> m_definitions;
    std::set<const xmlNode*> m_visited;
    Names m_names;
};

Names namesOfTheSchema() {
    std::ifstream file(sourceFolder() + "/docs/display.rng");
    std::ostringstream text;
    text << file.rdbuf();
    Names names = SchemaNames(text.str()).names();
    // The table has the two units apart from its rows: they may stand on everything that holds such a value.
    std::erase_if(names, [](const std::string& name) {
        return name.ends_with(std::string("@") + LENGTH_UNIT) || name.ends_with(std::string("@") + ANGLE_UNIT);
    });
    return names;
}

TEST(DisplaySchemaNames, TheSchemaHasEverythingOfTheFormat) {
    EXPECT_THAT(without(namesOfTheFormat(), namesOfTheSchema()), IsEmpty()) << "missing in docs/display.rng";
}

TEST(DisplaySchemaNames, TheFormatHasEverythingOfTheSchema) {
    EXPECT_THAT(without(namesOfTheSchema(), namesOfTheFormat()), IsEmpty()) << "missing in DisplayFormat.cpp";
}

TEST(DisplaySchemaNames, TheSamplesHaveEverythingOfTheFormat) {
    const Names format = namesOfTheFormat();
    EXPECT_GT(format.size(), 100U);
    EXPECT_THAT(without(format, namesOfTheSamples()), IsEmpty()) << "in no sample of Samples.cpp";
}

TEST(DisplaySchemaNames, TheNamesThatProgramsUseAreThoseOfTheFormat) {
    const auto namesOf = [](std::span<const VariantRule> variants) {
        Names names;
        for (const VariantRule& variant : variants) {
            EXPECT_TRUE(names.emplace(variant.value).second) << variant.value << " stands there twice";
        }
        return names;
    };
    const Names shapes = namesOf(Veltrani::ConfigurationDetail::screenShapes());
    for (const std::wstring& shape : {BaseConfig::SHAPE_SPHERE, BaseConfig::SHAPE_CYLINDER, BaseConfig::SHAPE_RULED,
                                      BaseConfig::SHAPE_FLAT, BaseConfig::SHAPE_MESH}) {
        EXPECT_EQ(shapes.count(Veltrani::toUtf8(shape)), 1U) << Veltrani::toUtf8(shape);
    }
    const Names types = namesOf(Veltrani::ConfigurationDetail::targetDataTypes());
    for (const std::wstring& type : {BaseConfig::TARGET_DATA_PLANAR_BASIC, BaseConfig::TARGET_DATA_PLANAR_ADVANCED,
                                     BaseConfig::TARGET_DATA_SPHERICAL, BaseConfig::TARGET_DATA_SPHERICAL_COLLIMATED,
                                     BaseConfig::TARGET_DATA_CUSTOM_PLANAR, BaseConfig::TARGET_DATA_PROJECTOR_CENTRIC,
                                     BaseConfig::TARGET_DATA_3D}) {
        EXPECT_EQ(types.count(Veltrani::toUtf8(type)), 1U) << Veltrani::toUtf8(type);
    }
}

TEST(DisplaySchemaNames, ARoundShapeWithoutLimitsIsWhole) {
    int limited = 0;
    for (const VariantRule& shape : Veltrani::ConfigurationDetail::screenShapes()) {
        for (const ChildRule& child : shape.children) {
            for (const auto& limit : child.element->attributes) {
                if (limit.type == Veltrani::ConfigurationDetail::ValueType::ANGLE && child.minimum == 0 &&
                    (limit.name == "min" || limit.name == "max")) {
                    EXPECT_NE(
                        Veltrani::ConfigurationDetail::withoutElement(shape.value, child.element->name, limit.name),
                        0.0)
                        << shape.value << " would read " << child.element->name << " " << limit.name << " as 0";
                    ++limited;
                }
            }
        }
    }
    EXPECT_GE(limited, 6);
    EXPECT_EQ(Veltrani::ConfigurationDetail::withoutElement("Flat", "Azimuth", "min"), 0.0);
}

}  // namespace
