#include "DisplayReport/check/Rule.h"

#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>

namespace {

using namespace Veltrani::DisplayReport;
using testing::HasSubstr;

TEST(Rule, EachHasANameOfItsOwnAndAReason) {
    std::set<std::string_view> names;
    for (const Rule& rule : Rule::all()) {
        EXPECT_TRUE(names.insert(rule.name).second) << rule.name;
        EXPECT_FALSE(rule.reason.empty()) << rule.name;
        EXPECT_LE(rule.least, rule.most) << rule.name;
        EXPECT_EQ(&Rule::named(rule.name), &rule);
    }
}

TEST(Rule, FaultsCannotBeAllowed) {
    EXPECT_FALSE(Rule::canBeAllowed("same-device"));
    EXPECT_TRUE(Rule::canBeAllowed("same-name"));
    EXPECT_TRUE(Rule::canBeAllowed("dark-parts"));
    EXPECT_FALSE(Rule::canBeAllowed("same-nam"));
    EXPECT_FALSE(Rule::canBeAllowed(""));
    EXPECT_THAT(Rule::namesToAllow(), HasSubstr("same-name, "));
    EXPECT_THAT(Rule::namesToAllow(), testing::Not(HasSubstr("same-device")));
}

TEST(Rule, EachIsDescribedWithItsSeverity) {
    std::ifstream file(sourceFolder() + "/docs/plausibility.md");
    std::ostringstream page;
    page << file.rdbuf();
    for (const Rule& rule : Rule::all()) {
        EXPECT_THAT(page.str(),
                    HasSubstr("\n| `" + std::string(rule.name) + "` | " + std::string(nameOf(rule.severity)) + " | "));
    }
}

}  // namespace
