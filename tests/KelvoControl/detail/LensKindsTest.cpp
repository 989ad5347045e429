#include "KelvoControl/detail/LensKinds.h"

#include "CalibrationText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <set>

namespace {

using Veltrani::LensNumbers;
using Veltrani::KelvoControlDetail::LensKind;
using Veltrani::KelvoControlDetail::lensKinds;

TEST(LensKinds, EachHasANameOfItsOwn) {
    std::set<std::wstring> names;
    for (const LensKind& kind : lensKinds()) {
        EXPECT_TRUE(names.insert(kind.name).second);
    }
    EXPECT_EQ(names, (std::set<std::wstring>{L"Rectilinear", L"Equidistant", L"BrownConrady", L"Fisheye"}));
}

TEST(LensKinds, EachMakesAModelOfItsViewportAndTexts) {
    const TemporaryFolder folder;
    CalibrationText text;
    text.distortion = {"0.1", "0.", "0.", "0."};
    const std::wstring file = Veltrani::fromUtf8(folder.write("lens.yml", text.yaml()));
    const Viewport viewport = Viewport::fromFrustumAngles(-0.5, 0.5, -0.4, 0.4);
    for (const LensKind& kind : lensKinds()) {
        const auto model = kind.make(viewport, kind.name, kind.needsFile ? file : L"");
        EXPECT_EQ(model->firstName(), kind.name);
        EXPECT_EQ(model->viewport().sx, viewport.sx);
        Point<double, 3> ahead;
        EXPECT_TRUE(model->unproject({0.5, 0.5}, ahead)) << Veltrani::toUtf8(kind.name);
        EXPECT_GT(ahead[1], 0);
    }
}

TEST(LensKinds, ThoseWithAFileReadItsNumbers) {
    const TemporaryFolder folder;
    CalibrationText text;
    text.distortion = {"0.1", "-0.02", "0.003", "0.0004"};
    const std::wstring file = Veltrani::fromUtf8(folder.write("lens.yml", text.yaml()));
    std::set<LensNumbers::Kind> meanings;
    for (const LensKind& kind : lensKinds()) {
        EXPECT_EQ(static_cast<bool>(kind.numbers), kind.needsFile) << Veltrani::toUtf8(kind.name);
        if (kind.numbers) {
            const LensNumbers numbers = kind.numbers(file);
            EXPECT_EQ(numbers.distortion, (std::vector<double>{0.1, -0.02, 0.003, 0.0004}));
            EXPECT_TRUE(meanings.insert(numbers.kind).second) << "coefficients of another kind mean something else";
        }
    }
    EXPECT_EQ(meanings.size(), 2U);
}

// Numbers are those of the model: what one refuses the other does not read.
TEST(LensKinds, NumbersAreReadByTheRulesOfTheModel) {
    const TemporaryFolder folder;
    CalibrationText text;  // five coefficients: no fisheye
    const std::wstring file = Veltrani::fromUtf8(folder.write("lens.yml", text.yaml()));
    const Viewport viewport = Viewport::fromFrustumAngles(-0.5, 0.5, -0.4, 0.4);
    for (const LensKind& kind : lensKinds()) {
        if (!kind.needsFile) {
            continue;
        }
        bool isRead = true;
        bool isMade = true;
        try {
            static_cast<void>(kind.numbers(file));
        } catch (const VeltraniParseException&) {
            isRead = false;
        }
        try {
            static_cast<void>(kind.make(viewport, kind.name, file));
        } catch (const VeltraniParseException&) {
            isMade = false;
        }
        EXPECT_EQ(isRead, isMade) << Veltrani::toUtf8(kind.name);
        EXPECT_EQ(isRead, kind.name == L"BrownConrady");
    }
}

}  // namespace
