#pragma once

#include "KelvoControl/Blend.h"
#include "support/Recorder.h"

/// A blend that answers what its members say.
class BlendDouble : public Blend, public Recorder {
public:
    explicit BlendDouble(Trace* trace = nullptr, const std::string& name = "blend")
        : Blend(Frustum()), Recorder(name, trace) {}

    Frustum extents;
    std::shared_ptr<ProjectionModel> model;

    const Frustum& getSphericalBlendExtents() const override {
        record("getSphericalBlendExtents");
        return extents;
    }
    std::shared_ptr<ProjectionModel> getProjectionModel() const override {
        record("getProjectionModel");
        return model;
    }
};
