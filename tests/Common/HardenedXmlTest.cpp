#include "Common/HardenedXml.h"

#include "support/Sanitizers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libxml/tree.h>
#include <libxml/xmlmemory.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#if SM_UNDER_ADDRESS_SANITIZER
#include <sanitizer/lsan_interface.h>
#endif

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Veltrani::HardenedXml;

/// Keeps every call in words.
class Record : public HardenedXml::Observer {
public:
    bool onFinding(const HardenedXml::Finding& finding) override {
        calls.push_back(std::to_string(finding.line) + " in <" + std::string(finding.element) + ">" +
                        (finding.isFatal ? " fatal" : "") + (finding.isOfNamespaces ? " namespace" : ""));
        return finding.isFatal;
    }
    void onDocumentType(int line, std::string_view name) override {
        calls.push_back(std::to_string(line) + " DOCTYPE " + std::string(name));
    }

    std::vector<std::string> calls;
};

std::vector<std::string> callsOf(const std::string& text) {
    Record record;
    static_cast<void>(HardenedXml::read(text, {}, record));
    return record.calls;
}

std::string firstFaultOf(const std::string& text, bool allowsUndeclaredPrefixes = false,
                         const HardenedXml::Options& options = {}) {
    HardenedXml::FirstFault fault(allowsUndeclaredPrefixes);
    static_cast<void>(HardenedXml::read(text, options, fault));
    return fault.text().empty() ? "" : std::to_string(fault.line()) + ": " + fault.text();
}

TEST(HardenedXml, ReadsATreeWithoutAWord) {
    Record record;
    const HardenedXml::Tree tree = HardenedXml::read("<a>\n<b c='1'/></a>", {}, record);
    ASSERT_NE(tree, nullptr);
    EXPECT_STREQ(reinterpret_cast<const char*>(xmlDocGetRootElement(tree.get())->name), "a");
    EXPECT_THAT(record.calls, IsEmpty());
}

TEST(HardenedXml, ReportsWhereATextBreaks) {
    EXPECT_THAT(callsOf("<a>\n<b></a>"), ElementsAre(HasSubstr("2 in <b> fatal"), testing::_));
    EXPECT_THAT(firstFaultOf("<a>\n<b></a>"), HasSubstr("2: Opening and ending tag mismatch: b line 2 and a"));
    EXPECT_EQ(firstFaultOf("<a/>"), "");
}

// A name that is not absolute is allowed, and warned of.
TEST(HardenedXml, WarningsAreNoFindings) {
    EXPECT_THAT(callsOf("<a xmlns='relative'/>"), IsEmpty());
    EXPECT_EQ(firstFaultOf("<a xmlns='relative'/>"), "");
}

TEST(HardenedXml, EndsWhereADocumentTypeBegins) {
    const std::string text = "<?xml version='1.0'?>\n<!DOCTYPE a [<!ENTITY b SYSTEM '/etc/passwd'>]>\n<a>&b;</a>";
    EXPECT_THAT(callsOf(text), ElementsAre("2 DOCTYPE a"));
    EXPECT_EQ(firstFaultOf(text), "2: a document type is not allowed");
}

TEST(HardenedXml, KnowsNoEntitiesButThoseOfXml) {
    EXPECT_EQ(firstFaultOf("<a>&amp;&lt;&gt;&apos;&quot;</a>"), "");
    EXPECT_THAT(firstFaultOf("<a>&b;</a>"), HasSubstr("1: Entity 'b' not defined"));
}

TEST(HardenedXml, AnUndeclaredPrefixIsAFaultUnlessItIsAllowed) {
    const std::string text = "<a>\n<b:c/></a>";
    EXPECT_THAT(callsOf(text), ElementsAre("2 in <a> namespace"));
    EXPECT_THAT(firstFaultOf(text), HasSubstr("2: Namespace prefix b on c is not defined"));
    EXPECT_EQ(firstFaultOf(text, true), "");
}

TEST(HardenedXml, AnEncodingThatIsDeclaredCountsUnlessTheTextIsUtf8) {
    const std::string text = "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA4</a>";
    const auto contentOf = [&](bool isUtf8) {
        Record record;
        const HardenedXml::Tree tree = HardenedXml::read(text, {.isUtf8 = isUtf8}, record);
        return std::string(reinterpret_cast<const char*>(xmlDocGetRootElement(tree.get())->children->content));
    };
    EXPECT_EQ(contentOf(true), "\xC3\xA4");
    EXPECT_EQ(contentOf(false), "\xC3\x83\xC2\xA4");
}

TEST(HardenedXml, LinesCountBeyondThoseThatTheTreeKeepsOfElements) {
    const std::string text = "<a>" + std::string(70000, '\n') + "<b/></a>";
    Record record;
    const auto lineOfLast = [&](bool hasElementLines) {
        const HardenedXml::Tree tree = HardenedXml::read(text, {.hasElementLines = hasElementLines}, record);
        return reinterpret_cast<std::intptr_t>(xmlDocGetRootElement(tree.get())->last->_private);
    };
    EXPECT_EQ(lineOfLast(true), 70001);
    EXPECT_EQ(lineOfLast(false), 0);
    EXPECT_THAT(firstFaultOf("<a>" + std::string(70000, '\n') + "<b></a>"), HasSubstr("70001: "));
}

TEST(HardenedXml, TheLimitsOfTheParserHold) {
    std::string deep;
    for (int i = 0; i < 300; ++i) {
        deep += "<a>";
    }
    EXPECT_THAT(firstFaultOf(deep), HasSubstr("1: Excessive depth in document: 256"));
}

/// Lets one allocation of the parser fail; the first is number 0.
class ParserFault {
public:
    explicit ParserFault(int number) {
        s_countdown = number;
        xmlMemGet(&m_free, &m_allocate, &m_reallocate, &m_copy);
        xmlMemSetup(
            m_free, [](std::size_t size) { return fails() ? nullptr : std::malloc(size); },
            [](void* memory, std::size_t size) { return fails() ? nullptr : std::realloc(memory, size); },
            [](const char* text) { return fails() ? nullptr : ::strdup(text); });
    }
    ~ParserFault() { xmlMemSetup(m_free, m_allocate, m_reallocate, m_copy); }
    ParserFault(const ParserFault&) = delete;
    ParserFault& operator=(const ParserFault&) = delete;

    [[nodiscard]] static bool happened() { return s_countdown < 0; }

private:
    static bool fails() { return s_countdown-- == 0; }

    inline static int s_countdown = 0;
    xmlFreeFunc m_free = nullptr;
    xmlMallocFunc m_allocate = nullptr;
    xmlReallocFunc m_reallocate = nullptr;
    xmlStrdupFunc m_copy = nullptr;
#if SM_UNDER_ADDRESS_SANITIZER
    /// The parser loses a buffer that it finds no memory to enlarge.
    __lsan::ScopedDisabler m_lost;
#endif
};

// Nothing is wrong with the text, and nothing of it may be missing.
TEST(HardenedXml, MemoryThatRunsOutIsNoFaultOfTheText) {
    const std::string value(20000, 'x');
    const std::string text = "<a b='" + value + "&lt;'>" + value + "&amp;" + value + "</a>";
    testing::internal::CaptureStderr();
    int refused = 0;
    for (bool isWhole = false; !isWhole; ++refused) {
        Record record;
        const ParserFault fault(refused);
        try {
            const HardenedXml::Tree tree = HardenedXml::read(text, {}, record);
            isWhole = !ParserFault::happened();
            EXPECT_TRUE(isWhole) << "allocation " << refused << " failed unnoticed";
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(ParserFault::happened());
        }
        EXPECT_THAT(record.calls, IsEmpty()) << refused;
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    EXPECT_GT(refused, 20);
}

TEST(HardenedXml, PrintsNothing) {
    testing::internal::CaptureStderr();
    EXPECT_NE(firstFaultOf("<a b='<'>&c;</d>"), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

}  // namespace
