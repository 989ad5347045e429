#pragma once

#include "KelvoControl/Blend.h"
#include "support/Recorder.h"

#include <functional>
#include <memory>

/// A blend that returns what its members state.
class BlendDouble : public Blend, public Recorder {
public:
    explicit BlendDouble(const Frustum& theFrustum = Frustum(), Trace* trace = nullptr)
        : Blend(Frustum()), Recorder("blend", trace), frustum(theFrustum) {}

    mutable Frustum frustum;
    std::shared_ptr<ProjectionModel> model;
    /// Called each time before the frustum is returned, which it may change.
    std::function<void(Frustum&)> change;

    const Frustum& getSphericalBlendExtents() const override {
        record("getSphericalBlendExtents");
        if (change) {
            change(frustum);
        }
        return frustum;
    }
    std::shared_ptr<ProjectionModel> getProjectionModel() const override {
        record("getProjectionModel");
        return model;
    }
};
