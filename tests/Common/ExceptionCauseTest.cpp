#include "Common/ExceptionCause.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <string>

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

/// What `Veltrani::throwWithCause` makes of an exception: a fault of a file whose cause it is.
std::exception_ptr carrying(const std::exception_ptr& cause) {
    try {
        try {
            std::rethrow_exception(cause);
        } catch (...) {
            Veltrani::throwWithCause(VeltraniMissingFileException(L"Unable to load"));
        }
    } catch (...) {
        return std::current_exception();
    }
}

TEST(ExceptionCause, MemoryIsFoundHoweverDeepItLies) {
    for (const auto& fault :
         {std::make_exception_ptr(std::bad_alloc()), std::make_exception_ptr(std::bad_array_new_length()),
          std::make_exception_ptr(std::length_error("vector::_M_default_append"))}) {
        EXPECT_TRUE(Veltrani::isOutOfMemory(fault));
        EXPECT_TRUE(Veltrani::isOutOfMemory(carrying(fault)));
        EXPECT_TRUE(Veltrani::isOutOfMemory(carrying(carrying(fault))));
        EXPECT_EQ(Veltrani::messageOf(fault), L"not enough memory");
        EXPECT_EQ(Veltrani::messageOf(carrying(fault)), L"Unable to load") << "its own text stays";
    }
    EXPECT_FALSE(Veltrani::isOutOfMemory(nullptr));
    EXPECT_FALSE(Veltrani::isOutOfMemory(std::make_exception_ptr(7)));
    EXPECT_FALSE(Veltrani::isOutOfMemory(carrying(std::make_exception_ptr(std::runtime_error("disk")))));
}

TEST(ExceptionCause, TooLittleMemoryIsACauseInWords) {
    EXPECT_EQ(causeCaughtFrom([] { std::rethrow_exception(carrying(std::make_exception_ptr(std::bad_alloc()))); }),
              L"not enough memory");
}

TEST(ExceptionCause, MessagesAreForPeople) {
    EXPECT_EQ(Veltrani::messageOf(std::make_exception_ptr(VeltraniException("Screen.cpp", 7, L"no axis"))), L"no axis");
    EXPECT_EQ(Veltrani::messageOf(std::make_exception_ptr(std::runtime_error("B\u00fchne"))), L"B\u00fchne");
    EXPECT_EQ(Veltrani::messageOf(std::make_exception_ptr(7)), L"(...) No details");
    try {
        static_cast<void>(std::string().at(1));
    } catch (...) {
        EXPECT_EQ(Veltrani::messageOf(std::current_exception()), L"a fault in the program itself");
    }
    EXPECT_EQ(Veltrani::messageOf(std::make_exception_ptr(std::exception())), L"a fault in the program itself");
}

TEST(ExceptionCause, TheNestedExceptionIsTheOneThatWasInFlight) {
    const auto cause = std::make_exception_ptr(7);
    EXPECT_EQ(Veltrani::nestedIn(carrying(cause)), cause);
    EXPECT_EQ(Veltrani::nestedIn(cause), nullptr);
}

}  // namespace
