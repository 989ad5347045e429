#pragma once

#include "Configuration/ProjectorConfig.h"
#include "support/Recorder.h"

#include <array>

/// A projector entry that returns what its members state; setters store there.
class ProjectorConfigDouble : public ProjectorConfig, public Recorder {
public:
    explicit ProjectorConfigDouble(std::wstring id, Trace* trace = nullptr)
        : Recorder("projector", trace), identity(std::move(id)) {}

    std::wstring identity;
    std::wstring sectionId;
    std::wstring name;
    std::wstring oldUid;
    std::wstring deviceSnippet;
    int width = 1920;
    int height = 1080;
    std::array<unsigned char, 4> pondOfMirror{};
    std::wstring customPlanarFile;
    std::wstring projectionModelName;
    double orientationZ = 0.0;
    double orientationX = 0.0;
    double orientationY = 0.0;
    double frustumTop = 0.0;
    double frustumBottom = 0.0;
    double frustumLeft = 0.0;
    double frustumRight = 0.0;
    Point<double, 3> position;
    double screenLeft = SCREEN_BOUND_NOT_CONFIGURED;
    double screenRight = SCREEN_BOUND_NOT_CONFIGURED;
    double screenTop = SCREEN_BOUND_NOT_CONFIGURED;
    double screenBottom = SCREEN_BOUND_NOT_CONFIGURED;
    double layoutXMin = 0.0;
    double layoutXMax = 1.0;
    double layoutYMin = 0.0;
    double layoutYMax = 1.0;

    std::wstring getIdentity() const override { return answer("getIdentity", identity); }
    std::wstring getSectionID() const override { return answer("getSectionID", sectionId); }
    std::wstring getName() const override { return answer("getName", name); }
    void setName(const std::wstring& newName) override {
        record("setName", newName);
        name = newName;
    }
    std::wstring getOldUID() const override { return answer("getOldUID", oldUid); }
    std::wstring getDeviceSnippet() const override { return answer("getDeviceSnippet", deviceSnippet); }
    void setDeviceSnippet(const std::wstring& snippet) override {
        record("setDeviceSnippet", snippet);
        deviceSnippet = snippet;
    }
    int getWidth() const override { return answer("getWidth", width); }
    void setWidth(int pixels) override {
        record("setWidth", pixels);
        width = pixels;
    }
    int getHeight() const override { return answer("getHeight", height); }
    void setHeight(int pixels) override {
        record("setHeight", pixels);
        height = pixels;
    }
    void setPondOfMirror(int index, unsigned char size) override {
        record("setPondOfMirror", index, static_cast<int>(size));
        pondOfMirror.at(static_cast<std::size_t>(index)) = size;
    }
    int getPondOfMirror(int index) const override {
        record("getPondOfMirror", index);
        return pondOfMirror.at(static_cast<std::size_t>(index));
    }
    std::wstring getCustomPlanarFile() const override { return answer("getCustomPlanarFile", customPlanarFile); }
    std::wstring getProjectionModelName() const override {
        return answer("getProjectionModelName", projectionModelName);
    }
    double getOrientationZ() const override { return answer("getOrientationZ", orientationZ); }
    double getOrientationX() const override { return answer("getOrientationX", orientationX); }
    double getOrientationY() const override { return answer("getOrientationY", orientationY); }
    double getFrustumTop() const override { return answer("getFrustumTop", frustumTop); }
    double getFrustumBottom() const override { return answer("getFrustumBottom", frustumBottom); }
    double getFrustumLeft() const override { return answer("getFrustumLeft", frustumLeft); }
    double getFrustumRight() const override { return answer("getFrustumRight", frustumRight); }
    Point<double, 3> getPosition() const override { return answer("getPosition", position); }
    double getScreenLeft() const override { return answer("getScreenLeft", screenLeft); }
    double getScreenRight() const override { return answer("getScreenRight", screenRight); }
    double getScreenTop() const override { return answer("getScreenTop", screenTop); }
    double getScreenBottom() const override { return answer("getScreenBottom", screenBottom); }
    double getLayoutXMin() const override { return answer("getLayoutXMin", layoutXMin); }
    double getLayoutXMax() const override { return answer("getLayoutXMax", layoutXMax); }
    double getLayoutYMin() const override { return answer("getLayoutYMin", layoutYMin); }
    double getLayoutYMax() const override { return answer("getLayoutYMax", layoutYMax); }

private:
    template <class T>
    T answer(const std::string& operation, const T& value) const {
        record(operation);
        return value;
    }
};
