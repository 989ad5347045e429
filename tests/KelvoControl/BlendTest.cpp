#include "KelvoControl/Blend.h"

#include "CalibrationText.h"
#include "Common/Utf8.h"
#include "Common/VeltraniException.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

constexpr double NAN_ = std::numeric_limits<double>::quiet_NaN();

Viewport plainViewport() {
    Viewport viewport = Viewport::fromFrustumAngles(-0.5, 0.5, -0.25, 0.25);
    viewport.position = {1.0, 2.0, 3.0};
    viewport.width = 1920;
    viewport.height = 1200;
    return viewport;
}

/// What `createProjectionModel` says against a viewport or a name; empty when it makes a model.
std::wstring refusal(const Viewport& viewport, const std::wstring& name, const std::wstring& file) {
    try {
        const auto model = Blend::createProjectionModel(viewport, name, file);
        return {};
    } catch (const VeltraniParseException& fault) {
        return L"parse: " + fault.message;
    } catch (const VeltraniMissingFileException& fault) {
        return L"missing: " + fault.message;
    } catch (const VeltraniException& fault) {
        return fault.message;
    }
}

class BlendModels : public testing::Test {
protected:
    std::wstring calibration(const CalibrationText& text) const {
        return Veltrani::fromUtf8(m_folder.write("lens.yml", text.yaml()));
    }

    TemporaryFolder m_folder;
};

TEST(Blend, HandsOutItsExtentsAndItsModel) {
    const auto model = Blend::createProjectionModel(plainViewport(), L"Rectilinear", L"");
    Frustum extents = Frustum::of(plainViewport(), {0.0, 0.0, 0.0});
    const Blend blend(extents, model);
    EXPECT_EQ(blend.getProjectionModel(), model);
    EXPECT_EQ(blend.getSphericalBlendExtents().ox, extents.ox);
    EXPECT_EQ(blend.getSphericalBlendExtents().origin, (Point<double, 3>{1.0, 2.0, 3.0}));
    EXPECT_EQ(blend.getSphericalBlendExtents().width, 1920);
}

TEST(Blend, NeedsNoModel) {
    EXPECT_EQ(Blend(Frustum()).getProjectionModel(), nullptr);
}

TEST_F(BlendModels, TheTwoTextsAreKeptAsTheTwoNames) {
    CalibrationText text;
    const std::wstring file = calibration(text);
    const auto apart = Blend::createProjectionModel(plainViewport(), L"BrownConrady", file);
    EXPECT_EQ(apart->firstName(), L"BrownConrady");
    EXPECT_EQ(apart->secondName(), file);
    const auto joined = Blend::createProjectionModel(plainViewport(), L"BrownConrady:" + file, L"");
    EXPECT_EQ(joined->firstName(), L"BrownConrady:" + file);
    EXPECT_EQ(joined->secondName(), L"");
    const auto plain = Blend::createProjectionModel(plainViewport(), L"Equidistant", L"");
    EXPECT_EQ(plain->firstName(), L"Equidistant");
    EXPECT_EQ(plain->secondName(), L"");
}

TEST_F(BlendModels, TheViewportIsKeptAsGiven) {
    const auto model = Blend::createProjectionModel(plainViewport(), L"Rectilinear", L"");
    EXPECT_EQ(model->viewport().ox, plainViewport().ox);
    EXPECT_EQ(model->viewport().sy, plainViewport().sy);
    EXPECT_EQ(model->viewport().position, plainViewport().position);
    EXPECT_EQ(model->viewport().width, 1920);
    EXPECT_EQ(model->viewport().height, 1200);
}

TEST_F(BlendModels, AFileNameMayHoldColonsAndLettersOfAnyAlphabet) {
    const std::wstring file = Veltrani::fromUtf8(m_folder.write("Objektiv: größe.yml", CalibrationText().yaml()));
    const auto model = Blend::createProjectionModel(plainViewport(), L"BrownConrady:" + file, L"");
    EXPECT_EQ(model->firstName(), L"BrownConrady:" + file);
}

TEST(BlendFaults, AnUnknownKindIsNamedWithThoseThereAre) {
    EXPECT_EQ(refusal(plainViewport(), L"Rectilinaer", L""),
              L"Unknown projection model \"Rectilinaer\", expected one of: Rectilinear, Equidistant, "
              L"BrownConrady:file, Fisheye:file");
    EXPECT_NE(refusal(plainViewport(), L"", L""), L"");
    EXPECT_NE(refusal(plainViewport(), L"rectilinear", L""), L"") << "names are exact";
    EXPECT_NE(refusal(plainViewport(), L"BrownConrady:a", L"b"), L"") << "a file is given once";
}

TEST(BlendFaults, AKindThatNeedsAFileSaysSo) {
    for (const wchar_t* name : {L"BrownConrady", L"BrownConrady:", L"Fisheye"}) {
        EXPECT_NE(refusal(plainViewport(), name, L"").find(L"needs a calibration file"), std::wstring::npos) << name;
    }
}

TEST(BlendFaults, AKindThatTakesNoFileSaysSo) {
    EXPECT_EQ(refusal(plainViewport(), L"Rectilinear:lens.yml", L""),
              L"Projection model Rectilinear takes no file, found \"lens.yml\"");
    EXPECT_NE(refusal(plainViewport(), L"Equidistant", L"lens.yml"), L"");
}

TEST_F(BlendModels, AMissingFileIsNamed) {
    const std::wstring file = Veltrani::fromUtf8(m_folder.file("nowhere.yml"));
    for (const wchar_t* name : {L"BrownConrady", L"Fisheye"}) {
        const std::wstring text = refusal(plainViewport(), name, file);
        EXPECT_EQ(text.find(L"missing: "), 0U) << name;
        EXPECT_NE(text.find(file), std::wstring::npos) << name;
    }
}

TEST(BlendFaults, AViewportThatSpansNothingIsRefused) {
    for (const wchar_t* name : {L"Rectilinear", L"Equidistant"}) {
        Viewport narrow = plainViewport();
        narrow.sx = 0;
        EXPECT_NE(refusal(narrow, name, L"").find(L"spans nothing"), std::wstring::npos);
        Viewport undefined = plainViewport();
        undefined.oy = NAN_;
        EXPECT_NE(refusal(undefined, name, L"").find(L"must be finite"), std::wstring::npos);
    }
}

TEST(BlendFaults, APlaceThatIsNotFiniteAndAPictureWithoutPixelsAreRefused) {
    Viewport nowhere = plainViewport();
    nowhere.position[1] = std::numeric_limits<double>::infinity();
    EXPECT_NE(refusal(nowhere, L"Rectilinear", L"").find(L"must be finite"), std::wstring::npos);
    Viewport turned = plainViewport();
    turned.orientation[2] = NAN_;
    EXPECT_NE(refusal(turned, L"Equidistant", L"").find(L"must be finite"), std::wstring::npos);
    Viewport flat = plainViewport();
    flat.height = 0;
    EXPECT_NE(refusal(flat, L"Rectilinear", L"").find(L"1920 x 0 pixels"), std::wstring::npos);
}

TEST_F(BlendModels, ALensFromAFileDoesNotLookAtTheExtents) {
    Viewport viewport = plainViewport();
    viewport.sx = 0;
    viewport.oy = NAN_;
    const std::wstring file = calibration({});
    EXPECT_EQ(refusal(viewport, L"BrownConrady", file), L"");
}

}  // namespace
