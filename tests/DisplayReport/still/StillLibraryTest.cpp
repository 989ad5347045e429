#include "DisplayReport/still/StillLibrary.h"

#include "still/Stills.h"

#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <string>

namespace {

using Veltrani::DisplayReport::Drawing;
using Veltrani::DisplayReport::StillLibrary;

double width(const std::string& text, double size = 10) {
    return StillLibrary::get().width(text, size);
}

TEST(StillLibrary, WidthsGrowWithTheTextAndInProportionToItsSize) {
    EXPECT_EQ(width(""), 0);
    EXPECT_GT(width("i"), 0);
    EXPECT_GT(width("W"), width("i"));
    EXPECT_NEAR(width("WW"), 2 * width("W"), 0.01);
    EXPECT_NEAR(width("Left wall", 37), 3.7 * width("Left wall"), 0.05);
    EXPECT_GT(width("壁"), 5) << "as wide as high, nearly";
}

TEST(StillLibrary, WhatFitsStaysAsItIs) {
    EXPECT_EQ(StillLibrary::get().fitting("Left", 10, width("Left") + 0.01), "Left");
    EXPECT_EQ(StillLibrary::get().fitting("", 10, 0), "");
}

TEST(StillLibrary, WhatDoesNotFitIsTheLongestBeginningThatDoes) {
    const std::string name = "a wall of many letters";
    for (const double room : {40.0, 75.0, 111.0}) {
        const std::string cut = StillLibrary::get().fitting(name, 10, room);
        ASSERT_TRUE(cut.ends_with("...")) << cut;
        const std::string kept = cut.substr(0, cut.size() - 3);
        EXPECT_TRUE(name.starts_with(kept));
        EXPECT_LE(width(cut), room);
        EXPECT_GT(width(name.substr(0, kept.size() + 1) + "..."), room) << "one letter more";
    }
    EXPECT_EQ(StillLibrary::get().fitting(name, 10, 0), "...");
}

TEST(StillLibrary, NeverCutsInsideACharacter) {
    // An e with an accent of its own, in three bytes.
    const std::string letter = "e\xCC\x81";
    std::string name;
    for (int i = 0; i < 20; ++i) {
        name += letter;
    }
    for (double room = 20; room < 80; room += 3) {
        const std::string cut = StillLibrary::get().fitting(name, 10, room);
        EXPECT_EQ((cut.size() - 3) % letter.size(), 0U) << room;
    }
}

/// From now on no thread and no process can be started by this one. False where the kernel refuses that.
bool refuseThreads() {
    std::array<sock_filter, 5> filter{
        {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
         BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone, 1, 0), BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone3, 0, 1),
         BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EAGAIN), BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)}};
    const sock_fprog program{filter.size(), filter.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 && ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/// Draws texts of many scripts in every format.
void drawTexts() {
    Drawing drawing;
    drawing.width = 300;
    drawing.height = 400;
    for (const char* name :
         {"wall", "Стена", "حائط", "קיר", "दीवार", "ผนัง", "壁面", "벽", "ግድግዳ", "སྒོ", "\xF4\x8F\xBF\xBD"}) {
        const auto count = static_cast<double>(drawing.texts.size() + 1);
        drawing.texts.push_back({10, 30 * count, name, 10 + count, {}});
    }
    for (const char* format : {"png", "svg", "pdf"}) {
        EXPECT_GT(stills::fileOf(drawing, format).size(), 1000U) << format;
    }
}

TEST(StillLibrary, StartsNoThread) {
    constexpr int REFUSED = 77;
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (!refuseThreads()) {
            ::_exit(REFUSED);
        }
        drawTexts();
        ::_exit(HasFailure() ? 1 : 0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    if (WIFEXITED(status) && WEXITSTATUS(status) == REFUSED) {
        GTEST_SKIP() << "system calls cannot be refused here";
    }
    EXPECT_TRUE(WIFEXITED(status)) << "ended by signal " << WTERMSIG(status);
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

/// The part of the ink of a text that is in its left half.
double inkAtTheLeft(const std::string& text) {
    Drawing drawing;
    drawing.width = 2 * static_cast<int>(std::ceil(width(text, 30) / 2));
    drawing.height = 60;
    drawing.texts.push_back({0, 45, text, 30, {}});
    const PngImage image = stills::imageOf(drawing);
    double left = 0;
    double all = 0;
    for (std::size_t y = 0; y < image.height; ++y) {
        for (std::size_t x = 0; x < image.width; ++x) {
            const double ink = 255.0 - image.at(x, y)[0];
            all += ink;
            left += x < image.width / 2 ? ink : 0;
        }
    }
    return all > 0 ? left / all : 0;
}

// Full stops have less ink than letters: they show which end is which.
TEST(StillLibrary, ATextBeginsAtTheSideOfItsFirstLetterAndANumberBeforeANameAtTheLeft) {
    EXPECT_GT(inkAtTheLeft("wall........"), 0.6);
    EXPECT_LT(inkAtTheLeft("קירות........"), 0.4) << "the rest is at the left";
    EXPECT_LT(inkAtTheLeft("1........קירות"), 0.4) << "the number is at the left";
    EXPECT_LT(inkAtTheLeft("(קירות)........"), 0.4) << "brackets are no letters";
}

TEST(StillLibrary, LettersOfJoinedScriptsTakeTheirFormsFromTheirNeighbours) {
    // Apart, each of the letters has the form of a single one.
    EXPECT_LT(width("ببب"), 0.9 * 3 * width("ب"));
    EXPECT_LT(width("لا"), 0.9 * (width("ل") + width("ا"))) << "one letter of two";
    EXPECT_LT(width("क्ष"), 0.9 * (width("क") + width("ष"))) << "a conjunct";
}

}  // namespace
