#pragma once

#include "DisplayReport/scene/DisplayScene.h"

#include <cstdint>

/// Small scenes for the tests of pages and stills.
namespace scenes {

/// A wall of four by two at y = 5, seen from the origin, with one channel over its left half.
inline Veltrani::DisplayReport::DisplayScene wall() {
    using namespace Veltrani::DisplayReport;
    DisplayScene scene;
    scene.title = "A <wall> & more";
    scene.unit = "m";
    scene.plan = {2, 2, 1};
    SceneSurface surface;
    surface.name = "content";
    surface.vertices = {{-2, 5, -1}, {2, 5, -1}, {2, 5, 1}, {-2, 5, 1}};
    surface.triangles = {{0, 1, 2}, {0, 2, 3}};
    scene.surfaces = {surface};
    SceneChannel channel;
    channel.colour = channelColour(0);
    channel.width = 1920;
    channel.height = 1200;
    channel.targets.name = "Left";
    channel.targets.grid = {{0, 0, {0.0, 0.0}, {-2, 5, 1}},
                            {0, 1, {0.0, 1.0}, {-2, 5, -1}},
                            {1, 0, {1.0, 0.0}, {0, 5, 1}},
                            {1, 1, {1.0, 1.0}, {0, 5, -1}}};
    channel.targets.boundary = {{-2, 5, 1}, {0, 5, 1}, {0, 5, -1}, {-2, 5, -1}};
    channel.placed = channel.targets.grid.size();
    channel.samples = channel.targets.boundary.size();
    scene.channels = {channel};
    scene.eyes = {{"eye point", Point<double, 3>()}};
    return scene;
}

/// Everything of a scene moved by the same way.
inline Veltrani::DisplayReport::DisplayScene moved(Veltrani::DisplayReport::DisplayScene scene,
                                                   const Point<double, 3>& way) {
    for (auto& surface : scene.surfaces) {
        for (auto& vertex : surface.vertices) {
            vertex += way;
        }
    }
    for (auto& channel : scene.channels) {
        for (auto& target : channel.targets.grid) {
            target.point += way;
        }
        for (auto& point : channel.targets.boundary) {
            point += way;
        }
    }
    for (auto& eye : scene.eyes) {
        eye.point += way;
    }
    return scene;
}

}  // namespace scenes
