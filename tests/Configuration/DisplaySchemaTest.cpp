#include "Configuration/detail/FaultList.h"
#include "Configuration/detail/FormatChecker.h"
#include "Configuration/detail/XmlDocument.h"
#include "Configuration/detail/XmlNode.h"
#include "Samples.h"
#include "support/TestPaths.h"

#include <gtest/gtest.h>
#include <libxml/relaxng.h>

#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

/// The published schema and the program's own table say the same. Every sample is broken in one place at a time, and
/// each time a validator that knows nothing but the schema must come to the same verdict as the loader.
namespace {

using Veltrani::ConfigurationDetail::FaultList;
using Veltrani::ConfigurationDetail::FormatChecker;
using Veltrani::ConfigurationDetail::XmlDocument;
namespace Xml = Veltrani::ConfigurationDetail::Xml;

void ignoreError(void*, xmlErrorPtr) {}

class Schema {
public:
    Schema() {
        const std::unique_ptr<xmlRelaxNGParserCtxt, decltype(&xmlRelaxNGFreeParserCtxt)> parser(
            xmlRelaxNGNewParserCtxt((sourceFolder() + "/docs/display.rng").c_str()), xmlRelaxNGFreeParserCtxt);
        m_schema.reset(xmlRelaxNGParse(parser.get()));
        if (m_schema == nullptr) {
            throw std::runtime_error("the schema cannot be read");
        }
    }

    [[nodiscard]] bool accepts(const XmlDocument& document) const {
        const std::unique_ptr<xmlRelaxNGValidCtxt, decltype(&xmlRelaxNGFreeValidCtxt)> validator(
            xmlRelaxNGNewValidCtxt(m_schema.get()), xmlRelaxNGFreeValidCtxt);
        xmlRelaxNGSetValidStructuredErrors(validator.get(), ignoreError, nullptr);
        return xmlRelaxNGValidateDoc(validator.get(), document.root()->doc) == 0;
    }

private:
    std::unique_ptr<xmlRelaxNG, decltype(&xmlRelaxNGFree)> m_schema{nullptr, xmlRelaxNGFree};
};

struct Verdicts {
    int accepted = 0;
    int refused = 0;
};

class DisplaySchema : public testing::Test {
protected:
    /// Both verdicts on one document, which must be the same.
    void compare(const XmlDocument& document, const std::string& change) {
        FaultList faults("t");
        FormatChecker::check(document.root(), faults);
        const bool isAccepted = !faults.hasStructureFault();
        EXPECT_EQ(m_schema.accepts(document), isAccepted) << change << "\n" << document.text();
        ++(isAccepted ? m_verdicts.accepted : m_verdicts.refused);
    }

    /// Applies a change to the index-th own element of every sample, for every index, and compares the verdicts.
    void sweepElements(const std::string& change, const std::function<void(xmlNode*)>& apply) {
        for (const std::string& sample : validConfigurations()) {
            const std::size_t count = elementsOf(parsed(sample).root()).size();
            for (std::size_t i = 0; i < count; ++i) {
                const XmlDocument document = parsed(sample);
                xmlNode* const element = elementsOf(document.root())[i];
                const std::string where = change + " " + std::string(Xml::view(element->name));
                apply(element);
                compare(document, where);
            }
        }
    }

    /// As `sweepElements`, for every own attribute.
    void sweepAttributes(const std::string& change, const std::function<void(xmlNode*, const std::string&)>& apply) {
        for (const std::string& sample : validConfigurations()) {
            const std::size_t count = attributesOf(parsed(sample).root()).size();
            for (std::size_t i = 0; i < count; ++i) {
                const XmlDocument document = parsed(sample);
                const auto [element, name] = attributesOf(document.root())[i];
                const std::string where = change + " " + std::string(Xml::view(element->name)) + " " + name;
                apply(element, name);
                compare(document, where);
            }
        }
    }

    static XmlDocument parsed(const std::string& text) {
        FaultList faults("t");
        XmlDocument document = XmlDocument::parse(text, faults);
        faults.throwIfAny();
        return document;
    }

    static std::vector<xmlNode*> elementsOf(xmlNode* root) {
        std::vector<xmlNode*> elements{root};
        for (xmlNode* node = root->children; node != nullptr; node = node->next) {
            if (Xml::isOwnElement(node)) {
                const std::vector<xmlNode*> below = elementsOf(node);
                elements.insert(elements.end(), below.begin(), below.end());
            }
        }
        return elements;
    }

    static std::vector<std::pair<xmlNode*, std::string>> attributesOf(xmlNode* root) {
        std::vector<std::pair<xmlNode*, std::string>> attributes;
        for (xmlNode* element : elementsOf(root)) {
            for (const xmlAttr* attribute = element->properties; attribute != nullptr; attribute = attribute->next) {
                if (attribute->ns == nullptr) {
                    attributes.emplace_back(element, Xml::view(attribute->name));
                }
            }
        }
        return attributes;
    }

    /// The names from an element up to the root.
    static std::string placeOf(const xmlNode* element) {
        std::string place;
        for (const xmlNode* node = element; node->type == XML_ELEMENT_NODE; node = node->parent) {
            place += Xml::view(node->name);
            place += '/';
        }
        return place;
    }

    Schema m_schema;
    Verdicts m_verdicts;
};

TEST_F(DisplaySchema, EverySampleIsAccepted) {
    const auto samples = validConfigurations();
    ASSERT_GE(samples.size(), 8U);
    for (const std::string& sample : samples) {
        compare(parsed(sample), "nothing");
    }
    EXPECT_EQ(m_verdicts.accepted, static_cast<int>(samples.size()));
    EXPECT_EQ(m_verdicts.refused, 0);
}

TEST_F(DisplaySchema, ElementsDroppedDoubledAndRenamed) {
    sweepElements("drop", [](xmlNode* element) {
        if (element->parent->type == XML_ELEMENT_NODE) {
            xmlUnlinkNode(element);
            xmlFreeNode(element);
        }
    });
    sweepElements("double", [](xmlNode* element) {
        if (element->parent->type == XML_ELEMENT_NODE) {
            xmlAddNextSibling(element, xmlCopyNode(element, 1));
        }
    });
    sweepElements("rename", [](xmlNode* element) { xmlNodeSetName(element, Xml::chars("Other")); });
    EXPECT_GT(m_verdicts.accepted, 50);
    EXPECT_GT(m_verdicts.refused, 100);
}

TEST_F(DisplaySchema, ElementsInReverseOrder) {
    sweepElements("reverse the children of", [](xmlNode* element) {
        for (xmlNode* node = element->children; node != nullptr;) {
            xmlNode* const next = node->next;
            if (node->type == XML_ELEMENT_NODE) {
                xmlUnlinkNode(node);
                if (element->children == nullptr) {
                    xmlAddChild(element, node);
                } else {
                    xmlAddPrevSibling(element->children, node);
                }
            }
            node = next;
        }
    });
    EXPECT_GT(m_verdicts.accepted, 80);
    EXPECT_EQ(m_verdicts.refused, 0);
}

TEST_F(DisplaySchema, AnyElementAnywhere) {
    for (const char* xml : {"<EyePoint x='1' y='2' z='3'/>",
                            "<Point x='1' y='2' z='3'/>",
                            "<Orientation z='1' x='2' y='3'/>",
                            "<Radius value='1'/>",
                            "<Size width='1' height='1'/>",
                            "<Size height='1'/>",
                            "<Azimuth min='0' max='1'/>",
                            "<Elevation min='0' max='1'/>",
                            "<ContentMesh file='a'/>",
                            "<MeasuredMesh file='a'/>",
                            "<Mirror radius='1'/>",
                            "<Pair measured='1' corrected='2'/>",
                            "<Projector id='x'/>",
                            "<Units native='m'/>",
                            "<Name>x</Name>",
                            "<Device><any>x</any></Device>",
                            "<Layout xMin='0' xMax='1' yMin='0' yMax='1'/>",
                            "<Centre x='1' y='2' z='3'/>",
                            "<Position x='1' y='2' z='3'/>",
                            "<Projectors/>",
                            "<TargetPosition x='1' y='2' z='3'/>",
                            "<Other/>"}) {
        sweepElements(std::string("put ") + xml + " into", [&](xmlNode* element) {
            const XmlDocument added = parsed(xml);
            xmlAddChild(element, xmlDocCopyNode(added.root(), element->doc, 1));
        });
    }
    EXPECT_GT(m_verdicts.accepted, 80);
    EXPECT_GT(m_verdicts.refused, 1000);
}

TEST_F(DisplaySchema, TextAndForeignContentAnywhere) {
    sweepElements("put text into",
                  [](xmlNode* element) { xmlAddChild(element, xmlNewDocText(element->doc, Xml::chars("stray"))); });
    EXPECT_GT(m_verdicts.refused, 80);
    const int refusedText = m_verdicts.refused;
    sweepElements("put foreign content into", [](xmlNode* element) {
        const XmlDocument added =
            parsed("<v:x xmlns:v='urn:v' a='1' v:b='2'>text<Units/><v:y/><w:z xmlns:w='urn:w'>more</w:z></v:x>");
        xmlAddChild(element, xmlDocCopyNode(added.root(), element->doc, 1));
    });
    sweepElements("put a foreign attribute on", [](xmlNode* element) {
        xmlNs* const vendor = xmlNewNs(element, Xml::chars("urn:w"), Xml::chars("w"));
        xmlNewNsProp(element, vendor, Xml::chars("x"), Xml::chars("any thing"));
    });
    sweepElements("put comments into", [](xmlNode* element) {
        xmlAddChild(element, xmlNewDocComment(element->doc, Xml::chars("c")));
        xmlAddChild(element, xmlNewDocPI(element->doc, Xml::chars("p"), nullptr));
    });
    EXPECT_EQ(m_verdicts.refused, refusedText);
}

TEST_F(DisplaySchema, AttributesDroppedAndRenamed) {
    sweepAttributes("drop", [](xmlNode* element, const std::string& name) {
        xmlUnsetNsProp(element, nullptr, Xml::chars(name.c_str()));
    });
    sweepAttributes("rename", [](xmlNode* element, const std::string& name) {
        const std::string value = Xml::attribute(element, name.c_str()).value_or("");
        xmlUnsetNsProp(element, nullptr, Xml::chars(name.c_str()));
        Xml::setAttribute(element, "other", value);
    });
    EXPECT_GT(m_verdicts.accepted, 10);
    EXPECT_GT(m_verdicts.refused, 200);
}

TEST_F(DisplaySchema, EveryValueReplacedByEveryForm) {
    const std::vector<std::string> values{"",
                                          " ",
                                          "x",
                                          "0",
                                          "1",
                                          "-1",
                                          "+1",
                                          "00",
                                          "007",
                                          "1.5",
                                          "-1.5",
                                          "1,5",
                                          ".5",
                                          "5.",
                                          "0.0",
                                          "0.01",
                                          "1e5",
                                          "1E-5",
                                          "1e",
                                          "0e5",
                                          "1.5e+3",
                                          "-0",
                                          "-.5",
                                          "-",
                                          ".",
                                          "1 ",
                                          " 1",
                                          "1 2 3 4",
                                          " 1  2\t3 4 ",
                                          "1 2 3",
                                          "1 2 3 4 5",
                                          "0 255 256 1",
                                          "255 255 255 255",
                                          "01 002 0003 4",
                                          "nan",
                                          "INF",
                                          "inf",
                                          "0x10",
                                          "mm",
                                          "m",
                                          "custom",
                                          "yard",
                                          "deg",
                                          "rad",
                                          "Flat",
                                          "Sphere",
                                          "Cylinder",
                                          "Ruled",
                                          "Mesh",
                                          "Spherical",
                                          "SphericalCollimated",
                                          "3D",
                                          "X",
                                          "-Z",
                                          "z",
                                          "a:b",
                                          "a b",
                                          "1e999",
                                          "99999999999",
                                          "\xc3\xa9"};
    std::set<std::string> seen;
    for (const std::string& sample : validConfigurations()) {
        const XmlDocument document = parsed(sample);
        for (const auto& [element, name] : attributesOf(document.root())) {
            if (!seen.insert(placeOf(element) + name).second) {
                continue;
            }
            const std::string good = Xml::attribute(element, name.c_str()).value_or("");
            for (const std::string& value : values) {
                Xml::setAttribute(element, name.c_str(), value);
                compare(document, name + " set to \"" + value + "\"");
            }
            Xml::setAttribute(element, name.c_str(), good);
        }
    }
    EXPECT_GT(m_verdicts.accepted, 1000);
    EXPECT_GT(m_verdicts.refused, 3000);
}

TEST_F(DisplaySchema, AnyAttributeAnywhere) {
    for (const auto& [name, value] : std::vector<std::pair<const char*, const char*>>{{"lengthUnit", "m"},
                                                                                      {"angleUnit", "deg"},
                                                                                      {"id", "x"},
                                                                                      {"file", "x"},
                                                                                      {"scale", "2"},
                                                                                      {"fileUnit", "m"},
                                                                                      {"x", "1"},
                                                                                      {"value", "1"},
                                                                                      {"width", "1"},
                                                                                      {"radius", "1"},
                                                                                      {"version", "1"},
                                                                                      {"section", "x"},
                                                                                      {"oldId", ""},
                                                                                      {"allow", "x y"},
                                                                                      {"other", "1"}}) {
        sweepElements(std::string("put ") + name + " on",
                      [&, key = name, text = value](xmlNode* element) { Xml::setAttribute(element, key, text); });
    }
    EXPECT_GT(m_verdicts.accepted, 150);
    EXPECT_GT(m_verdicts.refused, 800);
}

}  // namespace
