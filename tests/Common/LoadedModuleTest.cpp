#include "Common/LoadedModule.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "support/Sanitizers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>
#include <string>

namespace {

using testing::HasSubstr;
using testing::MatchesRegex;
using Veltrani::LoadedModule;
using Veltrani::toUtf8;

std::string refusalOf(const LoadedModule& module) {
    try {
        static_cast<void>(module.open());
    } catch (const VeltraniException& refusal) {
        return toUtf8(refusal.message);
    }
    return "opened";
}

TEST(LoadedModule, NamesThePathTheReasonAndTheRemedyOfAFileThatIsMissing) {
    EXPECT_THAT(refusalOf({"tests", "libNoSuchModule-0.1.so", "entry", "the packages of tests", 0}),
                MatchesRegex("Unable to open the module for tests /.*/libNoSuchModule-0\\.1\\.so: found .*No such file "
                             "or directory; expected the module of this version beside "
                             "libScreenManagerCommon\\.so[.0-9]* and the packages of tests; install ScreenManager "
                             "again, and the packages that it needs"));
}

// The library itself stands in for a module.
TEST(LoadedModule, NamesTheEntryThatIsMissing) {
    EXPECT_THAT(refusalOf({"tests", "libScreenManagerCommon.so", "no_such_entry", "nothing", 0}),
                HasSubstr("no_such_entry"));
}

TEST(LoadedModule, OpensTheFileBesideTheLibrary) {
    const LoadedModule module{"tests", "libScreenManagerCommon.so", "_ZN8Veltrani19requireAddressSpaceEm", "nothing",
                              1};
    void* const address = module.open();
    EXPECT_EQ(address, reinterpret_cast<void*>(&Veltrani::requireAddressSpace));
    EXPECT_EQ(module.open(), address) << "once more";
}

TEST(LoadedModule, IsNotOpenedWithoutRoomForIt) {
    if (IS_SANITIZED) {
        GTEST_SKIP() << "the address sanitizer has room of its own";
    }
    constexpr std::size_t MORE_THAN_ANY_PROCESS_HAS = std::size_t{1} << 50U;
    EXPECT_THROW(static_cast<void>(
                     LoadedModule{"tests", "libScreenManagerCommon.so", "x", "", MORE_THAN_ANY_PROCESS_HAS}.open()),
                 std::bad_alloc);
}

}  // namespace
