#include "Common/ExceptionCause.h"

#include <gtest/gtest.h>

#include <bitset>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <locale>
#include <map>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

namespace {

/// As other libraries have them.
struct ForeignFault : std::runtime_error {
    using std::runtime_error::runtime_error;
};

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
                      throw ForeignFault("line 3: B\xc3\xbchne");
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

/// The message of what a step throws.
std::wstring messageFrom(const std::function<void()>& step) {
    try {
        step();
    } catch (...) {
        return Veltrani::messageOf(std::current_exception());
    }
    return L"nothing was thrown";
}

TEST(ExceptionCause, NoTextOfTheRuntimeIsShown) {
    const std::wstring ours = L"a fault in the program itself: report it, with the files and the steps that lead to it";
    const std::vector<std::function<void()>> steps{
        [] { static_cast<void>(std::string().at(1)); },
        [] { static_cast<void>(std::vector<int>().at(1)); },
        [] { static_cast<void>(std::stoi("x")); },
        [] { static_cast<void>(std::bitset<80>().set().to_ulong()); },
        [] { static_cast<void>(std::optional<int>().value()); },
        [] { std::function<void()>()(); },
        [] { static_cast<void>(std::locale("no such locale")); },
        [] { static_cast<void>(std::map<int, int>().at(1)); },
        [] { static_cast<void>(std::get<0>(std::variant<int, char>('x'))); },
        [] { throw std::exception(); },
        [] { std::throw_with_nested(std::runtime_error("basic_thing::_M_part")); }};
    for (std::size_t i = 0; i < steps.size(); ++i) {
        EXPECT_EQ(messageFrom(steps[i]), ours) << "step " << i;
    }
}

TEST(ExceptionCause, AFaultOfTheSystemIsSaidInItsWords) {
    EXPECT_EQ(messageFrom([] {
                  std::ifstream memory("/proc/self/mem", std::ios::binary);  // cannot be read at its start
                  memory.rdbuf()->sbumpc();
              }),
              L"Input/output error");
    EXPECT_EQ(messageFrom([] { throw std::system_error(ENOSPC, std::generic_category(), "basic_filebuf::xsputn"); }),
              L"No space left on device");
    EXPECT_EQ(messageFrom([] { static_cast<void>(std::filesystem::file_size("/no/file")); }),
              L"/no/file: No such file or directory");
    EXPECT_EQ(messageFrom([] {
                  std::ifstream file("/no/file");
                  file.exceptions(std::ios::failbit);
              }),
              L"a file cannot be read or written");
}

TEST(ExceptionCause, AnotherLibrarysTextIsShown) {
    EXPECT_EQ(messageFrom([] { throw ForeignFault("std::size_t is too small for B\u00fchne"); }),
              L"std::size_t is too small for B\u00fchne");
    EXPECT_EQ(messageFrom([] { std::throw_with_nested(ForeignFault("basic_stringency")); }), L"basic_stringency");
}

TEST(ExceptionCause, MessagesAreForPeople) {
    EXPECT_EQ(Veltrani::messageOf(std::make_exception_ptr(VeltraniException("Screen.cpp", 7, L"no axis"))), L"no axis");
    EXPECT_EQ(Veltrani::messageOf(std::make_exception_ptr(7)), L"(...) No details");
}

TEST(ExceptionCause, TheNestedExceptionIsTheOneThatWasInFlight) {
    const auto cause = std::make_exception_ptr(7);
    EXPECT_EQ(Veltrani::nestedIn(carrying(cause)), cause);
    EXPECT_EQ(Veltrani::nestedIn(cause), nullptr);
}

}  // namespace
