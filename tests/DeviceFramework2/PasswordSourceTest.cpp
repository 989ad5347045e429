#include "DeviceFramework2/PasswordSource.h"

#include "DeviceTesting.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <initializer_list>
#include <string_view>

namespace {

using device_testing::Environment;
using device_testing::faultOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::Optional;
using Veltrani::DeviceFramework2::PasswordSource;

class PasswordSourceTest : public testing::Test {
protected:
    std::string privateFile(const std::string& content) const {
        std::string path = folder.write("passwords", content);
        ::chmod(path.c_str(), 0600);
        return path;
    }

    TemporaryFolder folder;
    PasswordSource source{"SM_TEST_PASSWORD", "SM_TEST_PASSWORD_FILE"};
    const std::wstring uid = L"020000000001";
};

TEST_F(PasswordSourceTest, HasNoneWhenNothingIsSet) {
    EXPECT_EQ(source.find(uid), std::nullopt);
    const Environment empty("SM_TEST_PASSWORD", "");
    EXPECT_EQ(source.find(uid), std::nullopt);
}

TEST_F(PasswordSourceTest, TheVariableOfTheProjectorComesBeforeThatOfAll) {
    const Environment all("SM_TEST_PASSWORD", "for all");
    EXPECT_THAT(source.find(uid), Optional(std::string("for all")));
    const Environment own("SM_TEST_PASSWORD_020000000001", "own");
    EXPECT_THAT(source.find(uid), Optional(std::string("own")));
    EXPECT_THAT(source.find(L"020000000002"), Optional(std::string("for all")));
}

TEST_F(PasswordSourceTest, TheFileComesBeforeTheVariables) {
    const Environment all("SM_TEST_PASSWORD", "variable");
    const Environment file("SM_TEST_PASSWORD_FILE",
                           privateFile("# projectors\n*  any\n020000000001\tone two\r\n020000000003 three\n"));
    EXPECT_THAT(source.find(uid), Optional(std::string("one two")));
    EXPECT_THAT(source.find(L"020000000003"), Optional(std::string("three")));
    EXPECT_THAT(source.find(L"020000000009"), Optional(std::string("any")));
}

TEST_F(PasswordSourceTest, AMacAddressMayBeSpeltAnyWayAndBlanksAroundALineDoNotCount) {
    const Environment file("SM_TEST_PASSWORD_FILE",
                           privateFile("\n  # note\n02:00:00:00:00:01 one\n  02-00-00-00-00-0a\ttwo  \n \t\n"
                                       "02000000000b three and more \t\r\n"));
    EXPECT_THAT(source.find(uid), Optional(std::string("one")));
    EXPECT_THAT(source.find(L"02000000000A"), Optional(std::string("two")));
    EXPECT_THAT(source.find(L"02000000000B"), Optional(std::string("three and more")));
}

TEST_F(PasswordSourceTest, ALineThatCannotBeReadIsNamedByItsNumberAlone) {
    for (const std::string line :
         {"lonely", "hunter2 hunter3", "02:00:00:00:00 hunter2", "020000000001", "*  ", "\xff\xfe hunter2"}) {
        const std::string path = privateFile("# notes\n020000000009 nine\n" + line + "\n");
        const Environment file("SM_TEST_PASSWORD_FILE", path);
        EXPECT_EQ(faultOf([&] { static_cast<void>(source.find(uid)); }),
                  "password file " + path +
                      ": line 3 cannot be read: a MAC address or *, blanks and the password are expected; correct it");
    }
}

TEST_F(PasswordSourceTest, AByteOrderMarkBeforeTheFirstLineDoesNotCount) {
    const Environment file("SM_TEST_PASSWORD_FILE", privateFile("\xef\xbb\xbf"
                                                                "020000000001 one\r\n* any\r\n"));
    EXPECT_THAT(source.find(uid), Optional(std::string("one")));
    EXPECT_THAT(source.find(L"020000000002"), Optional(std::string("any")));
    const Environment comment("SM_TEST_PASSWORD_FILE", privateFile("\xef\xbb\xbf# notes\n020000000001 two\n"));
    EXPECT_THAT(source.find(uid), Optional(std::string("two")));
    const Environment alone("SM_TEST_PASSWORD_FILE", privateFile("\xef\xbb\xbf"));
    EXPECT_EQ(source.find(uid), std::nullopt);
}

TEST_F(PasswordSourceTest, AByteOrderMarkAnywhereElseIsPartOfALineThatCannotBeRead) {
    const Environment file("SM_TEST_PASSWORD_FILE", privateFile("* any\n\xef\xbb\xbf"
                                                                "020000000001 one\n"));
    EXPECT_THAT(faultOf([&] { static_cast<void>(source.find(uid)); }), HasSubstr("line 2 cannot be read"));
}

TEST_F(PasswordSourceTest, AFileInAnotherEncodingIsNamedAsThat) {
    for (const std::string& text : {std::string("\xff\xfe*\0 \0x\0", 8), std::string("\xfe\xff\0*\0 \0x", 8)}) {
        const Environment file("SM_TEST_PASSWORD_FILE", privateFile(text));
        EXPECT_THAT(faultOf([&] { static_cast<void>(source.find(uid)); }),
                    EndsWith("it is UTF-16 text; save it as UTF-8"));
    }
}

TEST_F(PasswordSourceTest, AFaultOfTheFileIsOneOfThisMachine) {
    const Environment file("SM_TEST_PASSWORD_FILE", folder.file("missing"));
    try {
        static_cast<void>(source.find(uid));
        FAIL() << "no fault";
    } catch (const Veltrani::DeviceFramework2::DeviceException& fault) {
        EXPECT_EQ(fault.cause, Veltrani::DeviceFramework2::DeviceException::Cause::THIS_MACHINE);
    }
}

TEST_F(PasswordSourceTest, AFileThatDoesNotKnowTheProjectorLeavesItToTheVariables) {
    const Environment all("SM_TEST_PASSWORD", "variable");
    const Environment file("SM_TEST_PASSWORD_FILE", privateFile("020000000003 three\n"));
    EXPECT_THAT(source.find(uid), Optional(std::string("variable")));
}

TEST_F(PasswordSourceTest, AFileThatOthersCanReadIsRefused) {
    const std::string path = privateFile("* secret\n");
    const Environment file("SM_TEST_PASSWORD_FILE", path);
    for (const mode_t mode : std::initializer_list<mode_t>{0640, 0604, 0620, 0601, 0666}) {
        ::chmod(path.c_str(), mode);
        const std::string message = faultOf([&] { static_cast<void>(source.find(uid)); });
        EXPECT_EQ(message,
                  "password file " + path + ": others have rights to it: make it your own and give it the mode 600");
        EXPECT_THAT(message, Not(HasSubstr("secret")));
    }
    ::chmod(path.c_str(), 0400);
    EXPECT_THAT(source.find(uid), Optional(std::string("secret")));
}

/// Ends the process with 0 when the file gives what it should to a common user, who need not be the one that runs the
/// tests.
[[noreturn]] void findAs(uid_t user, const PasswordSource& source, std::string_view expected) {
    if (::geteuid() == 0 && ::setuid(user) != 0) {
        ::_exit(3);
    }
    std::string found;
    const std::string message = faultOf([&] { found = source.find(L"020000000001").value_or("none"); });
    ::_exit((message == "no fault" ? found : message).find(expected) == std::string::npos ? 2 : 0);
}

// Only a privileged process can give files away.
TEST_F(PasswordSourceTest, TheFileIsOnesOwnOrThatOfTheAdministrator) {
    if (::geteuid() != 0) {
        GTEST_SKIP() << "files cannot be given to another user";
    }
    constexpr uid_t SOMEBODY = 65534;
    constexpr uid_t ANOTHER = 65533;
    const std::string path = privateFile("* secret\n");
    const Environment file("SM_TEST_PASSWORD_FILE", path);
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(::chown(path.c_str(), SOMEBODY, static_cast<gid_t>(-1)), 0);
    EXPECT_EXIT(findAs(SOMEBODY, source, "secret"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(findAs(ANOTHER, source, "Permission denied"), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(findAs(0, source, "others have rights to it"), testing::ExitedWithCode(0), "");
}

TEST_F(PasswordSourceTest, WhatIsNoPlainFileIsRefused) {
    const auto refusal = [&](const std::string& path) {
        const Environment file("SM_TEST_PASSWORD_FILE", path);
        return faultOf([&] { static_cast<void>(source.find(uid)); });
    };
    const std::string variable = "the environment variable SM_TEST_PASSWORD_FILE";
    EXPECT_THAT(
        refusal(folder.file("missing")),
        EndsWith("missing: No such file or directory; put a file there that you can read, or correct " + variable));
    EXPECT_THAT(refusal(folder.path()), EndsWith("it is not a regular file; name one in " + variable));
    ASSERT_EQ(::mkfifo(folder.file("pipe").c_str(), 0600), 0);
    EXPECT_THAT(refusal(folder.file("pipe")), EndsWith("it is not a regular file; name one in " + variable));
    EXPECT_THAT(refusal(privateFile(std::string(70000, 'x'))),
                EndsWith("it is larger than 65536 bytes; name a file with one line per projector in " + variable));
}

TEST_F(PasswordSourceTest, AFileOfTheLargestSizeIsRead) {
    const std::string line = "* secret\n#";
    const Environment file("SM_TEST_PASSWORD_FILE", privateFile(line + std::string(65536 - line.size(), 'x')));
    EXPECT_THAT(source.find(uid), Optional(std::string("secret")));
    const Environment larger("SM_TEST_PASSWORD_FILE", privateFile(line + std::string(65537 - line.size(), 'x')));
    EXPECT_THAT(faultOf([&] { static_cast<void>(source.find(uid)); }), HasSubstr("it is larger than 65536 bytes"));
}

TEST_F(PasswordSourceTest, TheRemedyNamesTheVariables) {
    EXPECT_EQ(source.remedy(),
              L"set the environment variable SM_TEST_PASSWORD, or name a password file in SM_TEST_PASSWORD_FILE");
    EXPECT_EQ(PasswordSource().variable, "SCREENMANAGER_PJLINK_PASSWORD");
    EXPECT_EQ(PasswordSource().fileVariable, "SCREENMANAGER_PJLINK_PASSWORD_FILE");
}

}  // namespace
