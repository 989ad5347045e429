#include "ScreenManager/Screen.h"

#include "Common/ExceptionCause.h"
#include "Common/Utf8.h"
#include "KelvoScreen/FlatScreen.h"
#include "KelvoScreen/OBJScreen.h"
#include "KelvoScreen/ObjLoadException.h"
#include "ScreenManagerTestAccess.h"
#include "support/AllocationFault.h"
#include "support/LogTrap.h"
#include "support/ScreenGeometryDouble.h"
#include "support/TemporaryFolder.h"
#include "support/TestPaths.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <log4cxx/logmanager.h>
#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <filesystem>

namespace {

using Access = ScreenManagerTestAccess;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* TRIANGLE = "v 0 0 0\nv 1 0 0\nv 0 0 1\nf 1 2 3\n";
constexpr const char* OTHER_TRIANGLE = "v 0 0 0\nv 2 0 0\nv 0 0 2\nf 1 2 3\n";
constexpr const char* FAULTY = "v 0 0 0\nv 1,5 0 0\n";

class ScreenMeshTest : public testing::Test {
protected:
    std::wstring write(const std::string& name, const std::string& content) const {
        return Veltrani::fromUtf8(folder.write(name, content));
    }

    /// Loads and answers the message and the cause of the `VeltraniMissingFileException`, in UTF-8.
    std::pair<std::string, std::string> contentRefusal(const std::wstring& path) {
        return refusal([&] { screen.loadContent(path, false); });
    }
    std::pair<std::string, std::string> measuredRefusal(const std::wstring& path) {
        return refusal([&] { screen.loadMeasured(path, false); });
    }

    template <class Step>
    static std::pair<std::string, std::string> refusal(Step&& step) {
        try {
            step();
        } catch (const VeltraniMissingFileException& fault) {
            EXPECT_EQ(fault.line, -1);
            EXPECT_EQ(fault.file, "");
            return {Veltrani::toUtf8(fault.message), Veltrani::toUtf8(Veltrani::causeOf(fault))};
        }
        return {"loaded", ""};
    }

    static std::string contentText(const std::wstring& path) {
        return "Unable to load screen file. Ensure the screen file " + Veltrani::toUtf8(path) +
               " exists and is a valid .obj file.";
    }
    static std::string measuredText(const std::wstring& path) {
        return "Unable to load measured screen file. Ensure the screen file " + Veltrani::toUtf8(path) +
               " exists and is a valid .obj file.";
    }

    TemporaryFolder folder;
    Screen screen;
    LogTrap log;  // the screen never writes to its logger
    void TearDown() override { EXPECT_THAT(log.records(), IsEmpty()); }
};

TEST_F(ScreenMeshTest, AnEmptyContentPathInstallsADefaultFlatScreen) {
    EXPECT_FALSE(screen.loadContent(L"", false));
    ASSERT_NE(std::dynamic_pointer_cast<FlatScreen>(screen.getContent()), nullptr);
    EXPECT_EQ(screen.getContent()->getUniqueDataHash(), FlatScreen().getUniqueDataHash());
    EXPECT_TRUE(screen.isValid());
    EXPECT_FALSE(screen.getScreenIsReal());
}

TEST_F(ScreenMeshTest, AnEmptyContentPathDoesNotClearTheScreenIsRealFlag) {
    ASSERT_TRUE(screen.loadContent(write("a.obj", TRIANGLE), false));
    EXPECT_FALSE(screen.loadContent(L"", true));
    EXPECT_TRUE(screen.getScreenIsReal());
    screen.clearScreens();
    EXPECT_FALSE(screen.getScreenIsReal());
}

TEST_F(ScreenMeshTest, AContentFileIsReadAndMakesTheScreenReal) {
    EXPECT_TRUE(screen.loadContent(write("a.obj", TRIANGLE), false));
    ASSERT_NE(std::dynamic_pointer_cast<OBJScreen>(screen.getContent()), nullptr);
    EXPECT_TRUE(screen.getContent()->isValid());
    EXPECT_TRUE(screen.getScreenIsReal());
    EXPECT_EQ(screen.getContent()->getUniqueDataHash(), MeshScreen::calcUniqueDataHash(TRIANGLE));
}

TEST_F(ScreenMeshTest, TheSameFileAgainKeepsTheGeometryUnlessForced) {
    const std::wstring path = write("a.obj", TRIANGLE);
    ASSERT_TRUE(screen.loadContent(path, false));
    const auto first = screen.getContent();
    EXPECT_TRUE(screen.loadContent(path, false));
    EXPECT_EQ(screen.getContent(), first);
    EXPECT_TRUE(screen.loadContent(path, true));
    EXPECT_NE(screen.getContent(), first);
}

TEST_F(ScreenMeshTest, TheSameBytesUnderAnotherNameKeepTheGeometry) {
    ASSERT_TRUE(screen.loadContent(write("a.obj", TRIANGLE), false));
    const auto first = screen.getContent();
    EXPECT_TRUE(screen.loadContent(write("b.obj", TRIANGLE), false));
    EXPECT_EQ(screen.getContent(), first);
    EXPECT_TRUE(screen.loadContent(write("a.obj", OTHER_TRIANGLE), false));
    EXPECT_NE(screen.getContent(), first);
}

TEST_F(ScreenMeshTest, MeshesAreTurnedAndScaledByTheParametersOfTheirLoad) {
    screen.setScale(2.0F);
    screen.setImportTransformParams(L"Z", L"Y");
    ASSERT_TRUE(screen.loadMeasured(write("a.obj", "v 0 0 0\nv 1 0 0\nv 0 2 3\nf 1 2 3\n"), false));
    const auto mesh = std::dynamic_pointer_cast<OBJScreen>(screen.getMeasured());
    ASSERT_NE(mesh, nullptr);
    // Up Z and forward Y is the world frame itself.
    EXPECT_EQ(mesh->mesh().vertices[1], (Point<double, 3>{2.0, 0.0, 0.0}));
    EXPECT_EQ(mesh->mesh().vertices[2], (Point<double, 3>{0.0, 4.0, 6.0}));
    screen.setScale(5.0F);
    EXPECT_EQ(mesh->mesh().vertices[1], (Point<double, 3>{2.0, 0.0, 0.0})) << "what is loaded stays";
}

TEST_F(ScreenMeshTest, TheExtensionMustBeObjInLowerCase) {
    constexpr const char* CAUSE =
        "found a name that does not end in \".obj\" (lower case), expected one that does; rename the file";
    for (const char* name : {"A.OBJ", "a.Obj", "a.obj.bak", "a.objx", "a.", "obj2", "a"}) {
        const std::wstring path = write(name, TRIANGLE);
        EXPECT_EQ(contentRefusal(path), std::make_pair(contentText(path), std::string(CAUSE)));
        EXPECT_EQ(measuredRefusal(path), std::make_pair(measuredText(path), std::string(CAUSE)));
    }
    EXPECT_EQ(screen.getContent(), nullptr);
    EXPECT_FALSE(screen.getScreenIsReal());
}

TEST_F(ScreenMeshTest, ANameWithoutADotIsItsOwnExtension) {
    ASSERT_EQ(::chdir(folder.path().c_str()), 0);
    write("obj", TRIANGLE);
    EXPECT_TRUE(screen.loadContent(L"obj", false));
    ASSERT_EQ(::chdir("/"), 0);
}

TEST_F(ScreenMeshTest, AFaultyTextIsToldApartForTheContentAloneAndIsTheCauseForTheMeasuredScreen) {
    const std::wstring path = write("a.obj", FAULTY);
    try {
        screen.loadContent(path, false);
        FAIL() << "loaded";
    } catch (const ObjLoadException& fault) {
        EXPECT_EQ(fault.line, 2U);
    }
    const auto [message, cause] = measuredRefusal(path);
    EXPECT_EQ(message, measuredText(path));
    EXPECT_THAT(cause, StartsWith("line 2: found \"1,5\""));
}

TEST_F(ScreenMeshTest, FilesThatCannotBeReadAreRefusedWithTheReason) {
    const std::wstring missing = Veltrani::fromUtf8(folder.file("missing.obj"));
    const std::wstring directory = Veltrani::fromUtf8(folder.makeFolder("folder.obj"));
    const std::string pipe = folder.file("pipe.obj");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const std::vector<std::pair<std::wstring, std::string>> files{{missing, "No such file or directory"},
                                                                  {directory, "is a directory, not a file"},
                                                                  {Veltrani::fromUtf8(pipe), "is a pipe, not a file"},
                                                                  {L"/dev/null", "is a device, not a file"}};
    for (const auto& [path, reason] : files) {
        EXPECT_EQ(contentRefusal(path), std::make_pair(contentText(path), Veltrani::toUtf8(path) + ": " + reason));
        EXPECT_EQ(measuredRefusal(path), std::make_pair(measuredText(path), Veltrani::toUtf8(path) + ": " + reason));
    }
}

TEST_F(ScreenMeshTest, AMeshWithoutASurfaceIsRefusedWithTheReason) {
    for (const char* text : {"", "# nothing\n", "v 0 0 0\nv 1 0 0\nv 0 0 1\n"}) {
        EXPECT_EQ(contentRefusal(write("a.obj", text)).second,
                  "found no faces, expected at least one; export the mesh with its faces, not as points or lines");
    }
    EXPECT_EQ(contentRefusal(write("a.obj", "v 0 0 0\nv 1 0 0\nv 2 0 0\nf 1 2 3\n")).second,
              "found no face with an area, expected at least one; check the vertices, and the decimals of the export");
    screen.setScale(0.0F);
    EXPECT_THAT(measuredRefusal(write("a.obj", TRIANGLE)).second, HasSubstr("scale"));
}

TEST_F(ScreenMeshTest, AFaultLeavesTheSlotAsItWas) {
    ASSERT_TRUE(screen.loadContent(write("a.obj", TRIANGLE), false));
    ASSERT_TRUE(screen.loadMeasured(write("a.obj", TRIANGLE), false));
    const auto content = screen.getContent();
    const auto measured = screen.getMeasured();
    const std::wstring faulty = write("b.obj", FAULTY);
    EXPECT_THROW(screen.loadContent(faulty, true), ObjLoadException);
    EXPECT_THROW(screen.loadContent(L"missing.obj", true), VeltraniMissingFileException);
    EXPECT_THROW(screen.loadMeasured(faulty, true), VeltraniMissingFileException);
    EXPECT_EQ(screen.getContent(), content);
    EXPECT_EQ(screen.getMeasured(), measured);
    EXPECT_TRUE(screen.getScreenIsReal());
}

TEST_F(ScreenMeshTest, AxesThatAreNoneAreTheCauseOfTheUsualMessage) {
    screen.setImportTransformParams(L"Y", L"Q");
    const std::wstring path = write("a.obj", TRIANGLE);
    const auto [message, cause] = contentRefusal(path);
    EXPECT_EQ(message, contentText(path));
    EXPECT_THAT(cause, HasSubstr("Q"));
    EXPECT_EQ(measuredRefusal(path).first, measuredText(path));
}

TEST_F(ScreenMeshTest, AnEmptyMeasuredPathRemovesTheMeasuredScreen) {
    ASSERT_TRUE(screen.loadMeasured(write("a.obj", TRIANGLE), false));
    EXPECT_NE(screen.getMeasured(), nullptr);
    EXPECT_FALSE(screen.getScreenIsReal()) << "only a content file makes the screen real";
    EXPECT_FALSE(screen.loadMeasured(L"", false));
    EXPECT_EQ(screen.getMeasured(), nullptr);
}

TEST_F(ScreenMeshTest, NamesStandInTheMessagesAsTheyAre) {
    for (const std::wstring& path : {std::wstring(L"100%s%n%d.obj"), std::wstring(L"B\u00fchne \u6620.obj"),
                                     L"/" + std::wstring(5000, L'n') + L".obj"}) {
        EXPECT_EQ(contentRefusal(path).first, contentText(path));
        EXPECT_EQ(measuredRefusal(path).first, measuredText(path));
    }
}

TEST_F(ScreenMeshTest, ANameThatIsNoTextIsRefused) {
    constexpr wchar_t SURROGATE = 0xd800;
    const std::wstring path = std::wstring(1, SURROGATE) + L".obj";
    try {
        screen.loadContent(path, false);
        FAIL() << "loaded";
    } catch (const VeltraniMissingFileException& fault) {
        EXPECT_EQ(fault.message,
                  L"Unable to load screen file. Ensure the screen file " + path + L" exists and is a valid .obj file.");
    }
}

TEST_F(ScreenMeshTest, NamesAreUtf8WhateverTheLocale) {
    ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr);
    EXPECT_TRUE(screen.loadContent(write("B\xc3\xbchne 100%s \xe6\x98\xa0.obj", TRIANGLE), false));
}

TEST_F(ScreenMeshTest, WhereverMemoryRunsOutTheContentLoaderSaysSo) {
    const std::wstring path = write("a.obj", TRIANGLE);
    const std::wstring other = write("b.obj", OTHER_TRIANGLE);
    ASSERT_TRUE(screen.loadContent(path, false));
    const auto before = screen.getContent();
    std::size_t faults = 0;
    bool failed = true;
    for (; failed; ++faults) {
        std::pair<std::string, std::string> answer;
        try {
            const AllocationFault fault(faults);
            const bool loaded = screen.loadContent(other, false);
            failed = fault.happened();
            EXPECT_TRUE(loaded);
            EXPECT_FALSE(failed) << "a failed allocation went unnoticed";
        } catch (const VeltraniMissingFileException& fault) {
            EXPECT_EQ(fault.message, L"Insufficient memory to load screen file.");
            EXPECT_EQ(Veltrani::causeOf(fault), L"not enough memory");
            EXPECT_EQ(screen.getContent(), before);
        }
    }
    EXPECT_GT(faults, 10U) << "the loader allocates more often than that";
    EXPECT_NE(screen.getContent(), before);
}

TEST_F(ScreenMeshTest, WhereverMemoryRunsOutTheMeasuredLoaderGivesItsOneMessage) {
    const std::wstring path = write("a.obj", TRIANGLE);
    std::size_t faults = 0;
    while (screen.getMeasured() == nullptr) {
        try {
            const AllocationFault fault(faults++);
            screen.loadMeasured(path, false);
        } catch (const VeltraniMissingFileException& fault) {
            EXPECT_EQ(Veltrani::toUtf8(fault.message), measuredText(path));
            EXPECT_EQ(Veltrani::causeOf(fault), L"not enough memory");
        }
    }
    EXPECT_GT(faults, 10U);
}

TEST_F(ScreenMeshTest, AFileTooLargeForAnyMemoryIsInsufficientMemory) {
    // A file of a terabyte that takes no place on the disk. It is the size alone that is refused.
    constexpr off_t TERABYTE = off_t{1} << 40;
    const std::string path = folder.write("a.obj", TRIANGLE);
    ASSERT_EQ(::truncate(path.c_str(), TERABYTE), 0);
    EXPECT_EQ(
        contentRefusal(Veltrani::fromUtf8(path)),
        std::make_pair(std::string("Insufficient memory to load screen file."), std::string("not enough memory")));
}

TEST_F(ScreenMeshTest, TheHashIsSetForAnyFileThatCanBeRead) {
    Access::Hash hash{};
    EXPECT_EQ(Access::createMeshScreen(write("a.txt", TRIANGLE), L"Y", L"Z", 1.0F, hash), nullptr);
    EXPECT_EQ(hash, MeshScreen::calcUniqueDataHash(TRIANGLE));

    const Access::Hash kept = hash;
    EXPECT_EQ(Access::createMeshScreen(L"missing.obj", L"Y", L"Z", 1.0F, hash), nullptr);
    EXPECT_EQ(hash, kept);

    EXPECT_THROW(Access::createMeshScreen(write("a.obj", FAULTY), L"Y", L"Z", 1.0F, hash), ObjLoadException);
    EXPECT_EQ(hash, MeshScreen::calcUniqueDataHash(FAULTY));

    EXPECT_NE(Access::createMeshScreen(write("a.obj", TRIANGLE), L"Y", L"Z", 1.0F, hash), nullptr);
}

TEST_F(ScreenMeshTest, AGeometryWithTheHashOfTheFileStaysUnlessForced) {
    const auto installed = std::make_shared<ScreenGeometryDouble>();
    installed->hash = MeshScreen::calcUniqueDataHash(TRIANGLE);
    std::shared_ptr<ScreenGeometry> target = installed;
    const std::wstring path = write("a.obj", TRIANGLE);
    EXPECT_TRUE(Access::loadMesh(screen, path, target, false));
    EXPECT_EQ(target, installed);
    EXPECT_TRUE(Access::loadMesh(screen, path, target, true));
    EXPECT_NE(target, installed);
    EXPECT_FALSE(Access::loadMesh(screen, write("a.txt", TRIANGLE), target, true));
}

TEST_F(ScreenMeshTest, AMeasuredMeshWithTheSameBytesStaysUnlessForced) {
    const std::wstring path = write("a.obj", TRIANGLE);
    EXPECT_TRUE(screen.loadMeasured(path, false));
    const auto first = screen.getMeasured();
    EXPECT_TRUE(screen.loadMeasured(path, false));
    EXPECT_EQ(screen.getMeasured(), first);
    EXPECT_TRUE(screen.loadMeasured(path, true));
    EXPECT_NE(screen.getMeasured(), first);
}

TEST_F(ScreenMeshTest, TheLoggerOfTheScreenExistsFromTheStart) {
    EXPECT_NE(log4cxx::LogManager::exists(L"Dravix.ScreenManager.Screen"), nullptr);
}

TEST_F(ScreenMeshTest, RealMeshesAreLoaded) {
    const std::string data = extraData();
    if (data.empty()) {
        GTEST_SKIP() << "no further data configured";
    }
    for (const char* name : {"spot.obj", "stanford-bunny.obj"}) {
        EXPECT_TRUE(screen.loadContent(Veltrani::fromUtf8(data + "/" + name), false)) << name;
        EXPECT_TRUE(screen.getContent()->isValid());
    }
}

}  // namespace
