#include "FitSession/LensFile.h"

#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "KelvoControl/LensNumbers.h"
#include "support/ForeignLocale.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <limits>

namespace {

using testing::ElementsAre;
using Veltrani::LensNumbers;
using Veltrani::FitSession::LensFile;

/// Numbers that no rounding leaves as they are.
LensNumbers lens(LensNumbers::Kind kind, std::size_t coefficients) {
    LensNumbers lens;
    lens.kind = kind;
    lens.imageWidth = 1920;
    lens.imageHeight = 1200;
    lens.fx = 2170.4000000000001;
    lens.fy = 2171.2 + 1.0 / 3;
    lens.cx = 958.1 - 1e-9;
    lens.cy = 607.29999999999995;
    for (std::size_t i = 0; i < coefficients; ++i) {
        lens.distortion.push_back((i % 2 == 0 ? -1 : 1) / (30.0 + static_cast<double>(i)));
    }
    return lens;
}

std::vector<std::string> filesIn(const std::string& folder) {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

TEST(LensFile, ItsNumbersAreReadBackToTheBit) {
    const ForeignLocale german;
    const TemporaryFolder folder;
    for (const std::size_t coefficients : {4U, 5U, 8U}) {
        const LensNumbers written = lens(LensNumbers::Kind::BROWN_CONRADY, coefficients);
        const LensFile file(folder.file("left"), written);
        const auto read = LensNumbers::of(L"BrownConrady:" + Veltrani::fromUtf8(file.path()));
        ASSERT_TRUE(read) << coefficients;
        EXPECT_EQ(*read, written) << coefficients;
    }
    const LensNumbers written = lens(LensNumbers::Kind::FISHEYE, 4);
    const LensFile file(folder.file("left"), written);
    EXPECT_EQ(LensNumbers::of(L"Fisheye:" + Veltrani::fromUtf8(file.path())), written);
}

TEST(LensFile, ANameThatIsTakenIsLeftAlone) {
    const TemporaryFolder folder;
    folder.write("left.yml", "of somebody else");
    std::filesystem::create_symlink("nowhere", folder.file("left-2.yml"));
    LensFile file(folder.file("left"), lens(LensNumbers::Kind::BROWN_CONRADY, 5));
    EXPECT_EQ(file.name(), "left-3.yml");
    EXPECT_EQ(file.path(), folder.file("left-3.yml"));
    file.keep();
    EXPECT_EQ(folder.read("left.yml"), "of somebody else");
    EXPECT_THAT(filesIn(folder.path()), ElementsAre("left-2.yml", "left-3.yml", "left.yml"));
}

TEST(LensFile, ItRemainsOnlyWhenItIsKept) {
    const TemporaryFolder folder;
    {
        const LensFile dropped(folder.file("dropped"), lens(LensNumbers::Kind::BROWN_CONRADY, 5));
        LensFile kept(folder.file("kept"), lens(LensNumbers::Kind::BROWN_CONRADY, 5));
        LensFile moved = std::move(kept);
        EXPECT_THAT(filesIn(folder.path()), ElementsAre("dropped.yml", "kept.yml"));
        moved.keep();
    }
    EXPECT_THAT(filesIn(folder.path()), ElementsAre("kept.yml"));
}

TEST(LensFile, WhereNothingCanBeWrittenItIsNamed) {
    const TemporaryFolder folder;
    try {
        const LensFile file(folder.file("gone/left"), lens(LensNumbers::Kind::BROWN_CONRADY, 5));
        ADD_FAILURE() << "nothing was refused";
    } catch (const VeltraniException& fault) {
        EXPECT_EQ(Veltrani::toUtf8(fault.message),
                  folder.file("gone/left.yml") + ": the lens file cannot be written: No such file or directory");
    }
}

}  // namespace
