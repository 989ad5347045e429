#pragma once

#include <string>

/// The names that a configuration uses for screen shapes and kinds of target data. Compared exactly, case included.
class BaseConfig {
public:
    BaseConfig() = delete;

    inline static const std::wstring SHAPE_SPHERE = L"Sphere";
    inline static const std::wstring SHAPE_CYLINDER = L"Cylinder";
    inline static const std::wstring SHAPE_RULED = L"Ruled";
    inline static const std::wstring SHAPE_FLAT = L"Flat";
    inline static const std::wstring SHAPE_MESH = L"Mesh";

    inline static const std::wstring TARGET_DATA_PLANAR_BASIC = L"PlanarBasic";
    inline static const std::wstring TARGET_DATA_PLANAR_ADVANCED = L"PlanarAdvanced";
    inline static const std::wstring TARGET_DATA_SPHERICAL = L"Spherical";
    inline static const std::wstring TARGET_DATA_SPHERICAL_COLLIMATED = L"SphericalCollimated";
    inline static const std::wstring TARGET_DATA_CUSTOM_PLANAR = L"CustomPlanar";
    inline static const std::wstring TARGET_DATA_PROJECTOR_CENTRIC = L"ProjectorCentric";
    inline static const std::wstring TARGET_DATA_3D = L"3D";
};
