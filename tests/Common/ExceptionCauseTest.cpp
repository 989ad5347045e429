#include "Common/ExceptionCause.h"

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

namespace {

/// The cause that a handler of the general exception finds in what `step` throws.
std::wstring causeCaughtFrom(const std::function<void()>& step) {
    try {
        step();
    } catch (const VeltraniException& fault) {
        return Veltrani::causeOf(fault);
    }
    return L"nothing was thrown";
}

TEST(ExceptionCause, AFaultIsCaughtByItsOwnTypeWithItsMessageUnchanged) {
    try {
        Veltrani::throwWithCause(VeltraniMissingFileException(L"Unable to load"), L"permission denied");
    } catch (const VeltraniMissingFileException& fault) {
        EXPECT_EQ(fault.message, L"Unable to load");
        EXPECT_EQ(fault.fullDescription(), L"Unable to load");
        EXPECT_EQ(Veltrani::causeOf(fault), L"permission denied");
        return;
    }
    FAIL() << "caught by another type";
}

TEST(ExceptionCause, TheExceptionInFlightIsTheCause) {
    EXPECT_EQ(causeCaughtFrom([] {
                  try {
                      throw std::runtime_error("line 3: B\xc3\xbchne");
                  } catch (...) {
                      Veltrani::throwWithCause(VeltraniException(L"fault"));
                  }
              }),
              L"line 3: B\u00fchne");
}

TEST(ExceptionCause, ACauseOfTheSuiteIsDescribedWithItsLocation) {
    EXPECT_EQ(causeCaughtFrom([] {
                  try {
                      throw VeltraniException("Screen.cpp", 7, L"no axis");
                  } catch (...) {
                      Veltrani::throwWithCause(VeltraniException(L"fault"));
                  }
              }),
              L"no axis @ Screen.cpp:7");
}

TEST(ExceptionCause, AnythingCanBeACause) {
    EXPECT_EQ(causeCaughtFrom([] {
                  try {
                      throw 7;
                  } catch (...) {
                      Veltrani::throwWithCause(VeltraniException(L"fault"));
                  }
              }),
              L"(...) No details");
}

TEST(ExceptionCause, AFaultThrownPlainlyHasNone) {
    EXPECT_EQ(causeCaughtFrom([] { throw VeltraniException(L"fault"); }), L"");
}

TEST(ExceptionCause, AnEmptyTextIsNoCause) {
    EXPECT_EQ(causeCaughtFrom([] { Veltrani::throwWithCause(VeltraniException(L"fault"), L""); }), L"");
}

TEST(ExceptionCause, ACopyOfAFaultHasNone) {
    try {
        Veltrani::throwWithCause(VeltraniException(L"fault"), L"cause");
    } catch (const VeltraniException& fault) {
        const VeltraniException copy = fault;
        EXPECT_EQ(Veltrani::causeOf(fault), L"cause");
        EXPECT_EQ(Veltrani::causeOf(copy), L"");
    }
}

}  // namespace
