#pragma once

#include "KelvoControl/Configuration.h"
#include "ScreenManager/ScreenManager.h"
#include "TargetLocatorFixture.h"
#include "support/BlendDouble.h"
#include "support/ScreenConfigDouble.h"

#include <memory>
#include <string>

/// A display that is seen from an eye point: one projector P1, spherical, with a table of the channel maps that is made
/// by hand.
class EyeMapFixture : public TargetLocatorFixture {
protected:
    EyeMapFixture() {
        targetData.targetDataType = BaseConfig::TARGET_DATA_SPHERICAL;
        config.screen = &screenConfig;
        screenConfig.eyePoint = {0.25, -0.5, 0.125};
    }

    /// Puts a frustum into the table, under the id of a projector.
    std::shared_ptr<BlendDouble> addToTable(const Frustum& frustum, const std::wstring& id = L"P1") {
        auto blend = std::make_shared<BlendDouble>(frustum, &trace);
        table->add(KelvoProjectorUID(id), std::make_unique<KelvoProjector>(blend));
        return blend;
    }
    /// A square picture of 90 degrees, straight ahead.
    static Frustum straightFrustum() {
        Frustum frustum;
        frustum.ox = -1.0;
        frustum.oy = -1.0;
        frustum.sx = 2.0;
        frustum.sy = 2.0;
        return frustum;
    }
    /// Unlike in every number, seen from its own place.
    static Frustum turnedFrustum() {
        Viewport viewport = Viewport::fromFrustumAngles(-0.4, 0.5, -0.3, 0.2);
        viewport.orientation = {0.3, -0.2, 0.15};
        return Frustum::of(viewport, {});
    }
    /// A frustum with so many pixels.
    static Frustum pictureOf(int width, int height) {
        Frustum frustum = straightFrustum();
        frustum.width = width;
        frustum.height = height;
        return frustum;
    }

    ScreenConfigDouble screenConfig{&trace};
    std::shared_ptr<KelvoControl::Configuration> table = std::make_shared<KelvoControl::Configuration>();
};
