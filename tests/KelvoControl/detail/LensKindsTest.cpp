#include "KelvoControl/detail/LensKinds.h"

#include "CalibrationText.h"
#include "Common/Utf8.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <set>

namespace {

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

}  // namespace
