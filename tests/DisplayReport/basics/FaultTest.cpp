#include "DisplayReport/basics/Fault.h"

#include "Common/VeltraniException.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <new>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Veltrani::DisplayReport::Fault;
using Veltrani::DisplayReport::faultOf;

TEST(Fault, TellsTheMessage) {
    const Fault fault = faultOf("screen", std::make_exception_ptr(VeltraniException(L"no B\u00fchne")));
    EXPECT_EQ(fault.where, "screen");
    EXPECT_EQ(fault.what, "no B\xc3\xbchne");
    EXPECT_THAT(fault.causes, IsEmpty());
}

TEST(Fault, KeepsPlacesInTheSourcesToItself) {
    EXPECT_EQ(faultOf("screen", std::make_exception_ptr(VeltraniException("Mesh.cpp", 75, L"no mesh"))).what,
              "no mesh");
}

TEST(Fault, TellsEveryNestedCauseOutermostFirst) {
    std::exception_ptr outer;
    try {
        try {
            try {
                throw VeltraniException(L"disk");
            } catch (...) {
                std::throw_with_nested(VeltraniException(L"line 3"));
            }
        } catch (...) {
            std::throw_with_nested(VeltraniMissingFileException(L"no screen"));
        }
    } catch (...) {
        outer = std::current_exception();
    }
    const Fault fault = faultOf("screen", outer);
    EXPECT_EQ(fault.what, "no screen");
    EXPECT_THAT(fault.causes, ElementsAre("line 3", "disk"));
}

TEST(Fault, TooLittleMemoryIsNone) {
    EXPECT_THROW(static_cast<void>(faultOf("screen", std::make_exception_ptr(std::bad_alloc()))), std::bad_alloc);
    try {
        try {
            throw std::bad_alloc();
        } catch (...) {
            std::throw_with_nested(VeltraniMissingFileException(L"no screen"));
        }
    } catch (...) {
        EXPECT_THROW(static_cast<void>(faultOf("screen", std::current_exception())), VeltraniMissingFileException);
    }
}

TEST(Fault, ToleratesAnythingThrown) {
    const Fault fault = faultOf("screen", std::make_exception_ptr(42));
    EXPECT_EQ(fault.what, "(...) No details");
    EXPECT_THAT(fault.causes, IsEmpty());
}

TEST(Fault, IsPrintedInOneLine) {
    EXPECT_EQ(testing::PrintToString(Fault{"channel Left", "no map", {"first", "second"}}),
              "channel Left: " + sentenceOf(Fault{"", "no map", {"first", "second"}}));
}

}  // namespace
