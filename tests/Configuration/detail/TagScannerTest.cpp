#include "Configuration/detail/XmlDocument.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace {

using Veltrani::ConfigurationDetail::lineOfOverfullTag;

TEST(TagScanner, NothingToFind) {
    for (const char* text : {"", "no tag", "<", "<a", "<a b=\"", "<a b='x'/>", "<!--", "<![CDATA[", "<?", "</a>"}) {
        EXPECT_EQ(lineOfOverfullTag(text, 1), 0) << text;
    }
}

TEST(TagScanner, CountsTheAttributesOfOneTag) {
    EXPECT_EQ(lineOfOverfullTag("<a b='1' c='2'><d e='3' f='4'/></a>", 2), 0);
    EXPECT_EQ(lineOfOverfullTag("<a b='1' c='2'>\n<d e='3'\nf='4' g=\"5\"/></a>", 2), 2);
}

TEST(TagScanner, AValueMayHoldAnything) {
    EXPECT_EQ(lineOfOverfullTag("<a b='>\"<' c=\"'>'\">", 2), 0);
    EXPECT_EQ(lineOfOverfullTag("<a b='>\"<' c=\"'>'\">", 1), 1);
}

TEST(TagScanner, PassesOverWhatIsNoTag) {
    EXPECT_EQ(lineOfOverfullTag("<!-- <a b='1' c='2'> --><?p <a b='1' c='2'> ?><a><![CDATA[<a b='1' c='2'>]]></a>", 1),
              0);
    EXPECT_EQ(lineOfOverfullTag("<!-- x -->\n<?p?>\n<![CDATA[x]]>\n<a b='1' c='2'>", 1), 4);
}

TEST(TagScanner, IsLinear) {
    std::string text;
    for (int i = 0; i < 500000; ++i) {
        text += "<a b='1'><!-- x -->";
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(lineOfOverfullTag(text, 1), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
