#include "Configuration/detail/XmlNode.h"

#include "Configuration/detail/XmlDocument.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::ConfigurationDetail::FaultList;
using Veltrani::ConfigurationDetail::XmlDocument;
namespace Xml = Veltrani::ConfigurationDetail::Xml;

XmlDocument parsed(std::string_view text) {
    FaultList faults("t");
    XmlDocument document = XmlDocument::parse(text, faults);
    EXPECT_EQ(faults.message(), L"");
    return document;
}

TEST(XmlNode, FindsOwnChildrenOnly) {
    const XmlDocument document = parsed("<a xmlns:v='urn:v'>x<v:b/><!-- --><b n='1'/><c/><b n='2'/></a>");
    EXPECT_EQ(Xml::attribute(Xml::child(document.root(), "b"), "n"), "1");
    EXPECT_EQ(Xml::children(document.root(), "b").size(), 2U);
    EXPECT_EQ(Xml::child(document.root(), "d"), nullptr);
    EXPECT_EQ(Xml::child(nullptr, "d"), nullptr);
    EXPECT_TRUE(Xml::children(nullptr, "d").empty());
}

TEST(XmlNode, ReadsOwnAttributesOnly) {
    const XmlDocument document = parsed("<a xmlns:v='urn:v' v:n='1' empty=''/>");
    EXPECT_EQ(Xml::attribute(document.root(), "n"), std::nullopt);
    EXPECT_EQ(Xml::attribute(document.root(), "empty"), "");
}

TEST(XmlNode, WritesTextAsItIs) {
    const XmlDocument document = parsed("<a b='1'>old<!-- old --></a>");
    Xml::setAttribute(document.root(), "b", "&amp; <\"\n");
    Xml::setContent(document.root(), "&lt; <b/> ]]>");
    const XmlDocument again = parsed(document.text());
    EXPECT_EQ(Xml::attribute(again.root(), "b"), "&amp; <\"\n");
    EXPECT_EQ(Xml::content(again.root()), "&lt; <b/> ]]>");
}

TEST(XmlNode, ContentJoinsTextAndSections) {
    const XmlDocument document = parsed("<a> x<!-- no -->&amp;<![CDATA[<y>]]> </a>");
    EXPECT_EQ(Xml::content(document.root()), " x&<y> ");
}

TEST(XmlNode, InnerXmlIsExact) {
    for (const char* inner :
         {"", " ", "text &amp; more", "<b c=\"1\"/>", "\n  <b>\n    <c/>\n  </b>\n", "<b/>x<c d=\"&quot;&#10;\"/>",
          "<![CDATA[<x>]]>", "<!-- note --><?p i?>", "<b n=\"\u00e9\">\u20ac</b>"}) {
        const XmlDocument document = parsed("<a>" + std::string(inner) + "</a>");
        EXPECT_EQ(Xml::innerXml(document.root()), inner);
    }
}

TEST(XmlNode, InnerXmlStandsOnItsOwn) {
    const XmlDocument document = parsed("<a xmlns:v='urn:v'><b v:c='1'/></a>");
    EXPECT_EQ(Xml::innerXml(document.root()), "<b xmlns:v=\"urn:v\" v:c=\"1\"/>");
}

TEST(XmlNode, InnerXmlIsTakenOver) {
    const XmlDocument target = parsed("<a>old<c/></a>");
    {
        const XmlDocument source = parsed("<x xmlns:v='urn:v'> <v:b d='1'/>text</x>");
        Xml::setInnerXml(target.root(), source.root());
    }
    EXPECT_EQ(Xml::innerXml(target.root()), " <v:b xmlns:v=\"urn:v\" d=\"1\"/>text");
}

TEST(XmlNode, CollectedChangesOfAttributesAreMadeAtOnce) {
    const XmlDocument document = parsed("<a xmlns:v='urn:v' v:b='0' b='1' c='2'/>");
    Xml::AttributeChanges changes;
    changes.set(document.root(), "c", "&amp; <\"");
    changes.set(document.root(), "new", "3");
    changes.set(document.root(), "b", "4");
    EXPECT_EQ(Xml::attribute(document.root(), "b"), "1");
    EXPECT_EQ(Xml::attribute(document.root(), "new"), std::nullopt);
    changes.apply();
    EXPECT_NE(document.text().find("<a xmlns:v=\"urn:v\" v:b=\"0\" b=\"4\" c=\"&amp;amp; &lt;&quot;\" new=\"3\"/>"),
              std::string::npos)
        << document.text();
    changes.apply();
    EXPECT_EQ(Xml::attribute(document.root(), "b"), "4");
}

TEST(XmlNode, ChangesThatAreNotMadeChangeNothing) {
    const XmlDocument document = parsed("<a b='1'/>");
    const std::string before = document.text();
    Xml::AttributeChanges().set(document.root(), "b", "2");
    EXPECT_EQ(document.text(), before);
}

TEST(XmlNode, RemovesAnAttribute) {
    const XmlDocument document = parsed("<a xmlns:v='urn:v' v:b='0' b='1' c='2'/>");
    Xml::removeAttribute(document.root(), "b");
    Xml::removeAttribute(document.root(), "none");
    EXPECT_NE(document.text().find("<a xmlns:v=\"urn:v\" v:b=\"0\" c=\"2\"/>"), std::string::npos);
}

TEST(XmlNode, FindsWhatIsOfOthersAtAnyDepth) {
    for (const char* text : {"<a/>", "<a b='1'><b/> \n<c d='2'><e/></c></a>", "<a xmlns:v='urn:v'/>"}) {
        EXPECT_FALSE(Xml::holdsForeign(parsed(text).root())) << text;
    }
    for (const char* text : {"<a xmlns:v='urn:v' v:b='1'/>", "<a><b><!-- --></b></a>", "<a><b>x</b></a>",
                             "<a><v:b xmlns:v='urn:v'/></a>", "<a><?b c?></a>", "<a><![CDATA[]]></a>"}) {
        EXPECT_TRUE(Xml::holdsForeign(parsed(text).root())) << text;
    }
}

}  // namespace
