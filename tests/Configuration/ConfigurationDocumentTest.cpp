#include "Configuration/detail/DisplayFormat.h"
#include "Samples.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

/// What the reference page says is true: its examples can be read, and it names every element and attribute there is.
namespace {

using Veltrani::ConfigurationDetail::ChildRule;
using Veltrani::ConfigurationDetail::ElementRule;
using Veltrani::ConfigurationDetail::VariantRule;

std::string page() {
    std::ifstream in(sourceFolder() + "/docs/configuration.md", std::ios::binary);
    if (!in) {
        throw std::runtime_error("the page cannot be read");
    }
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

/// The blocks of XML that hold an element.
std::vector<std::string> blocksWith(const std::string& element) {
    static const std::string BEGIN = "```xml\n";
    const std::string text = page();
    std::vector<std::string> found;
    for (std::size_t at = text.find(BEGIN); at != std::string::npos; at = text.find(BEGIN, at)) {
        at += BEGIN.size();
        const std::string block = text.substr(at, text.find("```", at) - at);
        if (block.find('<' + element) != std::string::npos) {
            found.push_back(block);
        }
    }
    return found;
}

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

TEST(ConfigurationDocument, ItsExamplesCanBeRead) {
    const std::vector<std::string> examples = blocksWith("Display ");
    ASSERT_EQ(examples.size(), 4U);
    for (const std::string& example : examples) {
        EXPECT_THAT(faultsOf(example), testing::IsEmpty());
    }
}

// An editor finds the schema of a document by the name of its root; another name would be passed over in silence.
TEST(ConfigurationDocument, ItsRulesForAnEditorNameTheRootOfAConfiguration) {
    const std::vector<std::string> rules = blocksWith("locatingRules");
    ASSERT_EQ(rules.size(), 1U);
    const std::string root(Veltrani::ConfigurationDetail::displayFormat().name);
    EXPECT_THAT(rules[0], testing::HasSubstr("<documentElement localName=\"" + root + "\" uri=\"display.rnc\"/>"));
    EXPECT_THAT(page(), testing::HasSubstr("trang display.rng display.rnc"));
}

TEST(ConfigurationDocument, NamesEveryElementAndAttribute) {
    const std::string text = page();
    visit(Veltrani::ConfigurationDetail::displayFormat(), [&](const ElementRule& rule) {
        EXPECT_NE(text.find(std::string("`<").append(rule.name).append(">`")), std::string::npos) << rule.name;
        for (const auto& attribute : rule.attributes) {
            EXPECT_NE(text.find(std::string("`").append(attribute.name).append("`")), std::string::npos)
                << attribute.name;
        }
    });
}

}  // namespace
