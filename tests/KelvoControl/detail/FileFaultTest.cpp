#include "KelvoControl/detail/FileFault.h"

#include "Common/VeltraniException.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using KelvoControlDetail::contentOf;
using KelvoControlDetail::inQuotes;

template <class Step>
std::wstring faultOf(const Step& step) {
    try {
        step();
    } catch (const VeltraniParseException& fault) {
        return fault.message;
    }
    return {};
}

TEST(FileFault, IsToldOnOneLineFromPlaceToRemedy) {
    EXPECT_EQ(faultOf([] {
                  KelvoControlDetail::throwFault("a.map", {7, "node", "\"x\"", "a number", "mend it"});
              }),
              L"a.map:7: node: found \"x\", expected a number; mend it");
    EXPECT_EQ(faultOf([] {
                  KelvoControlDetail::throwFault("two\nlines", {1, "e", "f", "g", "h"});
              }),
              L"two\\x0alines:1: e: found f, expected g; h");
}

TEST(FileFault, QuotesAreCutBetweenCharactersAndSpellControlCharactersOut) {
    EXPECT_EQ(inQuotes("plain"), "\"plain\"");
    EXPECT_EQ(inQuotes("a\tb\x7F"), "\"a\\x09b\\x7f\"");
    EXPECT_EQ(inQuotes(std::string(60, 'a')), "\"" + std::string(60, 'a') + "\"");
    EXPECT_EQ(inQuotes(std::string(61, 'a')), "\"" + std::string(60, 'a') + "...\"");
    EXPECT_EQ(inQuotes(std::string(59, 'a') + "\xC3\xA4"), "\"" + std::string(59, 'a') + "...\"");
}

TEST(FileFault, ContentComesWithoutAByteOrderMarkAndWithinItsLimit) {
    const TemporaryFolder folder;
    EXPECT_EQ(contentOf(folder.write("marked", "\xEF\xBB\xBFtext"), 100), "text");
    EXPECT_EQ(contentOf(folder.write("full", "12345"), 5), "12345");
    const std::string large = folder.write("large", "123456");
    EXPECT_NE(faultOf([&] { static_cast<void>(contentOf(large, 5)); }).find(L"large:1: file: found more than 5 bytes"),
              std::wstring::npos);
    EXPECT_THROW(static_cast<void>(contentOf(folder.file("none"), 5)), VeltraniMissingFileException);
}

}  // namespace
