#include "Configuration/detail/XmlDocument.h"

#include "Common/Utf8.h"
#include "Configuration/detail/XmlNode.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

namespace {

using Veltrani::ConfigurationDetail::FaultList;
using Veltrani::ConfigurationDetail::XmlDocument;

std::string faultOf(std::string_view text) {
    FaultList faults("t");
    const XmlDocument document = XmlDocument::parse(text, faults);
    EXPECT_EQ(document.root() == nullptr, !faults.empty());
    return Veltrani::toUtf8(faults.message());
}

std::string saved(std::string_view text) {
    FaultList faults("t");
    const XmlDocument document = XmlDocument::parse(text, faults);
    EXPECT_EQ(faults.message(), L"");
    return document.root() == nullptr ? std::string() : document.text();
}

TEST(XmlDocument, WritesWhatItRead) {
    const std::string text =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- before -->\n<?tool a?>\n<a xmlns:v=\"urn:v\" "
        "b=\"&lt;&amp;&quot; "
        "\u00e9\u20ac\">\n\t<v:c v:d=\"1\"/>text &amp; <![CDATA[<raw>]]>\n  <!-- in -->\n</a>\n<!-- behind -->\n";
    EXPECT_EQ(saved(text), text);
}

TEST(XmlDocument, NonAsciiTextIsNeverWrittenAsReferences) {
    EXPECT_EQ(saved("<a b=\"\u00e9\">\u20ac</a>"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a b=\"\u00e9\">\u20ac</a>\n");
}

TEST(XmlDocument, LineEndsAndQuotesAreNormalised) {
    EXPECT_EQ(saved("<a\r\n b='1'>\r\n</a>"), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a b=\"1\">\n</a>\n");
    EXPECT_EQ(saved("\xef\xbb\xbf<a></a>"), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<a/>\n");
}

TEST(XmlDocument, WhiteSpaceInValuesSurvives) {
    const std::string text = saved("<a b=\"1&#10;2&#9;3&#13;4\">5&#13;6</a>");
    FaultList faults("t");
    const XmlDocument again = XmlDocument::parse(text, faults);
    ASSERT_NE(again.root(), nullptr);
    EXPECT_EQ(Veltrani::ConfigurationDetail::Xml::attribute(again.root(), "b"), "1\n2\t3\r4");
    EXPECT_EQ(Veltrani::ConfigurationDetail::Xml::content(again.root()), "5\r6");
}

TEST(XmlDocument, BrokenXmlIsOneFaultWithItsLine) {
    EXPECT_EQ(
        faultOf("<a>\n<b>\n</a>"),
        "t:3: <b>: found broken XML (\"Opening and ending tag mismatch: b line 2 and a\"), expected a well-formed "
        "XML document; correct the text at this line or just before it");
    for (const char* text : {"x", "<", "<a", "<a>", "<a b>", "<a b=1>", "<a/><b/>", "<a/>x", "<a>&undefined;</a>",
                             "<a b=\"&undefined;\"/>", "<a>&#0;</a>", "<a>\x01</a>", "<a><![CDATA[</a>",
                             "<a b='1' b='2'/>", "<a><!-- -- --></a>", " <?xml version='1.0'?><a/>"}) {
        const std::string fault = faultOf(text);
        EXPECT_EQ(fault.rfind("t:1: <", 0), 0U) << text << ": " << fault;
        EXPECT_EQ(fault.find('\n'), std::string::npos) << fault;
    }
}

TEST(XmlDocument, UndeclaredPrefixesAreFaults) {
    EXPECT_NE(faultOf("<a><v:b/></a>").find("Namespace prefix v on b is not defined"), std::string::npos);
    EXPECT_NE(faultOf("<a v:b='1'/>").find("Namespace prefix v for b on a is not defined"), std::string::npos);
}

TEST(XmlDocument, BytesThatAreNoUtf8AreFaults) {
    EXPECT_EQ(faultOf(""), "t:1: <Display>: found an empty text, expected a <Display> document; start from an example");
    EXPECT_EQ(faultOf(std::string("<a>\n\0</a>", 9)),
              "t:2: <Display>: found a zero byte, expected text in UTF-8; save the file in the encoding UTF-8");
    EXPECT_EQ(
        faultOf("<a>\n\ncaf\xe9</a>"),
        "t:3: <Display>: found bytes that are not UTF-8, expected text in UTF-8; save the file in the encoding UTF-8");
    EXPECT_NE(faultOf(std::string("\xff\xfe<\0a\0/\0>\0", 10)), "");
}

TEST(XmlDocument, OtherEncodingsAndVersionsAreFaults) {
    EXPECT_EQ(
        faultOf("<?xml version='1.0' encoding='ISO-8859-1'?><a/>"),
        "t:1: <Display>: found encoding \"ISO-8859-1\", expected text in UTF-8; save the file in the encoding UTF-8");
    EXPECT_NE(faultOf("<?xml version='1.0' encoding='x-none'?><a/>").find("x-none"), std::string::npos);
    EXPECT_NE(faultOf("<?xml version='1.1'?><a/>").find("found XML version \"1.1\""), std::string::npos);
    EXPECT_EQ(faultOf("<?xml version='1.0' encoding='utf-8'?><a/>"), "");
}

TEST(XmlDocument, AnyDocumentTypeIsAFaultBeforeItIsRead) {
    const std::string expected =
        "t:2: <Display>: found a document type declaration (DOCTYPE \"a\"), expected a document without one; remove "
        "the "
        "declaration and write out what its entities stand for";
    EXPECT_EQ(faultOf("<?xml version='1.0'?>\n<!DOCTYPE a><a/>"), expected);
    EXPECT_EQ(faultOf("\n<!DOCTYPE a SYSTEM 'http://192.0.2.1/a.dtd'><a/>").find("t:"), 0U);
    EXPECT_EQ(faultOf("<!-- -->\n<!DOCTYPE a [<!ENTITY x SYSTEM 'file:///etc/hostname'>]><a>&x;</a>"), expected);
}

TEST(XmlDocument, AnEntityBombNeverGoesOff) {
    std::string bomb = "<!DOCTYPE a [<!ENTITY x0 \"xxxxxxxxxx\">";
    for (int i = 1; i < 20; ++i) {
        const std::string previous = "&x" + std::to_string(i - 1) + ";";
        bomb += "<!ENTITY x" + std::to_string(i) + " \"";
        for (int j = 0; j < 10; ++j) {
            bomb += previous;
        }
        bomb += "\">";
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_NE(faultOf(bomb + "]><a b=\"&x19;\">&x19;</a>").find("DOCTYPE"), std::string::npos);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
}

TEST(XmlDocument, DeepNestingIsOneFault) {
    std::string deep;
    for (int i = 0; i < 100000; ++i) {
        deep += "<a>";
    }
    const std::string fault = faultOf(deep);
    EXPECT_NE(fault.find("Excessive depth"), std::string::npos) << fault;
    EXPECT_EQ(fault.find('\n'), std::string::npos);
}

TEST(XmlDocument, ATagWithAMillionAttributesIsAFaultAtOnce) {
    std::string wide = "<a\n";
    for (int i = 0; i < 1000000; ++i) {
        wide += " b" + std::to_string(i) + "='1'";
    }
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(
        faultOf(wide + "/>"),
        "t:1: <Display>: found a tag with more than 256 attributes, expected at most that many; check that this is a "
        "display configuration");
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

TEST(XmlDocument, AHugeAttributeIsEitherReadOrAFault) {
    EXPECT_EQ(faultOf("<a b='" + std::string(5'000'000, 'x') + "'/>"), "");
    EXPECT_NE(faultOf("<a b='" + std::string(11'000'000, 'x') + "'/>"), "");
}

TEST(XmlDocument, ADocumentBeyondTheLimitIsAFault) {
    const std::string fault = faultOf("<a>" + std::string(XmlDocument::LARGEST_BYTES, ' ') + "</a>");
    EXPECT_EQ(fault,
              "t:1: <Display>: found 33554439 bytes, expected at most 33554432 bytes; check that this is a display "
              "configuration");
}

TEST(XmlDocument, ADocumentOfTheLargestSizeIsRead) {
    std::string text = "<a>";
    for (int i = 0; i < 3; ++i) {
        text += "<b>" + std::string(9'000'000, ' ') + "</b>";
    }
    text += std::string(XmlDocument::LARGEST_BYTES - text.size() - 4, ' ') + "</a>";
    ASSERT_EQ(text.size(), XmlDocument::LARGEST_BYTES);
    EXPECT_EQ(faultOf(text), "");
}

TEST(XmlDocument, LinesBeyond65535AreRight) {
    const std::string text = "<a>" + std::string(70000, '\n') + "<b/>x</a>";
    FaultList faults("t");
    const XmlDocument document = XmlDocument::parse(text, faults);
    ASSERT_NE(document.root(), nullptr);
    EXPECT_EQ(
        Veltrani::ConfigurationDetail::Xml::lineOf(Veltrani::ConfigurationDetail::Xml::child(document.root(), "b")),
        70001);
    EXPECT_EQ(faultOf("<a>" + std::string(70000, '\n') + "<b></a>").rfind("t:70001:", 0), 0U);
}

TEST(XmlDocument, NothingIsPrinted) {
    testing::internal::CaptureStderr();
    testing::internal::CaptureStdout();
    EXPECT_NE(faultOf("<a><b></a>"), "");
    EXPECT_NE(faultOf("<a><v:b/></a>"), "");
    EXPECT_EQ(faultOf("<a xmlns:v='relative'/>"), "");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
