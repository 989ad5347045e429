#include "Common/FileFault.h"

#include "Common/VeltraniException.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace {

using Veltrani::contentOf;

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
                  Veltrani::throwFault("a.map", {7, "node", "\"x\"", "a number", "mend it"});
              }),
              L"a.map:7: node: found \"x\", expected a number; mend it");
    EXPECT_EQ(faultOf([] {
                  Veltrani::throwFault("two\nlines", {1, "e", "f", "g", "h"});
              }),
              L"two\\nlines:1: e: found f, expected g; h");
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
